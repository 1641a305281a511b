#include "search/CatalogSearch.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "catalog/Attributes.h"
#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"
#include "catalog/TextFormat.h"
#include "catalog/classData.h"

namespace gorvan {

std::string SearchResult::Key() const {
  std::string key;
  auto part = [&key](const char* tag, int32_t id) {
    if (id == 0) return;
    if (!key.empty()) key += '\\';
    key += tag;
    key += std::to_string(id);
  };
  part("T:", categoryId);
  part("C:", discId);
  part("D:", folderId);
  part("F:", fileId);
  part("Z:", entryId);
  return key;
}

std::string InternalDateKey(double oleDate) {
  std::tm tm{};
  if (!OleDateToTm(oleDate, &tm)) return {};
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04d%02d%02d%02d%02d", tm.tm_year + 1900, tm.tm_mon + 1,
                tm.tm_mday, tm.tm_hour, tm.tm_sec);
  return buf;
}

namespace {

// Catalog paths use "\" on every platform; the results show the platform's
// separator.
void ShowPath(std::string* path) {
#ifndef _WIN32
  std::replace(path->begin(), path->end(), '\\', '/');
#endif
}

// The extra values "T1".."T6" joined by CR LF.
void JoinT1ToT6(const std::string& extra, std::string* out) {
  out->clear();
  for (int i = 0; i < 6; ++i) {
    if (i > 0) out->append("\r\n");
    out->append(GetExtraValue(extra, kExtraT1 + i));
  }
}

// An audio disc's name for the search: album, artist and genre.
void AudioDiscName(const std::string& extra, std::string* out) {
  *out = GetExtraValue(extra, kExtraAudioAlbum);
  out->append("|").append(GetExtraValue(extra, kExtraAudioArtist));
  out->append("|").append(GetExtraValue(extra, kExtraAudioCategory));
}

}  // namespace

// Per-walk state: the reused text buffers and the row handed to the sink.
struct CatalogSearch::Walk {
  const RowSink* onRow = nullptr;
  CatalogFile* file = nullptr;
  bool wantPath = false;
  bool wantNotes = false;
  bool wantExtra = false;

  // The disc being walked.
  int32_t categoryId = 0;
  bool audioDisc = false;
  std::string cdName;
  // The current folder's shown full path, built at its first hit.
  std::string folderPath;
  bool folderPathReady = false;

  std::string name, path, notes, rawExtra, extra;
  // The name under test: a view of the stored bytes when only names are
  // searched in a UTF-8 catalog (no copy per object), else of `name`. A view
  // lasts until the next read of the catalog, so a hit keeps it at once.
  std::string_view nameView;
  bool peekNames = false;
  SearchResult row;

  // The texts the field test needs of a folder, file or archive entry.
  template <typename Record>
  void ReadTexts(const Record& rec) {
    if (peekNames && file->PeekRawText(rec.name, &nameView)) return;
    file->ReadText(rec.name, &name);
    nameView = name;
    if (wantNotes) file->ReadText(rec.notes, &notes);
    if (wantExtra) {
      file->ReadText(rec.extra, &rawExtra);
      JoinT1ToT6(rawExtra, &extra);
    }
  }

  // Makes the name under test a string of its own, before the catalog is read again.
  void KeepName() {
    if (nameView.data() != name.data()) name.assign(nameView);
    nameView = name;
  }

  void StartRow(SearchResult::Kind kind, double date) {
    row.kind = kind;
    row.categoryId = categoryId;
    // Hits in a row often share their date (the files of one folder, one
    // install): the texts of the last date are kept.
    if (date != lastDate) {
      lastDate = date;
      lastDateText = FormatGeneralDate(date);
      lastInternalDate = InternalDateKey(date);
    }
    row.date = lastDateText;
    row.internalDate = lastInternalDate;
    row.cdName = cdName;
  }
  double lastDate = std::numeric_limits<double>::quiet_NaN();
  std::string lastDateText, lastInternalDate;
};

CatalogSearch::CatalogSearch(classData& data) : data_(data) {}

Status CatalogSearch::Check(const SearchOptions& options) {
  if (options.text.empty()) return Status::InvalidArgument(kNothingToSearchFor);
  if (!options.inFileNames && !options.inPathNames && !options.inNames && !options.inComments &&
      !options.inExtra) {
    return Status::InvalidArgument(kSelectSomethingToSearchWithin);
  }
  return Status::OK();
}

