#include "ui/widgets/PromptBox.h"

#include <QCheckBox>
#include <QPushButton>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

QMessageBox::Icon IconOf(PromptIcon icon) {
  switch (icon) {
    case PromptIcon::kInformation:
      return QMessageBox::Information;
    case PromptIcon::kQuestion:
      return QMessageBox::Question;
    case PromptIcon::kWarning:
      return QMessageBox::Warning;
    case PromptIcon::kCritical:
      return QMessageBox::Critical;
    case PromptIcon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

}  // namespace

PromptBox::PromptBox(const PromptRequest& request, QWidget* parent)
    : QMessageBox(parent), request_(request) {
  setObjectName(QStringLiteral("frmMsgBox"));
  setWindowTitle(request.title.empty() ? QStringLiteral("Gorvan") : Qs(request.title));
  setIcon(IconOf(request.icon));
  // Plain text: the product's messages hold "&&" and "<" as they are meant to show.
  setTextFormat(Qt::PlainText);
  setText(Qs(request.text));
  switch (request.buttons) {
    case PromptButtons::kOk:
      setStandardButtons(Ok);
      break;
    case PromptButtons::kOkCancel:
      setStandardButtons(Ok | Cancel);
      break;
    case PromptButtons::kYesNo:
      setStandardButtons(Yes | No);
      setDefaultButton(Yes);
      break;
    case PromptButtons::kYesNoCancel:
      setStandardButtons(Yes | No | Cancel);
      setDefaultButton(Yes);
      break;
    case PromptButtons::kCustom:
      for (const std::string& caption : request.customButtons) {
        custom_.push_back(addButton(Qs(caption), QMessageBox::AcceptRole));
      }
      if (!custom_.empty()) setDefaultButton(static_cast<QPushButton*>(custom_.front()));
      break;
  }
  if (!request.notifyKey.empty()) {
    dontShow_ =
        new QCheckBox(Qs(request.sessionOnly ? kDontDisplayAgainSession : kDontDisplayAgain));
    dontShow_->setObjectName(QStringLiteral("chkDontShow"));
    setCheckBox(dontShow_);
  }
}

PromptReply PromptBox::reply() const {
  PromptReply r;
  r.dontShowAgain = dontShow_ && dontShow_->isChecked();
  QAbstractButton* clicked = clickedButton();
  for (size_t i = 0; i < custom_.size(); ++i) {
    if (clicked == custom_[i]) {
      r.answer = PromptAnswer::kCustom;
      r.customIndex = static_cast<int>(i);
      return r;
    }
  }
  switch (standardButton(clicked)) {
    case Ok:
      r.answer = PromptAnswer::kOk;
      break;
    case Yes:
      r.answer = PromptAnswer::kYes;
      break;
    case No:
      r.answer = PromptAnswer::kNo;
      break;
    default:
      // Escape or the title bar's close: No for a question, OK for a message.
      r.answer = request_.buttons == PromptButtons::kOk      ? PromptAnswer::kOk
                 : request_.buttons == PromptButtons::kYesNo ? PromptAnswer::kNo
                                                             : PromptAnswer::kCancel;
  }
  return r;
}

}  // namespace gorvan::ui
