#include "ui/reports/ReportGather.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <cmath>

#include "catalog/DiscTree.h"
#include "catalog/ExtraData.h"
#include "catalog/classCd.h"
#include "ui/session/CatalogReads.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

QString Tr(const char* text) { return QCoreApplication::translate("ReportGather", text); }
QString Count(int64_t n) { return QLocale().toString(static_cast<qlonglong>(n)); }

// A folder's full name as the views show it: "/" for the separator, from
// the volume's root.
QString FolderPath(const std::string& fullName) {
  QString s = RowText(fullName);
  s.replace(QLatin1Char('\\'), QLatin1Char('/'));
  // Paths are relative to the volume's root.
  if (!s.startsWith(QLatin1Char('/'))) s.prepend(QLatin1Char('/'));
  return s;
}

Status Ended(classData& data, JobControl& job) {
  if (job.StopRequested()) return Status::Cancelled();
  return data.ok() ? Status::OK() : data.status();
}

// The categories in tree order (parents before their children, children in
// the catalog's order), each with its path of names. A category whose parent
// is no category, or whose parents loop, stands at the top.
std::vector<std::pair<int32_t, QString>> CategoryTree(const CatalogSnapshot& s) {
  QHash<int32_t, const CategoryRow*> byId;
  for (const CategoryRow& c : s.categories) byId.insert(c.id, &c);
  auto topParent = [&](const CategoryRow& c) {
    int32_t p = c.parent;
    for (int steps = 0; p != 0 && byId.contains(p); ++steps) {
      if (p == c.id || steps > byId.size()) return int32_t{0};
      p = byId.value(p)->parent;
    }
    return byId.contains(c.parent) && p == 0 ? c.parent : int32_t{0};
  };
  QHash<int32_t, std::vector<int32_t>> children;
  for (const CategoryRow& c : s.categories) children[topParent(c)].push_back(c.id);
  std::vector<std::pair<int32_t, QString>> out;
  std::vector<std::pair<int32_t, QString>> stack;
  const auto& top = children[0];
  for (auto it = top.rbegin(); it != top.rend(); ++it) stack.emplace_back(*it, QString());
  QHash<int32_t, bool> seen;
  while (!stack.empty()) {
    auto [id, prefix] = stack.back();
    stack.pop_back();
    if (seen.value(id)) continue;
    seen.insert(id, true);
    QString path = RowText(byId.value(id)->name);
    if (!prefix.isEmpty()) path = prefix + QStringLiteral(" / ") + path;
    out.emplace_back(id, path);
    const auto& kids = children.value(id);
    for (auto it = kids.rbegin(); it != kids.rend(); ++it) stack.emplace_back(*it, path);
  }
  return out;
}

}  // namespace

