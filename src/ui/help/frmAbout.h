#pragma once
// frmAbout: the about box (mnuHelpAbout) — the version string, the catalog
// format version, the libraries in use with their versions, the application
// folder and the settings files; "Copy" puts the same text on the clipboard
// for a report.
//
// Thread contract: the GUI thread.

#include <QDialog>

namespace gorvan::ui {

class frmAbout : public QDialog {
  Q_OBJECT

 public:
  explicit frmAbout(QWidget* parent = nullptr);

  // The facts the box shows, as "name: value" lines.
  static QString Facts();
  // The libraries in use with their versions, as "name version".
  static QStringList Libraries();
};

}  // namespace gorvan::ui
