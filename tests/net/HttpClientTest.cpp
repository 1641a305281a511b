#include "net/HttpClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/TestHttpServer.h"

namespace gorvan {
namespace {

using std::chrono::milliseconds;
using test::CannedAnswer;
using test::TestHttpServer;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

HttpRequest Request(std::string url) {
  HttpRequest request;
  request.url = std::move(url);
  return request;
}

TEST(HttpClientTest, GetSendsAgentAndHeadersAndPassesTheAnswerThrough) {
  TestHttpServer server;
  server.Answer("/hello",
                CannedAnswer::Ok(std::string("hi\0there", 8), "text/plain; charset=UTF-8"));

  HttpResponse plain = HttpClient::Get(server.Url("/hello?x=1"));
  ASSERT_TRUE(plain.ok()) << plain.message;
  EXPECT_EQ(plain.status, 200);
  EXPECT_EQ(plain.body, std::string("hi\0there", 8));
  EXPECT_EQ(plain.contentType, "text/plain; charset=UTF-8");
  EXPECT_EQ(plain.finalUrl, server.Url("/hello?x=1"));

  HttpRequest custom = Request(server.Url("/hello"));
  custom.userAgent = "Gorvan/1.0.1 ( ann@example.org )";
  custom.headers = {"Accept: application/json"};
  ASSERT_TRUE(HttpClient::Perform(custom).ok());

  const auto seen = server.Requests();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].method, "GET");
  EXPECT_EQ(seen[0].target, "/hello?x=1");
  EXPECT_THAT(seen[0].Header("User-Agent"), MatchesRegex("Gorvan/[0-9]+\\.[0-9]+\\.[0-9]+"));
  EXPECT_EQ(seen[1].Header("User-Agent"), "Gorvan/1.0.1 ( ann@example.org )");
  EXPECT_EQ(seen[1].Header("Accept"), "application/json");

  // Status codes and redirects are passed through.
  for (int status : {201, 404, 500, 503}) {
    const std::string path = "/s" + std::to_string(status);
    server.Answer(path, CannedAnswer::WithStatus(status, "body " + path));
    HttpResponse r = HttpClient::Get(server.Url(path));
    ASSERT_TRUE(r.ok()) << status << ": " << r.message;
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.body, "body " + path);
  }
  // Five redirects are allowed: /r1 .. /r5 lead to /end.
  for (int i = 1; i <= 5; ++i) {
    server.Answer("/r" + std::to_string(i),
                  CannedAnswer::Redirect(i < 5 ? "/r" + std::to_string(i + 1) : "/end", 301));
  }
  server.Answer("/end", CannedAnswer::Ok("arrived"));
  HttpResponse r = HttpClient::Get(server.Url("/r1"));
  ASSERT_TRUE(r.ok()) << r.message;
  EXPECT_EQ(r.status, 200);
  EXPECT_EQ(r.body, "arrived");
  EXPECT_EQ(r.finalUrl, server.Url("/end"));
}

TEST(HttpClientTest, PostSendsTheFormEscaped) {
  TestHttpServer server;
  server.Answer("/submit", CannedAnswer::Ok("thanks"));
  const std::string longText((1 << 20) + 1, 'x');  // large enough for "Expect: 100-continue"
  HttpResponse r = HttpClient::PostForm(server.Url("/submit"), {{"a b", "x&y=z"},
                                                                {"pipes", "||"},
                                                                {"name", "Bj\xC3\xB6rk~-._"},
                                                                {"empty", ""},
                                                                {"l", longText}});
  ASSERT_TRUE(r.ok()) << r.message;
  EXPECT_EQ(r.body, "thanks");

  const auto seen = server.Requests();
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].method, "POST");
  EXPECT_EQ(seen[0].Header("Content-Type"), "application/x-www-form-urlencoded");
  EXPECT_EQ(seen[0].Header("Expect"), "");
  const std::string expected = "a%20b=x%26y%3Dz&pipes=%7C%7C&name=Bj%C3%B6rk~-._&empty=&l=";
  EXPECT_EQ(seen[0].body.substr(0, expected.size()), expected);
  EXPECT_TRUE(seen[0].body == expected + longText);
}

TEST(HttpClientTest, SizeCap) {
  TestHttpServer server;
  CannedAnswer chunked = CannedAnswer::Ok(std::string(1001, 'c'));
  chunked.chunked = true;
  server.Answer("/exact", CannedAnswer::Ok(std::string(1000, 'e')));
  server.Answer("/over", CannedAnswer::Ok(std::string(1001, 'o')));
  server.Answer("/chunked", chunked);
  server.Answer("/big", CannedAnswer::Ok(std::string((1 << 20) + 1, 'b')));

  struct Case {
    const char* path;
    size_t cap;  // 0: the default
    bool ok;
  } cases[] = {{"/exact", 1000, true},
               {"/over", 1000, false},
               {"/chunked", 1000, false},
               {"/big", 0, false},
               {"/big", 2 << 20, true}};
  for (const Case& c : cases) {
    HttpRequest request = Request(server.Url(c.path));
    request.maxBodyBytes = c.cap;
    HttpResponse r = HttpClient::Perform(request);
    EXPECT_EQ(r.ok(), c.ok) << c.path << " " << c.cap;
    if (!c.ok) {
      EXPECT_EQ(r.error, HttpError::kTooLarge) << c.path;
      EXPECT_THAT(r.message, HasSubstr(std::to_string(c.cap ? c.cap : 1 << 20)));
      EXPECT_TRUE(r.body.empty());
    }
  }
}

