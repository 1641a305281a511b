#include "ui/dialogs/frmCategories.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ui/session/CatalogEdits.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr int kIdRole = Qt::UserRole;
constexpr int kNameRole = Qt::UserRole + 1;  // the name as stored

}  // namespace

frmCategories::frmCategories(CatalogSession& session, const CatalogItem& item, QWidget* parent)
    : QDialog(parent), session_(session) {
  setObjectName(QStringLiteral("frmCategories"));
  if (item.kind == NodeKind::kDisc) disc_ = item;
  setWindowTitle(disc_.kind == NodeKind::kDisc ? tr("Category of %1").arg(disc_.name)
                                               : tr("Categories"));
  tree_ = new QTreeWidget;
  tree_->setObjectName(QStringLiteral("tvwCategories"));
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);

  auto* add = new QPushButton(ThemeIcons::Named("folder-new"), tr("&New"));
  add->setObjectName(QStringLiteral("btnNew"));
  rename_ = new QPushButton(tr("Re&name"));
  rename_->setObjectName(QStringLiteral("btnRename"));
  remove_ = new QPushButton(ThemeIcons::Named("edit-delete"), tr("&Remove"));
  remove_->setObjectName(QStringLiteral("btnRemove"));
  auto* side = new QVBoxLayout;
  side->addWidget(add);
  side->addWidget(rename_);
  side->addWidget(remove_);
  side->addStretch();

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  if (disc_.kind != NodeKind::kDisc) buttons->button(QDialogButtonBox::Cancel)->hide();

  auto* top = new QHBoxLayout;
  top->addWidget(tree_, 1);
  top->addLayout(side);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 60, fontMetrics().height() * 24);

  connect(add, &QPushButton::clicked, this, &frmCategories::NewCategory);
  connect(rename_, &QPushButton::clicked, this, &frmCategories::RenameCategory);
  connect(remove_, &QPushButton::clicked, this, &frmCategories::RemoveCategory);
  connect(tree_, &QTreeWidget::itemChanged, this, &frmCategories::Renamed);
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
    const bool category = current && current->data(0, kIdRole).toInt() != 0;
    rename_->setEnabled(category);
    remove_->setEnabled(category);
  });
  connect(buttons, &QDialogButtonBox::accepted, this, &frmCategories::Apply);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(&session_, &CatalogSession::changed, this, &frmCategories::Load);
  connect(&session_, &CatalogSession::closed, this, &QDialog::reject);
  Load();
}

void frmCategories::Load() {
  session_.loader().Load<CatalogSnapshot>(
      this, "frmCategories",
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& s) { Fill(s); });
}

void frmCategories::Fill(const CatalogSnapshot& snapshot) {
  int32_t keep = select_;
  select_ = -1;
  if (keep < 0 && tree_->currentItem()) keep = tree_->currentItem()->data(0, kIdRole).toInt();
  if (keep < 0 && disc_.kind == NodeKind::kDisc) {
    for (const DiscRow& d : snapshot.discs) {
      if (d.id == disc_.id) keep = d.category;
    }
  }
  filling_ = true;
  tree_->clear();
  auto* root = new QTreeWidgetItem(tree_, QStringList{RowText(snapshot.name)});
  root->setIcon(0, ThemeIcons::Catalog());
  root->setData(0, kIdRole, 0);
  QHash<int32_t, QTreeWidgetItem*> items;
  for (const CategoryRow& c : snapshot.categories) {
    auto* item = new QTreeWidgetItem(QStringList{RowText(c.name)});
    item->setIcon(0, ThemeIcons::Category());
    item->setData(0, kIdRole, c.id);
    item->setData(0, kNameRole, Qs(c.name));
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    items.insert(c.id, item);
  }
  // Parents may be listed after their children: link once all exist. A
  // parent that is no category (or a loop) leaves the category at the top.
  for (const CategoryRow& c : snapshot.categories) {
    QTreeWidgetItem* parent = items.value(c.parent, root);
    for (QTreeWidgetItem* up = parent; up && up != root; up = up->parent()) {
      if (up == items.value(c.id)) parent = root;
    }
    parent->addChild(items.value(c.id));
  }
  tree_->expandAll();
  tree_->setCurrentItem(keep > 0 && items.contains(keep) ? items.value(keep) : root);
  filling_ = false;
}

CatalogItem frmCategories::ItemOf(const QTreeWidgetItem* item) const {
  CatalogItem c;
  if (!item) return c;
  c.id = item->data(0, kIdRole).toInt();
  c.kind = c.id == 0 ? NodeKind::kCatalog : NodeKind::kCategory;
  c.name = item->data(0, kNameRole).toString();
  return c;
}

int32_t frmCategories::chosen() const {
  return tree_->currentItem() ? tree_->currentItem()->data(0, kIdRole).toInt() : 0;
}

void frmCategories::NewCategory() {
  const int32_t id = CatalogEdits(session_).NewCategory(chosen());
  if (id != 0) select_ = id;
}

void frmCategories::RenameCategory() {
  if (QTreeWidgetItem* item = tree_->currentItem(); item && chosen() != 0) tree_->editItem(item);
}

void frmCategories::RemoveCategory() {
  CatalogEdits(session_).Delete(ItemOf(tree_->currentItem()));
}

void frmCategories::Renamed(QTreeWidgetItem* item) {
  if (filling_) return;
  const CatalogItem c = ItemOf(item);
  select_ = c.id;
  // A refused or unchanged name shows the stored one again.
  if (!CatalogEdits(session_).Rename(c, item->text(0))) Load();
}

void frmCategories::Apply() {
  if (disc_.kind == NodeKind::kDisc) {
    CatalogItem target;
    target.id = chosen();
    target.kind = target.id == 0 ? NodeKind::kCatalog : NodeKind::kCategory;
    if (!CatalogEdits(session_).Move(disc_, target)) return;
  }
  accept();
}

}  // namespace gorvan::ui
