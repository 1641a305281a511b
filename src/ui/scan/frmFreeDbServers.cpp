#include "ui/scan/frmFreeDbServers.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ui/scan/ScanSources.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

frmFreeDbServers::frmFreeDbServers(std::shared_ptr<ScanSources> sources, QWidget* parent)
    : QDialog(parent), sources_(std::move(sources)) {
  setObjectName(QStringLiteral("frmFreeDbServers"));
  setWindowTitle(tr("FreeDB Servers"));
  setAttribute(Qt::WA_DeleteOnClose);
  list_ = new QTreeWidget(this);
  list_->setObjectName(QStringLiteral("lstSites"));
  list_->setHeaderLabels({tr("Site"), tr("Latitude"), tr("Longitude"), tr("Description")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->header()->setStretchLastSection(true);
  status_ = new QLabel(this);
  status_->setObjectName(QStringLiteral("lblStatus"));
  status_->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  btnOK_ = buttons->button(QDialogButtonBox::Ok);
  btnOK_->setObjectName(QStringLiteral("btnOK"));
  btnOK_->setEnabled(false);
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmFreeDbServers::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(list_, &QTreeWidget::itemActivated, this, &frmFreeDbServers::accept);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_);
  layout->addWidget(status_);
  layout->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 20);

  status_->setText(tr("Contacting %1 Server").arg(Qs(sources_->LookupServer())));
  std::shared_ptr<ScanSources> s = sources_;
  using Answer = std::pair<std::vector<FreeDbSite>, std::string>;
  task_.Run<Answer>(
      this,
      [s](std::stop_token stop) {
        Answer a;
        a.first = s->ServerSites(stop, &a.second);
        return a;
      },
      [this](Answer& a) { Fill(a.first, a.second); });
}

void frmFreeDbServers::Fill(const std::vector<FreeDbSite>& sites, const std::string& error) {
  for (const FreeDbSite& site : sites) {
    // Site, latitude and longitude are the chooser text's first three
    // tab-separated parts; the description words follow the longitude.
    const QStringList parts = Qs(site.ChooserText()).split(QLatin1Char('\t'));
    const QString rest = parts.value(2);
    const qsizetype blank = rest.indexOf(QLatin1Char(' '));
    auto* item = new QTreeWidgetItem(
        list_, {parts.value(0), parts.value(1), blank < 0 ? rest : rest.left(blank),
                blank < 0 ? QString() : rest.mid(blank + 1)});
    item->setData(0, Qt::UserRole, Qs(site.Site()));
  }
  if (list_->topLevelItemCount() > 0) {
    list_->setCurrentItem(list_->topLevelItem(0));
    for (int c = 0; c < 3; ++c) list_->resizeColumnToContents(c);
    status_->clear();
    status_->hide();
    btnOK_->setEnabled(true);
  } else {
    status_->setText(error.empty() ? tr("The server lists no sites.") : Qs(error));
  }
}

void frmFreeDbServers::accept() {
  QTreeWidgetItem* item = list_->currentItem();
  if (!item) return;
  chosen_ = item->data(0, Qt::UserRole).toString();
  Q_EMIT siteChosen(chosen_);
  QDialog::accept();
}

void frmFreeDbServers::done(int result) {
  task_.Stop();
  QDialog::done(result);
}

}  // namespace gorvan::ui
