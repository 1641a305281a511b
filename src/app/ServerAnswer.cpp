#include "app/ServerAnswer.h"

namespace gorvan {
namespace {

// The text of <name>...</name> inside body; false when it is missing or
// holds markup.
bool Element(std::string_view body, std::string_view name, std::string* value) {
  const std::string open = "<" + std::string(name) + ">";
  const size_t start = body.find(open);
  if (start == std::string_view::npos) return false;
  const size_t from = start + open.size();
  const size_t next = body.find('<', from);
  const std::string close = "</" + std::string(name) + ">";
  if (next == std::string_view::npos || body.compare(next, close.size(), close) != 0) {
    return false;
  }
  value->assign(body.substr(from, next - from));
  return true;
}

}  // namespace

bool ServerAnswer::Parse(std::string_view text, ServerAnswer* answer) {
  const size_t open = text.find("<Gorvan>");
  if (open == std::string_view::npos) return false;
  const size_t close = text.find("</Gorvan>", open);
  if (close == std::string_view::npos) return false;
  const std::string_view body = text.substr(open + 8, close - open - 8);
  ServerAnswer a;
  if (!Element(body, "CurrentVersion", &a.currentVersion) ||
      !Element(body, "ReleaseDate", &a.releaseDate) || !Element(body, "ExtraInfo", &a.extraInfo) ||
      !Element(body, "Ticket", &a.ticket) || !Element(body, "UrlStd", &a.urlStd) ||
      !Element(body, "UrlPro", &a.urlPro)) {
    return false;
  }
  *answer = std::move(a);
  return true;
}

bool ParseVersion(std::string_view text, VersionParts* parts) {
  VersionParts out{};
  size_t part = 0;
  size_t digits = 0;
  int value = 0;
  for (char c : text) {
    if (c == '.') {
      if (digits == 0 || part == 2) return false;
      out[part++] = value;
      value = 0;
      digits = 0;
    } else if (c >= '0' && c <= '9' && digits < 9) {
      value = value * 10 + (c - '0');
      ++digits;
    } else {
      return false;
    }
  }
  if (digits == 0 || part != 2) return false;
  out[2] = value;
  *parts = out;
  return true;
}

VersionParts RunningVersion() {
  return {GORVAN_VERSION_MAJOR, GORVAN_VERSION_MINOR, GORVAN_VERSION_REVISION};
}

}  // namespace gorvan
