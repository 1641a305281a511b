#pragma once
// HttpFetch: the transport the remote lookups use — one request sent and its
// answer returned, cancelled through the caller's stop token. The real one is
// HttpClient::Perform (src/net); tests pass functions that answer from
// recorded transcripts.

#include <functional>
#include <stop_token>

#include "net/HttpRequest.h"
#include "net/HttpResponse.h"

namespace gorvan {

using HttpFetch = std::function<HttpResponse(const HttpRequest& request, std::stop_token stop)>;

// HttpClient::Perform.
HttpFetch DefaultHttpFetch();

}  // namespace gorvan
