#include "ui/search/FieldChooser.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace gorvan::ui {

FieldChooser* FieldChooser::Open(QHeaderView* header, QWidget* parent) {
  auto* dialog = new FieldChooser(header, parent);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
  return dialog;
}

FieldChooser::FieldChooser(QHeaderView* header, QWidget* parent)
    : QDialog(parent), header_(header) {
  setObjectName(QStringLiteral("frmFieldChooser"));
  setWindowTitle(tr("Columns"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(tr("Show these columns:")));
  QAbstractItemModel* model = header->model();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  // In the order the list shows them.
  boxes_.resize(static_cast<size_t>(header->count()));
  for (int v = 0; v < header->count(); ++v) {
    const int c = header->logicalIndex(v);
    auto* box = new QCheckBox(model->headerData(c, Qt::Horizontal).toString());
    box->setObjectName(QStringLiteral("chkField%1").arg(c));
    box->setChecked(!header->isSectionHidden(c));
    boxes_[static_cast<size_t>(c)] = box;
    layout->addWidget(box);
    connect(box, &QCheckBox::toggled, this, [this, buttons] {
      bool any = false;
      for (QCheckBox* b : boxes_) any = any || b->isChecked();
      buttons->button(QDialogButtonBox::Ok)->setEnabled(any);
    });
  }
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    Apply();
    accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void FieldChooser::Apply() {
  if (!header_) return;
  const int fallback = header_->defaultSectionSize();
  for (size_t c = 0; c < boxes_.size(); ++c) {
    const int column = static_cast<int>(c);
    const bool show = boxes_[c]->isChecked();
    if (show && header_->isSectionHidden(column)) {
      header_->showSection(column);
      if (header_->sectionSize(column) <= 0) header_->resizeSection(column, fallback);
    } else if (!show) {
      header_->hideSection(column);
    }
  }
}

}  // namespace gorvan::ui
