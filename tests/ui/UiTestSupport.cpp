#include "ui/UiTestSupport.h"

#include <QDir>
#include <QPixmap>
#include <QSettings>

#include "app/ErrorLog.h"
#include "app/SettingsStore.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/session/ViewLoader.h"

namespace gorvan::test {

PromptReply ScriptedPrompt::Ask(const PromptRequest& request) {
  asked.push_back(request);
  if (request.buttons == PromptButtons::kOk && (answers.empty() || request.notifyKey.empty())) {
    // A message: OK, unless the script says to tick its check box.
    if (!request.notifyKey.empty() && !answers.empty()) {
      PromptReply r = answers.front();
      answers.pop_front();
      return r;
    }
    return {PromptAnswer::kOk, -1, false};
  }
  if (answers.empty()) {
    ADD_FAILURE() << "unexpected question: " << request.text;
    return {PromptAnswer::kNo, -1, false};
  }
  PromptReply r = answers.front();
  answers.pop_front();
  return r;
}

bool ScriptedPrompt::AskText(const std::string&, const std::string& label, bool, std::string*) {
  ADD_FAILURE() << "unexpected text question: " << label;
  return false;
}

std::string ScriptedPrompt::AskFile(const FileRequest& request) {
  fileRequests.push_back(request);
  if (files.empty()) {
    ADD_FAILURE() << "unexpected file dialog: " << request.title;
    return {};
  }
  std::string f = files.front();
  files.pop_front();
  return f;
}

bool ScriptedPrompt::AskPassword(bool, const PasswordJudge& judge) {
  // Each scripted entry is one press of OK; the dialog stays open on a message.
  while (!passwords.empty()) {
    const PasswordFields f = passwords.front();
    passwords.pop_front();
    const std::string message = judge(f);
    if (message.empty()) return true;
    judged.push_back(message);
  }
  return false;  // Cancel
}

std::vector<std::string> ScriptedPrompt::Texts() const {
  std::vector<std::string> out;
  for (const PromptRequest& r : asked) out.push_back(r.text);
  return out;
}

CatalogBuilder::CatalogBuilder(const std::string& path) {
  EXPECT_TRUE(data_.OpenFiles(path, false, true)) << data_.GetErrorText();
}

int32_t CatalogBuilder::Category(const std::string& name, int32_t parent) {
  classCat cat = data_.CatCursor();
  data_.GetCatAppend(cat);
  cat.SetCatName(name);
  cat.SetCatParentId(parent);
  EXPECT_TRUE(data_.GetCatCommit(cat));
  return cat.GetCatId();
}

void CatalogBuilder::AddFiles(classDir& dir, const std::vector<FileSpec>& files) {
  dir.GetFileAppendStart();
  for (const FileSpec& f : files) {
    ClassFile& file = dir.GetFileAppend();
    file.SetFileName(f.name);
    file.setFileSize(f.size);
    file.setFileDate(f.date);
    file.setFileAttr(f.attr);
    if (!f.notes.empty()) file.SetFileNotes(f.notes);
    if (!f.extra.empty()) file.SetFileExtra(f.extra);
    if (!f.members.empty()) {
      file.GetZipAppendStart();
      for (const FileSpec& m : f.members) {
        ClassFile& member = file.GetZipAppend();
        member.SetFileName(m.name);
        member.setFileSize(m.size);
        member.setFileDate(m.date);
        member.setFileAttr(m.attr);
        member.setFilePath("inner");
      }
      file.GetZipAppendFinish();
    }
  }
  dir.GetFileAppendFinish();
}

int32_t CatalogBuilder::Disc(const DiscSpec& spec) {
  classCd cd = data_.CdCursor();
  data_.GetCdAppend(cd);
  cd.SetCdName(spec.name);
  cd.SetCdLabel("LABEL");
  cd.setCdCategory(spec.category);
  cd.setCdMediaType(spec.mediaType);
  if (!spec.basePath.empty()) cd.SetCdBasepath(spec.basePath);
  if (!spec.notes.empty()) cd.SetCdNotes(spec.notes);
  if (!spec.extra.empty()) cd.SetCdExtra(spec.extra);
  folders_.clear();
  int files = static_cast<int>(spec.rootFiles.size());
  double total = 0;
  // The top folder of a disc scanned at a mount point: no name, path "\".
  classDir& root = cd.GetDirAppend();
  root.SetDirPath("\\");
  root.setDirAttr(16);
  folders_.emplace_back("", root.GetDirId());
  AddFiles(root, spec.rootFiles);
  for (const FolderSpec& f : spec.folders) {
    classDir& dir = cd.GetDirAppend();
    const size_t slash = f.path.rfind('\\');
    dir.SetDirName(slash == std::string::npos ? f.path : f.path.substr(slash + 1));
    dir.SetDirPath(slash == std::string::npos ? "\\" : f.path.substr(0, slash));
    dir.setDirAttr(16);
    dir.setDirDate(45000.25);
    if (!f.notes.empty()) dir.SetDirNotes(f.notes);
    double size = 0;
    for (const FileSpec& file : f.files) size += file.size;
    dir.setDirSize(-size);
    dir.setDirCountOfFiles(static_cast<int32_t>(f.files.size()));
    dir.setDirCountOfFilesDirect(static_cast<int32_t>(f.files.size()));
    folders_.emplace_back(f.path, dir.GetDirId());
    AddFiles(dir, f.files);
    files += static_cast<int>(f.files.size());
    total += size;
  }
  for (const FileSpec& file : spec.rootFiles) total += file.size;
  cd.setCdNumOfSubdirs(static_cast<int32_t>(spec.folders.size()));
  cd.setCdNumOfFiles(files);
  cd.setCdTotalSize(total);
  cd.setCdLastScanned(45100.5);
  cd.GetDirAppendFinish();
  EXPECT_TRUE(data_.GetCdCommit(cd));
  return cd.GetCdId();
}

int32_t CatalogBuilder::FolderId(const std::string& path) const {
  for (const auto& [p, id] : folders_) {
    if (p == path) return id;
  }
  return 0;
}

bool WaitFor(const std::function<bool()>& done, int ms) { return QTest::qWaitFor(done, ms); }

void Screenshot(QWidget* widget, const std::string& name) {
  const QString folder = QStringLiteral(GORVAN_SCREENSHOT_DIR);
  QDir().mkpath(folder);
  if (!widget->isVisible()) widget->show();
  QTest::qWait(50);
  const QPixmap picture = widget->grab();
  ASSERT_FALSE(picture.isNull());
  ASSERT_TRUE(picture.save(folder + QLatin1Char('/') + QString::fromStdString(name) +
                           QStringLiteral(".png")));
}

UiTest::UiTest() {
  // Tests run one process each under ctest; run together, each starts from an
  // empty settings store all the same.
  QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Gorvan"),
            QStringLiteral("Gorvan"))
      .clear();
  ui::NotifyPrompt::ResetSession();
  // As the program does: failures the layers report go to the error log.
  ErrorLog::InstallAsErrorSink();
}

