#include "app/IconMap.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "catalog/ErrorReporter.h"

namespace gorvan {
namespace {

std::string Normal(std::string_view extension) {
  if (!extension.empty() && extension.front() == '.') extension.remove_prefix(1);
  return std::string(extension);
}

bool SameExtension(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return lower(x) == lower(y);
  });
}

std::string Text(const std::vector<IconMap::Entry>& entries) {
  std::string text;
  for (const IconMap::Entry& e : entries) text += e.extension + "," + e.iconKey + "\n";
  return text;
}

// Writes beside path and renames over it. errno is set on failure.
bool Replace(const std::string& path, const std::string& text) {
  const std::string temp = path + ".~tmp";
  const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  const int saved = errno;
  if (::close(fd) == 0 && done == text.size() && ::rename(temp.c_str(), path.c_str()) == 0) {
    return true;
  }
  if (done != text.size()) errno = saved ? saved : EIO;
  ::unlink(temp.c_str());
  return false;
}

}  // namespace

const std::vector<IconMap::Entry>& IconMap::DefaultEntries() {
  static const std::vector<Entry> entries = {
      {"zip", "i_0143"}, {"doc", "i_0144"}, {"xls", "i_0100"}, {"cda", "i_0027"}};
  return entries;
}

bool IconMap::Load(const std::string& path) {
  entries_.clear();
  if (::access(path.c_str(), F_OK) != 0) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd >= 0) {
      const std::string text = Text(DefaultEntries());
      const bool ok = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
      ::close(fd);
      if (!ok) ::unlink(path.c_str());
    }
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    entries_ = DefaultEntries();
    return false;
  }
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  in.seekg(0);
  std::string text(
      size < 0 ? kMaxFileBytes : std::min<size_t>(static_cast<size_t>(size), kMaxFileBytes), '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(in.gcount()));
  std::string_view rest = text;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    const size_t comma = line.find(',');
    if (comma == std::string_view::npos || line.find(',', comma + 1) != std::string_view::npos) {
      continue;
    }
    entries_.push_back({std::string(line.substr(0, comma)), std::string(line.substr(comma + 1))});
  }
  return true;
}

bool IconMap::Save(const std::string& path) const {
  if (Replace(path, Text(entries_))) return true;
  const int error = errno;
  ReportError("IconMap.Save", error, "Cannot write " + path + ": " + std::strerror(error), 3);
  return false;
}

std::string IconMap::KeyOf(std::string_view extension) const {
  const std::string ext = Normal(extension);
  for (const Entry& e : entries_) {
    if (SameExtension(e.extension, ext)) return e.iconKey;
  }
  return {};
}

void IconMap::Set(std::string_view extension, std::string_view iconKey) {
  const std::string ext = Normal(extension);
  for (Entry& e : entries_) {
    if (SameExtension(e.extension, ext)) {
      e.iconKey = std::string(iconKey);
      return;
    }
  }
  entries_.push_back({ext, std::string(iconKey)});
}

void IconMap::Remove(std::string_view extension) {
  const std::string ext = Normal(extension);
  std::erase_if(entries_, [&](const Entry& e) { return SameExtension(e.extension, ext); });
}

}  // namespace gorvan
