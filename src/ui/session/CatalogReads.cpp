#include "ui/session/CatalogReads.h"

#include "catalog/Attributes.h"
#include "catalog/ExtraData.h"

namespace gorvan::ui {
namespace {

// How often a long read looks at its stop token.
constexpr int kStopStride = 1024;

Status Outcome(classData& data, const std::stop_token& stop) {
  if (!data.ok()) return data.status();
  return stop.stop_requested() ? Status::Cancelled() : Status::OK();
}

void FillDisc(const classCd& cd, DiscRow* d) {
  const CdRecord& r = cd.record();
  d->id = r.id;
  d->category = r.category;
  d->mediaType = r.mediaType;
  d->typeExt = cd.GetCdTypeExt();
  d->folders = r.numOfSubdirs;
  d->files = r.numOfFiles;
  d->diskId = r.diskId;
  d->bytesUsed = r.bytesUsed;
  d->totalSize = r.totalSize;
  d->freeSpace = r.freeSpace;
  d->lastScanned = r.lastScanned;
  d->name = cd.GetCdName();
  d->notes = cd.GetCdNotes();
  d->label = cd.GetCdLabel();
  d->basePath = cd.GetCdBasepath();
  d->iconKey = cd.GetCdIconKey();
  d->extra = cd.GetCdExtra();
  d->artist = GetExtraValue(d->extra, kExtraAudioArtist);
}

void FillFolder(const classDir& dir, int32_t treeNode, EntryRow* e) {
  const DirRecord& r = dir.record();
  e->kind = NodeKind::kFolder;
  e->id = r.id;
  e->discId = r.cdId;
  e->attr = r.attr;
  e->treeNode = treeNode;
  e->files = r.countOfFiles;
  e->folders = r.countOfDirs;
  e->size = r.size;
  e->date = r.date;
  dir.GetDirName(&e->name);
  if (r.notes.count > 0) e->notes = dir.GetDirNotes();
  if (r.extra.count > 0) e->extra = dir.GetDirExtra();
}

void FillFile(const ClassFile& f, NodeKind kind, EntryRow* e) {
  const FileRecord& r = f.record();
  e->kind = kind;
  e->id = r.id;
  e->discId = r.cdId;
  e->attr = r.attr;
  e->size = r.size;
  e->date = r.date;
  e->archive = r.firstZip != 0;
  f.GetFileName(&e->name);
  if (r.notes.count > 0) e->notes = f.GetFileNotes();
  if (r.extra.count > 0) e->extra = f.GetFileExtra();
  if (kind == NodeKind::kArchiveMember && r.path.count > 0) e->path = f.GetFilePath();
}

// Walks a file chain the cursor is bound to.
void WalkFiles(ClassFile& files, NodeKind kind, const std::stop_token& stop,
               std::vector<EntryRow>* rows) {
  int n = 0;
  for (files.MoveFirst(); !files.isEof(); files.MoveNext()) {
    if (++n % kStopStride == 0 && stop.stop_requested()) break;
    FillFile(files, kind, &rows->emplace_back());
  }
}

}  // namespace

CatalogSnapshot CatalogReads::Catalog(classData& data, const std::stop_token& stop) {
  CatalogSnapshot s;
  s.name = data.GetDataName();
  s.categories.reserve(static_cast<size_t>(std::max(0, data.GetCatCount())));
  classCat cat = data.CatCursor();
  for (cat.MoveFirst(); !cat.isEof() && !stop.stop_requested(); cat.MoveNext()) {
    CategoryRow& c = s.categories.emplace_back();
    c.id = cat.GetCatId();
    c.parent = cat.GetCatParentId();
    c.created = cat.GetCatCreated();
    c.name = cat.GetCatName();
    c.notes = cat.GetCatNotes();
  }
  s.discs.reserve(static_cast<size_t>(std::max(0, data.GetCdCount())));
  classCd cd = data.CdCursor();
  for (cd.MoveFirst(); !cd.isEof() && !stop.stop_requested(); cd.MoveNext()) {
    FillDisc(cd, &s.discs.emplace_back());
  }
  s.status = Outcome(data, stop);
  return s;
}

Status CatalogReads::Disc(classData& data, int32_t id, DiscRow* out) {
  classCd cd = data.CdCursor();
  CdRecord probe;
  if (!data.file()->TryRead(id, &probe)) {
    return data.ok() ? Status::NotFound("There is no disc " + std::to_string(id)) : data.status();
  }
  if (!cd.MoveAbsolute(id)) return data.status();
  FillDisc(cd, out);
  return data.ok() ? Status::OK() : data.status();
}

EntryRows CatalogReads::Folder(classData& data, int32_t folderId,
                               const std::vector<std::pair<int32_t, int32_t>>& subfolders,
                               const std::stop_token& stop) {
  EntryRows out;
  CatalogFile* file = data.file();
  classDir dir(file);
  int n = 0;
  for (const auto& [id, node] : subfolders) {
    if (++n % kStopStride == 0 && stop.stop_requested()) break;
    // Ids come from the disc's tree, read from this catalog a moment ago; one
    // that is no folder now (the catalog changed) is left out.
    if (!file->TryRead(id, &dir.record())) continue;
    FillFolder(dir, node, &out.rows.emplace_back());
  }
  if (folderId != 0 && !stop.stop_requested()) {
    DirRecord r;
    if (file->TryRead(folderId, &r)) {
      ClassFile files(file);
      files.uSetDefaults(file, r.id, r.cdId, r.firstFile, r.lastFile);
      out.rows.reserve(out.rows.size() + static_cast<size_t>(std::max(0, r.countOfFilesDirect)));
      WalkFiles(files, NodeKind::kFile, stop, &out.rows);
    }
  }
  out.status = Outcome(data, stop);
  return out;
}

EntryRows CatalogReads::Members(classData& data, int32_t archiveId, const std::stop_token& stop) {
  EntryRows out;
  CatalogFile* file = data.file();
  FileRecord archive;
  if (file->TryRead(archiveId, &archive) && archive.firstZip != 0) {
    ClassFile members(file);
    members.SetArchiveDefaults(file, archive);
    WalkFiles(members, NodeKind::kArchiveMember, stop, &out.rows);
  }
  out.status = Outcome(data, stop);
  return out;
}

Status CatalogReads::Entry(classData& data, NodeKind kind, int32_t id, EntryRow* out) {
  CatalogFile* file = data.file();
  if (kind == NodeKind::kFolder) {
    classDir dir(file);
    if (!file->TryRead(id, &dir.record())) {
      return data.ok() ? Status::NotFound("There is no folder " + std::to_string(id))
                       : data.status();
    }
    FillFolder(dir, -1, out);
    out->path = dir.GetDirPath();
  } else {
    ClassFile f(file);
    if (!file->TryRead(id, &f.record())) {
      return data.ok() ? Status::NotFound("There is no file " + std::to_string(id)) : data.status();
    }
    FillFile(f, kind, out);
  }
  return data.ok() ? Status::OK() : data.status();
}

}  // namespace gorvan::ui
