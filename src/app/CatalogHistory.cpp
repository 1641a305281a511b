#include "app/CatalogHistory.h"

#include <algorithm>

#include "app/SettingsStore.h"

namespace gorvan {
namespace {

constexpr const char* kSection = "History";

std::string KeyOf(int n) { return "HistoryMenu" + std::to_string(n); }

}  // namespace

std::vector<std::string> CatalogHistory::Entries() {
  std::vector<std::string> out;
  for (int n = 1; n <= kSize; ++n) {
    std::string path = SettingsStore::GetText(kSection, KeyOf(n));
    if (!path.empty()) out.push_back(std::move(path));
  }
  return out;
}

std::string CatalogHistory::Newest() {
  const std::vector<std::string> entries = Entries();
  return entries.empty() ? std::string() : entries.front();
}

void CatalogHistory::Push(const std::string& path) {
  if (path.empty()) return;
  std::vector<std::string> entries = Entries();
  std::erase(entries, path);
  entries.insert(entries.begin(), path);
  Store(entries);
}

void CatalogHistory::Remove(const std::string& path) {
  std::vector<std::string> entries = Entries();
  std::erase(entries, path);
  Store(entries);
}

void CatalogHistory::Store(const std::vector<std::string>& entries) {
  for (int n = 1; n <= kSize; ++n) {
    const size_t i = static_cast<size_t>(n - 1);
    const std::string value = i < entries.size() ? entries[i] : std::string();
    // Written only when it changes, so that reading the history never rewrites the store.
    if (SettingsStore::GetText(kSection, KeyOf(n)) != value) {
      SettingsStore::PutText(kSection, KeyOf(n), value);
    }
  }
}

}  // namespace gorvan
