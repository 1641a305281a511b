#pragma once
// HttpResponse: what HttpClient::Perform hands back. A transport failure is
// `error` with a text; an HTTP status of 400 or more is not a failure: the
// status and body are there for the caller to judge.

#include <string>

namespace gorvan {

enum class HttpError {
  kNone = 0,
  kBadUrl,            // the URL (or a header line) cannot be sent as it stands
  kProtocolRefused,   // not http:// or https:// (also where a redirect led)
  kConnectFailed,     // no connection: name not found, refused, unreachable
  kTimedOut,          // the connect or the total time-out passed
  kTooLarge,          // the answer is longer than the request's maxBodyBytes
  kTooManyRedirects,  // more than 5 redirects (a redirect loop)
  kBadAnswer,         // the server's answer is not HTTP, or was cut short
  kCancelled,         // the caller's stop token asked for a stop
  kOther,             // anything else (TLS failures among them), see the message
};

struct HttpResponse {
  // kNone on success; then `status`, `body`, `finalUrl` and `contentType` hold
  // the answer.
  HttpError error = HttpError::kNone;
  // Empty on success. On failure never empty: libcurl's own text where it
  // gave one (e.g. "Failed to connect to 127.0.0.1 port 9: Connection
  // refused"), our own for kTooLarge and kCancelled, "UnKnown Error" when
  // nothing else is known.
  std::string message;
  // The last answer's HTTP status (after redirects); 0 when none arrived.
  int status = 0;
  // The answer's body as bytes, decoded from the transfer encoding but not
  // from any character set. Empty on failure (never a partial body).
  std::string body;
  // The URL the answer came from, after redirects.
  std::string finalUrl;
  // The Content-Type header as sent (e.g. "text/plain; charset=UTF-8"); empty
  // when the server sent none.
  std::string contentType;

  bool ok() const { return error == HttpError::kNone; }
};

}  // namespace gorvan
