#include "catalog/classData.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "catalog/ChainOps.h"
#include "catalog/Cipher.h"
#include "catalog/ErrorReporter.h"
#include "catalog/OleDate.h"

namespace gorvan {
namespace {

constexpr const char* kDefaultFont = "Arabic Transparent";

bool LinkOk(int32_t id, size_t size, int64_t length) {
  return id == 0 || (id >= 1 && static_cast<int64_t>(id) - 1 + static_cast<int64_t>(size) <= length);
}

bool TextOk(const TextRef& t, int64_t length) {
  if (t.count == 0) return true;
  return t.count > 0 && t.pos >= 1 && static_cast<int64_t>(t.pos) - 1 + t.count <= length;
}

// Everything in the header that later reads will follow must lie inside the file.
Status ValidateHeader(const HeaderRecord& h, int64_t length) {
  if (length < static_cast<int64_t>(HeaderRecord::kSize)) {
    return Status::Corruption("the file is shorter than a catalog header");
  }
  if (!LinkOk(h.firstCd, CdRecord::kSize, length) || !LinkOk(h.lastCd, CdRecord::kSize, length)) {
    return Status::Corruption("the header's disc links point outside the file");
  }
  if (!LinkOk(h.firstCat, CatRecord::kSize, length) ||
      !LinkOk(h.lastCat, CatRecord::kSize, length)) {
    return Status::Corruption("the header's category links point outside the file");
  }
  if (h.cdCount < 0 || h.catCount < 0) return Status::Corruption("the header's counts are negative");
  for (const TextRef* t : {&h.font, &h.name, &h.notes, &h.extra, &h.iconKey, &h.password}) {
    if (!TextOk(*t, length)) return Status::Corruption("a header text lies outside the file");
  }
  return Status::OK();
}

}  // namespace

classData::classData() = default;
classData::~classData() { CloseFiles(); }

TextEncoding classData::GetEncoding() const {
  return file_ ? file_->encoding() : newEncoding_;
}

std::string classData::GetErrorText() const {
  switch (error_) {
    case kNoError:
      return {};
    case kWrongVersion:
      return kWrongVersionMessage;
    case kDataFileError:
      return std::string(kDataFileErrorMessage) +
             (errorDetail_.empty() ? "" : "\n(" + errorDetail_ + ")");
    case kNoFileName:
      return "No catalog file name was given";
    case kPasswordNotGiven:
      return "Invalid or Wrong Password !!";
    default:
      return errorDetail_;
  }
}

Status classData::status() const {
  if (!file_) return Status::NotFound("no catalog is open");
  return file_->error();
}

bool classData::Refuse(int error, const std::string& detail) {
  error_ = error;
  errorDetail_ = detail;
  // detail may live in the file object (its error message): use the copy.
  file_.reset();
  if (error == kDataFileError || error == kCannotOpen) {
    ReportError("classData.OpenFiles", error, fileName_ + ": " + errorDetail_);
  }
  return false;
}

bool classData::OpenFiles(const std::string& name, bool askPassword, bool setDefaults) {
  CloseFiles();
  error_ = kNoError;
  errorDetail_.clear();
  fileName_ = name;
  if (name.empty()) return Refuse(kNoFileName, {});

  struct stat st;
  const bool exists = ::stat(name.c_str(), &st) == 0;
  std::unique_ptr<FileIO> io;
  Status s = OpenPosixFile(name, /*create=*/!exists, /*lock=*/true, &io);
  if (!s.ok()) return Refuse(kCannotOpen, s.message());
  return OpenWith(std::move(io), name, exists, askPassword, setDefaults);
}

bool classData::OpenWith(std::unique_ptr<FileIO> io, const std::string& name, bool exists,
                         bool askPassword, bool setDefaults) {
  CloseFiles();
  error_ = kNoError;
  errorDetail_.clear();
  fileName_ = name;
  std::unique_ptr<DataFile> data;
  Status s = DataFile::Wrap(std::move(io), &data);
  if (!s.ok()) return Refuse(kDataFileError, s.message());
  file_ = std::make_unique<CatalogFile>(std::move(data), name);

  if (!exists) {
    CreateHeader();
  } else {
    // Read what there is of the header; a short file reads as zeros beyond its
    // end, so that a file that is not a catalog at all fails the signature test.
    uint8_t buf[HeaderRecord::kSize] = {};
    const int64_t length = file_->Length();
    const auto n = static_cast<size_t>(std::min<int64_t>(length, HeaderRecord::kSize));
    s = file_->data().Read(1, buf, n);
    if (!s.ok()) return Refuse(kDataFileError, s.message());
    file_->header() = HeaderRecord::DecodeFrom(buf);
    const HeaderRecord& h = file_->header();
    if (!h.HasSignature() || h.versionMajor != HeaderRecord::kVersionMajor ||
        h.versionMinor != HeaderRecord::kVersionMinor) {
      return Refuse(kWrongVersion, {});
    }
    s = ValidateHeader(h, length);
    if (!s.ok()) return Refuse(kDataFileError, s.message());
  }
  file_->UpdateEncoding();
  file_->header().lastOpened = OleDateNow();

  if (askPassword) {
    const std::string password = GetDataPassword();
    if (!file_->ok()) return Refuse(kDataFileError, file_->error().message());
    if (!password.empty() && !(passwordPrompt_ && passwordPrompt_(password))) {
      return Refuse(kPasswordNotGiven, {});
    }
  }

  if (!file_->WriteHeader()) return Refuse(kCannotOpen, file_->error().message());
  if (!exists && setDefaults) {
    SetDataExtra("");
    SetDataFont("");
    SetDataIconKey("");
    SetDataName(kDefaultCatalogName);
    SetDataNotes("");
    SetDataPassword("");
  }
  if (!exists && !Flush()) return Refuse(kCannotOpen, file_->error().message());
  return true;
}

void classData::CreateHeader() {
  HeaderRecord& h = file_->header();
  h = HeaderRecord{};
  h.signature = {'K', 'T', 'R', 'V'};
  h.versionMajor = HeaderRecord::kVersionMajor;
  h.versionMinor = HeaderRecord::kVersionMinor;
  h.versionRevision = GORVAN_VERSION_REVISION;
  h.created = OleDateNow();
  h.bytesUsed = static_cast<int32_t>(HeaderRecord::kSize);
  if (newEncoding_ == TextEncoding::kUtf8) {
    std::memcpy(h.reserved.data(), "UTF8", 4);
  }
}

void classData::CloseFiles() {
  if (file_ && !readOnly_) (void)file_->data().Flush();
  file_.reset();
  readOnly_ = false;
}

bool classData::recordWrite() { return file_->WriteHeader(); }

bool classData::Flush() {
  if (!file_) return false;
  const Status s = file_->data().Flush();
  return s.ok() ? true : file_->Fail(s);
}

bool classData::Sync() {
  if (!file_) return false;
  const Status s = file_->data().Sync();
  return s.ok() ? true : file_->Fail(s);
}

std::string classData::Text(const TextRef& ref) const {
  std::string out;
  file_->ReadText(ref, &out);
  return out;
}

bool classData::SetText(TextRef* ref, const std::string& value) {
  int64_t delta = 0;
  if (!file_->WriteText(value, ref, &delta)) return false;
  file_->header().bytesUsed = static_cast<int32_t>(file_->header().bytesUsed + delta);
  return file_->WriteHeader();
}

std::string classData::GetDataPassword() const {
  std::string raw;
  file_->ReadRawText(file_->header().password, &raw);
  return Cipher::Unscramble(raw);
}

bool classData::SetDataPassword(const std::string& clear) {
  int64_t delta = 0;
  HeaderRecord& h = file_->header();
  if (!file_->WriteRawText(Cipher::Scramble(clear), &h.password, &delta)) return false;
  h.bytesUsed = static_cast<int32_t>(h.bytesUsed + delta);
  return file_->WriteHeader();
}

std::string classData::DisplayFont() const {
  const std::string font = file_ ? GetDataFont() : std::string();
  return font.empty() ? kDefaultFont : font;
}

bool classData::GetCdAppend(classCd& cd) { return cd.recordAdd() != 0; }

bool classData::GetCdCommit(classCd& cd) {
  // The disc's records reach the disk before anything links to them, so a
  // crash at any moment leaves garbage at worst, never a broken chain.
  if (!Sync()) return false;
  HeaderRecord& h = file_->header();
  CdRecord& rec = cd.record();
  if (!LinkAtEnd(*file_, rec, &h.firstCd, &h.lastCd)) return false;
  h.cdCount += 1;
  return file_->WriteHeader() && Flush();
}

bool classData::GetCdDelete(int32_t id) {
  HeaderRecord& h = file_->header();
  CdRecord removed;
  if (!UnlinkFromChain(*file_, id, &h.firstCd, &h.lastCd, &removed)) return false;
  h.cdCount -= 1;
  return file_->WriteHeader() && Flush();
}

bool classData::GetCatAppend(classCat& cat) {
  return cat.recordAdd() != 0 && cat.SetCatCreated(OleDateNow());
}

bool classData::GetCatCommit(classCat& cat) {
  HeaderRecord& h = file_->header();
  if (!LinkAtEnd(*file_, cat.record(), &h.firstCat, &h.lastCat)) return false;
  h.catCount += 1;
  return file_->WriteHeader() && Flush();
}

bool classData::GetCatDelete(int32_t id) {
  HeaderRecord& h = file_->header();
  CatRecord removed;
  if (!UnlinkFromChain(*file_, id, &h.firstCat, &h.lastCat, &removed)) return false;
  h.catCount -= 1;
  return file_->WriteHeader() && Flush();
}

Status classData::CalcPhysicalSize(PhysicalSize* out, JobControl& job) {
  ThreadHandover handover(*this);
  *out = PhysicalSize{};
  out->bytesUsed = file_->header().bytesUsed;
  classCat cat(file_.get());
  for (cat.MoveFirst(); !cat.isEof() && !job.StopRequested(); cat.MoveNext()) {
    out->bytesUsed += cat.GetCatBytesUsed();
  }
  classCd cd(file_.get());
  JobProgress p;
  p.maximum = GetCdCount();
  for (cd.MoveFirst(); !cd.isEof() && !job.StopRequested(); cd.MoveNext()) {
    out->bytesUsed += cd.GetBytesUsed();
    ++p.value;
    if (job.Due()) job.Report(p);
  }
  out->fileLength = file_->Length();
  out->garbage = out->fileLength - out->bytesUsed;
  job.Final(p);
  if (!file_->ok()) return file_->error();
  return job.StopRequested() ? Status::Cancelled() : Status::OK();
}

namespace {

Status NoSuch(const char* kind, int32_t id) {
  return Status::NotFound(std::string("There is no ") + kind + " " + std::to_string(id));
}

}  // namespace

Status classData::FindCat(int32_t id, classCat* cat) {
  // Only ids of the live chain count: an id into the middle of a record, or
  // of an unlinked one, is no category.
  for (cat->MoveFirst(); !cat->isEof(); cat->MoveNext()) {
    if (cat->GetCatId() == id) return Status::OK();
  }
  if (!file_->ok()) return file_->error();
  return NoSuch("category", id);
}

Status classData::FindCd(int32_t id, classCd* cd) {
  for (cd->MoveFirst(); !cd->isEof(); cd->MoveNext()) {
    if (cd->GetCdId() == id) return Status::OK();
  }
  if (!file_->ok()) return file_->error();
  return NoSuch("disc", id);
}

Status classData::FindDir(int32_t id, classCd* cd) {
  DirRecord probe;
  if (!file_->TryRead(id, &probe)) return file_->ok() ? NoSuch("folder", id) : file_->error();
  if (Status s = FindCd(probe.cdId, cd); !s.ok()) {
    return s.IsNotFound() ? NoSuch("folder", id) : s;
  }
  for (classDir& dir = cd->GetDirFirst(); !dir.isEof(); dir.MoveNext()) {
    if (dir.GetDirId() == id) return Status::OK();
  }
  if (!file_->ok()) return file_->error();
  return NoSuch("folder", id);
}

Status classData::FindFile(int32_t id, classCd* cd, ClassFile* file) {
  FileRecord probe;
  if (!file_->TryRead(id, &probe)) return file_->ok() ? NoSuch("file", id) : file_->error();
  if (Status s = FindDir(probe.dirId, cd); !s.ok()) {
    return s.IsNotFound() ? NoSuch("file", id) : s;
  }
  const DirRecord& dir = cd->dirs().record();
  file->uSetDefaults(file_.get(), dir.id, dir.cdId, dir.firstFile, dir.lastFile);
  for (file->MoveFirst(); !file->isEof(); file->MoveNext()) {
    if (file->GetFileId() == id) return Status::OK();
    if (!file->IsArchive()) continue;
    // An archive member: its own chain hangs off the archive file.
    ClassFile& members = file->GetZipFirst();
    for (; !members.isEof(); members.MoveNext()) {
      if (members.GetFileId() == id) break;
    }
    if (!members.isEof()) {
      const FileRecord archive = file->record();
      file->SetArchiveDefaults(file_.get(), archive);
      return file->recordGet(id) ? Status::OK() : file_->error();
    }
  }
  if (!file_->ok()) return file_->error();
  return NoSuch("file", id);
}

std::unique_ptr<classData> classData::OpenReader(Status* status) {
  *status = Status::OK();
  if (!file_) {
    *status = Status::NotFound("no catalog is open");
    return nullptr;
  }
  // What the writer holds in its buffer must be in the file for the reader.
  if (!Flush()) {
    *status = file_->error();
    return nullptr;
  }
  std::unique_ptr<FileIO> io;
  std::unique_ptr<DataFile> data;
  if (Status s = OpenPosixFileForReading(fileName_, &io); !s.ok()) {
    *status = s;
    return nullptr;
  }
  if (Status s = DataFile::Wrap(std::move(io), &data); !s.ok()) {
    *status = s;
    return nullptr;
  }
  auto reader = std::make_unique<classData>();
  reader->fileName_ = fileName_;
  reader->readOnly_ = true;
  reader->file_ = std::make_unique<CatalogFile>(std::move(data), fileName_);
  reader->file_->header() = file_->header();
  reader->file_->UpdateEncoding();
  return reader;
}

bool classData::ReloadHeader() {
  if (!file_ || !readOnly_) return false;
  if (Status s = file_->data().Refresh(); !s.ok()) return file_->Fail(s);
  file_->ClearError();
  HeaderRecord h;
  if (!file_->Read(1, &h)) return false;
  if (Status s = ValidateHeader(h, file_->Length()); !s.ok()) return file_->Fail(s);
  file_->header() = h;
  file_->UpdateEncoding();
  return true;
}

}  // namespace gorvan
