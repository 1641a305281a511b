#include "net/HttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

namespace gorvan {
namespace {

constexpr long kMaxRedirects = 5;
// The longest the transfer loop waits on its sockets before it looks at the
// stop token again; a stop also wakes the wait at once (curl_multi_wakeup).
constexpr int kPollMilliseconds = 100;
constexpr char kUnknownError[] = "UnKnown Error";

// curl_global_init is not thread-safe and must run once before any handle is
// made; libcurl is never cleaned up globally, since other threads may still
// use it at exit.
CURLcode GlobalInit() {
  static std::once_flag once;
  static CURLcode result = CURLE_OK;
  std::call_once(once, [] { result = curl_global_init(CURL_GLOBAL_DEFAULT); });
  return result;
}

struct EasyDeleter {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;
using MultiHandle = std::unique_ptr<CURLM, MultiDeleter>;
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

// What the callbacks of one transfer share with Perform.
struct Transfer {
  std::string body;
  size_t maxBodyBytes = 0;
  bool tooLarge = false;
  std::stop_token stop;
};

size_t OnBody(char* data, size_t size, size_t count, void* user) {
  auto* transfer = static_cast<Transfer*>(user);
  const size_t bytes = size * count;
  if (bytes > transfer->maxBodyBytes - transfer->body.size()) {
    // Chunked answers and answers without a length only show their size here.
    transfer->tooLarge = true;
    return 0;
  }
  try {
    transfer->body.append(data, bytes);
  } catch (const std::exception&) {
    return 0;  // no exception may cross libcurl's C frames
  }
  return bytes;
}

int OnProgress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<Transfer*>(user)->stop.stop_requested() ? 1 : 0;
}

HttpResponse Failure(HttpError error, std::string message) {
  HttpResponse response;
  response.error = error;
  response.message = message.empty() ? kUnknownError : std::move(message);
  return response;
}

bool IsHttpUrl(std::string_view url) {
  auto startsWith = [url](std::string_view prefix) {
    if (url.size() < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i) {
      const char c = url[i];
      if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != prefix[i]) return false;
    }
    return true;
  };
  return startsWith("http://") || startsWith("https://");
}

HttpError ErrorKind(CURLcode code, std::string_view effectiveUrl) {
  switch (code) {
    case CURLE_URL_MALFORMAT:
      return HttpError::kBadUrl;
    case CURLE_UNSUPPORTED_PROTOCOL:
      // libcurl also reports an answer without an HTTP status line
      // ("HTTP/0.9") this way; then the URL itself was an HTTP one.
      return IsHttpUrl(effectiveUrl) ? HttpError::kBadAnswer : HttpError::kProtocolRefused;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
      return HttpError::kConnectFailed;
    case CURLE_OPERATION_TIMEDOUT:
      return HttpError::kTimedOut;
    case CURLE_FILESIZE_EXCEEDED:
      return HttpError::kTooLarge;
    case CURLE_TOO_MANY_REDIRECTS:
      return HttpError::kTooManyRedirects;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return HttpError::kBadAnswer;
    case CURLE_ABORTED_BY_CALLBACK:
      return HttpError::kCancelled;
    default:
      return HttpError::kOther;
  }
}

// libcurl's most specific text: the error buffer, else the code's general text.
std::string CurlText(CURLcode code, const char* errorBuffer) {
  std::string text = errorBuffer;
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  if (text.empty()) {
    const char* general = curl_easy_strerror(code);
    if (general) text = general;
  }
  return text;
}

std::string TooLargeText(size_t maxBodyBytes) {
  return "The answer is larger than " + std::to_string(maxBodyBytes) + " bytes";
}

// Sets every option; returns the first refusal.
CURLcode Configure(CURL* easy, const HttpRequest& request, const std::string& postBody,
                   curl_slist* headers, Transfer& transfer, char* errorBuffer) {
  const auto connectTimeout = request.connectTimeout.count() > 0
                                  ? request.connectTimeout
                                  : HttpRequest::kDefaultConnectTimeout;
  const auto timeout = request.timeout.count() > 0 ? request.timeout : HttpRequest::kDefaultTimeout;
  const std::string agent =
      request.userAgent.empty() ? HttpClient::DefaultUserAgent() : request.userAgent;

  CURLcode rc = CURLE_OK;
  auto set = [&](CURLoption option, auto value) {
    if (rc == CURLE_OK) rc = curl_easy_setopt(easy, option, value);
  };
  set(CURLOPT_ERRORBUFFER, errorBuffer);
  set(CURLOPT_NOSIGNAL, 1L);  // the time-outs must not use signals in a threaded program
  set(CURLOPT_URL, request.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, kMaxRedirects);
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connectTimeout.count()));
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count()));
  // Refuses an answer whose announced length is past the cap before it is read.
  set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(transfer.maxBodyBytes));
  set(CURLOPT_USERAGENT, agent.c_str());  // libcurl copies strings it is given
  set(CURLOPT_HTTPHEADER, headers);
  set(CURLOPT_WRITEFUNCTION, OnBody);
  set(CURLOPT_WRITEDATA, &transfer);
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFOFUNCTION, OnProgress);
  set(CURLOPT_XFERINFODATA, &transfer);
  if (request.method == HttpRequest::Method::kPost) {
    // libcurl sends application/x-www-form-urlencoded for these; postBody
    // outlives the transfer, so it is not copied.
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(postBody.size()));
    set(CURLOPT_POSTFIELDS, postBody.c_str());
  } else {
    set(CURLOPT_HTTPGET, 1L);
  }
  return rc;
}

