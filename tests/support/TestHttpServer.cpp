#include "support/TestHttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace gorvan::test {
namespace {

constexpr int kSliceMs = 50;  // every wait is cut into slices this long
constexpr size_t kMaxHead = 64 * 1024;
constexpr size_t kMaxBody = 8 * 1024 * 1024;

// A socket bound to 127.0.0.1 at a port the kernel picks; -1 on failure.
int BoundSocket(int* port) {
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof addr;
  if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    close(fd);
    return -1;
  }
  *port = ntohs(addr.sin_port);
  return fd;
}

// Waits one slice for `events`; false when the socket failed or the peer hung up.
bool WaitSlice(int fd, short events, bool* ready) {
  pollfd p{fd, events, 0};
  const int n = poll(&p, 1, kSliceMs);
  *ready = n > 0 && (p.revents & events);
  if (n < 0) return errno == EINTR;
  return !(p.revents & (POLLERR | POLLNVAL)) && (*ready || !(p.revents & POLLHUP));
}

// True while the client keeps its side open (unread bytes are dropped).
bool ClientStillThere(int fd) {
  bool readable = false;
  if (!WaitSlice(fd, POLLIN, &readable)) return false;
  if (!readable) return true;
  char sink[4096];
  const ssize_t n = recv(fd, sink, sizeof sink, MSG_DONTWAIT);
  return n > 0 || (n < 0 && (errno == EAGAIN || errno == EINTR));
}

const char* Reason(int status) {
  switch (status) {
    case 200:
      return "OK";
    case 301:
      return "Moved Permanently";
    case 302:
      return "Found";
    case 303:
      return "See Other";
    case 400:
      return "Bad Request";
    case 404:
      return "Not Found";
    case 500:
      return "Internal Server Error";
    case 503:
      return "Service Unavailable";
    default:
      return "Status";
  }
}

std::string Head(const CannedAnswer& a, const std::string& lengthLine) {
  std::string head = "HTTP/1.1 " + std::to_string(a.status) + " " + Reason(a.status) + "\r\n";
  for (const auto& [name, value] : a.headers) head += name + ": " + value + "\r\n";
  return head + lengthLine + "Connection: close\r\n\r\n";
}

std::string Chunked(const std::string& body) {
  constexpr size_t kChunk = 64 * 1024;
  std::string out;
  char size[32];
  for (size_t at = 0; at < body.size(); at += kChunk) {
    const size_t n = std::min(kChunk, body.size() - at);
    snprintf(size, sizeof size, "%zx\r\n", n);
    out.append(size).append(body, at, n).append("\r\n");
  }
  return out + "0\r\n\r\n";
}

}  // namespace

CannedAnswer CannedAnswer::Ok(std::string body, std::string contentType) {
  CannedAnswer a;
  a.headers = {{"Content-Type", std::move(contentType)}};
  a.body = std::move(body);
  return a;
}

CannedAnswer CannedAnswer::WithStatus(int status, std::string body) {
  CannedAnswer a = Ok(std::move(body));
  a.status = status;
  return a;
}

CannedAnswer CannedAnswer::Redirect(std::string location, int status) {
  CannedAnswer a;
  a.status = status;
  a.headers = {{"Location", std::move(location)}};
  return a;
}

CannedAnswer CannedAnswer::Stall() {
  CannedAnswer a;
  a.kind = Kind::kStall;
  return a;
}

CannedAnswer CannedAnswer::Trickle(std::string body, std::chrono::milliseconds interval) {
  CannedAnswer a = Ok(std::move(body));
  a.kind = Kind::kTrickle;
  a.interval = interval;
  return a;
}

CannedAnswer CannedAnswer::CutShort(std::string body, size_t declaredLength) {
  CannedAnswer a = Ok(std::move(body));
  a.kind = Kind::kCutShort;
  a.declaredLength = declaredLength;
  return a;
}

CannedAnswer CannedAnswer::Raw(std::string bytes) {
  CannedAnswer a;
  a.kind = Kind::kRaw;
  a.body = std::move(bytes);
  return a;
}

std::string ReceivedRequest::Header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (key.size() == name.size() && strncasecmp(key.data(), name.data(), key.size()) == 0) {
      return value;
    }
  }
  return {};
}

TestHttpServer::TestHttpServer() {
  listenFd_ = BoundSocket(&port_);
  refusedFd_ = BoundSocket(&refusedPort_);
  if (listenFd_ < 0 || refusedFd_ < 0 || listen(listenFd_, 16) != 0) {
    if (listenFd_ >= 0) close(listenFd_);
    if (refusedFd_ >= 0) close(refusedFd_);
    throw std::runtime_error("TestHttpServer: cannot listen on 127.0.0.1");
  }
  thread_ = std::thread([this] { Serve(); });
}

TestHttpServer::~TestHttpServer() {
  stopping_ = true;
  thread_.join();
  close(listenFd_);
  close(refusedFd_);
}

