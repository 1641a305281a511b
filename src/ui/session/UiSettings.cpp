#include "ui/session/UiSettings.h"

#include <cctype>
#include <charconv>

#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"

namespace gorvan::ui {
namespace {

constexpr const char* kStartup = "Startup";

std::optional<int> Number(const char* key) {
  const std::string text = SettingsStore::GetText(kStartup, key);
  int value = 0;
  const char* end = text.data() + text.size();
  // Older stores may hold a fraction ("1200.5"): the integer part counts.
  const auto r = std::from_chars(text.data(), end, value);
  if (text.empty() || r.ec != std::errc()) return std::nullopt;
  return value;
}

}  // namespace

WindowPlacement UiSettings::LoadPlacement() {
  WindowPlacement p;
  p.state = Number("WindowState").value_or(0);
  const auto left = Number("Left"), top = Number("Top");
  const auto height = Number("Height"), width = Number("Width");
  if (left && top) {
    p.hasPosition = true;
    p.left = *left;
    p.top = *top;
  }
  if (height && width && *height > 0 && *width > 0) {
    p.hasSize = true;
    p.height = *height;
    p.width = *width;
  }
  return p;
}

void UiSettings::SavePlacement(const WindowPlacement& p) {
  SettingsStore::PutText(kStartup, "WindowState", std::to_string(p.state));
  SettingsStore::PutText(kStartup, "Left", std::to_string(p.left));
  SettingsStore::PutText(kStartup, "Top", std::to_string(p.top));
  SettingsStore::PutText(kStartup, "Height", std::to_string(p.height));
  SettingsStore::PutText(kStartup, "Width", std::to_string(p.width));
}

bool UiSettings::ViewModeExplorer() {
  // Only "false" turns the explorer off; any other text, or none, keeps it.
  std::string text = SettingsStore::GetText(kStartup, "ViewModeExplorer", "True");
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text != "false";
}

void UiSettings::SetViewModeExplorer(bool explorer) {
  SettingsStore::PutBool(kStartup, "ViewModeExplorer", explorer);
}

int UiSettings::ListStyle() {
  const std::optional<int> style = Number("ListStyle");
  return style && *style >= 0 && *style <= 3 ? *style : 3;
}

void UiSettings::SetListStyle(int style) {
  SettingsStore::PutText(kStartup, "ListStyle", std::to_string(style));
}

bool UiSettings::ShowPanels() { return SettingsStore::GetBool(kStartup, "ShowPanels", true); }

void UiSettings::SetShowPanels(bool show) { SettingsStore::PutBool(kStartup, "ShowPanels", show); }

bool UiSettings::Switch(const std::string& key) {
  // The default is the settings record's, for the keys it knows.
  const SettingKey* known = SettingsRecord::Find(kSwitches, key);
  const bool fallback = known ? SettingsStore::ParseBool(known->defaultText) : true;
  return SettingsStore::GetBool(kSwitches, key, fallback);
}

void UiSettings::SetSwitch(const std::string& key, bool value) {
  SettingsStore::PutBool(kSwitches, key, value);
}

}  // namespace gorvan::ui
