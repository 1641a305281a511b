// Help: the about box names what a report needs, the manual opens in the
// browser and its pages link to each other, the tips read any file safely and
// step round, the send dialog posts the log and shows the reply, and the
// version check answers in the message box and can be cancelled.
#include <QCheckBox>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <fstream>

#include "app/AppFolder.h"
#include "app/SettingsStore.h"
#include "app/SupportClient.h"
#include "support/TestHttpServer.h"
#include "ui/OptionsFixture.h"
#include "ui/help/Manual.h"
#include "ui/help/TipFile.h"
#include "ui/help/frmAbout.h"
#include "ui/help/frmSendError.h"
#include "ui/help/frmTip.h"
#include "ui/help/frmUpdate.h"
#include "ui/main/frmMenu.h"

namespace gorvan::test {
namespace {

std::string ServerAnswer(const std::string& version, const std::string& ticket = "4711") {
  return "<Gorvan><CurrentVersion>" + version +
         "</CurrentVersion><ReleaseDate>2026-11-01</ReleaseDate><ExtraInfo>Faster "
         "search</ExtraInfo><Ticket>" +
         ticket + "</Ticket><UrlStd>https://example.org/gorvan</UrlStd><UrlPro>-</UrlPro></Gorvan>";
}

class HelpTest : public OptionsTest {
 protected:
  HelpTest() { setenv("no_proxy", "127.0.0.1,localhost", 1); }
  void UseServer() {
    state().settings().supportServer = "127.0.0.1:" + std::to_string(server.port());
  }
  TestHttpServer server;
};

TEST_F(HelpTest, AboutBoxNamesVersionFormatLibrariesAndFolders) {
  Start("");
  Trigger("mnuHelpAbout");
  auto* about = Opened<ui::frmAbout>("frmAbout");
  ASSERT_TRUE(about);
  Screenshot(about, "frmAbout");
  const QString facts = about->findChild<QLabel*>(QStringLiteral("lblFacts"))->text();
  EXPECT_TRUE(facts.contains(QString::fromStdString(VersionString())));
  EXPECT_TRUE(facts.contains(QStringLiteral("Catalog format: 2.1")));
  EXPECT_TRUE(facts.contains(QString::fromStdString(AppFolder::Path())));
  EXPECT_TRUE(facts.contains(QString::fromStdString(SettingsStore::FilePath())));
  for (const char* library : {"Qt 6.", "libcurl ", "PCRE2 ", "OpenSSL ", "libblkid ", "libarchive ",
                              "libxlsxwriter ", "libudev ", "nlohmann-json "}) {
    EXPECT_TRUE(facts.contains(QLatin1String(library))) << library;
  }
  // Every library with a version number, none left blank by the build.
  for (const QString& l : ui::frmAbout::Libraries()) {
    EXPECT_TRUE(l.contains(QRegularExpression(QStringLiteral(" \\d+")))) << l.toStdString();
  }
}

TEST_F(HelpTest, ManualOpensInTheBrowserAndItsPagesHoldTogether) {
  QList<QUrl> opened;
  ui::Manual::SetOpener([&opened](const QUrl& url) {
    opened << url;
    return true;
  });
  Start("");
  Trigger("mnuHelpContents");
  ui::Manual::SetOpener({});
  ASSERT_EQ(opened.size(), 1);
  const QString index = opened.front().toLocalFile();
  EXPECT_TRUE(index.endsWith(QStringLiteral("/help/index.html")));

  // Every page of the manual is linked from the contents, every local link
  // leads to a page that exists and to an anchor it holds.
  const QDir help = QFileInfo(index).dir();
  QStringList pages = help.entryList({QStringLiteral("*.html")}, QDir::Files);
  ASSERT_GE(pages.size(), 10);
  QFile contents(index);
  ASSERT_TRUE(contents.open(QIODevice::ReadOnly));
  const QString toc = QString::fromUtf8(contents.readAll());
  static const QRegularExpression link(QStringLiteral("href=\"([^\"#:]*)(#[^\"]*)?\""));
  for (const QString& page : pages) {
    if (page != QLatin1String("index.html")) {
      EXPECT_TRUE(toc.contains(QStringLiteral("href=\"") + page)) << page.toStdString();
    }
    QFile f(help.filePath(page));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QString html = QString::fromUtf8(f.readAll());
    EXPECT_TRUE(html.contains(QStringLiteral("<title>"))) << page.toStdString();
    for (auto it = link.globalMatch(html); it.hasNext();) {
      const QRegularExpressionMatch m = it.next();
      const QString target = m.captured(1).isEmpty() ? page : m.captured(1);
      ASSERT_TRUE(QFileInfo::exists(help.filePath(target)))
          << page.toStdString() << " links to " << target.toStdString();
      if (!m.captured(2).isEmpty()) {
        QFile t(help.filePath(target));
        ASSERT_TRUE(t.open(QIODevice::ReadOnly));
        EXPECT_TRUE(
            QString::fromUtf8(t.readAll())
                .contains(QStringLiteral("id=\"") + m.captured(2).mid(1) + QLatin1Char('"')))
            << page.toStdString() << " links to " << m.captured(0).toStdString();
      }
    }
  }

  // A manual that is missing: said so, nothing is opened.
  EXPECT_FALSE(ui::Manual::Open(prompt, QString::fromStdString(dir.File("gone/index.html"))));
  EXPECT_NE(prompt.LastText().find("The manual is not installed"), std::string::npos);
  EXPECT_EQ(opened.size(), 1);

  // A desktop that starts no browser: the user is told where the manual is.
  ui::Manual::SetOpener([](const QUrl&) { return false; });
  Trigger("mnuHelpContents");
  ui::Manual::SetOpener({});
  EXPECT_NE(prompt.LastText().find("help/index.html"), std::string::npos) << prompt.LastText();
}

TEST(Tips, AnyFileGivesTipsAndABadOneSaysWhy) {
  TempDir dir;
  auto write = [&dir](const std::string& name, const std::string& text) {
    std::ofstream(dir.path() + "/" + name, std::ios::binary) << text;
    return QString::fromStdString(dir.path() + "/" + name);
  };
  ui::TipFile tips;
  tips.Load(write("good.tip",
                  "# our tips\nFirst tip.\r\n\n  Second tip.  \n" + std::string(3000, 'x') + "\n"));
  ASSERT_EQ(tips.tips().size(), 3);
  EXPECT_EQ(tips.tips()[0], QStringLiteral("First tip."));
  EXPECT_EQ(tips.tips()[1], QStringLiteral("Second tip."));
  EXPECT_EQ(tips.tips()[2].size(), ui::TipFile::kMaxTipLength);
  EXPECT_TRUE(tips.problem().isEmpty());

  for (const QString& bad : {write("empty.tip", ""), write("comments.tip", "# only\n\n"),
                             QString::fromStdString(dir.path() + "/missing.tip")}) {
    tips.Load(bad);
    EXPECT_EQ(tips.tips().size(), 1) << bad.toStdString();
    EXPECT_TRUE(tips.problem().contains(bad)) << tips.problem().toStdString();
  }
  // A huge file: the first tips up to the limits, no half line.
  std::string huge;
  for (int i = 0; huge.size() < 3 * 1024 * 1024; ++i)
    huge += "Tip number " + std::to_string(i) + "\n";
  tips.Load(write("huge.tip", huge));
  EXPECT_EQ(tips.tips().size(), ui::TipFile::kMaxTips);
  EXPECT_EQ(tips.tips().back(), QStringLiteral("Tip number 999"));
}

TEST_F(HelpTest, TipOfTheDayStepsRoundAndRemembersWhereItWas) {
  Start("");
  ui::TipFile shipped;
  shipped.Load(QString::fromStdString(state().files().tipsFile));
  EXPECT_TRUE(shipped.problem().isEmpty()) << shipped.problem().toStdString();
  const int count = static_cast<int>(shipped.tips().size());
  ASSERT_GE(count, 20);

  Trigger("mnuHelpTip");
  auto* tip = Opened<ui::frmTip>("frmTip");
  ASSERT_TRUE(tip);
  Screenshot(tip, "frmTip");
  EXPECT_EQ(tip->tipText(), shipped.tips()[0]);
  tip->findChild<QPushButton*>(QStringLiteral("btnPrevious"))->click();
  EXPECT_EQ(tip->tipText(), shipped.tips()[count - 1]);
  tip->findChild<QPushButton*>(QStringLiteral("btnNext"))->click();
  tip->findChild<QPushButton*>(QStringLiteral("btnNext"))->click();
  EXPECT_EQ(tip->tipText(), shipped.tips()[1]);
  tip->findChild<QCheckBox*>(QStringLiteral("chkShowAtStartup"))->setChecked(false);
  tip->close();
  Flush();
  EXPECT_FALSE(ui::frmTip::ShowAtStartup());
  // The next showing goes on after the last tip seen.
  Trigger("mnuHelpTip");
  tip = Opened<ui::frmTip>("frmTip");
  ASSERT_TRUE(tip);
  EXPECT_EQ(tip->tipText(), shipped.tips()[2]);
}

TEST_F(HelpTest, SendDialogPostsTheLogAndShowsTheReply) {
  const std::string log = state().files().errorLog;
  std::ofstream(log, std::ios::trunc)
      << "2026-11-25 05:00:00 1.0.1.Std | frmMenu.Load | 5 | oops\n";
  state().settings().supportEmail = "help@example.org";
  Start("");
  // No server configured: nobody is contacted, and the dialog says so.
  Trigger("mnuHelpSendError");
  auto* dialog = Opened<ui::frmSendError>("frmSendError");
  ASSERT_TRUE(dialog);
  QString lines;
  for (const std::string& l : SupportClient::SendDialogLines("help@example.org"))
    lines += QString::fromStdString(l) + QLatin1Char('\n');
  EXPECT_EQ(dialog->findChild<QLabel*>(QStringLiteral("lblExplain"))->text(), lines.trimmed());
  dialog->findChild<QLineEdit*>(QStringLiteral("txtEmail"))
      ->setText(QStringLiteral("ann@example.org"));
  dialog->findChild<QPushButton*>(QStringLiteral("btnSend"))->click();
  ASSERT_TRUE(WaitFor([&] { return !dialog->sending(); }));
  EXPECT_TRUE(dialog->result().contains(QLatin1String(kNoSupportServer)))
      << dialog->result().toStdString();
  EXPECT_EQ(SettingsStore::GetText("Defaults", "UserEmail"), "ann@example.org");
  EXPECT_TRUE(server.Requests().empty());
  dialog->close();
  Flush();

  server.Answer("/support/GorvanSubmitError.asp", CannedAnswer::Ok(ServerAnswer("1.0.1", "4711")));
  UseServer();
  Trigger("mnuHelpSendError");
  dialog = Opened<ui::frmSendError>("frmSendError");
  ASSERT_TRUE(dialog);
  EXPECT_EQ(dialog->findChild<QLineEdit*>(QStringLiteral("txtEmail"))->text(),
            QStringLiteral("ann@example.org"));
  dialog->findChild<QPushButton*>(QStringLiteral("btnSend"))->click();
  EXPECT_TRUE(dialog->isVisible()) << "the window stays usable while it sends";
  ASSERT_TRUE(WaitFor([&] { return !dialog->sending(); }));
  Screenshot(dialog, "frmSendError");
  EXPECT_TRUE(
      dialog->result().contains(QStringLiteral("The error log is sent to the Gorvan support!!")));
  EXPECT_TRUE(dialog->result().contains(QStringLiteral("[4711]")));
  ASSERT_EQ(server.Requests().size(), 1u);
  EXPECT_EQ(server.Requests()[0].method, "POST");
  EXPECT_NE(server.Requests()[0].body.find("fldEmail=ann%40example.org"), std::string::npos)
      << server.Requests()[0].body;
  EXPECT_NE(server.Requests()[0].body.find("oops"), std::string::npos);
}

TEST_F(HelpTest, VersionCheckAnswersInTheMessageBoxAndCanBeCancelled) {
  server.Answer("/support/GorvanCurrentVersion.asp", CannedAnswer::Ok(ServerAnswer("9.0.0")));
  Start("");
  UseServer();
  const size_t before = prompt.asked.size();
  Trigger("mnuHelpUpdate");
  ASSERT_TRUE(WaitFor([&] { return prompt.asked.size() > before; }));
  EXPECT_NE(prompt.LastText().find("A newer version of Gorvan (9.0.0) is available!!"),
            std::string::npos)
      << prompt.LastText();
  Flush();
  EXPECT_FALSE(Find<ui::frmUpdate>("frmUpdate"));

  // A server that never answers: Cancel ends the check, and nothing is shown.
  server.Answer("/support/GorvanCurrentVersion.asp", CannedAnswer::Stall());
  Trigger("mnuHelpUpdate");
  auto* check = Opened<ui::frmUpdate>("frmUpdate");
  ASSERT_TRUE(check);
  ASSERT_TRUE(check->checking());
  Screenshot(check, "frmUpdate");
  const size_t asked = prompt.asked.size();
  check->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  EXPECT_FALSE(check->checking());
  QTest::qWait(50);
  EXPECT_EQ(prompt.asked.size(), asked);
}

}  // namespace
}  // namespace gorvan::test
