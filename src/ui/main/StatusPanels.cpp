#include "ui/main/StatusPanels.h"

#include <QLabel>
#include <QLocale>
#include <QStatusBar>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

QLabel* Panel(QStatusBar* bar, const char* name, int stretch) {
  auto* label = new QLabel;
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  bar->addPermanentWidget(label, stretch);
  return label;
}

}  // namespace

StatusPanels::StatusPanels(QStatusBar* bar) : QObject(bar) {
  catalog_ = Panel(bar, "panelCatalog", 2);
  totals_ = Panel(bar, "panelTotals", 2);
  selection_ = Panel(bar, "panelSelection", 2);
  job_ = Panel(bar, "panelJob", 1);
}

void StatusPanels::SetCatalog(const QString& name) { catalog_->setText(RowText(Std(name))); }

void StatusPanels::SetTotals(int discs, qint64 files) {
  const QLocale l;
  totals_->setText(tr("%1 discs, %2 files").arg(l.toString(discs), l.toString(files)));
}

void StatusPanels::ClearTotals() { totals_->clear(); }

void StatusPanels::SetSelection(int count, double bytes) {
  if (count <= 0) {
    selection_->clear();
    return;
  }
  // A negative size: not known (a folder chosen in the tree).
  selection_->setText(bytes < 0
                          ? tr("%1 selected").arg(QLocale().toString(count))
                          : tr("%1 selected, %2").arg(QLocale().toString(count), SizeText(bytes)));
}

void StatusPanels::SetJob(const QString& state) { job_->setText(state); }

QString StatusPanels::catalogText() const { return catalog_->text(); }
QString StatusPanels::totalsText() const { return totals_->text(); }
QString StatusPanels::selectionText() const { return selection_->text(); }
QString StatusPanels::jobText() const { return job_->text(); }

}  // namespace gorvan::ui
