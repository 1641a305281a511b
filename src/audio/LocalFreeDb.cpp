#include "audio/LocalFreeDb.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "audio/AudioText.h"
#include "audio/FreeDbParser.h"

namespace gorvan {
namespace {

constexpr size_t kChunk = 64 * 1024;

bool IsHex(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  });
}

int HexByte(std::string_view two) {
  int v = 0;
  for (char c : two) {
    v = v * 16 + (c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
  }
  return v;
}

// Reads entries from one file, line by line in fixed chunks, and keeps the
// first entry that carries the id in a "DISCID=" line — or, in a file named by
// the id, the first entry that has no "DISCID=" line at all.
class EntryScanner {
 public:
  EntryScanner(std::string_view id, bool acceptWithoutId)
      : id_(id), acceptWithoutId_(acceptWithoutId) {}

  // On a find: true and *entry set. Stops early when `stop` is requested.
  bool Scan(int fd, std::stop_token stop, std::string* entry) {
    std::unique_ptr<char[]> buffer(new char[kChunk]);
    for (;;) {
      if (stop.stop_requested()) return false;
      const ssize_t n = ::read(fd, buffer.get(), kChunk);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      std::string_view data(buffer.get(), static_cast<size_t>(n));
      while (!data.empty()) {
        const size_t nl = data.find('\n');
        const std::string_view part = data.substr(0, nl);
        if (line_.size() < LocalFreeDb::kMaxLineBytes) {
          line_.append(part.substr(0, LocalFreeDb::kMaxLineBytes - line_.size()));
        }
        if (nl == std::string_view::npos) break;
        data.remove_prefix(nl + 1);
        if (Line() && found_) {
          *entry = std::move(entry_);
          return true;
        }
      }
    }
    if (!line_.empty()) Line();
    // A file that ends without "PLAYORDER=" still holds its last entry.
    if (!found_ && !entry_.empty()) EndEntry();
    if (!found_) return false;
    *entry = std::move(entry_);
    return true;
  }

 private:
  // Takes the line read; true when it ended an entry.
  bool Line() {
    if (!line_.empty() && line_.back() == '\r') line_.pop_back();
    if (line_.compare(0, 7, "DISCID=") == 0) {
      hasIdLine_ = true;
      std::string lower = line_;
      for (char& c : lower) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
      if (lower.find(id_) != std::string::npos) {
        // The id must be a whole item of the list, not part of another id.
        const std::vector<std::string_view> one{std::string_view(line_)};
        const std::vector<std::string> ids = FreeDbParser::EntryDiscIds(one);
        hasId_ = hasId_ || std::find(ids.begin(), ids.end(), id_) != ids.end();
      }
    }
    const bool end = line_.compare(0, 10, "PLAYORDER=") == 0;
    if (entry_.size() + line_.size() < LocalFreeDb::kMaxEntryBytes) {
      entry_ += line_;
      entry_ += '\n';
    } else {
      tooLong_ = true;
    }
    line_.clear();
    if (end) EndEntry();
    return end;
  }

  void EndEntry() {
    if (!tooLong_ && (hasId_ || (acceptWithoutId_ && !hasIdLine_))) {
      found_ = true;
      return;
    }
    entry_.clear();
    hasId_ = hasIdLine_ = tooLong_ = false;
  }

  std::string id_;
  bool acceptWithoutId_;
  std::string line_;
  std::string entry_;
  bool hasId_ = false;
  bool hasIdLine_ = false;
  bool tooLong_ = false;
  bool found_ = false;
};

bool ScanFile(int dirFd, const char* name, std::string_view id, bool acceptWithoutId,
              std::stop_token stop, std::string* entry) {
  const int fd = ::openat(dirFd, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return false;
  struct stat st;
  bool found = false;
  if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) {
    EntryScanner scanner(id, acceptWithoutId);
    found = scanner.Scan(fd, stop, entry);
  }
  ::close(fd);
  return found;
}

// A file of many entries named "XXtoYY" whose range holds the id's first byte.
bool RangeCovers(std::string_view name, int firstByte) {
  if (name.size() != 6 || name.substr(2, 2) != "to" || !IsHex(name.substr(0, 2)) ||
      !IsHex(name.substr(4, 2))) {
    return false;
  }
  return HexByte(name.substr(0, 2)) <= firstByte && firstByte <= HexByte(name.substr(4, 2));
}

bool FindInCategory(const std::string& folder, const std::string& id, std::stop_token stop,
                    std::string* entry) {
  const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirFd < 0) return false;
  bool found = ScanFile(dirFd, id.c_str(), id, true, stop, entry);
  if (!found) {
    // Only then list the folder: a folder of single entries can hold hundreds
    // of thousands of names.
    std::vector<std::string> ranges;
    const int listFd = ::dup(dirFd);
    if (DIR* dir = listFd >= 0 ? ::fdopendir(listFd) : nullptr) {
      while (const dirent* d = ::readdir(dir)) {
        if (RangeCovers(d->d_name, HexByte(std::string_view(id).substr(0, 2)))) {
          ranges.emplace_back(d->d_name);
        }
      }
      ::closedir(dir);
    } else if (listFd >= 0) {
      ::close(listFd);
    }
    std::sort(ranges.begin(), ranges.end());
    for (const std::string& name : ranges) {
      if (stop.stop_requested()) break;
      if ((found = ScanFile(dirFd, name.c_str(), id, false, stop, entry))) break;
    }
  }
  ::close(dirFd);
  return found;
}

}  // namespace

Status LocalFreeDb::Find(const std::string& root, std::string_view discId, std::stop_token stop,
                         std::vector<Match>* matches) {
  matches->clear();
  struct stat st;
  if (root.empty() || ::stat(root.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    return Status::NotFound("The folder for local database does not exist!");
  }
  std::string id(discId);
  for (char& c : id) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
  if (id.size() != 8 || !IsHex(id)) return Status::OK();
  for (std::string_view category : kCategories) {
    if (stop.stop_requested()) return Status::Cancelled();
    std::string entry;
    if (!FindInCategory(root + "/" + std::string(category), id, stop, &entry)) continue;
    Match m;
    m.category = std::string(category);
    m.entry = AudioText::ToUtf8(entry);
    m.title = FreeDbParser::EntryTitle(AudioText::SplitLines(m.entry));
    matches->push_back(std::move(m));
  }
  if (stop.stop_requested()) return Status::Cancelled();
  return Status::OK();
}

std::string LocalFreeDb::QueryAnswerFor(const std::vector<Match>& matches,
                                        std::string_view discId) {
  const std::string id(discId);
  if (matches.empty()) return "202 No match for disc ID " + id + ".";
  if (matches.size() == 1) return "200 " + matches[0].category + " " + id + " " + matches[0].title;
  std::string answer = "210 Found exact matches, list follows (until terminating `.')\r\n";
  for (const Match& m : matches) answer += m.category + " " + id + " " + m.title + "\r\n";
  answer += ".\r\n";
  return answer;
}

std::string LocalFreeDb::ReadAnswerFor(const Match& match, std::string_view discId) {
  std::string answer = "210 " + match.category + " " + std::string(discId) +
                       " CD database entry follows (until terminating `.')\r\n";
  for (std::string_view line : AudioText::SplitLines(match.entry)) {
    answer += line;
    answer += "\r\n";
  }
  answer += ".\r\n";
  return answer;
}

}  // namespace gorvan
