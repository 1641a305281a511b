// gorvan-cli settings, integrate, version-check and send-error, in a
// temporary home and against the local test server.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>

#include "support/RunCommand.h"
#include "support/TempDir.h"
#include "support/TestHttpServer.h"

namespace gorvan::test {
namespace {

struct CliRun : CommandResult {
  std::string err;
};

class AppCommandsTest : public ::testing::Test {
 protected:
  CliRun Cli(const std::string& args) {
    CliRun r{
        RunCommand("GORVAN_HOME='" + dir_.File("home") + "' XDG_CONFIG_HOME='" +
                   dir_.File("config") + "' XDG_DATA_HOME='" + dir_.File("data") +
                   "' '" GORVAN_CLI_PATH "' " + args + " 2>'" + dir_.File("err") + "' </dev/null"),
        {}};
    r.err = ReadFileBytes(dir_.File("err"));
    return r;
  }

  TempDir dir_;
};

TEST_F(AppCommandsTest, SettingsReadAndWriteTheStoreWithTypes) {
  EXPECT_EQ(Cli("settings get Switches lNotifyBackup").out, "Switches/lNotifyBackup=True\n");
  EXPECT_EQ(Cli("settings get Switches FreeDbProtocolLevel").out,
            "Switches/FreeDbProtocolLevel=6\n");
  EXPECT_EQ(Cli("settings get Defaults Nothing").code, 1);
  EXPECT_EQ(Cli("settings set Switches lNotifyBackup yes").code, 2);
  EXPECT_EQ(Cli("settings set Switches CurrentBackground two").code, 2);
  EXPECT_EQ(Cli("settings set Switches lNotifyBackup false").out, "Switches/lNotifyBackup=False\n");
  EXPECT_EQ(Cli("settings set History HistoryMenu1 '/a b/c.cd'").code, 0);
  EXPECT_EQ(Cli("settings get Switches lNotifyBackup").out, "Switches/lNotifyBackup=False\n");
  EXPECT_EQ(Cli("settings list").out,
            "History/HistoryMenu1=/a b/c.cd\nSwitches/lNotifyBackup=False\n");
  EXPECT_NE(ReadFileBytes(dir_.File("config/Gorvan/Gorvan.conf")).find("lNotifyBackup=False"),
            std::string::npos);
  EXPECT_EQ(Cli("settings").code, 2);
}

TEST_F(AppCommandsTest, IntegrateInstallsReportsAndRemoves) {
  CliRun r = Cli("integrate install");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 8);
  EXPECT_EQ(r.out.find("\tmissing\t"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("Thunar custom action\tinstalled\t" + dir_.File("config/Thunar/uca.xml")),
            std::string::npos);
  EXPECT_EQ(Cli("integrate install").out, r.out);
  EXPECT_EQ(Cli("settings get Switches lShellIntegration").out,
            "Switches/lShellIntegration=True\n");
  r = Cli("integrate remove");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.find("\tinstalled\t"), std::string::npos) << r.out;
  EXPECT_EQ(Cli("settings get Switches lShellIntegration").out,
            "Switches/lShellIntegration=False\n");
  EXPECT_EQ(Cli("integrate status").out, r.out);
  EXPECT_EQ(Cli("integrate everything").code, 2);
}

TEST_F(AppCommandsTest, VersionCheckAndSendErrorTalkToTheConfiguredServer) {
  CliRun r = Cli("version-check");
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("No support server is configured"), std::string::npos);

  TestHttpServer server;
  const std::string answer =
      "<Gorvan><CurrentVersion>1.0.1</CurrentVersion><ReleaseDate>x</ReleaseDate><ExtraInfo>"
      "</ExtraInfo><Ticket>123</Ticket><UrlStd></UrlStd><UrlPro></UrlPro></Gorvan>";
  server.Answer("/support/GorvanCurrentVersion.asp", CannedAnswer::Ok(answer));
  server.Answer("/support/GorvanSubmitError.asp", CannedAnswer::Ok(answer));
  ASSERT_EQ(
      Cli("settings set Switches SupportServer 127.0.0.1:" + std::to_string(server.port())).code,
      0);
  r = Cli("version-check");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Your are using the latest version of Gorvan!!\n");

  r = Cli("send-error");
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("There is no error log to send."), std::string::npos);
  EXPECT_EQ(server.Requests().size(), 1u) << "no log: nothing sent";
  ASSERT_TRUE(WriteFileBytes(dir_.File("home/Gorvan.err"), "2026-01-01 x | y\n\n"));
  r = Cli("send-error --email ann@example.org");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Your follow-up ticket number is [123]"), std::string::npos) << r.out;
  EXPECT_NE(server.Requests().back().body.find("fldEmail=ann%40example.org"), std::string::npos);
  EXPECT_EQ(Cli("settings get Defaults UserEmail").out, "Defaults/UserEmail=ann@example.org\n");

  ASSERT_EQ(
      Cli("settings set Switches SupportServer 127.0.0.1:" + std::to_string(server.refusedPort()))
          .code,
      0);
  r = Cli("version-check");
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("Internet Connection To Server Failed!!"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("Error Processing Server Information!!"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace gorvan::test
