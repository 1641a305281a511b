#include "app/basIniFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "app/AppFolder.h"
#include "app/SettingsStore.h"
#include "catalog/ErrorReporter.h"

namespace gorvan {
namespace {

constexpr const char* kWriteRoutine = "basIniFiles.WriteIniString";

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view Trim(std::string_view s) {
  while (!s.empty() && (IsBlank(s.front()) || s.front() == '\r')) s.remove_prefix(1);
  while (!s.empty() && (IsBlank(s.back()) || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

std::string PathOf(const std::string& file) {
  if (file.empty()) return AppFolder::File(kDefaultIniName);
  if (file.find('/') == std::string::npos) return AppFolder::File(file);
  return file;
}

// Reads at most limit + 1 bytes, so the caller can tell a file that is too
// large. False when the file cannot be read (a missing file is read as empty).
bool ReadAtMost(const std::string& path, size_t limit, std::string* out, int* error) {
  out->clear();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    *error = errno;
    return errno == ENOENT;
  }
  char buffer[16384];
  while (out->size() <= limit) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      *error = errno;
      ::close(fd);
      return false;
    }
    if (n == 0) break;
    out->append(buffer, std::min(static_cast<size_t>(n), limit + 1 - out->size()));
  }
  ::close(fd);
  return true;
}

// The file's lines without their line ends.
std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

// The name of a "[section]" line; nullopt-like false for any other line.
bool SectionName(std::string_view line, std::string_view* name) {
  line = Trim(line);
  if (line.empty() || line.front() != '[') return false;
  const size_t close = line.find(']');
  *name =
      Trim(line.substr(1, close == std::string_view::npos ? std::string_view::npos : close - 1));
  return true;
}

// The key of a "key=value" line and its value; false for other lines.
bool KeyValue(std::string_view line, std::string_view* key, std::string_view* value) {
  const size_t eq = line.find('=');
  if (eq == std::string_view::npos) return false;
  *key = Trim(line.substr(0, eq));
  *value = Trim(line.substr(eq + 1));
  return true;
}

// What a 128-character buffer hands back: at most 127 characters, cut at the
// first NUL, trailing blanks trimmed.
std::string ThroughBuffer(std::string_view text) {
  text = text.substr(0, kIniBufferSize - 1);
  text = text.substr(0, text.find('\0'));
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return std::string(text);
}

bool Fail(const std::string& path, int error, const std::string& what) {
  ReportError(kWriteRoutine, error, what + " " + path + ": " + std::strerror(error), 3);
  return false;
}

bool WriteAll(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

}  // namespace

std::string ReadIniString(const std::string& section, const std::string& key,
                          const std::string& defaultValue, const std::string& file) {
  std::string text;
  int error = 0;
  if (!ReadAtMost(PathOf(file), kMaxIniFileBytes, &text, &error))
    return ThroughBuffer(defaultValue);
  if (text.size() > kMaxIniFileBytes) text.resize(kMaxIniFileBytes);
  bool inSection = false;
  for (std::string_view line : Lines(text)) {
    std::string_view name, k, v;
    if (SectionName(line, &name)) {
      // The first section of that name is the one that counts.
      if (inSection) break;
      inSection = SameName(name, section);
    } else if (inSection && KeyValue(line, &k, &v) && SameName(k, key)) {
      if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front()) {
        v = v.substr(1, v.size() - 2);
      }
      return ThroughBuffer(v);
    }
  }
  return ThroughBuffer(defaultValue);
}

bool WriteIniString(const std::string& section, const std::string& key, const std::string& value,
                    const std::string& file) {
  const std::string path = PathOf(file);
  std::string text;
  int error = 0;
  if (!ReadAtMost(path, kMaxIniFileBytes, &text, &error)) return Fail(path, error, "Cannot read");
  if (text.size() > kMaxIniFileBytes) return Fail(path, EFBIG, "Cannot rewrite");

  std::string flat = value;
  for (char& c : flat) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  const std::string entry = key + "=" + flat;

  std::vector<std::string_view> lines = Lines(text);
  // Where the section starts and where its last non-blank line is.
  size_t sectionLine = lines.size(), insertAt = lines.size(), keyLine = lines.size();
  for (size_t i = 0; i < lines.size(); ++i) {
    std::string_view name, k, v;
    if (SectionName(lines[i], &name)) {
      if (sectionLine != lines.size()) break;
      if (SameName(name, section)) sectionLine = insertAt = i;
    } else if (sectionLine != lines.size()) {
      if (!Trim(lines[i]).empty()) insertAt = i;
      if (KeyValue(lines[i], &k, &v) && SameName(k, key)) {
        keyLine = i;
        break;
      }
    }
  }
  std::vector<std::string> out(lines.begin(), lines.end());
  if (keyLine != lines.size()) {
    out[keyLine] = entry;
  } else if (sectionLine != lines.size()) {
    out.insert(out.begin() + static_cast<std::ptrdiff_t>(insertAt + 1), entry);
  } else {
    if (!out.empty() && !Trim(out.back()).empty()) out.emplace_back();
    out.push_back("[" + section + "]");
    out.push_back(entry);
  }
  std::string joined;
  for (const std::string& line : out) joined.append(line).push_back('\n');

  // Written beside the file and renamed over it: a failed write leaves the old file whole.
  struct stat st {};
  const mode_t mode = ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0644;
  const std::string temp = path + ".~tmp";
  const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  if (fd < 0) return Fail(path, errno, "Cannot write");
  bool ok = WriteAll(fd, joined);
  error = ok ? 0 : (errno != 0 ? errno : EIO);
  if (::close(fd) != 0 && ok) {
    ok = false;
    error = errno;
  }
  if (ok && ::rename(temp.c_str(), path.c_str()) != 0) {
    ok = false;
    error = errno;
  }
  if (!ok) {
    ::unlink(temp.c_str());
    return Fail(path, error, "Cannot write");
  }
  return true;
}

bool GetIniBool(const std::string& key, bool defaultValue) {
  return SettingsStore::ParseBool(ReadIniString(
      kIniSwitches, key, SettingsStore::BoolText(defaultValue), AppFolder::File(kIniFileName)));
}

}  // namespace gorvan
