// The support server: the answer parser, the version check, the error
// submission and the error routine, against the local test server.
#include <gtest/gtest.h>

#include <thread>

#include "app/AppFolder.h"
#include "app/AppTestSupport.h"
#include "app/ErrorLog.h"
#include "app/ErrorRoutine.h"
#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "app/SupportClient.h"
#include "catalog/ErrorReporter.h"
#include "net/HttpClient.h"
#include "support/TempDir.h"
#include "support/TestHttpServer.h"

namespace gorvan {
namespace {

using test::CannedAnswer;
using test::WriteFileBytes;
using Outcome = SupportClient::Outcome;

std::string Answer(const std::string& version, const std::string& ticket = "T-1") {
  return "<html><Gorvan><CurrentVersion>" + version +
         "</CurrentVersion><ReleaseDate>2031-02-03</ReleaseDate><ExtraInfo>Faster scans"
         "</ExtraInfo><Ticket>" +
         ticket +
         "</Ticket><UrlStd>https://dl.example/std</UrlStd>"
         "<UrlPro></UrlPro></Gorvan></html>";
}

// The value of a field of a form body.
std::string Field(const std::string& body, const std::string& name) {
  const std::string key = name + "=";
  size_t at = body.rfind(key, 0) == 0 ? 0 : body.find("&" + key);
  if (at == std::string::npos) return "<absent>";
  at += at == 0 ? key.size() : key.size() + 1;
  std::string value;
  for (size_t i = at; i < body.size() && body[i] != '&'; ++i) {
    if (body[i] == '%' && i + 2 < body.size()) {
      value.push_back(static_cast<char>(std::stoi(body.substr(i + 1, 2), nullptr, 16)));
      i += 2;
    } else {
      value.push_back(body[i] == '+' ? ' ' : body[i]);
    }
  }
  return value;
}

class SupportTest : public ::testing::Test {
 protected:
  SupportClient Client() {
    settings_.supportServer = "127.0.0.1:" + std::to_string(server_.port());
    settings_.supportWebAddress = "https://gorvan.example";
    SupportClient client(settings_);
    client.SetTimeouts(std::chrono::milliseconds(2000), std::chrono::milliseconds(1500));
    return client;
  }

