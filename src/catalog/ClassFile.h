#pragma once
// ClassFile: a cursor over a file chain — the files of one folder, or the
// members of one archive file — holding one file record at a time. An archive
// file hands out a second ClassFile for its members.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "catalog/CatalogFile.h"
#include "catalog/ChainCursor.h"
#include "catalog/Records.h"

namespace gorvan {

class ClassFile : public ChainCursor<FileRecord> {
 public:
  explicit ClassFile(CatalogFile* file = nullptr);
  ~ClassFile();
  ClassFile(const ClassFile&) = delete;
  ClassFile& operator=(const ClassFile&) = delete;

  // Binds the cursor to the file chain of folder dirId on disc cdId.
  void uSetDefaults(CatalogFile* file, int32_t dirId, int32_t cdId, int32_t first, int32_t last);
  // Binds the cursor to the member chain of archive file archiveId.
  void SetArchiveDefaults(CatalogFile* file, const FileRecord& archive);
  // Starts appending to an empty chain of folder dirId (the scan, the copy).
  // Blocks and texts add to *running, the bytes-used count of the disc being built.
  void uSetAppendStart(int32_t dirId, int32_t cdId, int64_t* running);
  int32_t uGetFileRecFirst() const { return first_; }
  int32_t uGetFileRecLast() const { return last_; }
  int64_t uGetSpaceUsed() const { return running_ ? *running_ : 0; }

  // Cursor operations.
  // Appends a new file block at the end of the file and of the chain; loaded.
  int32_t uRecordAdd();
  // The texts of a record that AppendFile writes; an empty one stores nothing.
  struct FileTexts {
    std::string_view name{};
    std::string_view path{};
    std::string_view notes{};
    std::string_view extra{};
    // The texts are stored bytes in this catalog's encoding already (a copy
    // between catalogs of one encoding), not UTF-8 to be encoded.
    bool raw = false;
  };
  // Appends a file block at the end of the file and of the chain, holding the
  // size, date and attributes of `fields` and `texts` (appended after the
  // block in the order name, path, notes, extra), and writes the block once
  // rather than once per setter: the scan's path for millions of files.
  // On success returns the new id and the record is loaded. On failure
  // returns 0 and the catalog holds the error.
  int32_t AppendFile(const FileRecord& fields, const FileTexts& texts);
  bool MoveFirst();
  bool MoveNext();

  int32_t GetFileId() const { return rec_.id; }
  int32_t GetFileDirId() const { return rec_.dirId; }
  int32_t GetFileCdId() const { return rec_.cdId; }
  int32_t GetFileNextId() const { return rec_.next; }
  int32_t GetFilePrevId() const { return rec_.prev; }
  std::string GetFileName() const { return Text(rec_.name); }
  // Fills out, reusing its storage: for walks over millions of files.
  bool GetFileName(std::string* out) const { return file_->ReadText(rec_.name, out); }
  std::string GetFilePath() const { return Text(rec_.path); }
  // The path, a backslash unless the path already ends in one, and the name.
  std::string GetFileFullName() const;
  std::string GetFileNotes() const { return Text(rec_.notes); }
  std::string GetFileExtra() const { return Text(rec_.extra); }
  // The lower-case extension of the name ("" when it has none): the key the
  // file-type icon tables are looked up by.
  std::string GetFileIconKey() const;
  // The "AL" value of the extra data: an audio track's length.
  std::string GetFileAudioLength() const;
  double GetFileSize() const { return rec_.size; }
  double GetFileDate() const { return rec_.date; }
  int32_t getFileAttr() const { return rec_.attr; }

  bool SetFileName(const std::string& v) { return SetText(&rec_.name, v); }
  bool SetFileNotes(const std::string& v) { return SetText(&rec_.notes, v); }
  bool SetFileExtra(const std::string& v) { return SetText(&rec_.extra, v); }
  bool setFilePath(const std::string& v) { return SetText(&rec_.path, v); }
  bool setFileSize(double v) { return rec_.size = v, RecordUpdate(); }
  bool setFileDate(double v) { return rec_.date = v, RecordUpdate(); }
  bool setFileAttr(int32_t v) { return rec_.attr = v, RecordUpdate(); }

  // Takes the loaded file out of its chain (with its members); its bytes leave
  // the disc's bytes used and stay in the file as garbage.
  bool DeleteFile();
  // Sets every previous link of the chain from its first member: a repair.
  // Chains built by appending have theirs set already.
  bool ReCalculateLinks();

  // Archive members of the loaded file.
  bool IsArchive() const { return rec_.firstZip != 0; }
  ClassFile& GetZipFirst();
  ClassFile& GetZipNext();
  ClassFile& GetZipGoto(int32_t id);
  bool GetZipEof() const;
  void GetZipAppendStart();
  ClassFile& GetZipAppend();
  // The members' cursor, to append with AppendFile between GetZipAppendStart
  // and GetZipAppendFinish.
  ClassFile& GetZipMembers() { return Members(); }
  bool GetZipAppendFinish();
  bool GetZipRemove(int32_t memberId);


 private:
  enum class Owner { kFolder, kArchive };

  bool SetText(TextRef* ref, const std::string& value) { return SetDiscText(ref, value, running_); }
  ClassFile& Members();
  int64_t SubtreeBytes();

  Owner owner_ = Owner::kFolder;
  int32_t ownerId_ = 0;
  int32_t dirId_ = 0;
  int32_t cdId_ = 0;
  int32_t first_ = 0;
  int32_t last_ = 0;
  int64_t* running_ = nullptr;  // set while appending
  std::unique_ptr<ClassFile> members_;
};

}  // namespace gorvan
