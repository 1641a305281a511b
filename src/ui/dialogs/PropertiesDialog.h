#pragma once
// PropertiesDialog: what the properties dialogs of the catalog, a category, a
// disc, a folder and a file share. The values are read on the view loader's
// thread and shown as label/value rows, with the notes (editable) and, where
// an item has them, a table (an audio CD's tracks, an archive's members). The
// name is editable where the catalog's rules allow a rename. OK writes what
// changed through CatalogEdits; the dialog stays open when a rule refuses.
//
// Each dialog is its own class (CatalogPropertiesDialog, ...), which says how
// its values are read. PropertiesDialog::Open picks the one for an item.

#include <QDialog>
#include <functional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "catalog/Status.h"
#include "catalog/classData.h"
#include "ui/session/CatalogItem.h"

class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTreeWidget;

namespace gorvan::ui {

class CatalogSession;

// The values of one item, as text (UTF-8).
struct PropertiesData {
  std::string name;
  bool nameEditable = false;
  std::vector<std::pair<std::string, std::string>> fields;  // label, value
  std::string notes;
  std::string tableTitle;
  std::vector<std::string> tableHeader;
  std::vector<std::vector<std::string>> table;
  Status status;
};

class PropertiesDialog : public QDialog {
  Q_OBJECT

 public:
  // Opens the properties dialog of item (not modal: the views stay usable).
  static PropertiesDialog* Open(CatalogSession& session, const CatalogItem& item, QWidget* parent);

  bool loaded() const { return loaded_; }
  // The value shown for a label ("" when there is none).
  QString Value(const QString& label) const;
  QTreeWidget* table() const { return table_; }

 protected:
  PropertiesDialog(CatalogSession& session, const CatalogItem& item, const char* objectName,
                   QWidget* parent);
  using Reader = std::function<PropertiesData(classData& data, const std::stop_token& stop)>;
  void Load(Reader read);

 private:
  void Fill(const PropertiesData& data);
  void Apply();

  CatalogSession& session_;
  CatalogItem item_;
  QLineEdit* name_;
  QFormLayout* form_;
  QPlainTextEdit* notes_;
  QLabel* tableTitle_;
  QTreeWidget* table_;
  PropertiesData data_;
  bool loaded_ = false;
};

}  // namespace gorvan::ui
