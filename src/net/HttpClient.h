#pragma once
// HttpClient: HTTP and HTTPS requests over libcurl, for the disc lookups, the
// error submission and the version check.
//
// Every request: HTTP or HTTPS only (redirects too), at most 5 redirects
// followed, the proxy from the environment (http_proxy, https_proxy,
// no_proxy as libcurl reads them), certificates checked, the time-outs and
// the size cap of the HttpRequest, cancel through the caller's stop token.
//
// Threads: any number of requests may run at once from different threads;
// each uses its own connection and libcurl handle. A call blocks its thread
// until the answer is in, the request fails, or the stop token asks for a
// stop (noticed within about a tenth of a second, also while the server
// sends nothing). No exception leaves Perform, Get or PostForm.
//
//   HttpRequest request;
//   request.url = "https://musicbrainz.org/ws/2/discid/" + id + "?fmt=json";
//   request.headers = {"Accept: application/json"};
//   request.userAgent = HttpClient::DefaultUserAgent() + " ( " + email + " )";
//   HttpResponse answer = HttpClient::Perform(request, stop);
//   if (!answer.ok()) report(answer.message);
//   else if (answer.status != 200) ...; else parse(answer.body);

#include <stop_token>
#include <string>
#include <vector>

#include "net/HttpRequest.h"
#include "net/HttpResponse.h"

namespace gorvan {

class HttpClient {
 public:
  // Sends `request` and waits for its answer.
  // On success returns error kNone with the final answer's status (any, 404
  // and 500 included), body, final URL and Content-Type.
  // On failure returns the HttpError kind and a message that is never empty;
  // the body is empty. A stop already requested when the call starts returns
  // kCancelled without any connection.
  [[nodiscard]] static HttpResponse Perform(const HttpRequest& request, std::stop_token stop = {});

  // Perform() of a GET of `url` with the default limits.
  [[nodiscard]] static HttpResponse Get(const std::string& url, std::stop_token stop = {});

  // Perform() of a form POST of `form` to `url` with the default limits.
  [[nodiscard]] static HttpResponse PostForm(const std::string& url, std::vector<FormField> form,
                                             std::stop_token stop = {});

  // The fields as "name=value&name=value", every byte but A-Z a-z 0-9 - . _ ~
  // escaped as %XX (a blank is %20). The same text serves as a URL's query.
  [[nodiscard]] static std::string FormEncode(const std::vector<FormField>& fields);

  // "Gorvan/<major>.<minor>.<revision>", the User-Agent of requests that set none.
  [[nodiscard]] static std::string DefaultUserAgent();
};

}  // namespace gorvan
