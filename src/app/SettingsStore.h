#pragma once
// SettingsStore: the per-user settings store — text values addressed by
// section and key under the application "Gorvan" (QSettings, organisation and
// application "Gorvan": $XDG_CONFIG_HOME/Gorvan/Gorvan.conf). Booleans are
// written "True"/"False" and read as true only when the lower-cased text is
// "true". A read that fails gives the default; a write that fails is logged
// to the error log and the program goes on.
//
// Thread contract: any thread; each call opens its own view of the store.

#include <string>
#include <utility>
#include <vector>

namespace gorvan {

class SettingsStore {
 public:
  static std::string GetText(const std::string& section, const std::string& key,
                             const std::string& defaultValue = {});
  // False (and an entry in the error log) when the store could not be written.
  static bool PutText(const std::string& section, const std::string& key,
                      const std::string& value);
  static bool GetBool(const std::string& section, const std::string& key, bool defaultValue);
  static bool PutBool(const std::string& section, const std::string& key, bool value);
  static bool Remove(const std::string& section, const std::string& key);

  // "True"/"False", and the reading rule for them.
  static const char* BoolText(bool value) { return value ? "True" : "False"; }
  static bool ParseBool(const std::string& text);

  // Every stored value as ("section/key", value), in the store's order.
  static std::vector<std::pair<std::string, std::string>> List();

  // The store's file.
  static std::string FilePath();
};

}  // namespace gorvan
