#include "catalog/IconKeys.h"

#include <mutex>
#include <set>

#include "catalog/Attributes.h"

namespace gorvan {
namespace {

struct MediaKey {
  int type;
  std::string_view key;
};

constexpr MediaKey kMediaKeys[] = {
    {0, "unknown"}, {2, "removable"}, {3, "fixed"},  {4, "remote"},
    {5, "cdrom"},   {6, "ramdisk"},   {kMediaAudioCd, "audiocd"},
};

std::mutex& RegistryMutex() {
  static std::mutex m;
  return m;
}

std::set<std::string, std::less<>>& Registry() {
  static std::set<std::string, std::less<>> keys;
  return keys;
}

}  // namespace

std::string_view IconKeys::ForMediaType(int typeExt) {
  for (const MediaKey& m : kMediaKeys) {
    if (m.type == typeExt) return m.key;
  }
  return kMediaKeys[0].key;
}

bool IconKeys::IsKnown(std::string_view key) {
  if (key.empty()) return false;
  for (const MediaKey& m : kMediaKeys) {
    if (m.key == key) return true;
  }
  std::lock_guard<std::mutex> lock(RegistryMutex());
  return Registry().count(key) > 0;
}

void IconKeys::Register(std::string_view key) {
  std::lock_guard<std::mutex> lock(RegistryMutex());
  Registry().emplace(key);
}

}  // namespace gorvan
