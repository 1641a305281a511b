#pragma once
// clsID3: reads and rewrites the 128-byte ID3v1 tag block at the end of an MP3
// file. Only that trailing block is understood (an ID3v2 tag at the start of the
// file is not read) and the genre is kept as its number.
//
// The block, 0-based: "TAG" at 0, title 3..32, artist 33..62, album 63..92,
// year 93..96, comment 97..126, genre byte 127. Text bytes are Windows-1252; the
// property reads return UTF-8 and the property writes take UTF-8.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace gorvan {

class clsID3 {
 public:
  static constexpr std::size_t kTagSize = 128;
  static constexpr std::size_t kTextFieldSize = 30;
  static constexpr std::size_t kYearSize = 4;

  clsID3();

  // Reads the tag of `fileName` with one read of its last 128 bytes.
  // On success: HasTag() is true, FileName() is `fileName` and the six values
  // are replaced. On failure (file missing or unreadable, name not ending in
  // ".mp3" in any case, file shorter than 128 bytes, block not starting with
  // "TAG"): HasTag() is false, FileName() is empty and the values are kept.
  bool Load(const std::string& fileName);

  // The same rules applied to a whole file's bytes held in memory (used by the
  // fuzzer and by callers that already hold the bytes). FileName() is left
  // empty, so the setters and Save() refuse to touch any file afterwards.
  bool LoadFromMemory(std::string_view contents);

  bool HasTag() const { return hasTag_; }
  const std::string& FileName() const { return fileName_; }

  const std::string& Title() const { return title_; }
  const std::string& Artist() const { return artist_; }
  const std::string& Album() const { return album_; }
  const std::string& Year() const { return year_; }
  const std::string& Comment() const { return comment_; }
  int Genre() const { return genre_; }

  // Property writes. Each converts the text to Windows-1252 ('?' for what it
  // cannot hold), cuts it to the field's width or pads it with NULs, places it
  // in the tag buffer and sets the value to what a later load would read.
  // They do nothing when the file of the last successful load no longer exists
  // (in particular after a failed load). SetGenre also ignores values outside
  // 0..255.
  void SetTitle(std::string_view text);
  void SetArtist(std::string_view text);
  void SetAlbum(std::string_view text);
  void SetYear(std::string_view text);
  void SetComment(std::string_view text);
  void SetGenre(int genre);

  // Writes the tag buffer over the last 128 bytes of the file of the last load,
  // only when the file is longer than 128 bytes and those bytes start with
  // "TAG"; a file without a tag block is left unchanged (a block is never
  // appended). Returns "" on success and when nothing was written; otherwise
  // "File not found", "Wrong file extension. Must be .mp3" or the system's
  // reason for a failed read or write.
  std::string Save();

  // True when the name's last four characters, upper-cased, are ".MP3".
  static bool IsMp3Name(std::string_view name);

  // The cleaning rule for a text field: trim leading and trailing blanks, then
  // remove every NUL. Blanks standing before NUL padding survive.
  static std::string CleanField(std::string_view raw);

  // The raw block as last read and edited by the setters.
  std::string_view TagBuffer() const { return {tag_.data(), tag_.size()}; }

 private:
  bool LoadBlock(const char* block);
  bool LoadFailed();
  bool FileStillExists() const;
  void PutField(std::size_t offset, std::size_t width, std::string_view text,
                std::string* value);

  std::array<char, kTagSize> tag_{};
  bool hasTag_ = false;
  std::string fileName_;
  std::string title_;
  std::string artist_;
  std::string album_;
  std::string year_;
  std::string comment_;
  int genre_ = 0;
};

}  // namespace gorvan
