#pragma once
// HttpRequest: what HttpClient::Perform sends. Every field but `url` has a
// default: a request with only its URL set is a plain GET with the product's
// limits (10 s to connect, 30 s in all, at most 1 MiB of answer, User-Agent
// "Gorvan/<version>").

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace gorvan {

// One field of a form or query: a name and its value, both as bytes (UTF-8 for
// text); HttpClient escapes them.
using FormField = std::pair<std::string, std::string>;

struct HttpRequest {
  static constexpr std::chrono::milliseconds kDefaultConnectTimeout{10'000};
  static constexpr std::chrono::milliseconds kDefaultTimeout{30'000};
  static constexpr size_t kDefaultMaxBodyBytes = 1 << 20;

  enum class Method {
    kGet,
    kPost,  // form POST: `form` is sent as application/x-www-form-urlencoded
  };

  // http:// or https:// only; any other scheme is refused without a connection.
  std::string url;
  Method method = Method::kGet;
  // The POST body's fields in order; ignored for a GET (put a GET's query in
  // the URL, built with HttpClient::FormEncode).
  std::vector<FormField> form;
  // Extra request header lines, each "Name: value" (e.g. "Accept: application/json").
  // A line with a CR or LF in it is refused (error kBadUrl).
  std::vector<std::string> headers;
  // Empty: "Gorvan/<version>". Services that want a contact (MusicBrainz) get
  // e.g. "Gorvan/1.0.1 ( ann@example.org )".
  std::string userAgent;
  // Time to connect (name lookup included), and time for the whole exchange,
  // redirects included. Zero or less means the default.
  std::chrono::milliseconds connectTimeout = kDefaultConnectTimeout;
  std::chrono::milliseconds timeout = kDefaultTimeout;
  // The most answer body bytes accepted; a longer answer is the error
  // kTooLarge, never a cut-off success. Zero means the default.
  size_t maxBodyBytes = kDefaultMaxBodyBytes;
};

}  // namespace gorvan
