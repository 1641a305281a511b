#pragma once
// frmFreeDbServers: the FreeDB site chooser. It asks the configured server for
// its list of mirror sites (on a worker thread; the dialog stays usable and
// Cancel ends the wait) and lists each site with its latitude, longitude and
// description; OK hands the chosen site's name to whoever opened it (the
// options dialog stores it as the server).
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <memory>
#include <vector>

#include "audio/FreeDbParser.h"
#include "ui/scan/WorkerTask.h"

class QLabel;
class QPushButton;
class QTreeWidget;

namespace gorvan::ui {

class ScanSources;

class frmFreeDbServers : public QDialog {
  Q_OBJECT

 public:
  explicit frmFreeDbServers(std::shared_ptr<ScanSources> sources, QWidget* parent = nullptr);

  QTreeWidget* sites() const { return list_; }
  // The site chosen when the dialog was accepted ("" before).
  const QString& chosenSite() const { return chosen_; }
  bool loading() const { return task_.running(); }

 Q_SIGNALS:
  void siteChosen(const QString& site);

 public Q_SLOTS:
  void accept() override;
  void done(int result) override;

 private:
  void Fill(const std::vector<FreeDbSite>& sites, const std::string& error);

  std::shared_ptr<ScanSources> sources_;
  QTreeWidget* list_;
  QLabel* status_;
  QPushButton* btnOK_;
  QString chosen_;
  WorkerTask task_;
};

}  // namespace gorvan::ui
