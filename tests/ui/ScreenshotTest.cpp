// One picture of every window and dialog, written under <build>/screenshots
// for a person to look at; each test also checks what the picture must show.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

#include "app/Prompt.h"
#include "ui/UiTestSupport.h"
#include "ui/dialogs/frmPassword.h"
#include "ui/main/frmMenu.h"
#include "ui/main/frmSplash.h"
#include "ui/widgets/JobProgressDialog.h"
#include "ui/widgets/PromptBox.h"

namespace gorvan::test {
namespace {

TEST_F(UiTest, ScreenshotMainWindowEmpty) {
  Start("");
  window->resize(900, 600);
  Screenshot(window.get(), "frmMenu-empty");
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Gorvan"));
}

TEST(Screenshots, MessageBoxWithItsCheckBox) {
  PromptRequest r;
  r.text = "Compact Data Files ??";
  r.buttons = PromptButtons::kYesNo;
  r.icon = PromptIcon::kQuestion;
  r.notifyKey = "lNotifyCompact";
  ui::PromptBox box(r);
  Screenshot(&box, "frmMsgBox");
  QCheckBox* check = box.findChild<QCheckBox*>(QStringLiteral("chkDontShow"));
  ASSERT_TRUE(check);
  EXPECT_EQ(check->text(), QStringLiteral("Don't display this prompt again"));
  check->setChecked(true);
  box.button(QMessageBox::No)->click();
  EXPECT_EQ(box.reply().answer, PromptAnswer::kNo);
  EXPECT_TRUE(box.reply().dontShowAgain);
}

TEST(Screenshots, PasswordDialogShowsItsMessagesInsideAndStaysOpen) {
  const PasswordJudge judge = [](const PasswordFields& f) {
    return f.new1 == f.new2 ? std::string() : std::string("The new passwords are not identical !!");
  };
  ui::frmPassword dialog(true, judge);
  dialog.show();
  dialog.findChild<QLineEdit*>(QStringLiteral("txtNewPassword"))->setText(QStringLiteral("abc"));
  dialog.findChild<QLineEdit*>(QStringLiteral("txtConfirmPassword"))
      ->setText(QStringLiteral("abd"));
  dialog.findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.message(), QStringLiteral("The new passwords are not identical !!"));
  Screenshot(&dialog, "frmPassword-change");

  ui::frmPassword ask(false, [](const PasswordFields&) { return std::string(); });
  Screenshot(&ask, "frmPassword-ask");
  EXPECT_EQ(ask.findChild<QLineEdit*>(QStringLiteral("txtPassword"))->echoMode(),
            QLineEdit::Password);
}

TEST(Screenshots, ProgressWindowAndSplash) {
  ui::JobProgressDialog progress(QStringLiteral("Compacting Data File"),
                                 QStringLiteral("Cancel Data Compaction"), 0);
  JobProgress p;
  p.caption = "Processing : Holiday photos";
  p.value = 40;
  p.maximum = 100;
  progress.Report(p);
  Screenshot(&progress, "frmProgress");
  EXPECT_EQ(progress.cancelButton()->text(), QStringLiteral("Cancel Data Compaction"));
  EXPECT_EQ(progress.findChild<QProgressBar*>()->value(), 400);

  ui::frmSplash splash;
  Screenshot(&splash, "frmSplash");
  EXPECT_FALSE(splash.pixmap().isNull());
}

}  // namespace
}  // namespace gorvan::test
