#include "scan/ScanPath.h"

#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <memory>

namespace gorvan {

std::string ScanPath::Normalise(const std::string& path) {
  if (path.empty()) return {};
  std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  if (!real) return {};
  std::string out(real.get());
  while (out.size() > 1 && out.back() == '/') out.pop_back();
  return out;
}

bool ScanPath::FolderExists(const std::string& path) {
  struct stat st;
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string ScanPath::VolumeRelative(std::string_view mountPoint, std::string_view path) {
  while (mountPoint.size() > 1 && mountPoint.back() == '/') mountPoint.remove_suffix(1);
  std::string_view rest;
  if (mountPoint == "/") {
    rest = path;
  } else {
    if (path.substr(0, mountPoint.size()) != mountPoint) return {};
    rest = path.substr(mountPoint.size());
    if (!rest.empty() && rest.front() != '/') return {};  // "/mnt/a" is not below "/mnt/ab"
  }
  std::string out;
  size_t i = 0;
  while (i < rest.size()) {
    while (i < rest.size() && rest[i] == '/') ++i;
    if (i >= rest.size()) break;
    size_t end = rest.find('/', i);
    if (end == std::string_view::npos) end = rest.size();
    if (!out.empty()) out.push_back('\\');
    out.append(rest.substr(i, end - i));
    i = end;
  }
  return out;
}

namespace {

bool IsMountPoint(std::string_view mountPoint, std::string_view path) {
  while (mountPoint.size() > 1 && mountPoint.back() == '/') mountPoint.remove_suffix(1);
  return path == mountPoint || path.empty();
}

}  // namespace

void ScanPath::FolderTexts(std::string_view mountPoint, std::string_view path, std::string* parent,
                           std::string* name) {
  if (IsMountPoint(mountPoint, path)) {
    name->clear();
    *parent = "\\";
    return;
  }
  const size_t cut = path.rfind('/');
  *name = std::string(path.substr(cut + 1));
  *parent = VolumeRelative(mountPoint, cut == 0 ? std::string_view("/") : path.substr(0, cut));
  if (parent->empty()) *parent = "\\";
}

std::string ScanPath::DefaultDiscName(std::string_view mountPoint, std::string_view path,
                                      std::string_view volumeLabel) {
  if (IsMountPoint(mountPoint, path)) return std::string(volumeLabel);
  return std::string(path.substr(path.rfind('/') + 1));
}

}  // namespace gorvan