Status CatalogSearch::DiscList(int32_t categoryId, std::vector<int32_t>* out) {
  out->clear();
  state_.maximum = 0;
  std::unordered_set<int32_t> wanted;
  if (categoryId != 0) {
    std::unordered_map<int32_t, std::vector<int32_t>> children;
    bool found = false;
    classCat cat = data_.CatCursor();
    for (cat.MoveFirst(); !cat.isEof(); cat.MoveNext()) {
      children[cat.GetCatParentId()].push_back(cat.GetCatId());
      found = found || cat.GetCatId() == categoryId;
    }
    if (!data_.ok()) return data_.status();
    if (!found) return Status::NotFound("There is no category " + std::to_string(categoryId));
    // The category and everything below it; a parent cycle in a damaged
    // catalog cannot loop because each id is taken once.
    std::vector<int32_t> todo{categoryId};
    while (!todo.empty()) {
      const int32_t id = todo.back();
      todo.pop_back();
      if (!wanted.insert(id).second) continue;
      if (auto it = children.find(id); it != children.end()) {
        todo.insert(todo.end(), it->second.begin(), it->second.end());
      }
    }
  }
  classCd cd = data_.CdCursor();
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    if (categoryId == 0 || wanted.count(cd.GetCdCategory()) != 0) {
      out->push_back(cd.GetCdId());
      state_.maximum += std::max(cd.GetCdNumOfFiles(), 0);
    }
  }
  if (!data_.ok()) return data_.status();
  return Status::OK();
}

Status CatalogSearch::Run(const SearchOptions& options, const RowSink& onRow, JobControl& job) {
  // The catalog is this thread's for the search's length.
  classData::ThreadHandover handover(data_);
  state_ = JobProgress{};
  job_ = &job;
  if (Status s = Check(options); !s.ok()) return s;
  if (job.StopRequested()) return Status::Cancelled("The search was stopped");

  std::vector<int32_t> discs;
  if (Status s = DiscList(options.categoryId, &discs); !s.ok()) return s;

  // The category chooser's text, as the form passes it on.
  std::string categoryName = kAllCategories;
  if (options.categoryId != 0) {
    classCat cat(data_.file());
    if (cat.recordGet(options.categoryId)) categoryName = cat.GetCatName();
  }

  criteria_.CreateMatcher();
  criteria_.PrepareSearch(options.text, options.caseSensitive, options.inNames, options.inPathNames,
                          options.inComments, options.inExtra, options.matchMode, categoryName);

  Walk w;
  w.onRow = onRow ? &onRow : nullptr;
  w.file = data_.file();
  w.wantPath = options.inPathNames;
  w.wantNotes = options.inComments;
  w.wantExtra = options.inExtra;
  w.peekNames = !w.wantNotes && !w.wantExtra && data_.GetEncoding() == TextEncoding::kUtf8;

  classCd cd(data_.file());
  for (const int32_t id : discs) {
    if (Stopped()) break;
    if (!cd.recordGet(id)) break;
    if (!SearchDisc(w, cd)) break;
    for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext()) {
      if (Stopped() || !SearchFolder(w, cd, dir)) break;
      for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext()) {
        if (Stopped()) break;
        Step();
        SearchFile(w, cd, dir, f, nullptr);
        if (!options.inZip || !f.IsArchive()) continue;
        for (ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) {
          if (Stopped()) break;
          Step();
          SearchFile(w, cd, dir, m, &f);
        }
      }
    }
    if (!data_.ok()) break;
  }
  criteria_.ReleaseMatcher();
  job.Final(state_);

  if (!data_.ok()) return data_.status();
  if (Stopped()) return Status::Cancelled("The search was stopped");
  return Status::OK();
}

