#pragma once
// QtPrompt: the Prompt of the desktop program — the shared message box
// (PromptBox), Qt's file dialog and input dialog, and frmPassword. Each is
// modal to the main window and runs on the GUI thread, never inside a walk
// (walks run on workers).

#include <QPointer>
#include <QWidget>

#include "app/Prompt.h"

namespace gorvan::ui {

class QtPrompt final : public Prompt {
 public:
  explicit QtPrompt(QWidget* parent = nullptr) : parent_(parent) {}
  void SetParent(QWidget* parent) { parent_ = parent; }

  PromptReply Ask(const PromptRequest& request) override;
  bool AskText(const std::string& title, const std::string& label, bool hidden,
               std::string* text) override;
  std::string AskFile(const FileRequest& request) override;
  bool AskPassword(bool change, const PasswordJudge& judge) override;

  // The product's filter ("Description (*.ext)|*.ext|...") in Qt's form
  // ("Description (*.ext);;..."); a description without its pattern gets it
  // appended.
  static QString QtFilter(const std::string& filter);

 private:
  QPointer<QWidget> parent_;
};

}  // namespace gorvan::ui
