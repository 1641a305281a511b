#include "scan/AutorunIcon.h"

#include <fcntl.h>
#include <unistd.h>

#include <vector>

#include "catalog/PosixIO.h"
#include "catalog/TextUtil.h"
#include "scan/DirReader.h"

namespace gorvan {
namespace {

constexpr std::string_view kBlanks = " \t\r";

// The name under which root holds "autorun.inf", in any case; "" when it does not.
std::string FindAutorun(const std::string& root) {
  std::string name;
  const int fd = DirReader::OpenFolder(AT_FDCWD, root.c_str());
  if (fd < 0) return name;
  std::vector<char> buf(DirReader::kBufferSize);
  DirReader reader(fd, buf.data(), buf.size());
  DirReader::Entry e;
  while (reader.Next(&e) > 0) {
    if (EqualsIgnoreCase(e.name, "autorun.inf")) {
      name.assign(e.name);
      break;
    }
  }
  ::close(fd);
  return name;
}

}  // namespace

std::string AutorunIconKey(const std::string& root) {
  const std::string name = FindAutorun(root);
  if (name.empty()) return {};
  std::string text;
  if (!ReadFileHead(root + "/" + name, 64 * 1024, &text).ok()) return {};
  std::string_view rest = text;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = Trim(rest.substr(0, end), kBlanks);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    const size_t eq = line.find('=');
    if (eq == std::string_view::npos || !EqualsIgnoreCase(Trim(line.substr(0, eq), kBlanks), "icon")) {
      continue;
    }
    const std::string_view value = Trim(line.substr(eq + 1), kBlanks);
    if (value.empty()) continue;
    std::string_view file = value, index = "0";
    if (const size_t comma = value.find(','); comma != std::string_view::npos) {
      file = Trim(value.substr(0, comma), kBlanks);
      index = Trim(value.substr(comma + 1), kBlanks);
      if (index.empty()) index = "0";
    }
    return "f_" + std::string(file) + "," + std::string(index);
  }
  return {};
}

}  // namespace gorvan