bool CatalogSearch::SearchDisc(Walk& w, classCd& cd) {
  const CdRecord& rec = cd.record();
  CatalogFile& file = *w.file;
  w.categoryId = rec.category;
  w.audioDisc = classCd::TypeExt(rec.mediaType) == kMediaAudioCd;
  file.ReadText(rec.name, &w.cdName);

  // The extra data is needed for an audio disc's name and for the extra field.
  const bool needExtra = w.audioDisc || w.wantExtra;
  if (needExtra) {
    file.ReadText(rec.extra, &w.rawExtra);
  } else {
    w.rawExtra.clear();
  }
  if (w.audioDisc) {
    AudioDiscName(w.rawExtra, &w.name);
  } else {
    w.name = w.cdName;
  }
  if (w.wantPath) file.ReadText(rec.basePath, &w.path);
  if (w.wantNotes) file.ReadText(rec.notes, &w.notes);
  w.extra.clear();
  if (w.wantExtra && !w.rawExtra.empty()) JoinT1ToT6(w.rawExtra, &w.extra);
  if (!data_.ok()) return false;

  if (criteria_.FieldsMatch(w.name, w.wantPath ? w.path : std::string_view(),
                            w.wantNotes ? w.notes : std::string_view(),
                            w.wantExtra ? w.extra : std::string_view())) {
    ++state_.hits;
    if (w.onRow) {
      SearchResult& row = w.row;
      w.StartRow(SearchResult::Kind::kDisc, rec.lastScanned);
      row.discId = rec.id;
      row.folderId = row.fileId = row.entryId = 0;
      row.fileName = w.cdName;
      file.ReadText(rec.basePath, &row.path);
      row.size = FormatNumber(rec.totalSize);
      row.attributes.clear();  // a disc has no attribute bits
      file.ReadText(rec.notes, &row.notes);
      (*w.onRow)(row);
    }
  }
  return true;
}

bool CatalogSearch::SearchFolder(Walk& w, classCd& cd, classDir& dir) {
  const DirRecord& rec = dir.record();
  w.folderPathReady = false;
  w.ReadTexts(rec);
  if (criteria_.FieldsMatch(w.nameView, std::string_view(), w.notes, w.extra)) {
    w.KeepName();
    ++state_.hits;
    if (w.onRow) {
      SearchResult& row = w.row;
      w.StartRow(SearchResult::Kind::kFolder, rec.date);
      row.discId = rec.cdId;
      row.folderId = rec.id;
      row.fileId = row.entryId = 0;
      row.fileName = w.name;
      w.folderPath = dir.GetDirFullName();
      ShowPath(&w.folderPath);
      w.folderPathReady = true;
      row.path = w.folderPath;
      // A scan stores a folder's size negated; the list shows bytes.
      row.size = FormatNumber(std::fabs(rec.size));
      row.attributes = std::to_string(rec.attr);
      w.file->ReadText(rec.notes, &row.notes);
      (*w.onRow)(row);
    }
  }
  return data_.ok();
}

bool CatalogSearch::SearchFile(Walk& w, classCd& cd, classDir& dir, ClassFile& f,
                               ClassFile* archive) {
  const FileRecord& rec = f.record();
  w.ReadTexts(rec);
  if (!criteria_.FieldsMatch(w.nameView, std::string_view(), w.notes, w.extra)) return true;
  w.KeepName();
  ++state_.hits;
  if (!w.onRow) return true;

  SearchResult& row = w.row;
  CatalogFile& file = *w.file;
  w.StartRow(archive ? SearchResult::Kind::kArchiveEntry : SearchResult::Kind::kFile, rec.date);
  row.discId = cd.GetCdId();
  row.folderId = dir.GetDirId();
  row.fileId = archive ? archive->GetFileId() : rec.id;
  row.entryId = archive ? rec.id : 0;
  row.fileName = w.name;
  if (!w.folderPathReady) {
    w.folderPath = dir.GetDirFullName();
    ShowPath(&w.folderPath);
    w.folderPathReady = true;
  }
  row.path = w.folderPath;
  if (archive) {
    // An entry lives inside its archive, possibly in a folder of the archive.
    std::string inner;
    archive->GetFileName(&inner);
    if (!row.path.empty() && row.path.back() != '/') row.path += '/';
    row.path += inner;
    file.ReadText(rec.path, &inner);
    ShowPath(&inner);
    if (!inner.empty()) {
      if (inner.front() != '/') row.path += '/';
      row.path += inner;
    }
  }
  if (!archive && w.audioDisc) {
    // An audio track: its length, from the extra data.
    std::string extra;
    file.ReadText(rec.extra, &extra);
    row.size = GetExtraValue(extra, kExtraTrackLength) + " Min";
  } else {
    row.size = FormatNumber(rec.size);
  }
  row.attributes = std::to_string(rec.attr);
  file.ReadText(rec.notes, &row.notes);
  (*w.onRow)(row);
  return true;
}

}  // namespace gorvan
