#include "ui/dialogs/PropertiesDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ui/dialogs/CatalogPropertiesDialog.h"
#include "ui/dialogs/CategoryPropertiesDialog.h"
#include "ui/dialogs/DiscPropertiesDialog.h"
#include "ui/dialogs/EntryPropertiesDialog.h"
#include "ui/session/CatalogEdits.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

PropertiesDialog* PropertiesDialog::Open(CatalogSession& session, const CatalogItem& item,
                                         QWidget* parent) {
  PropertiesDialog* dialog = nullptr;
  switch (item.kind) {
    case NodeKind::kCatalog:
      dialog = new CatalogPropertiesDialog(session, item, parent);
      break;
    case NodeKind::kCategory:
      dialog = new CategoryPropertiesDialog(session, item, parent);
      break;
    case NodeKind::kDisc:
      dialog = new DiscPropertiesDialog(session, item, parent);
      break;
    case NodeKind::kFolder:
    case NodeKind::kFile:
    case NodeKind::kArchiveMember:
      dialog = new EntryPropertiesDialog(session, item, parent);
      break;
    default:
      return nullptr;
  }
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->show();
  return dialog;
}

PropertiesDialog::PropertiesDialog(CatalogSession& session, const CatalogItem& item,
                                   const char* objectName, QWidget* parent)
    : QDialog(parent), session_(session), item_(item) {
  setObjectName(QLatin1String(objectName));
  setWindowTitle(tr("Properties of %1").arg(RowText(Std(item.name))));
  name_ = new QLineEdit;
  name_->setObjectName(QStringLiteral("txtName"));
  name_->setReadOnly(true);
  form_ = new QFormLayout;
  form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  form_->addRow(tr("&Name:"), name_);
  notes_ = new QPlainTextEdit;
  notes_->setObjectName(QStringLiteral("txtNotes"));
  notes_->setTabChangesFocus(true);
  notes_->setMinimumHeight(fontMetrics().height() * 4);
  tableTitle_ = new QLabel;
  table_ = new QTreeWidget;
  table_->setObjectName(QStringLiteral("lvwItems"));
  table_->setRootIsDecorated(false);
  table_->setUniformRowHeights(true);
  tableTitle_->hide();
  table_->hide();

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &PropertiesDialog::Apply);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(&session_, &CatalogSession::closed, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form_);
  auto* notesLabel = new QLabel(tr("N&otes:"));
  notesLabel->setBuddy(notes_);
  layout->addWidget(notesLabel);
  layout->addWidget(notes_, 1);
  layout->addWidget(tableTitle_);
  layout->addWidget(table_, 2);
  layout->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 70, fontMetrics().height() * 30);
}

void PropertiesDialog::Load(Reader read) {
  session_.loader().Load<PropertiesData>(
      this, "PropertiesDialog." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      std::move(read), [this](PropertiesData& d) { Fill(d); });
}

void PropertiesDialog::Fill(const PropertiesData& d) {
  data_ = d;
  name_->setText(Qs(d.name));
  name_->setReadOnly(!d.nameEditable);
  for (const auto& [label, value] : d.fields) {
    auto* field = new QLabel(RowText(value));
    field->setTextInteractionFlags(Qt::TextSelectableByMouse);
    field->setObjectName(QStringLiteral("fld") + Qs(label).remove(QLatin1Char(' ')));
    form_->addRow(Qs(label) + QLatin1Char(':'), field);
  }
  notes_->setPlainText(Qs(d.notes));
  if (!d.tableHeader.empty()) {
    tableTitle_->setText(Qs(d.tableTitle));
    QStringList header;
    for (const std::string& h : d.tableHeader) header << Qs(h);
    table_->setHeaderLabels(header);
    QList<QTreeWidgetItem*> items;
    for (const auto& row : d.table) {
      QStringList cells;
      for (const std::string& c : row) cells << RowText(c);
      items << new QTreeWidgetItem(cells);
    }
    table_->addTopLevelItems(items);
    table_->header()->resizeSection(0, fontMetrics().averageCharWidth() * 30);
    tableTitle_->show();
    table_->show();
  }
  loaded_ = true;
}

QString PropertiesDialog::Value(const QString& label) const {
  for (const auto& [l, v] : data_.fields) {
    if (Qs(l) == label) return Qs(v);
  }
  return {};
}

void PropertiesDialog::Apply() {
  if (!loaded_) return;
  CatalogEdits edits(session_);
  const QString name = name_->text();
  if (data_.nameEditable && name != Qs(data_.name)) {
    CatalogItem item = item_;
    item.name = Qs(data_.name);
    if (!edits.Rename(item, name)) return;
    data_.name = Std(name);
  }
  const QString notes = notes_->toPlainText();
  if (notes != Qs(data_.notes)) {
    if (!edits.SetNotes(item_, notes)) return;
  }
  accept();
}

}  // namespace gorvan::ui
