#include "ui/dialogs/EntryPropertiesDialog.h"

#include <cmath>

#include "catalog/ExtraData.h"
#include "ui/session/CatalogReads.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// A folder's place as the views show it: "/" between the names.
QString ShownPath(const std::string& path, const std::string& name) {
  QString shown = Qs(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
  if (!shown.startsWith(QLatin1Char('/'))) shown.prepend(QLatin1Char('/'));
  if (!name.empty()) {
    if (!shown.endsWith(QLatin1Char('/'))) shown += QLatin1Char('/');
    shown += Qs(name);
  }
  return shown;
}

}  // namespace

EntryPropertiesDialog::EntryPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                                             QWidget* parent)
    : PropertiesDialog(session, item, "frmItemProperties", parent) {
  Load([item](classData& d, const std::stop_token& stop) { return Read(d, item, stop); });
}

PropertiesData EntryPropertiesDialog::Read(classData& d, const CatalogItem& item,
                                           const std::stop_token& stop) {
  PropertiesData p;
  EntryRow row;
  p.status = CatalogReads::Entry(d, item.kind, item.id, &row);
  if (!p.status.ok()) return p;
  p.name = row.name;
  p.notes = row.notes;
  auto add = [&p](const QString& label, const QString& value) {
    p.fields.emplace_back(Std(label), Std(value));
  };
  if (item.kind == NodeKind::kFolder) {
    p.nameEditable = true;
    add(QObject::tr("Path"), ShownPath(row.path, row.name));
    add(QObject::tr("Size"), ExactSizeText(std::fabs(row.size)));
    add(QObject::tr("Date"), DateText(row.date));
    add(QObject::tr("Attributes"), AttributeText(row.attr));
    add(QObject::tr("Files"), QString::number(row.files));
    add(QObject::tr("Folders"), QString::number(row.folders));
    return p;
  }
  // The folder that holds the file (an archive member: the archive's).
  FileRecord file;
  CatalogFile* f = d.file();
  if (f->TryRead(item.id, &file)) {
    classDir dir(f);
    if (f->TryRead(file.dirId, &dir.record()))
      add(QObject::tr("Folder"), ShownPath(dir.GetDirPath(), dir.GetDirName()));
  }
  if (item.kind == NodeKind::kArchiveMember) add(QObject::tr("Path in the archive"), Qs(row.path));
  add(QObject::tr("Size"), ExactSizeText(row.size));
  add(QObject::tr("Date"), DateText(row.date));
  add(QObject::tr("Attributes"), AttributeText(row.attr));
  const std::pair<int, const char*> values[] = {
      {kExtraMp3Title, QT_TR_NOOP("Title")},     {kExtraMp3Artist, QT_TR_NOOP("Artist")},
      {kExtraMp3Album, QT_TR_NOOP("Album")},     {kExtraMp3Year, QT_TR_NOOP("Year")},
      {kExtraMp3Comment, QT_TR_NOOP("Comment")}, {kExtraTrackNumber, QT_TR_NOOP("Track")},
      {kExtraTrackLength, QT_TR_NOOP("Length")},
  };
  for (const auto& [index, label] : values) {
    const std::string value = GetExtraValue(row.extra, index);
    if (!value.empty()) add(QObject::tr(label), Qs(value));
  }
  if (row.archive) {
    const EntryRows members = CatalogReads::Members(d, item.id, stop);
    p.tableTitle = Std(QObject::tr("Archive members:"));
    p.tableHeader = {Std(QObject::tr("Name")), Std(QObject::tr("Path")), Std(QObject::tr("Size")),
                     Std(QObject::tr("Date"))};
    for (const EntryRow& m : members.rows) {
      p.table.push_back({m.name, m.path, Std(SizeText(m.size)), Std(DateText(m.date))});
    }
    if (!members.status.ok()) p.status = members.status;
  }
  return p;
}

}  // namespace gorvan::ui