TEST(HttpClientTest, FailuresHaveAKindAndAText) {
  TestHttpServer server;
  server.Answer("/stall", CannedAnswer::Stall());
  server.Answer("/trickle", CannedAnswer::Trickle(std::string(100, 't'), milliseconds(50)));
  server.Answer("/cut", CannedAnswer::CutShort("abc", 10));
  server.Answer("/garbage", CannedAnswer::Raw("\x01\x02 this is not HTTP\r\n\r\n"));
  server.Answer("/badstatus", CannedAnswer::Raw("HTTP/1.1 two hundred\r\n\r\n"));
  server.Answer("/loop", CannedAnswer::Redirect("/loop"));
  server.Answer("/toftp", CannedAnswer::Redirect("ftp://127.0.0.1/file"));
  const std::string refused = "http://127.0.0.1:" + std::to_string(server.refusedPort()) + "/x";

  // Only the slow answers get a short time-out, so a busy machine cannot turn
  // the other cases into time-outs.
  const milliseconds kShort(300);
  struct Case {
    std::string url;
    HttpError error;
    std::string header = {};
    milliseconds timeout = HttpRequest::kDefaultTimeout;
  } cases[] = {
      {server.Url("/stall"), HttpError::kTimedOut, {}, kShort},
      {server.Url("/trickle"), HttpError::kTimedOut, {}, kShort},
      {server.Url("/cut"), HttpError::kBadAnswer},
      {server.Url("/garbage"), HttpError::kBadAnswer},
      {server.Url("/badstatus"), HttpError::kBadAnswer},
      {server.Url("/loop"), HttpError::kTooManyRedirects},
      {server.Url("/toftp"), HttpError::kProtocolRefused},
      {refused, HttpError::kConnectFailed},
      {"ftp://127.0.0.1:" + std::to_string(server.port()) + "/x", HttpError::kProtocolRefused},
      {"file:///etc/hostname", HttpError::kProtocolRefused},
      {"http://[::1/x", HttpError::kBadUrl},
      {server.Url("/cut"), HttpError::kBadUrl, "X-Injected: a\r\nHost: elsewhere"},
  };
  for (const Case& c : cases) {
    HttpRequest request = Request(c.url);
    request.timeout = c.timeout;
    if (!c.header.empty()) request.headers = {c.header};
    HttpResponse r = HttpClient::Perform(request);
    EXPECT_EQ(r.error, c.error) << c.url << ": " << r.message;
    EXPECT_FALSE(r.message.empty()) << c.url;
    EXPECT_TRUE(r.body.empty()) << c.url;
  }
  // libcurl's own text names what failed.
  EXPECT_THAT(HttpClient::Get(refused).message,
              HasSubstr("port " + std::to_string(server.refusedPort())));
  // The ftp:// URL on the server's port and the header injection never reached it.
  for (const auto& seen : server.Requests()) {
    EXPECT_NE(seen.target, "/x");
    EXPECT_EQ(seen.Header("X-Injected"), "");
  }
}

TEST(HttpClientTest, AStopEndsAStalledRequestOrPreventsTheConnection) {
  TestHttpServer server;
  server.Answer("/stall", CannedAnswer::Stall());
  server.Answer("/trickle", CannedAnswer::Trickle(std::string(1000, 't'), milliseconds(20)));
  server.Answer("/ping", CannedAnswer::Ok("pong"));
  // A stop asked before the call: no connection at all. The server accepts in
  // order, so a connection of the stopped call would be counted first.
  std::stop_source stopped;
  stopped.request_stop();
  HttpResponse r = HttpClient::Get(server.Url("/ping"), stopped.get_token());
  EXPECT_EQ(r.error, HttpError::kCancelled);
  EXPECT_FALSE(r.message.empty());
  ASSERT_TRUE(HttpClient::Get(server.Url("/ping")).ok());
  EXPECT_EQ(server.connections(), 1);
  // A stop from another thread while the answer stalls or trickles.
  for (const char* path : {"/stall", "/trickle"}) {
    std::stop_source stop;
    std::jthread stopper([&stop] {
      std::this_thread::sleep_for(milliseconds(200));
      stop.request_stop();
    });
    HttpRequest request = Request(server.Url(path));
    request.timeout = milliseconds(20'000);  // a missed stop fails as a time-out, not a hang
    r = HttpClient::Perform(request, stop.get_token());
    EXPECT_EQ(r.error, HttpError::kCancelled) << path << ": " << r.message;
    EXPECT_FALSE(r.message.empty());
  }
}

TEST(HttpClientTest, ThreadsRequestAtOnce) {
  TestHttpServer server;
  constexpr int kThreads = 4, kEach = 5;
  for (int t = 0; t < kThreads; ++t) {
    server.Answer("/t" + std::to_string(t), CannedAnswer::Ok("answer " + std::to_string(t)));
  }
  std::vector<int> good(kThreads, 0);
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < kEach; ++i) {
          HttpResponse r = HttpClient::Get(server.Url("/t" + std::to_string(t)));
          good[t] += r.ok() && r.body == "answer " + std::to_string(t);
        }
      });
    }
  }
  EXPECT_THAT(good, ::testing::Each(kEach));
}

}  // namespace
}  // namespace gorvan
