#include "scan/LibArchive.h"

#include <dlfcn.h>

#include <initializer_list>

namespace gorvan {
namespace {

const LibArchive* Load() {
  void* handle = nullptr;
  for (const char* name : {"libarchive.so.13", "libarchive.so"}) {
    handle = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (handle != nullptr) break;
  }
  if (handle == nullptr) return nullptr;
  static LibArchive lib;
  bool complete = true;
#define GORVAN_LIBARCHIVE_RESOLVE(name)                                          \
  lib.name = reinterpret_cast<decltype(lib.name)>(::dlsym(handle, #name));      \
  complete = complete && lib.name != nullptr;
  GORVAN_LIBARCHIVE_FUNCTIONS(GORVAN_LIBARCHIVE_RESOLVE)
#undef GORVAN_LIBARCHIVE_RESOLVE
  // The library stays loaded for the life of the process.
  return complete ? &lib : nullptr;
}

}  // namespace

const LibArchive* LibArchive::Get() {
  static const LibArchive* const lib = Load();
  return lib;
}

}  // namespace gorvan