UiTest::~UiTest() {
  if (window) {
    window->ForceQuit();
    window.reset();
  }
  session_.reset();
}

void UiTest::Start(const std::string& catalog, bool askUpdate) {
  if (!askUpdate) SettingsStore::PutBool("Switches", "lShowAutoUpdateNotice", false);
  session_ = std::make_unique<ui::CatalogSession>(prompt);
  window = std::make_unique<ui::frmMenu>(*session_, hooks);
  window->MenuStart(catalog);
  Idle();
}

void UiTest::Idle() {
  // Quiet twice in a row: views ask for reads from the event loop (a delayed
  // layout fetches what an expanded item holds), so one quiet look is not
  // enough.
  int quiet = 0;
  EXPECT_TRUE(WaitFor([&] {
    QTest::qWait(5);
    const bool idle = !session_->busy() && session_->loader().pending() == 0;
    quiet = idle ? quiet + 1 : 0;
    return quiet >= 3;
  }));
}

QAction* UiTest::Action(const char* name) {
  QAction* a = window->command(QString::fromLatin1(name));
  EXPECT_NE(a, nullptr) << name;
  return a;
}

void UiTest::Trigger(const char* name) {
  QAction* a = Action(name);
  ASSERT_TRUE(a);
  ASSERT_TRUE(a->isEnabled()) << name << " is disabled";
  a->trigger();
}

}  // namespace gorvan::test