HttpResponse Run(const HttpRequest& request, std::stop_token stop) {
  if (stop.stop_requested()) return Failure(HttpError::kCancelled, "Cancelled");
  if (const CURLcode init = GlobalInit(); init != CURLE_OK) {
    return Failure(HttpError::kOther, curl_easy_strerror(init));
  }

  HeaderList headers;
  for (const std::string& line : request.headers) {
    if (line.find_first_of("\r\n") != std::string::npos) {
      return Failure(HttpError::kBadUrl, "A request header holds a line break");
    }
    curl_slist* grown = curl_slist_append(headers.get(), line.c_str());
    if (!grown) return Failure(HttpError::kOther, curl_easy_strerror(CURLE_OUT_OF_MEMORY));
    headers.release();
    headers.reset(grown);
  }
  std::string postBody;
  if (request.method == HttpRequest::Method::kPost) {
    postBody = HttpClient::FormEncode(request.form);
    // A large body (past 1 MiB in libcurl 7.88) would make libcurl wait up to
    // a second for "100 Continue", which many servers never send.
    curl_slist* grown = curl_slist_append(headers.get(), "Expect:");
    if (!grown) return Failure(HttpError::kOther, curl_easy_strerror(CURLE_OUT_OF_MEMORY));
    headers.release();
    headers.reset(grown);
  }

  Transfer transfer;
  transfer.maxBodyBytes =
      request.maxBodyBytes > 0 ? request.maxBodyBytes : HttpRequest::kDefaultMaxBodyBytes;
  transfer.stop = stop;
  char errorBuffer[CURL_ERROR_SIZE] = {};

  EasyHandle easy(curl_easy_init());
  MultiHandle multi(curl_multi_init());
  if (!easy || !multi) return Failure(HttpError::kOther, kUnknownError);
  if (const CURLcode rc =
          Configure(easy.get(), request, postBody, headers.get(), transfer, errorBuffer);
      rc != CURLE_OK) {
    return Failure(HttpError::kOther, CurlText(rc, errorBuffer));
  }

  // The multi interface lets the wait on the sockets end early for a stop;
  // curl_easy_perform would look at the stop token only once a second while
  // the server is silent.
  if (curl_multi_add_handle(multi.get(), easy.get()) != CURLM_OK) {
    return Failure(HttpError::kOther, kUnknownError);
  }
  bool cancelled = false;
  CURLMcode loop = CURLM_OK;
  {
    CURLM* m = multi.get();
    std::stop_callback wake(stop, [m] { curl_multi_wakeup(m); });
    int running = 1;
    while (true) {
      loop = curl_multi_perform(m, &running);
      if (loop != CURLM_OK || running == 0) break;
      if (stop.stop_requested()) {
        cancelled = true;
        break;
      }
      loop = curl_multi_poll(m, nullptr, 0, kPollMilliseconds, nullptr);
      if (loop != CURLM_OK) break;
    }
  }
  CURLcode result = CURLE_OK;
  int queued = 0;
  while (CURLMsg* message = curl_multi_info_read(multi.get(), &queued)) {
    if (message->msg == CURLMSG_DONE && message->easy_handle == easy.get()) {
      result = message->data.result;
    }
  }
  curl_multi_remove_handle(multi.get(), easy.get());

  HttpResponse response;
  long status = 0;
  curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  response.status = static_cast<int>(status);
  const char* text = nullptr;
  if (curl_easy_getinfo(easy.get(), CURLINFO_EFFECTIVE_URL, &text) == CURLE_OK && text) {
    response.finalUrl = text;
  }
  text = nullptr;
  if (curl_easy_getinfo(easy.get(), CURLINFO_CONTENT_TYPE, &text) == CURLE_OK && text) {
    response.contentType = text;
  }

  if (cancelled || (result == CURLE_ABORTED_BY_CALLBACK && stop.stop_requested())) {
    response.error = HttpError::kCancelled;
    response.message = "Cancelled";
  } else if (loop != CURLM_OK) {
    response.error = HttpError::kOther;
    const char* multiText = curl_multi_strerror(loop);
    response.message = multiText ? multiText : "";
  } else if (transfer.tooLarge || result == CURLE_FILESIZE_EXCEEDED) {
    response.error = HttpError::kTooLarge;
    response.message = TooLargeText(transfer.maxBodyBytes);
  } else if (result != CURLE_OK) {
    response.error = ErrorKind(result, response.finalUrl);
    response.message = CurlText(result, errorBuffer);
  }
  if (response.error != HttpError::kNone) {
    if (response.message.empty()) response.message = kUnknownError;
    return response;
  }
  response.body = std::move(transfer.body);
  return response;
}

}  // namespace

