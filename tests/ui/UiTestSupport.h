#pragma once
// Helpers of the desktop program's tests: a Prompt that answers from a
// script and records every question, a catalog builder, a fixture that starts
// the main window on a catalog, waiting for the view loader, and screenshots.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QTest>
#include <QWidget>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "app/Prompt.h"
#include "catalog/classData.h"
#include "support/TempDir.h"
#include "ui/main/CommandHooks.h"

class QWidget;

namespace gorvan::ui {
class CatalogSession;
class frmMenu;
}  // namespace gorvan::ui

// Readable Qt texts in test failures.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& l, std::ostream* os) {
  *os << '{';
  for (const QString& s : l) *os << '"' << s.toStdString() << "\", ";
  *os << '}';
}
QT_END_NAMESPACE

namespace gorvan::test {

// Answers questions in the order scripted. A message (OK only) needs no
// script. A question without an answer fails the test and answers No.
class ScriptedPrompt final : public Prompt {
 public:
  PromptReply Ask(const PromptRequest& request) override;
  bool AskText(const std::string& title, const std::string& label, bool hidden,
               std::string* text) override;
  std::string AskFile(const FileRequest& request) override;
  bool AskPassword(bool change, const PasswordJudge& judge) override;

  void Answer(PromptAnswer a, bool dontShowAgain = false) {
    answers.push_back({a, -1, dontShowAgain});
  }
  // The texts of every Ask so far, oldest first.
  std::vector<std::string> Texts() const;
  std::string LastText() const { return asked.empty() ? std::string() : asked.back().text; }

  std::deque<PromptReply> answers;
  std::deque<std::string> files;         // "" cancels the file dialog
  std::deque<PasswordFields> passwords;  // typed into the dialog, one OK each
  std::vector<PromptRequest> asked;
  std::vector<FileRequest> fileRequests;
  std::vector<std::string> judged;  // what the password dialog showed
};

// A catalog made for a test, through the object model as a scan makes it.
struct FileSpec {
  std::string name{};
  double size = 0;
  double date = 45000.5;
  int32_t attr = 32;
  std::string notes{};
  std::string extra{};
  std::vector<FileSpec> members{};  // archive members
};
struct FolderSpec {
  std::string path{};  // "a", "a\\b": the folder's place below the disc's top folder
  std::vector<FileSpec> files{};
  std::string notes{};
};
struct DiscSpec {
  std::string name{};
  int32_t category = 0;
  std::vector<FileSpec> rootFiles{};
  std::vector<FolderSpec> folders{};  // parents before children
  std::string basePath{};
  int32_t mediaType = 3;
  std::string notes{};
  std::string extra{};
};

class CatalogBuilder {
 public:
  explicit CatalogBuilder(const std::string& path);
  int32_t Category(const std::string& name, int32_t parent = 0);
  int32_t Disc(const DiscSpec& spec);
  // The folder id of a path ("" the top folder) of the last disc added.
  int32_t FolderId(const std::string& path) const;
  classData& data() { return data_; }
  void Close() { data_.CloseFiles(); }

 private:
  void AddFiles(classDir& dir, const std::vector<FileSpec>& files);
  classData data_;
  std::vector<std::pair<std::string, int32_t>> folders_;
};

// Waits (running the event loop) until done() holds, at most ms.
bool WaitFor(const std::function<bool()>& done, int ms = 10000);

// Writes a picture of widget to <build>/screenshots/<name>.png.
void Screenshot(QWidget* widget, const std::string& name);

// The main window on a catalog, with a scripted prompt.
class UiTest : public ::testing::Test {
 protected:
  UiTest();
  ~UiTest() override;

  // Builds the window and runs MenuStart on catalog ("" opens nothing). The
  // first-start question is switched off unless askUpdate is set.
  void Start(const std::string& catalog, bool askUpdate = false);
  // Waits until the view loader and any job are idle.
  void Idle();
  QAction* Action(const char* name);
  // Triggers a command as its menu item would.
  void Trigger(const char* name);
  template <typename W>
  W* Find(const char* name) {
    return Find<W>(QString::fromLatin1(name));
  }
  template <typename W>
  W* Find(const QString& name);
  ui::CatalogSession& session() { return *session_; }

  TempDir dir;
  ScriptedPrompt prompt;
  ui::CommandHooks hooks;
  std::unique_ptr<ui::CatalogSession> session_;
  std::unique_ptr<ui::frmMenu> window;
};

template <typename W>
W* UiTest::Find(const QString& name) {
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (top->objectName() == name) {
      if (auto* w = qobject_cast<W*>(top)) return w;
    }
    if (W* w = top->findChild<W*>(name)) return w;
  }
  return nullptr;
}

}  // namespace gorvan::test
