#pragma once
// StatusPanels: the main window's status panels — the open catalog's name,
// the discs and files it holds, the current selection's count and size, and
// the state of a running job.

#include <QObject>

class QLabel;
class QStatusBar;

namespace gorvan::ui {

class StatusPanels : public QObject {
  Q_OBJECT

 public:
  explicit StatusPanels(QStatusBar* bar);

  void SetCatalog(const QString& name);
  void SetTotals(int discs, qint64 files);
  void ClearTotals();
  // bytes < 0: the size is not known.
  void SetSelection(int count, double bytes);
  void SetJob(const QString& state);

  QString catalogText() const;
  QString totalsText() const;
  QString selectionText() const;
  QString jobText() const;

 private:
  QLabel* catalog_;
  QLabel* totals_;
  QLabel* selection_;
  QLabel* job_;
};

}  // namespace gorvan::ui
