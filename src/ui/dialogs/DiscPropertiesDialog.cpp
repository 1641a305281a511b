#include "ui/dialogs/DiscPropertiesDialog.h"

#include "catalog/ExtraData.h"
#include "ui/session/CatalogReads.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

DiscPropertiesDialog::DiscPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                                           QWidget* parent)
    : PropertiesDialog(session, item, "frmCdProperties", parent) {
  Load([item](classData& d, const std::stop_token& stop) { return Read(d, item, stop); });
}

PropertiesData DiscPropertiesDialog::Read(classData& d, const CatalogItem& item,
                                          const std::stop_token& stop) {
  PropertiesData p;
  DiscRow disc;
  p.status = CatalogReads::Disc(d, item.id, &disc);
  if (!p.status.ok()) return p;
  p.name = disc.name;
  p.nameEditable = true;
  p.notes = disc.notes;
  std::string category;
  if (disc.category != 0) {
    classCat cat = d.CatCursor();
    if (d.FindCat(disc.category, &cat).ok()) category = cat.GetCategoryPathIncludingMine();
  }
  auto add = [&p](const QString& label, const QString& value) {
    p.fields.emplace_back(Std(label), Std(value));
  };
  add(QObject::tr("Label"), Qs(disc.label));
  add(QObject::tr("Category"),
      category.empty() ? QObject::tr("(none)")
                       : Qs(category).replace(QLatin1Char('\\'), QStringLiteral(" / ")));
  add(QObject::tr("Media type"), MediaTypeText(disc.mediaType));
  add(QObject::tr("Scanned path"), Qs(disc.basePath));
  add(QObject::tr("Total size"), ExactSizeText(disc.totalSize));
  add(QObject::tr("Free space"), ExactSizeText(disc.freeSpace));
  add(QObject::tr("Folders"), QString::number(disc.folders));
  add(QObject::tr("Files"), QString::number(disc.files));
  add(QObject::tr("Serial number"), SerialText(disc.diskId));
  add(QObject::tr("Last scanned"), DateText(disc.lastScanned));
  add(QObject::tr("Icon"), Qs(disc.iconKey));
  add(QObject::tr("Bytes in the catalog"), ExactSizeText(disc.bytesUsed));
  const std::pair<int, const char*> audio[] = {
      {kExtraAudioAlbum, QT_TR_NOOP("Album")},       {kExtraAudioArtist, QT_TR_NOOP("Artist")},
      {kExtraAudioCategory, QT_TR_NOOP("Genre")},    {kExtraAudioYear, QT_TR_NOOP("Year")},
      {kExtraAudioTime, QT_TR_NOOP("Playing time")},
  };
  for (const auto& [index, label] : audio) {
    const std::string value = GetExtraValue(disc.extra, index);
    if (!value.empty()) add(QObject::tr(label), Qs(value));
  }
  if (disc.mediaType > 100) {
    // An audio CD's tracks are the files of its one folder.
    p.tableTitle = Std(QObject::tr("Tracks:"));
    p.tableHeader = {Std(QObject::tr("Track")), Std(QObject::tr("Title")),
                     Std(QObject::tr("Length"))};
    classCd cd = d.CdCursor();
    if (cd.MoveAbsolute(item.id)) {
      classDir& dir = cd.GetDirFirst();
      if (!dir.isEof()) {
        const EntryRows rows = CatalogReads::Folder(d, dir.GetDirId(), {}, stop);
        for (const EntryRow& r : rows.rows) {
          p.table.push_back({GetExtraValue(r.extra, kExtraTrackNumber), r.name,
                             GetExtraValue(r.extra, kExtraTrackLength)});
        }
      }
    }
  }
  if (!d.ok()) p.status = d.status();
  return p;
}

}  // namespace gorvan::ui
