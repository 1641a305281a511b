#include "ui/dialogs/CatalogPropertiesDialog.h"

#include "ui/widgets/UiText.h"

namespace gorvan::ui {

CatalogPropertiesDialog::CatalogPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                                                 QWidget* parent)
    : PropertiesDialog(session, item, "frmCatalogProperties", parent) {
  Load([item](classData& d, const std::stop_token& stop) { return Read(d, item, stop); });
}

PropertiesData CatalogPropertiesDialog::Read(classData& d, const CatalogItem&,
                                             const std::stop_token& stop) {
  PropertiesData p;
  const HeaderRecord& h = d.GetTableHeader();
  p.name = d.GetDataName();
  p.nameEditable = true;
  p.notes = d.GetDataNotes();
  classData::PhysicalSize size;
  JobControl job(stop);
  p.status = d.CalcPhysicalSize(&size, job);
  auto add = [&p](const QString& label, const QString& value) {
    p.fields.emplace_back(Std(label), Std(value));
  };
  add(QObject::tr("File"), Qs(d.GetDataFileName()));
  add(QObject::tr("Created"), DateText(h.created));
  add(QObject::tr("Last opened"), DateText(h.lastOpened));
  add(QObject::tr("Version"),
      QStringLiteral("%1.%2.%3").arg(h.versionMajor).arg(h.versionMinor).arg(h.versionRevision));
  add(QObject::tr("Text encoding"),
      h.IsUtf8() ? QStringLiteral("UTF-8") : QStringLiteral("Windows-1252"));
  add(QObject::tr("Discs"), QString::number(h.cdCount));
  add(QObject::tr("Categories"), QString::number(h.catCount));
  add(QObject::tr("File size"), ExactSizeText(static_cast<double>(size.fileLength)));
  add(QObject::tr("Bytes used"), ExactSizeText(static_cast<double>(size.bytesUsed)));
  add(QObject::tr("Garbage"), QObject::tr("%1 (compacting the catalog reclaims it)")
                                  .arg(ExactSizeText(static_cast<double>(size.garbage))));
  return p;
}

}  // namespace gorvan::ui
