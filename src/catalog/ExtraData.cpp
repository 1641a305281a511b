#include "catalog/ExtraData.h"

#include <array>

namespace gorvan {
namespace {

constexpr std::array<std::string_view, kExtraCount> kKeys = {
    "AA", "AN", "AL", "AR", "AC", "AM", "AY", "MA", "MR", "MY", "MT", "MC", "MM", "T1",
    "T2", "T3", "T4", "T5", "T6", "T7", "T8", "T9", "IA", "IT", "IC", "ID", "IF"};

// Calls fn(element) for each element of the list split at the separator.
// An empty list has no elements at all (not one empty element).
template <typename Fn>
void ForEachElement(std::string_view list, Fn fn) {
  if (list.empty()) return;
  size_t start = 0;
  while (true) {
    const size_t end = list.find(kExtraSeparator, start);
    if (end == std::string_view::npos) {
      fn(list.substr(start));
      return;
    }
    fn(list.substr(start, end - start));
    start = end + kExtraSeparator.size();
  }
}

}  // namespace

std::string_view ExtraKey(int index) {
  if (index < 0 || index >= kExtraCount) return {};
  return kKeys[static_cast<size_t>(index)];
}

std::string SetExtraValue(std::string_view list, int index, std::string_view value) {
  const std::string_view key = ExtraKey(index);
  if (key.empty()) return std::string(list);

  std::string out;
  bool first = true;
  bool found = false;
  auto emit = [&](std::string_view a, std::string_view b) {
    if (!first) out.append(kExtraSeparator);
    out.append(a);
    out.append(b);
    first = false;
  };
  ForEachElement(list, [&](std::string_view element) {
    if (element.size() > key.size() && element.substr(0, key.size()) == key) {
      found = true;
      if (!value.empty()) emit(key, value);
    } else {
      emit(element, {});
    }
  });
  if (!found) emit(key, value);
  return out;
}

std::string GetExtraValue(std::string_view list, int index) {
  const std::string_view key = ExtraKey(index);
  if (key.empty()) return {};
  std::string value;
  bool found = false;
  ForEachElement(list, [&](std::string_view element) {
    if (!found && element.substr(0, key.size()) == key) {
      value.assign(element.substr(key.size()));
      found = true;
    }
  });
  return value;
}

}  // namespace gorvan