  test::FreshUser user_;
  test::TestHttpServer server_;
  SettingsRecord settings_;
};

TEST(ServerAnswerTest, EveryElementMustBePlainTextInsideGorvan) {
  ServerAnswer a;
  ASSERT_TRUE(ServerAnswer::Parse(Answer("1.2.3"), &a));
  EXPECT_EQ(a.currentVersion, "1.2.3");
  EXPECT_EQ(a.releaseDate, "2031-02-03");
  EXPECT_EQ(a.ticket, "T-1");
  EXPECT_EQ(a.urlStd, "https://dl.example/std");
  EXPECT_EQ(a.urlPro, "");
  const std::string good = Answer("1.2.3");
  const auto without = [&](const std::string& cut) {
    std::string s = good;
    return s.erase(s.find(cut), cut.size());
  };
  for (const std::string& bad :
       {std::string("garbage"), std::string(), without("<Gorvan>"), without("</Gorvan>"),
        without("<UrlPro></UrlPro>"), without("</Ticket>"), Answer("1.<b>2</b>.3"),
        Answer("1.2.3", "12</Tick>"), good.substr(0, good.find("<UrlStd>") + 12),
        "<UrlPro></UrlPro>" + without("<UrlPro></UrlPro>")}) {
    EXPECT_FALSE(ServerAnswer::Parse(bad, &a)) << bad;
  }
  VersionParts v{};
  for (const char* text :
       {"2.1", "2.x.0", "1.2.3.4", "", "1..3", " 1.2.3", "1.2.3 ", "-1.2.3", "1234567890.0.0"}) {
    EXPECT_FALSE(ParseVersion(text, &v)) << text;
  }
  ASSERT_TRUE(ParseVersion("10.0.07", &v));
  EXPECT_EQ(v, (VersionParts{10, 0, 7}));
}

TEST_F(SupportTest, VersionCheckComparesAndSpeaksOnlyWhenAsked) {
  const struct {
    const char* version;
    bool newer;
    bool valid;
  } cases[] = {{"1.0.1", false, true}, {"1.0.2", true, true},  {"1.1.0", true, true},
               {"2.0.0", true, true},  {"0.9.9", false, true}, {"1.0.0", false, true},
               {"2.1", false, false},  {"2.x.0", false, false}};
  for (const auto& c : cases) {
    server_.Answer("/support/GorvanCurrentVersion.asp", CannedAnswer::Ok(Answer(c.version)));
    const Outcome loud = Client().CheckVersion(true);
    const Outcome quiet = Client().CheckVersion(false);
    EXPECT_EQ(loud.ok, c.valid) << c.version;
    EXPECT_EQ(loud.newerVersion, c.newer) << c.version;
    ASSERT_EQ(loud.messages.size(), 1u) << c.version;
    if (c.newer) {
      EXPECT_EQ(loud.messages[0], "A newer version of Gorvan (" + std::string(c.version) +
                                      ") is available!!\nReleased: 2031-02-03\nFaster scans\n"
                                      "Download it from https://dl.example/std");
      EXPECT_EQ(quiet.messages, loud.messages);
    } else {
      EXPECT_EQ(loud.messages[0], c.valid ? kLatestVersion : kBadServerAnswer);
      EXPECT_TRUE(quiet.messages.empty()) << c.version;
    }
  }
  EXPECT_EQ(server_.Requests().back().method, "GET");
  EXPECT_EQ(server_.Requests().back().target, "/support/GorvanCurrentVersion.asp");
}

TEST_F(SupportTest, FailuresGiveTheProductsMessagesWithinTheTimeOut) {
  const std::string big(2 << 20, 'x');
  const struct {
    CannedAnswer answer;
    std::vector<std::string> messages;
  } cases[] = {
      {CannedAnswer::Raw("\x01\x02 not http at all\r\n\r\n"), {kNoResponse, kBadServerAnswer}},
      {CannedAnswer::Ok("<Gorvan>half an answer"), {kBadServerAnswer}},
      {CannedAnswer::WithStatus(500, "Internal error"), {kBadServerAnswer}},
      {CannedAnswer::Ok(""), {kNoResponse, kBadServerAnswer}},
      {CannedAnswer::Ok(big), {kNoResponse, kBadServerAnswer}},
      {CannedAnswer::CutShort(Answer("1.0.1"), 5000), {kNoResponse, kBadServerAnswer}},
      {CannedAnswer::Stall(), {kNoResponse, kBadServerAnswer}},
  };
  for (const auto& c : cases) {
    server_.Answer("/support/GorvanCurrentVersion.asp", c.answer);
    const Outcome loud = Client().CheckVersion(true);
    EXPECT_FALSE(loud.ok);
    EXPECT_EQ(loud.messages, c.messages) << loud.detail;
    EXPECT_TRUE(Client().CheckVersion(false).messages.empty());
  }
  settings_.supportServer = "127.0.0.1:" + std::to_string(server_.refusedPort());
  SupportClient refused(settings_);
  Outcome r = refused.CheckVersion(true);
  EXPECT_EQ(r.messages, (std::vector<std::string>{kConnectionFailed, kBadServerAnswer}));
  EXPECT_NE(r.detail, "");
  r = refused.SubmitErrorLog(ErrorLog::Default().path(), "", false);
  EXPECT_TRUE(r.messages.empty());

  settings_.supportServer = " ";
  r = SupportClient(settings_).SubmitErrorLog(ErrorLog::Default().path(), "", true);
  EXPECT_FALSE(r.contacted);
  EXPECT_EQ(r.messages, std::vector<std::string>{kNoSupportServer});
  EXPECT_TRUE(SupportClient(settings_).CheckVersion(false).messages.empty());
}

TEST_F(SupportTest, SubmissionSendsTheLogUpToTheLineThatCrosses20000Characters) {
  test::TempDir dir;
  std::string log, expected;
  // Lines of 100 characters: the 197th makes the joined text 20,092 long.
  for (int i = 0; i < 300; ++i) {
    std::string line = "line " + std::to_string(i) + " ";
    line.resize(100, i % 2 ? '.' : ' ');
    log += line + "\n";
    if (i < 197) expected += (i ? "||" : "") + line;
  }
  std::replace(expected.begin(), expected.end(), ' ', '_');
  WriteFileBytes(dir.File("Gorvan.err"), log);
  server_.Answer("/support/GorvanSubmitError.asp", CannedAnswer::Ok(Answer("1.3.0", "4711")));

  const Outcome sent = Client().SubmitErrorLog(dir.File("Gorvan.err"), "ann@example.org", true);
  ASSERT_TRUE(sent.ok);
  EXPECT_EQ(sent.messages,
            std::vector<std::string>{
                "The error log is sent to the Gorvan support!!\nYour follow-up ticket number is "
                "[4711]\nPlease note that a newer version (1.3.0) of Gorvan is avilable for "
                "download from our https://gorvan.example\nThank you!!"});
  const test::ReceivedRequest request = server_.Requests().back();
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.target, "/support/GorvanSubmitError.asp");
  EXPECT_EQ(request.Header("Content-Type"), "application/x-www-form-urlencoded");
  EXPECT_EQ(Field(request.body, "fldError"), expected);
  EXPECT_EQ(expected.size(), 20092u);
  EXPECT_EQ(Field(request.body, "fldStdPro"), "Std");
  EXPECT_EQ(Field(request.body, "fldVersion"), "1.0.1");
  EXPECT_EQ(Field(request.body, "fldEmail"), "ann@example.org");
  EXPECT_EQ(request.body.rfind("fldError=", 0), 0u) << "the fields in their order";