Status ReportGather::CatalogReport(classData& data, JobControl& job, ReportDocument* out) {
  JobProgress progress;
  progress.caption = kCatalogReportCaption;
  job.Report(progress);
  const CatalogSnapshot s = CatalogReads::Catalog(data, job.token());
  if (!s.status.ok()) return s.status;

  out->title = Tr(kCatalogReportTitle);
  out->intro = {Tr("Catalog : %1").arg(RowText(s.name)),
                Tr("Printed : %1")
                    .arg(QLocale().toString(QDateTime::currentDateTime(), QLocale::LongFormat))};
  out->columns = {{Tr("Disc"), 4200, ReportAlign::kLeft},
                  {Tr("Last Scanned"), 2300, ReportAlign::kLeft},
                  {Tr("Folders"), 1100, ReportAlign::kRight},
                  {Tr("Files"), 1200, ReportAlign::kRight},
                  {Tr("Size"), 1300, ReportAlign::kRight}};
  out->lines.reserve(s.discs.size() + 3 * s.categories.size() + 4);

  struct Sum {
    int64_t discs = 0, folders = 0, files = 0;
    double bytes = 0;
    void Add(const DiscRow& d) {
      ++discs;
      folders += d.folders;
      files += d.files;
      bytes += d.totalSize;
    }
  };
  auto totalLine = [](const QString& what, const Sum& sum) {
    return QStringList{what.arg(Count(sum.discs)), QString(), Count(sum.folders), Count(sum.files),
                       SizeText(sum.bytes)};
  };
  auto discLine = [](const DiscRow& d) {
    return QStringList{RowText(d.DisplayName()), DateText(d.lastScanned), Count(d.folders),
                       Count(d.files), SizeText(d.totalSize)};
  };

  QHash<int32_t, std::vector<const DiscRow*>> byCategory;
  for (const DiscRow& d : s.discs) byCategory[d.category].push_back(&d);
  const auto tree = CategoryTree(s);
  Sum all;
  auto section = [&](const QString& heading, const std::vector<const DiscRow*>& discs) {
    if (discs.empty()) return;
    out->Heading(heading);
    Sum sum;
    for (const DiscRow* d : discs) {
      out->Row(discLine(*d));
      sum.Add(*d);
      all.Add(*d);
    }
    out->Total(totalLine(Tr("Total : %1 disc(s)"), sum));
  };
  QHash<int32_t, bool> known;
  for (const auto& [id, path] : tree) {
    known.insert(id, true);
    section(path, byCategory.value(id));
  }
  // Discs in no category, or in one that is not in the catalog.
  std::vector<const DiscRow*> loose;
  for (const DiscRow& d : s.discs) {
    if (!known.contains(d.category)) loose.push_back(&d);
  }
  section(Tr("Not in a category"), loose);
  out->Total(totalLine(Tr("Catalog total : %1 disc(s)"), all));
  progress.value = progress.maximum = static_cast<int64_t>(s.discs.size());
  job.Final(progress);
  return Ended(data, job);
}

Status ReportGather::DiscReport(classData& data, int32_t discId, JobControl& job,
                                ReportDocument* out) {
  DiscRow disc;
  Status s = CatalogReads::Disc(data, discId, &disc);
  if (!s.ok()) return s;
  QString category;
  if (disc.category != 0) {
    const CatalogSnapshot snapshot = CatalogReads::Catalog(data, job.token());
    for (const auto& [id, path] : CategoryTree(snapshot)) {
      if (id == disc.category) category = path;
    }
  }
  JobProgress progress;
  progress.caption = std::string(kDiscReportCaption) + " : " + disc.DisplayName();
  progress.maximum = disc.folders + disc.files;
  job.Report(progress);

  out->title = Tr(kDiscReportTitle);
  out->intro << Tr("Disc : %1").arg(RowText(disc.DisplayName()));
  if (!category.isEmpty()) out->intro << Tr("Category : %1").arg(category);
  out->intro << Tr("Type : %1").arg(MediaTypeText(disc.mediaType))
             << Tr("Last Scanned : %1").arg(DateText(disc.lastScanned))
             << Tr("%1 folder(s), %2 file(s), %3")
                    .arg(Count(disc.folders), Count(disc.files), SizeText(disc.totalSize));
  if (!disc.notes.empty()) out->intro << Tr("Notes : %1").arg(RowText(disc.notes));
  out->columns = {{Tr("Name"), 5200, ReportAlign::kLeft},
                  {Tr("Date"), 2300, ReportAlign::kLeft},
                  {Tr("Size"), 1300, ReportAlign::kRight},
                  {Tr("Attributes"), 1100, ReportAlign::kLeft}};
  out->lines.reserve(static_cast<size_t>(std::max(0, disc.folders + disc.files)) + 1);

  const bool audio = classCd::TypeExt(disc.mediaType) == 105;
  classCd cd = data.CdCursor();
  if (!cd.MoveAbsolute(discId)) return Ended(data, job);
  std::string name;
  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext()) {
    if (job.StopRequested()) return Status::Cancelled();
    out->Heading(Tr("%1  (%2 file(s), %3)")
                     .arg(FolderPath(dir.GetDirFullName()), Count(dir.GetDirCountOfFilesDirect()),
                          SizeText(std::fabs(dir.GetDirSize()))));
    ++progress.folders;
    for (ClassFile& file = dir.GetFileFirst(); !file.isEof(); dir.GetFileNext()) {
      file.GetFileName(&name);
      const QString size = audio ? Qs(file.GetFileAudioLength()) : SizeText(file.GetFileSize());
      out->Row(
          {RowText(name), DateText(file.GetFileDate()), size, AttributeText(file.getFileAttr())});
      ++progress.files;
      if (job.Due()) {
        progress.value = progress.folders + progress.files;
        job.Report(progress);
        if (job.StopRequested()) return Status::Cancelled();
      }
    }
  }
  progress.value = progress.folders + progress.files;
  job.Final(progress);
  return Ended(data, job);
}

