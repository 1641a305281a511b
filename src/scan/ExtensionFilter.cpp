#include "scan/ExtensionFilter.h"

#include "catalog/TextUtil.h"

namespace gorvan {
namespace {

constexpr std::string_view kCatchAll = "*.*;";

}  // namespace

std::string_view ExtensionFilter::Extension(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot + 1 == name.size()) return {};
  return name.substr(dot + 1);
}

int ExtensionFilter::Match(std::string_view name, std::string_view lowerList, bool catchAll,
                           std::string* needle) {
  if (catchAll) return 1;
  if (lowerList.size() < 3) return 2;  // ";" alone, the usual exclude list
  const std::string_view ext = Extension(name);
  needle->assign("*.");
  for (const char c : ext) needle->push_back(AsciiLower(c));
  needle->push_back(';');
  return lowerList.find(*needle) != std::string_view::npos ? 0 : 2;
}

int ExtensionFilter::MatchExtList(std::string_view name, std::string_view list) {
  const std::string lower = AsciiLower(list);
  std::string needle;
  return Match(name, lower, lower.find(kCatchAll) != std::string::npos, &needle);
}

void ExtensionFilter::SetLists(std::string_view includeList, std::string_view excludeList) {
  include_ = AsciiLower(includeList);
  exclude_ = AsciiLower(excludeList);
  includeAll_ = include_.find(kCatchAll) != std::string::npos;
  excludeAll_ = exclude_.find(kCatchAll) != std::string::npos;
}

bool ExtensionFilter::Keep(std::string_view name) {
  const int include = Match(name, include_, includeAll_, &needle_);
  if (include != 1) return include == 0;
  return Match(name, exclude_, excludeAll_, &needle_) != 0;
}

}  // namespace gorvan