  WriteFileBytes(dir.File("Gorvan.err"), "a b&c=d\n\nlast");
  server_.Answer("/support/GorvanSubmitError.asp", CannedAnswer::Ok(Answer("1.0.1", "9")));
  const Outcome plain = Client().SubmitErrorLog(dir.File("Gorvan.err"), "", true);
  EXPECT_EQ(plain.messages[0],
            "The error log is sent to the Gorvan support!!\n"
            "Your follow-up ticket number is [9]\nThank you!!");
  EXPECT_EQ(Field(server_.Requests().back().body, "fldError"), "a_b&c=d||||last");
  EXPECT_EQ(Field(server_.Requests().back().body, "fldEmail"), "<absent>");
  const Outcome none = Client().SubmitErrorLog(dir.File("missing.err"), "", true);
  EXPECT_EQ(none.messages, std::vector<std::string>{kNoErrorLog});
  EXPECT_EQ(SupportClient::Url("http://host:81/", "support/x.asp"), "http://host:81/support/x.asp");
}

TEST_F(SupportTest, ErrorRoutineOffersToSendByModeAndSwitch) {
  test::ScriptedPrompt prompt;
  int returned = 0;
  Client();  // fills in the server
  settings_.supportEmail = "help@gorvan.example";
  ErrorRoutine routine(prompt, settings_);
  routine.SetReturnToMainWindow([&] { ++returned; });
  routine.InstallAsErrorSink();
  server_.Answer("/support/GorvanSubmitError.asp", CannedAnswer::Ok(Answer("1.0.1", "77")));

  ReportError("classData.OpenFiles", 1001, "damaged", 3);
  EXPECT_TRUE(prompt.asked.empty());
  prompt.replies.push_back({PromptAnswer::kCustom, 1, false});  // "Do Not Send Log"
  ReportError("classCd.recordGet", 5, "first", 2);
  ASSERT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(prompt.asked[0].title, kErrorPromptTitle);
  EXPECT_EQ(prompt.asked[0].text, kErrorPromptText);
  EXPECT_EQ(prompt.asked[0].customButtons,
            (std::vector<std::string>{kSendErrorLog, kDoNotSendLog}));
  EXPECT_EQ(prompt.asked[0].notifyKey, "lNotifyErrorSend");
  EXPECT_EQ(returned, 1);
  EXPECT_TRUE(server_.Requests().empty());

  prompt.replies.push_back({PromptAnswer::kCustom, 0, false});  // "Send Error Log"
  prompt.textAnswer = "bob@example.org";
  ReportError("basSearch.Run", 6, "second", 1);
  ASSERT_EQ(prompt.textLabels.size(), 1u);
  EXPECT_NE(prompt.textLabels[0].find("send it via \nhelp@gorvan.example\nOptionally"),
            std::string::npos);
  EXPECT_EQ(SettingsStore::GetText("Defaults", "UserEmail"), "bob@example.org");
  ASSERT_EQ(server_.Requests().size(), 1u);
  EXPECT_NE(Field(server_.Requests()[0].body, "fldError").find("basSearch.Run_|_6_|_second"),
            std::string::npos);
  EXPECT_NE(prompt.asked.back().text.find("[77]"), std::string::npos);
  EXPECT_EQ(returned, 1);

  // From a worker thread the offer waits for the routine's own thread.
  std::thread([] { ReportError("scan", 7, "worker", 1); }).join();
  const size_t before = prompt.asked.size();
  prompt.replies.push_back({PromptAnswer::kCustom, 1, true});  // ticks the check box
  EXPECT_TRUE(routine.OfferPending());
  EXPECT_EQ(prompt.asked.size(), before + 1);
  EXPECT_FALSE(routine.OfferPending());
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyErrorSend"), "False");
  ReportError("again", 8, "no offer now", 1);
  EXPECT_EQ(prompt.asked.size(), before + 1);
  const std::string text = test::ReadFileBytes(ErrorLog::Default().path());
  EXPECT_NE(text.find("| classData.OpenFiles | 1001 | damaged\n2"), std::string::npos) << text;
  EXPECT_NE(text.find("| again | 8 | no offer now\n\n"), std::string::npos) << text;
}

TEST(ErrorRoutineDeathTest, OutOfMemoryShowsItsMessageAndQuits) {
  struct Printing : test::ScriptedPrompt {
    PromptReply Ask(const PromptRequest& r) override {
      fprintf(stderr, "%s\n", r.text.c_str());
      return {};
    }
  };
  EXPECT_EXIT(
      {
        static Printing prompt;
        ErrorRoutine::InstallOutOfMemoryHandler(&prompt);
        // What operator new does when an allocation fails.
        std::get_new_handler()();
      },
      ::testing::ExitedWithCode(1), "System is running is out of memory!! Quitting!!");
}

}  // namespace
}  // namespace gorvan
