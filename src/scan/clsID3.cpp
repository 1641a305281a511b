#include "scan/clsID3.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "catalog/PosixIO.h"
#include "catalog/TextCodec.h"

namespace gorvan {

namespace {

constexpr std::size_t kTitleAt = 3;
constexpr std::size_t kArtistAt = 33;
constexpr std::size_t kAlbumAt = 63;
constexpr std::size_t kYearAt = 93;
constexpr std::size_t kCommentAt = 97;
constexpr std::size_t kGenreAt = 127;

// Closes a descriptor when the scope ends.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0) ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  // Closes now and reports whether the close succeeded (a write error may
  // surface only here).
  bool Close() {
    int fd = fd_;
    fd_ = -1;
    return ::close(fd) == 0;
  }

 private:
  int fd_;
};

// Reads exactly `size` bytes at `offset`; false on error or end of file.
bool PreadAll(int fd, char* buf, std::size_t size, off_t offset) {
  size_t got = 0;
  return ReadFully(fd, buf, size, offset, &got).ok() && got == size;
}

bool PwriteAll(int fd, const char* buf, std::size_t size, off_t offset) {
  return WriteFully(fd, buf, size, offset).ok();
}

// Opens a regular file; -1 for anything else. O_NONBLOCK keeps a FIFO named
// *.mp3 from blocking the open; it has no effect on regular files.
int OpenRegular(const std::string& name, int flags, struct stat* st) {
  int fd = ::open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (fd < 0) return -1;
  if (::fstat(fd, st) != 0 || !S_ISREG(st->st_mode)) {
    ::close(fd);
    errno = EINVAL;
    return -1;
  }
  return fd;
}

}  // namespace

clsID3::clsID3() { tag_.fill('\0'); }

bool clsID3::IsMp3Name(std::string_view name) {
  if (name.size() < 4) return false;
  static constexpr char kExt[] = ".MP3";
  for (std::size_t i = 0; i < 4; ++i) {
    char c = name[name.size() - 4 + i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != kExt[i]) return false;
  }
  return true;
}

std::string clsID3::CleanField(std::string_view raw) {
  std::size_t begin = raw.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  std::size_t end = raw.find_last_not_of(' ');
  std::string out;
  for (char c : raw.substr(begin, end - begin + 1)) {
    if (c != '\0') out += c;
  }
  return out;
}

bool clsID3::LoadFailed() {
  hasTag_ = false;
  fileName_.clear();
  return false;
}

bool clsID3::LoadBlock(const char* block) {
  std::memcpy(tag_.data(), block, kTagSize);
  if (std::memcmp(tag_.data(), "TAG", 3) != 0) return LoadFailed();
  auto field = [this](std::size_t at, std::size_t width) {
    std::string text;
    TextCodec::Windows1252ToUtf8(CleanField(std::string_view(tag_.data() + at, width)), &text);
    return text;
  };
  title_ = field(kTitleAt, kTextFieldSize);
  artist_ = field(kArtistAt, kTextFieldSize);
  album_ = field(kAlbumAt, kTextFieldSize);
  year_ = field(kYearAt, kYearSize);
  comment_ = field(kCommentAt, kTextFieldSize);
  genre_ = static_cast<unsigned char>(tag_[kGenreAt]);
  hasTag_ = true;
  return true;
}

bool clsID3::Load(const std::string& fileName) {
  if (!IsMp3Name(fileName)) return LoadFailed();
  struct stat st;
  Fd fd(OpenRegular(fileName, O_RDONLY, &st));
  if (fd.get() < 0) return LoadFailed();
  if (st.st_size < static_cast<off_t>(kTagSize)) return LoadFailed();
  char block[kTagSize];
  if (!PreadAll(fd.get(), block, kTagSize, st.st_size - static_cast<off_t>(kTagSize))) {
    return LoadFailed();
  }
  if (!LoadBlock(block)) return false;
  fileName_ = fileName;
  return true;
}

bool clsID3::LoadFromMemory(std::string_view contents) {
  fileName_.clear();
  if (contents.size() < kTagSize) return LoadFailed();
  return LoadBlock(contents.data() + contents.size() - kTagSize);
}

bool clsID3::FileStillExists() const {
  if (fileName_.empty()) return false;
  struct stat st;
  return ::stat(fileName_.c_str(), &st) == 0;
}

void clsID3::PutField(std::size_t offset, std::size_t width, std::string_view text,
                      std::string* value) {
  if (!FileStillExists()) return;
  std::string bytes;
  TextCodec::Utf8ToWindows1252(text, &bytes);
  bytes.resize(width, '\0');
  std::memcpy(tag_.data() + offset, bytes.data(), width);
  TextCodec::Windows1252ToUtf8(CleanField(bytes), value);
}

void clsID3::SetTitle(std::string_view text) { PutField(kTitleAt, kTextFieldSize, text, &title_); }
void clsID3::SetArtist(std::string_view text) {
  PutField(kArtistAt, kTextFieldSize, text, &artist_);
}
void clsID3::SetAlbum(std::string_view text) { PutField(kAlbumAt, kTextFieldSize, text, &album_); }
void clsID3::SetYear(std::string_view text) { PutField(kYearAt, kYearSize, text, &year_); }
void clsID3::SetComment(std::string_view text) {
  PutField(kCommentAt, kTextFieldSize, text, &comment_);
}

void clsID3::SetGenre(int genre) {
  if (genre < 0 || genre > 255 || !FileStillExists()) return;
  tag_[kGenreAt] = static_cast<char>(genre);
  genre_ = genre;
}

std::string clsID3::Save() {
  if (!FileStillExists()) return "File not found";
  if (!IsMp3Name(fileName_)) return "Wrong file extension. Must be .mp3";
  struct stat st;
  Fd fd(OpenRegular(fileName_, O_RDWR, &st));
  if (fd.get() < 0) return std::strerror(errno);
  // Only a file that already ends in a tag block is rewritten, and only that
  // block: the audio data before it is never read or written.
  if (st.st_size <= static_cast<off_t>(kTagSize)) return "";
  const off_t at = st.st_size - static_cast<off_t>(kTagSize);
  char head[3];
  if (!PreadAll(fd.get(), head, sizeof head, at)) return std::strerror(errno ? errno : EIO);
  if (std::memcmp(head, "TAG", 3) != 0) return "";
  if (!PwriteAll(fd.get(), tag_.data(), kTagSize, at)) return std::strerror(errno ? errno : EIO);
  if (!fd.Close()) return std::strerror(errno);
  return "";
}

}  // namespace gorvan
