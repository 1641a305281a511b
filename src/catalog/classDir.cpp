#include "catalog/classDir.h"

#include <algorithm>

#include "catalog/ChainOps.h"

namespace gorvan {

void classDir::SetDefaultCdRec(CatalogFile* file, int32_t cdId, int32_t first, int32_t last) {
  file_ = file;
  cdId_ = cdId;
  first_ = first;
  last_ = last;
  running_ = nullptr;
  eof_ = true;
}

void classDir::SetAppendStart(int32_t cdId, int64_t* running) {
  SetDefaultCdRec(file_, cdId, 0, 0);
  running_ = running;
}

int32_t classDir::recordAdd() {
  const int32_t id = file_->AppendBlock(DirRecord::kSize);
  if (id == 0) return 0;
  rec_ = DirRecord{};
  rec_.id = id;
  rec_.cdId = cdId_;
  rec_.date = 2.0;
  // As for files, the previous link is set while appending, so the finished
  // chain needs no ReCalculateLinks walk.
  if (!LinkAtEnd(*file_, rec_, &first_, &last_)) return 0;
  if (running_) *running_ += DirRecord::kSize;
  eof_ = false;
  return id;
}

bool classDir::MoveFirst() { return WalkFrom(first_); }

bool classDir::MoveNext() { return WalkNext(); }

std::string classDir::GetDirFullName(bool forExport) const {
  std::string full = GetDirPath();
  if (full.empty() || full.back() != '\\') full += '\\';
  full += GetDirName();
  if (forExport) {
    std::replace(full.begin(), full.end(), ' ', '_');
    std::replace(full.begin(), full.end(), '\\', '/');
  }
  return full;
}

bool classDir::updateDirSize(int32_t dirId, double size, int32_t files, int32_t dirs) {
  if (dirId == rec_.id) {
    rec_.size += size;
    rec_.countOfFiles += files;
    rec_.countOfDirs += dirs;
    return RecordUpdate();
  }
  DirRecord other;
  if (!file_->Read(dirId, &other)) return false;
  other.size += size;
  other.countOfFiles += files;
  other.countOfDirs += dirs;
  return file_->Write(other);
}

bool classDir::ReCalculateLinks() {
  return RecalculatePrevLinks<DirRecord>(*file_, first_, "folder");
}

ClassFile& classDir::GetFileFirst() {
  files_.uSetDefaults(file_, rec_.id, rec_.cdId, rec_.firstFile, rec_.lastFile);
  files_.MoveFirst();
  return files_;
}

ClassFile& classDir::GetFileNext() {
  files_.MoveNext();
  return files_;
}

ClassFile& classDir::GetFileGoto(int32_t id) {
  files_.uSetDefaults(file_, rec_.id, rec_.cdId, rec_.firstFile, rec_.lastFile);
  files_.recordGet(id);
  return files_;
}

void classDir::GetFileAppendStart() {
  files_.uSetDefaults(file_, rec_.id, rec_.cdId, 0, 0);
  files_.uSetAppendStart(rec_.id, rec_.cdId, running_);
}

ClassFile& classDir::GetFileAppend() {
  files_.uRecordAdd();
  return files_;
}

bool classDir::GetFileAppendFinish() {
  rec_.firstFile = files_.uGetFileRecFirst();
  rec_.lastFile = files_.uGetFileRecLast();
  return RecordUpdate();
}

bool classDir::GetFileRemove(int32_t fileId) {
  ClassFile& f = GetFileGoto(fileId);
  if (f.isEof() || f.GetFileDirId() != rec_.id || !f.DeleteFile()) return false;
  return recordGet(rec_.id);
}

bool classDir::DeleteDirectory() {
  if (eof_) return false;
  int64_t bytes = static_cast<int64_t>(DirRecord::kSize) + TextBytes(rec_);
  for (ClassFile& f = GetFileFirst(); !f.isEof(); f.MoveNext()) {
    bytes += static_cast<int64_t>(FileRecord::kSize) + TextBytes(f.record());
    if (f.IsArchive()) {
      for (ClassFile& m = f.GetZipFirst(); !m.isEof(); m.MoveNext()) {
        bytes += static_cast<int64_t>(FileRecord::kSize) + TextBytes(m.record());
      }
    }
  }
  if (!file_->ok()) return false;
  CdRecord cd;
  if (!file_->Read(rec_.cdId, &cd)) return false;
  DirRecord removed;
  if (!UnlinkFromChain(*file_, rec_.id, &cd.firstDir, &cd.lastDir, &removed)) return false;
  cd.bytesUsed = static_cast<int32_t>(cd.bytesUsed - bytes);
  first_ = cd.firstDir, last_ = cd.lastDir;
  eof_ = true;
  return file_->Write(cd);
}

}  // namespace gorvan
