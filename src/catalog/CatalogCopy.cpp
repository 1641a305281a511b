#include "catalog/CatalogCopy.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "catalog/ChainOps.h"

namespace gorvan {

CatalogCopy::CatalogCopy(classData& source, classData& target, JobControl& job)
    : source_(source),
      target_(target),
      src_(source.file()),
      dst_(target.file()),
      job_(job),
      sameEncoding_(source.GetEncoding() == target.GetEncoding()) {}

bool CatalogCopy::CopyText(const TextRef& in, TextRef* out, int64_t* delta) {
  *out = TextRef{};
  if (in.count == 0) return true;
  if (!ReadForCopy(in, &text_)) return false;
  return sameEncoding_ ? dst_->WriteRawText(text_, out, delta) : dst_->WriteText(text_, out, delta);
}

Status CatalogCopy::Failure() const {
  // A read failure means the source is damaged; a write failure is the
  // target's (a full disk, rights).
  if (!src_->ok()) return src_->error();
  if (!dst_->ok()) return dst_->error();
  return Status::IOError("the catalog copy failed");
}

void CatalogCopy::Step() {
  ++progress_.value;
  if (job_.Due()) job_.Report(progress_);
}

Status CatalogCopy::CopyHeaderTexts() {
  HeaderRecord& from = src_->header();
  HeaderRecord& to = dst_->header();
  int64_t delta = 0;
  const bool ok = CopyText(from.extra, &to.extra, &delta) &&
                  CopyText(from.iconKey, &to.iconKey, &delta) &&
                  CopyText(from.name, &to.name, &delta) &&
                  CopyText(from.notes, &to.notes, &delta) &&
                  CopyText(from.password, &to.password, &delta);
  if (!ok) return Failure();
  to.bytesUsed = static_cast<int32_t>(to.bytesUsed + delta);
  if (!dst_->WriteHeader()) return Failure();
  return Status::OK();
}

Status CatalogCopy::CopyCategories() {
  // First pass: every category with its texts; the parent still holds the
  // source's id.
  std::vector<int32_t> added;
  classCat from(src_);
  for (from.MoveFirst(); !from.isEof(); from.MoveNext()) {
    const CatRecord& r = from.record();
    classCat to = target_.CatCursor();
    if (!target_.GetCatAppend(to) || !dst_->ok()) return Failure();
    CatRecord& n = to.record();
    int64_t delta = 0;
    if (!CopyText(r.name, &n.name, &delta) || !CopyText(r.notes, &n.notes, &delta) ||
        !CopyText(r.extra, &n.extra, &delta) || !CopyText(r.iconKey, &n.iconKey, &delta)) {
      return Failure();
    }
    n.created = r.created;
    n.parent = r.parent;
    n.bytesUsed = static_cast<int32_t>(CatRecord::kSize + delta);
    if (!to.RecordUpdate() || !target_.GetCatCommit(to)) return Failure();
    catIds_.emplace_back(r.id, n.id);
    added.push_back(n.id);
    Step();
  }
  if (!src_->ok()) return Failure();

  // Second pass: parents through the table of old ids, sorted for the search.
  std::sort(catIds_.begin(), catIds_.end());
  for (int32_t id : added) {
    CatRecord r;
    if (!dst_->Read(id, &r)) return Failure();
    if (r.parent == 0) continue;
    r.parent = TranslateCategory(r.parent);
    if (!dst_->Write(r)) return Failure();
  }
  return Status::OK();
}

int32_t CatalogCopy::TranslateCategory(int32_t oldId) const {
  if (oldId == 0) return 0;
  auto it = std::lower_bound(catIds_.begin(), catIds_.end(), std::make_pair(oldId, INT32_MIN));
  // A link to a category that is not in the chain would hide the object; it
  // goes to the top level instead.
  if (it == catIds_.end() || it->first != oldId) return 0;
  return it->second;
}

bool CatalogCopy::ReadForCopy(const TextRef& in, std::string* out) {
  return sameEncoding_ ? src_->ReadRawText(in, out) : src_->ReadText(in, out);
}

int32_t CatalogCopy::AppendCopy(ClassFile& to, const FileRecord& r) {
  if (!ReadForCopy(r.name, &name_) || !ReadForCopy(r.path, &path_) ||
      !ReadForCopy(r.notes, &notes_) || !ReadForCopy(r.extra, &extra_)) {
    return 0;
  }
  // One write of the new record with all its texts.
  return to.AppendFile(r, {.name = name_,
                           .path = path_,
                           .notes = notes_,
                           .extra = extra_,
                           .raw = sameEncoding_});
}

Status CatalogCopy::CopyDisc(int32_t sourceId) {
  classCd from(src_);
  if (!from.recordGet(sourceId)) return Failure();
  const CdRecord& r = from.record();
  progress_.caption = kProcessingCaption + from.GetCdName();

  classCd to = target_.CdCursor();
  if (!target_.GetCdAppend(to) || !dst_->ok()) return Failure();
  CdRecord& n = to.record();
  int64_t textBytes = 0;
  if (!CopyText(r.name, &n.name, &textBytes) || !CopyText(r.notes, &n.notes, &textBytes) ||
      !CopyText(r.label, &n.label, &textBytes) ||
      !CopyText(r.basePath, &n.basePath, &textBytes) ||
      !CopyText(r.extra, &n.extra, &textBytes) ||
      !CopyText(r.iconKey, &n.iconKey, &textBytes)) {
    return Failure();
  }
  CopyDiscValues(r, &n);
  n.category = TranslateCategory(r.category);
  if (!to.RecordUpdate()) return Failure();

  for (classDir& dir = from.GetDirFirst(); !dir.isEof(); from.GetDirNext()) {
    const DirRecord& dr = dir.record();
    classDir& nd = to.GetDirAppend();
    if (nd.GetDirId() == 0 || !dst_->ok()) return Failure();
    DirRecord& ndr = nd.record();
    ndr.size = dr.size;
    ndr.date = dr.date;
    ndr.attr = dr.attr;
    ndr.countOfFiles = dr.countOfFiles;
    ndr.countOfDirs = dr.countOfDirs;
    ndr.countOfFilesDirect = dr.countOfFilesDirect;
    ndr.reserved = dr.reserved;
    if (!CopyText(dr.path, &ndr.path, &textBytes) || !CopyText(dr.name, &ndr.name, &textBytes) ||
        !CopyText(dr.notes, &ndr.notes, &textBytes) ||
        !CopyText(dr.extra, &ndr.extra, &textBytes)) {
      return Failure();
    }
    nd.GetFileAppendStart();
    for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext()) {
      ClassFile& nf = nd.files();
      if (AppendCopy(nf, f.record()) == 0) return Failure();
      if (f.IsArchive()) {
        nf.GetZipAppendStart();
        for (ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) {
          if (AppendCopy(nf.GetZipMembers(), m.record()) == 0) return Failure();
        }
        if (!nf.GetZipAppendFinish()) return Failure();
      }
      if (job_.StopRequested()) return Status::Cancelled();
    }
    if (!nd.GetFileAppendFinish()) return Failure();
    Step();
    if (job_.StopRequested()) return Status::Cancelled();
  }
  // A walk that ended early on a damaged record must not pass for a copy.
  if (!src_->ok()) return Failure();
  if (!to.GetDirAppendFinish() || !to.UpdateBytesUsed(textBytes)) return Failure();
  if (!Commit(to)) return Failure();
  newDiscs_.push_back(to.GetCdId());
  Step();
  return Status::OK();
}