Status ReportGather::Cover(classData& data, int32_t discId, CoverContent* out) {
  DiscRow disc;
  Status s = CatalogReads::Disc(data, discId, &disc);
  if (!s.ok()) return s;
  out->name = RowText(disc.name);
  out->artist = RowText(disc.artist);
  out->audio = classCd::TypeExt(disc.mediaType) == 105;
  const std::string year = GetExtraValue(disc.extra, kExtraAudioYear);
  out->date =
      !year.empty()
          ? RowText(year)
          : QLocale().toString(QDate(1899, 12, 30).addDays(static_cast<qint64>(disc.lastScanned)),
                               QLocale::ShortFormat);
  if (disc.lastScanned < 1 && year.empty()) out->date.clear();
  if (disc.category != 0) {
    const CatalogSnapshot snapshot = CatalogReads::Catalog(data, std::stop_token());
    for (const auto& [id, path] : CategoryTree(snapshot)) {
      if (id == disc.category) out->category = path;
    }
  }
  if (out->category.isEmpty())
    out->category = RowText(GetExtraValue(disc.extra, kExtraAudioCategory));

  classCd cd = data.CdCursor();
  if (!cd.MoveAbsolute(discId)) return data.status();
  classDir& top = cd.GetDirFirst();
  if (top.isEof()) return data.ok() ? Status::OK() : data.status();
  std::string name;
  if (out->audio) {
    // The tracks are the files of the disc's top folder.
    int n = 0;
    for (ClassFile& file = top.GetFileFirst(); !file.isEof(); top.GetFileNext()) {
      file.GetFileName(&name);
      ++n;
      out->entries.push_back(
          {QStringLiteral("%1. %2").arg(n, 2, 10, QLatin1Char('0')).arg(RowText(name)),
           Qs(file.GetFileAudioLength())});
    }
    const std::string time = GetExtraValue(disc.extra, kExtraAudioTime);
    out->totals =
        time.empty() ? Tr("%1 track(s)").arg(n) : Tr("%1 track(s), %2").arg(n).arg(RowText(time));
  } else {
    // The top folder's subfolders, by the disc's folder tree.
    std::vector<CoverContent::Entry> files;
    for (ClassFile& file = top.GetFileFirst(); !file.isEof(); top.GetFileNext()) {
      file.GetFileName(&name);
      files.push_back({RowText(name), SizeText(file.GetFileSize())});
    }
    DiscTree tree;
    s = tree.Build(data.file(), discId);
    if (!s.ok()) return s;
    if (!tree.empty()) {
      for (int32_t node : tree.children(tree.root())) {
        classDir& dir = cd.GetDirGoto(tree.folderId(node));
        if (dir.isEof()) continue;
        out->entries.push_back(
            {RowText(tree.name(node)) + QLatin1Char('/'), SizeText(std::fabs(dir.GetDirSize()))});
      }
    }
    for (auto& f : files) out->entries.push_back(std::move(f));
    out->totals = Tr("%1 file(s) in %2 folder(s), %3")
                      .arg(Count(disc.files), Count(disc.folders), SizeText(disc.totalSize));
  }
  return data.ok() ? Status::OK() : data.status();
}

}  // namespace gorvan::ui
