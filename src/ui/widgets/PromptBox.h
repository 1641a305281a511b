#pragma once
// PromptBox: the shared message box. It shows a PromptRequest — title, text,
// icon and buttons — and, for a prompt that the user may switch off, the check
// box "Don't display this prompt again" (or "... in this session").

#include <QMessageBox>

#include "app/Prompt.h"

class QCheckBox;

namespace gorvan::ui {

class PromptBox : public QMessageBox {
  Q_OBJECT

 public:
  PromptBox(const PromptRequest& request, QWidget* parent = nullptr);

  // The answer once the box was closed.
  PromptReply reply() const;

 private:
  PromptRequest request_;
  QCheckBox* dontShow_ = nullptr;
  std::vector<QAbstractButton*> custom_;
};

}  // namespace gorvan::ui
