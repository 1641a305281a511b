#include "ui/dialogs/frmDataOptions.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/session/CatalogSession.h"
#include "ui/widgets/CatalogFont.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

frmDataOptions::frmDataOptions(CatalogSession& session, QWidget* parent)
    : QDialog(parent), session_(session) {
  setObjectName(QStringLiteral("frmDataOptions"));
  setWindowTitle(tr("Catalog Display Options"));
  const std::string current = session_.writer() ? session_.writer()->GetDataFont() : std::string();

  useDefault_ = new QCheckBox(tr("Use the &default font (%1)").arg(Qs(kDefaultCatalogFont)));
  useDefault_->setObjectName(QStringLiteral("chkDefaultFont"));
  useDefault_->setChecked(current.empty());
  font_ = new QFontComboBox;
  font_->setObjectName(QStringLiteral("cboFont"));
  font_->setCurrentFont(CatalogFont::For(current));
  font_->setEnabled(!current.empty());
  sample_ = new QLabel(tr("AaBbYyZz 0123456789"));
  sample_->setObjectName(QStringLiteral("lblSample"));
  sample_->setFrameShape(QFrame::StyledPanel);
  sample_->setAlignment(Qt::AlignCenter);
  sample_->setMinimumHeight(sample_->fontMetrics().height() * 3);

  auto* form = new QFormLayout;
  form->addRow(useDefault_);
  form->addRow(tr("&Font:"), font_);
  form->addRow(tr("Sample:"), sample_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmDataOptions::Apply);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(useDefault_, &QCheckBox::toggled, this, [this](bool on) {
    font_->setEnabled(!on);
    Preview();
  });
  connect(font_, &QFontComboBox::currentFontChanged, this, &frmDataOptions::Preview);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
  Preview();
}

void frmDataOptions::Preview() {
  sample_->setFont(useDefault_->isChecked() ? CatalogFont::For({}) : font_->currentFont());
}

void frmDataOptions::Apply() {
  const std::string family =
      useDefault_->isChecked() ? std::string() : Std(font_->currentFont().family());
  if (session_.writer() && session_.writer()->GetDataFont() == family) {
    accept();
    return;
  }
  const Status s = session_.Edit(CatalogChange::kHeader, [&family](classData& d) {
    return d.SetDataFont(family) ? Status::OK() : d.status();
  });
  if (s.ok()) accept();
}

}  // namespace gorvan::ui