bool CatalogCopy::Commit(classCd& disc) {
  // Into the open catalog a disc is linked the safe way: its records synced
  // first. A fresh copy is synced as a whole before it takes anyone's place,
  // so syncing it disc by disc would only make the copy wait for the disk.
  if (!freshTarget_) return target_.GetCdCommit(disc);
  HeaderRecord& h = dst_->header();
  if (!LinkAtEnd(*dst_, disc.record(), &h.firstCd, &h.lastCd)) return false;
  h.cdCount += 1;
  return dst_->WriteHeader();
}

Status CatalogCopy::CopyDiscs() {
  // The ids first: the copy loads other discs of the source on the way.
  std::vector<int32_t> ids;
  classCd cd(src_);
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) ids.push_back(cd.GetCdId());
  if (!src_->ok()) return Failure();
  for (int32_t id : ids) {
    if (job_.StopRequested()) return Status::Cancelled();
    Status s = CopyDisc(id);
    if (!s.ok()) return s;
  }
  return Status::OK();
}

Status CatalogCopy::Run(bool headerTexts) {
  int64_t range = source_.GetCdCount() + source_.GetCatCount();
  {
    classCd cd(src_);
    for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) range += std::max(cd.GetCdNumOfSubdirs(), 0);
  }
  progress_ = JobProgress{};
  progress_.maximum = range;
  job_.Report(progress_);
  Status s = job_.StopRequested() ? Status::Cancelled() : Status::OK();
  if (s.ok() && headerTexts) s = CopyHeaderTexts();
  if (s.ok()) s = CopyCategories();
  if (s.ok()) s = CopyDiscs();
  if (s.ok() && !target_.Flush()) s = Failure();
  warnings_ += dst_->TakeWarnings();
  job_.Final(progress_);
  return s;
}

Status CatalogCopy::CopyAll() {
  freshTarget_ = true;
  return Run(/*headerTexts=*/true);
}

void CatalogCopy::Undo() {
  for (auto it = newDiscs_.rbegin(); it != newDiscs_.rend(); ++it) target_.GetCdDelete(*it);
  for (auto it = catIds_.rbegin(); it != catIds_.rend(); ++it) target_.GetCatDelete(it->second);
  newDiscs_.clear();
  catIds_.clear();
}

Status CatalogCopy::MergeAll() {
  Status s = Run(/*headerTexts=*/false);
  // A cancelled merge takes back what it added; a failed one keeps what is
  // complete, since a failed write leaves the target unable to write anyway.
  if (s.IsCancelled() && dst_->ok()) Undo();
  return s;
}

Status CopyCatalogTo(classData& source, const std::string& target, JobControl& job,
                     std::string* copied, size_t* warnings, const FileOpener& open) {
  copied->clear();
  if (warnings) *warnings = 0;
  if (::unlink(target.c_str()) != 0 && errno != ENOENT) {
    return Status::IOError("Cannot replace " + target + ": " + std::strerror(errno));
  }
  std::unique_ptr<FileIO> io;
  Status s = open ? open(target, &io)
                  : OpenPosixFile(target, /*create=*/true, /*lock=*/true, &io);
  if (!s.ok()) return Status::IOError("Cannot create " + target + ": " + s.message());

  classData copy;
  copy.SetNewCatalogEncoding(source.GetEncoding());
  // No default texts: the header's texts come from the source, so that the
  // copy holds nothing but live bytes.
  if (!copy.OpenWith(std::move(io), target, /*exists=*/false, false, /*setDefaults=*/false)) {
    return Status::IOError("Cannot create " + target + ": " + copy.GetErrorText());
  }
  CatalogCopy walk(source, copy, job);
  s = walk.CopyAll();
  if (warnings) *warnings = walk.warnings();
  if (s.ok() && !copy.Sync()) s = copy.status();
  copy.CloseFiles();
  if (!s.ok()) return s;
  *copied = target;
  return Status::OK();
}

}  // namespace gorvan
