#include "audio/HttpFetch.h"

#include "net/HttpClient.h"

namespace gorvan {

HttpFetch DefaultHttpFetch() {
  return [](const HttpRequest& request, std::stop_token stop) {
    return HttpClient::Perform(request, stop);
  };
}

}  // namespace gorvan
