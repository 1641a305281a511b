#pragma once
// classDir: a cursor over the folder chain of one disc, holding one folder
// record at a time. Every folder of a disc, at every depth, lies in that one
// chain; the tree is given by the folders' path texts.

#include <cstdint>
#include <string>

#include "catalog/CatalogFile.h"
#include "catalog/ChainCursor.h"
#include "catalog/ClassFile.h"
#include "catalog/Records.h"

namespace gorvan {

class classDir : public ChainCursor<DirRecord> {
 public:
  explicit classDir(CatalogFile* file = nullptr) : ChainCursor(file, "folder"), files_(file) {}

  // Binds the cursor to the folder chain of disc cdId.
  void SetDefaultCdRec(CatalogFile* file, int32_t cdId, int32_t first, int32_t last);
  // Starts appending to the empty chain of disc cdId; blocks and texts add to
  // *running, the bytes-used count of the disc being built.
  void SetAppendStart(int32_t cdId, int64_t* running);
  int32_t getDirRecFirst() const { return first_; }
  int32_t getDirRecLast() const { return last_; }
  int64_t GetSpaceUsed() const { return running_ ? *running_ : 0; }

  int32_t recordAdd();
  bool MoveFirst();
  bool MoveNext();

  int32_t GetDirId() const { return rec_.id; }
  int32_t GetDirCdId() const { return rec_.cdId; }
  int32_t GetDirNextId() const { return rec_.next; }
  int32_t GetDirPrevId() const { return rec_.prev; }
  std::string GetDirName() const { return Text(rec_.name); }
  bool GetDirName(std::string* out) const { return file_->ReadText(rec_.name, out); }
  std::string GetDirPath() const { return Text(rec_.path); }
  // The path, a backslash unless the path already ends in one, and the name.
  // With forExport set, blanks become "_" and backslashes "/".
  std::string GetDirFullName(bool forExport = false) const;
  std::string GetDirNotes() const { return Text(rec_.notes); }
  std::string GetDirExtra() const { return Text(rec_.extra); }
  // Folders have one icon; the key names it.
  std::string GetDirIconKey() const { return "folder"; }
  double GetDirSize() const { return rec_.size; }
  double GetDirDate() const { return rec_.date; }
  int32_t GetDirAttr() const { return rec_.attr; }
  int32_t GetDirCountOfFiles() const { return rec_.countOfFiles; }
  int32_t GetDirCountOfDirs() const { return rec_.countOfDirs; }
  int32_t GetDirCountOfFilesDirect() const { return rec_.countOfFilesDirect; }

  bool setDirCountOfFiles(int32_t v) { return rec_.countOfFiles = v, RecordUpdate(); }
  bool setDirCountOfDirs(int32_t v) { return rec_.countOfDirs = v, RecordUpdate(); }
  bool setDirCountOfFilesDirect(int32_t v) { return rec_.countOfFilesDirect = v, RecordUpdate(); }
  bool setDirSize(double v) { return rec_.size = v, RecordUpdate(); }
  bool setDirAttr(int32_t v) { return rec_.attr = v, RecordUpdate(); }
  bool setDirDate(double v) { return rec_.date = v, RecordUpdate(); }
  bool SetDirName(const std::string& v) { return SetText(&rec_.name, v); }
  bool SetDirNotes(const std::string& v) { return SetText(&rec_.notes, v); }
  bool SetDirExtra(const std::string& v) { return SetText(&rec_.extra, v); }
  bool SetDirPath(const std::string& v) { return SetText(&rec_.path, v); }

  // Adds a subtree's size and counts to folder dirId (the loaded one stays).
  bool updateDirSize(int32_t dirId, double size, int32_t files, int32_t dirs);

  // Takes the loaded folder out of the disc's chain with its files; their bytes
  // leave the disc's bytes used and stay in the file as garbage.
  bool DeleteDirectory();
  // Sets every previous link of the chain from its first member: a repair.
  // Chains built by appending have theirs set already.
  bool ReCalculateLinks();

  // The files of the loaded folder.
  ClassFile& GetFileFirst();
  ClassFile& GetFileNext();
  ClassFile& GetFileGoto(int32_t id);
  bool GetFileEof() const { return files_.isEof(); }
  void GetFileAppendStart();
  ClassFile& GetFileAppend();
  bool GetFileAppendFinish();
  bool GetFileRemove(int32_t fileId);
  ClassFile& files() { return files_; }


 private:
  bool SetText(TextRef* ref, const std::string& value) { return SetDiscText(ref, value, running_); }

  int32_t cdId_ = 0;
  int32_t first_ = 0;
  int32_t last_ = 0;
  int64_t* running_ = nullptr;
  ClassFile files_;
};

}  // namespace gorvan
