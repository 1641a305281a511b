#pragma once
// uFolderBrowser: the scan dialog's chooser of what to scan. It lists the
// mounted volumes and the optical drives with their labels and free space,
// takes any folder typed in, and browses to one ("Browse..."). pathChanged is
// raised once for each new choice, when the user picks a place, browses, or
// leaves the typed path.

#include <QString>
#include <QWidget>
#include <vector>

#include "ui/scan/ScanSources.h"

class QComboBox;
class QPushButton;

namespace gorvan::ui {

class uFolderBrowser : public QWidget {
  Q_OBJECT

 public:
  explicit uFolderBrowser(QWidget* parent = nullptr);

  // Lists places (replacing what was listed) without changing the path.
  void SetPlaces(const std::vector<ScanPlace>& places);
  const std::vector<ScanPlace>& places() const { return places_; }
  // The path as chosen or typed, trimmed.
  QString path() const;
  // Shows path; raises pathChanged when it differs from the last one raised.
  void SetPath(const QString& path);
  // Raises pathChanged for a path typed but not yet left (OK pressed while
  // typing).
  void Commit();
  // The listed place of path, or null.
  const ScanPlace* PlaceOf(const QString& path) const;
  QComboBox* combo() const { return combo_; }
  QPushButton* browseButton() const { return browse_; }

  // "Data (/media/ann/DATA) — 1.5 GB free" for a volume, "Audio CD (/dev/sr0)"
  // for a drive.
  static QString PlaceText(const ScanPlace& place);

 Q_SIGNALS:
  void pathChanged(const QString& path);

 private:
  void Browse();

  QComboBox* combo_;
  QPushButton* browse_;
  std::vector<ScanPlace> places_;
  QString last_;
};

}  // namespace gorvan::ui
