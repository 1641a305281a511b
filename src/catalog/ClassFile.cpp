#include "catalog/ClassFile.h"

#include <algorithm>
#include <utility>

#include "catalog/ChainOps.h"
#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"

namespace gorvan {

namespace {
// A new file or folder record holds this date until the scan sets one.
constexpr double kNewRecordDate = 2.0;
}  // namespace

ClassFile::ClassFile(CatalogFile* file) : ChainCursor(file, "file") {}
ClassFile::~ClassFile() = default;

void ClassFile::uSetDefaults(CatalogFile* file, int32_t dirId, int32_t cdId, int32_t first,
                             int32_t last) {
  file_ = file;
  owner_ = Owner::kFolder;
  ownerId_ = dirId_ = dirId;
  cdId_ = cdId;
  first_ = first;
  last_ = last;
  running_ = nullptr;
  eof_ = true;
}

void ClassFile::SetArchiveDefaults(CatalogFile* file, const FileRecord& archive) {
  uSetDefaults(file, archive.dirId, archive.cdId, archive.firstZip, archive.lastZip);
  owner_ = Owner::kArchive;
  ownerId_ = archive.id;
}

void ClassFile::uSetAppendStart(int32_t dirId, int32_t cdId, int64_t* running) {
  uSetDefaults(file_, dirId, cdId, 0, 0);
  running_ = running;
}

int32_t ClassFile::uRecordAdd() {
  FileRecord fresh;
  fresh.date = kNewRecordDate;
  return AppendFile(fresh, FileTexts{});
}

int32_t ClassFile::AppendFile(const FileRecord& fields, const FileTexts& texts) {
  const int32_t id = file_->AppendBlock(FileRecord::kSize);
  if (id == 0) return 0;
  rec_ = FileRecord{};
  rec_.id = id;
  rec_.dirId = dirId_;
  rec_.cdId = cdId_;
  rec_.size = fields.size;
  rec_.date = fields.date;
  rec_.attr = fields.attr;
  int64_t textBytes = 0;
  const std::pair<TextRef*, std::string_view> order[] = {
      {&rec_.name, texts.name}, {&rec_.path, texts.path},
      {&rec_.notes, texts.notes}, {&rec_.extra, texts.extra}};
  for (const auto& [ref, text] : order) {
    if (text.empty()) continue;
    const bool written = texts.raw ? file_->WriteRawText(text, ref, &textBytes)
                                   : file_->WriteText(text, ref, &textBytes);
    if (!written) return 0;
  }
  // LinkAtEnd writes the block with its links: the only write of the record.
  // The previous link is set here, as the block is linked, so a finished chain
  // already holds what a ReCalculateLinks walk would set.
  if (!LinkAtEnd(*file_, rec_, &first_, &last_)) return 0;
  eof_ = false;
  // The block and its texts count for the disc being built, or else for the
  // owning disc in the file.
  const int64_t bytes = static_cast<int64_t>(FileRecord::kSize) + textBytes;
  if (running_) {
    *running_ += bytes;
    return id;
  }
  return file_->AdjustCdBytes(cdId_, bytes) ? id : 0;
}

bool ClassFile::MoveFirst() { return WalkFrom(first_); }

bool ClassFile::MoveNext() { return WalkNext(); }

std::string ClassFile::GetFileFullName() const {
  std::string path = GetFilePath();
  if (!path.empty() && path.back() != '\\') path += '\\';
  return path + GetFileName();
}

std::string ClassFile::GetFileIconKey() const {
  const std::string name = GetFileName();
  const size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot + 1 == name.size()) return {};
  std::string ext = name.substr(dot + 1);
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return static_cast<char>(c < 128 ? std::tolower(c) : c); });
  return ext;
}

std::string ClassFile::GetFileAudioLength() const {
  return GetExtraValue(GetFileExtra(), kExtraTrackLength);
}

bool ClassFile::ReCalculateLinks() {
  return RecalculatePrevLinks<FileRecord>(*file_, first_, "file");
}

ClassFile& ClassFile::Members() {
  if (!members_) members_ = std::make_unique<ClassFile>(file_);
  return *members_;
}

ClassFile& ClassFile::GetZipFirst() {
  ClassFile& m = Members();
  m.SetArchiveDefaults(file_, rec_);
  m.MoveFirst();
  return m;
}

ClassFile& ClassFile::GetZipNext() {
  ClassFile& m = Members();
  m.MoveNext();
  return m;
}

ClassFile& ClassFile::GetZipGoto(int32_t id) {
  ClassFile& m = Members();
  m.SetArchiveDefaults(file_, rec_);
  m.recordGet(id);
  return m;
}

bool ClassFile::GetZipEof() const { return !members_ || members_->isEof(); }

void ClassFile::GetZipAppendStart() {
  ClassFile& m = Members();
  FileRecord empty = rec_;
  empty.firstZip = empty.lastZip = 0;
  m.SetArchiveDefaults(file_, empty);
  m.running_ = running_;
}

ClassFile& ClassFile::GetZipAppend() {
  ClassFile& m = Members();
  m.uRecordAdd();
  return m;
}

bool ClassFile::GetZipAppendFinish() {
  ClassFile& m = Members();
  rec_.firstZip = m.first_;
  rec_.lastZip = m.last_;
  return RecordUpdate();
}

int64_t ClassFile::SubtreeBytes() {
  int64_t bytes = static_cast<int64_t>(FileRecord::kSize) + TextBytes(rec_);
  if (rec_.firstZip != 0) {
    ClassFile& m = GetZipFirst();
    for (; !m.isEof(); m.MoveNext()) bytes += m.SubtreeBytes();
  }
  return bytes;
}

bool ClassFile::DeleteFile() {
  if (eof_) return false;
  const int64_t bytes = SubtreeBytes();
  if (!file_->ok()) return false;
  FileRecord removed;
  if (owner_ == Owner::kFolder) {
    DirRecord dir;
    if (!file_->Read(ownerId_, &dir)) return false;
    if (!UnlinkFromChain(*file_, rec_.id, &dir.firstFile, &dir.lastFile, &removed)) return false;
    if (!file_->Write(dir)) return false;
    first_ = dir.firstFile, last_ = dir.lastFile;
  } else {
    FileRecord archive;
    if (!file_->Read(ownerId_, &archive)) return false;
    if (!UnlinkFromChain(*file_, rec_.id, &archive.firstZip, &archive.lastZip, &removed)) {
      return false;
    }
    if (!file_->Write(archive)) return false;
    first_ = archive.firstZip, last_ = archive.lastZip;
  }
  eof_ = true;
  if (running_) {
    *running_ -= bytes;
    return true;
  }
  return file_->AdjustCdBytes(removed.cdId, -bytes);
}

bool ClassFile::GetZipRemove(int32_t memberId) {
  ClassFile& m = GetZipGoto(memberId);
  if (m.isEof() || !m.DeleteFile()) return false;
  return recordGet(rec_.id);
}

}  // namespace gorvan