void TestHttpServer::Answer(const std::string& target, CannedAnswer answer) {
  std::lock_guard lock(mutex_);
  answers_[target] = std::move(answer);
}

std::string TestHttpServer::Url(std::string_view target) const {
  return "http://127.0.0.1:" + std::to_string(port_) + std::string(target);
}

std::vector<ReceivedRequest> TestHttpServer::Requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

CannedAnswer TestHttpServer::Find(const std::string& target) const {
  std::lock_guard lock(mutex_);
  auto it = answers_.find(target);
  if (it == answers_.end()) it = answers_.find(target.substr(0, target.find('?')));
  return it != answers_.end() ? it->second : CannedAnswer::WithStatus(404, "no canned answer");
}

void TestHttpServer::Serve() {
  while (!stopping_) {
    bool ready = false;
    if (!WaitSlice(listenFd_, POLLIN, &ready) || !ready) continue;
    const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) continue;
    ++connections_;
    ServeConnection(fd);
    close(fd);
  }
}

void TestHttpServer::ServeConnection(int fd) {
  // Reads until `want` bytes are in `data` (or, with want 0, the end of the head).
  std::string data;
  size_t headEnd = std::string::npos;
  auto readUntil = [&](size_t want) {
    char buf[16 * 1024];
    while (!stopping_) {
      if (want ? data.size() >= want : (headEnd = data.find("\r\n\r\n")) != std::string::npos) {
        return true;
      }
      if (data.size() > kMaxHead + kMaxBody) return false;
      bool readable = false;
      if (!WaitSlice(fd, POLLIN, &readable)) return false;
      if (!readable) continue;
      const ssize_t n = recv(fd, buf, sizeof buf, 0);
      if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) return false;
      if (n > 0) data.append(buf, static_cast<size_t>(n));
    }
    return false;
  };
  auto sendAll = [&](std::string_view bytes) {
    while (!bytes.empty() && !stopping_) {
      const ssize_t n = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (n > 0) {
        bytes.remove_prefix(static_cast<size_t>(n));
      } else if (errno == EAGAIN || errno == EINTR) {
        bool writable = false;
        if (!WaitSlice(fd, POLLOUT, &writable)) return false;
      } else {
        return false;
      }
    }
    return bytes.empty();
  };

  if (!readUntil(0) || headEnd > kMaxHead) return;
  ReceivedRequest request;
  size_t lineEnd = data.find("\r\n");
  const std::string first = data.substr(0, lineEnd);
  const size_t sp1 = first.find(' '), sp2 = first.rfind(' ');
  if (sp1 == std::string::npos || sp2 <= sp1) return;
  request.method = first.substr(0, sp1);
  request.target = first.substr(sp1 + 1, sp2 - sp1 - 1);
  while (lineEnd < headEnd) {
    const size_t next = data.find("\r\n", lineEnd + 2);
    const std::string line = data.substr(lineEnd + 2, next - lineEnd - 2);
    const size_t colon = line.find(':');
    if (colon != std::string::npos) {
      const size_t value = line.find_first_not_of(' ', colon + 1);
      request.headers.emplace_back(line.substr(0, colon),
                                   value == std::string::npos ? "" : line.substr(value));
    }
    lineEnd = next;
  }
  const size_t length = std::strtoull(request.Header("Content-Length").c_str(), nullptr, 10);
  if (length > kMaxBody || !readUntil(headEnd + 4 + length)) return;
  request.body = data.substr(headEnd + 4, length);
  const CannedAnswer a = Find(request.target);
  {
    std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
  }

  const std::string lengthLine = "Content-Length: " + std::to_string(a.body.size()) + "\r\n";
  switch (a.kind) {
    case CannedAnswer::Kind::kNormal:
      if (a.chunked) {
        sendAll(Head(a, "Transfer-Encoding: chunked\r\n") + Chunked(a.body));
      } else {
        sendAll(Head(a, lengthLine) + a.body);
      }
      break;
    case CannedAnswer::Kind::kStall:
      while (!stopping_ && ClientStillThere(fd)) {
      }
      return;
    case CannedAnswer::Kind::kTrickle:
      if (!sendAll(Head(a, lengthLine))) return;
      for (char c : a.body) {
        const auto until = std::chrono::steady_clock::now() + a.interval;
        while (!stopping_ && std::chrono::steady_clock::now() < until) {
          if (!ClientStillThere(fd)) return;
        }
        if (!sendAll(std::string_view(&c, 1))) return;
      }
      break;
    case CannedAnswer::Kind::kCutShort:
      sendAll(Head(a, "Content-Length: " + std::to_string(a.declaredLength) + "\r\n") + a.body);
      break;
    case CannedAnswer::Kind::kRaw:
      sendAll(a.body);
      break;
  }
  // Lets the client read everything before the close: closing with its bytes
  // unread could reset the connection under the answer.
  shutdown(fd, SHUT_WR);
  for (int i = 0; i < 20 && !stopping_ && ClientStillThere(fd); ++i) {
  }
}

}  // namespace gorvan::test