HttpResponse HttpClient::Perform(const HttpRequest& request, std::stop_token stop) {
  try {
    return Run(request, std::move(stop));
  } catch (const std::exception& e) {
    return Failure(HttpError::kOther, e.what());
  }
}

HttpResponse HttpClient::Get(const std::string& url, std::stop_token stop) {
  HttpRequest request;
  request.url = url;
  return Perform(request, std::move(stop));
}

HttpResponse HttpClient::PostForm(const std::string& url, std::vector<FormField> form,
                                  std::stop_token stop) {
  HttpRequest request;
  request.url = url;
  request.method = HttpRequest::Method::kPost;
  request.form = std::move(form);
  return Perform(request, std::move(stop));
}

std::string HttpClient::FormEncode(const std::vector<FormField>& fields) {
  std::string out;
  auto append = [&out](const std::string& bytes) {
    // curl_easy_escape takes an int length (0 meaning "use strlen"), so long
    // texts go in pieces; escaping is per byte, so pieces join seamlessly.
    constexpr size_t kPiece = 1 << 20;
    for (size_t at = 0; at < bytes.size(); at += kPiece) {
      const size_t length = std::min(kPiece, bytes.size() - at);
      // The handle argument has been unused since libcurl 7.82.
      char* escaped = curl_easy_escape(nullptr, bytes.data() + at, static_cast<int>(length));
      if (!escaped) throw std::bad_alloc();
      out += escaped;
      curl_free(escaped);
    }
  };
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) out += '&';
    append(fields[i].first);
    out += '=';
    append(fields[i].second);
  }
  return out;
}

std::string HttpClient::DefaultUserAgent() {
  return "Gorvan/" + std::to_string(GORVAN_VERSION_MAJOR) + "." +
         std::to_string(GORVAN_VERSION_MINOR) + "." + std::to_string(GORVAN_VERSION_REVISION);
}

}  // namespace gorvan
