#pragma once
// TestHttpServer: a small HTTP/1.1 server on 127.0.0.1 for tests of code that
// talks to web services. It runs on its own thread, serves one connection at a
// time (others wait in the listen queue), answers each request from a table of
// canned answers chosen by the request's target, records every request it
// read, and closes each connection after its answer.
//
//   TestHttpServer server;
//   server.Answer("/ws/2/discid/x", CannedAnswer::Ok(json, "application/json"));
//   HttpResponse r = HttpClient::Get(server.Url("/ws/2/discid/x?fmt=json"));
//   EXPECT_EQ(server.Requests().at(0).Header("Accept"), "application/json");
//
// The destructor never hangs: every wait polls with short time-outs and looks
// at the stop flag, so a stalled or trickling answer ends when the server goes.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace gorvan::test {

using HeaderField = std::pair<std::string, std::string>;

struct CannedAnswer {
  enum class Kind {
    kNormal,    // status line, headers, Content-Length (or chunks) and body
    kStall,     // nothing at all, until the client leaves or the server stops
    kTrickle,   // headers with the body's full length, then one byte per `interval`
    kCutShort,  // headers announcing `declaredLength` bytes, `body` (shorter), close
    kRaw,       // `body` exactly as given (no status line, no headers), close
  };

  Kind kind = Kind::kNormal;
  int status = 200;
  std::vector<HeaderField> headers;  // sent after the status line, as given
  std::string body;
  bool chunked = false;  // kNormal: "Transfer-Encoding: chunked" instead of a length
  size_t declaredLength = 0;
  std::chrono::milliseconds interval{50};

  static CannedAnswer Ok(std::string body, std::string contentType = "text/plain");
  static CannedAnswer WithStatus(int status, std::string body);
  // `location` as sent: absolute, or a path on this server.
  static CannedAnswer Redirect(std::string location, int status = 302);
  static CannedAnswer Stall();
  static CannedAnswer Trickle(std::string body, std::chrono::milliseconds interval);
  static CannedAnswer CutShort(std::string body, size_t declaredLength);
  // Any bytes: garbage, or a recorded answer replayed byte for byte.
  static CannedAnswer Raw(std::string bytes);
};

struct ReceivedRequest {
  std::string method;  // "GET", "POST"
  std::string target;  // path and query as sent, e.g. "/cgi?cmd=hello%20x"
  std::vector<HeaderField> headers;
  std::string body;

  // The first header of that name (any case); "" when there is none.
  std::string Header(std::string_view name) const;
};

class TestHttpServer {
 public:
  // Listens on 127.0.0.1 at a port the kernel picks. Throws std::runtime_error
  // when it cannot (so the test fails at once).
  TestHttpServer();
  // Stops serving (ending any answer under way) and joins the thread.
  ~TestHttpServer();
  TestHttpServer(const TestHttpServer&) = delete;
  TestHttpServer& operator=(const TestHttpServer&) = delete;

  // The answer to requests for `target`. A target with a query ("/p?a=1")
  // matches that exact path and query; one without ("/p") matches the path
  // with any query. Exact matches win. Unmatched requests get 404.
  void Answer(const std::string& target, CannedAnswer answer);

  int port() const { return port_; }
  // "http://127.0.0.1:<port>" + target.
  std::string Url(std::string_view target) const;
  // A port on 127.0.0.1 where nothing listens (held bound by this server so
  // that nothing else takes it): connections to it are refused.
  int refusedPort() const { return refusedPort_; }

  // Every request read so far, in order (a request is recorded before its
  // answer starts, so stalled ones are there too).
  std::vector<ReceivedRequest> Requests() const;
  // Connections accepted so far (also those that sent no complete request).
  int connections() const { return connections_; }

 private:
  void Serve();
  void ServeConnection(int fd);
  CannedAnswer Find(const std::string& target) const;

  int listenFd_ = -1;
  int refusedFd_ = -1;
  int port_ = 0;
  int refusedPort_ = 0;
  std::atomic<bool> stopping_{false};
  std::atomic<int> connections_{0};
  mutable std::mutex mutex_;
  std::map<std::string, CannedAnswer> answers_;
  std::vector<ReceivedRequest> requests_;
  std::thread thread_;
};

}  // namespace gorvan::test
