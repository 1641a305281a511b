#pragma once
// frmIconMaint: icon maintenance (mnuViewIconMaint). The icon map
// "Gorvan.map" as a table of extension and icon; Add, Change (an icon of the
// desktop's theme or a picture file) and Remove edit it, OK writes the whole
// table back in the file's form ("extension,icon" lines) and gives the views
// the new icons. Lines of the file that are no entry are left out, and the
// dialog says so.
//
// Thread contract: the GUI thread.

#include <QDialog>

class QLabel;
class QListWidget;
class QTableWidget;

namespace gorvan {
class IconMap;
class Prompt;
}  // namespace gorvan

namespace gorvan::ui {

class frmIconMaint : public QDialog {
  Q_OBJECT

 public:
  // map: the program's table, replaced on OK; mapFile: where it is written.
  frmIconMaint(IconMap& map, const QString& mapFile, Prompt& prompt, QWidget* parent = nullptr);

  QTableWidget* table() const { return table_; }
  // Adds a row for an extension with an icon key and selects it.
  void AddRow(const QString& extension, const QString& key);
  // Gives the selected row the icon key.
  void SetKey(const QString& key);
  // Checks the table and writes it; false (and the reason told) when it
  // cannot be.
  bool Apply();
  // The lines of the map file that hold no entry.
  static int BrokenLines(const QString& mapFile);

 Q_SIGNALS:
  void applied();

 private:
  void Change();
  void Remove();

  IconMap& map_;
  QString mapFile_;
  Prompt& prompt_;
  QTableWidget* table_;
};

// frmIconPicker: chooses an icon of the desktop's theme, or a picture file
// (one that is not a picture is refused and the choice stays).
class frmIconPicker : public QDialog {
  Q_OBJECT

 public:
  frmIconPicker(const QString& current, QWidget* parent = nullptr);
  QString key() const { return key_; }
  QListWidget* list() const { return list_; }
  // Takes a picture file as the choice; false (and a message in the dialog)
  // when it is not a picture.
  bool ChooseFile(const QString& path);
  QString message() const;

  // The theme icons offered.
  static QStringList ThemeNames();

 private:
  QString key_;
  QListWidget* list_;
  QLabel* message_;
};

}  // namespace gorvan::ui
