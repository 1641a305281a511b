#include "app/WindowLayout.h"

#include <charconv>
#include <cmath>

#include "app/SettingsStore.h"

namespace gorvan {
namespace {

bool ParseNumber(const std::string& text, double* value) {
  const char* first = text.data();
  const char* last = first + text.size();
  const auto [end, ec] = std::from_chars(first, last, *value);
  return ec == std::errc() && end == last && first != last && std::isfinite(*value);
}

float ReadFloat(const std::string& key, float current) {
  double v = 0;
  if (!ParseNumber(SettingsStore::GetText(kDefaultsSection, key), &v)) return current;
  if (std::fabs(v) > 1e30) return current;
  return static_cast<float>(v);
}

int ReadInt(const std::string& key, int current) {
  double v = 0;
  if (!ParseNumber(SettingsStore::GetText(kDefaultsSection, key), &v)) return current;
  if (std::fabs(v) > 1e9) return current;
  return static_cast<int>(std::lround(v));
}

std::string FloatText(float value) {
  char buffer[32];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return ec == std::errc() ? std::string(buffer, end) : std::string("0");
}

std::string ColumnKey(const std::string& list, size_t index, const char* what) {
  return list + "_col" + std::to_string(index + 1) + "_" + what;
}

}  // namespace

WindowSize WindowLayout::RestoreSize(const std::string& name, WindowSize current) {
  return {ReadFloat(name + "_width", current.width), ReadFloat(name + "_height", current.height)};
}

void WindowLayout::SaveSize(const std::string& name, WindowSize now, WindowSize restored) {
  if (now.width != restored.width) {
    SettingsStore::PutText(kDefaultsSection, name + "_width", FloatText(now.width));
  }
  if (now.height != restored.height) {
    SettingsStore::PutText(kDefaultsSection, name + "_height", FloatText(now.height));
  }
}

std::vector<ColumnLayout> WindowLayout::RestoreColumns(const std::string& list,
                                                       const std::vector<ColumnLayout>& current) {
  std::vector<ColumnLayout> out;
  for (size_t i = 0; i < current.size(); ++i) {
    out.push_back({ReadInt(ColumnKey(list, i, "width"), current[i].width),
                   ReadInt(ColumnKey(list, i, "order"), current[i].order)});
  }
  return out;
}

void WindowLayout::SaveColumns(const std::string& list, const std::vector<ColumnLayout>& now,
                               const std::vector<ColumnLayout>& restored) {
  for (size_t i = 0; i < now.size(); ++i) {
    const bool known = i < restored.size();
    if (!known || now[i].width != restored[i].width) {
      SettingsStore::PutText(kDefaultsSection, ColumnKey(list, i, "width"),
                             std::to_string(now[i].width));
    }
    if (!known || now[i].order != restored[i].order) {
      SettingsStore::PutText(kDefaultsSection, ColumnKey(list, i, "order"),
                             std::to_string(now[i].order));
    }
  }
}

}  // namespace gorvan
