#include "app/ShellIntegration.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "app/Resources.h"

extern char** environ;

namespace gorvan {
namespace fs = std::filesystem;

namespace {

constexpr const char* kMimePackagePath = "mime/packages/gorvan.xml";
constexpr const char* kDesktopEntryPath = "applications/gorvan.desktop";
constexpr const char* kIconPath = "icons/hicolor/scalable/apps/gorvan.svg";
constexpr const char* kIconResource = "images/gorvan.svg";
constexpr const char* kMimeAppsPath = "mimeapps.list";
constexpr const char* kNautilusPath = "nautilus/scripts/Catalog with Gorvan";
constexpr const char* kDolphinPath = "kio/servicemenus/gorvan-catalog.desktop";
constexpr const char* kNemoPath = "nemo/actions/gorvan-catalog.nemo_action";
constexpr const char* kThunarPath = "Thunar/uca.xml";
constexpr const char* kThunarId = "gorvan-catalog-with-gorvan";
constexpr const char* kDefaultGroup = "[Default Applications]";
// Shared files larger than this are not ours to rewrite.
constexpr size_t kMaxSharedFile = size_t{4} << 20;

std::string HomeOr(const char* variable, const char* fallback) {
  // Relative values are invalid and ignored, as the base directory rules say.
  if (const char* v = std::getenv(variable); v && v[0] == '/') return v;
  const char* home = std::getenv("HOME");
  return std::string(home && *home ? home : "/") + "/" + fallback;
}

std::optional<std::string> ReadSmall(const std::string& path, size_t limit = kMaxSharedFile) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::string text;
  char buffer[8192];
  ssize_t n;
  while ((n = ::read(fd, buffer, sizeof buffer)) != 0) {
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 || text.size() + static_cast<size_t>(n) > limit) {
      ::close(fd);
      return std::nullopt;
    }
    text.append(buffer, static_cast<size_t>(n));
  }
  ::close(fd);
  return text;
}

bool IsExecutable(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && (st.st_mode & S_IXUSR);
}

// Writes contents to path unless it already holds exactly that (with the
// execute bit when executable). True when the file changed.
bool WriteIfDifferent(const std::string& path, const std::string& contents, bool executable) {
  const std::optional<std::string> old = ReadSmall(path);
  if (old && *old == contents) {
    if (!executable || IsExecutable(path)) return false;
    return ::chmod(path.c_str(), 0755) == 0;
  }
  std::error_code ec;
  fs::create_directories(fs::path(path).parent_path(), ec);
  const std::string temp = path + ".~gorvan";
  const int fd =
      ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, executable ? 0755 : 0644);
  if (fd < 0) return false;
  size_t done = 0;
  while (done < contents.size()) {
    const ssize_t n = ::write(fd, contents.data() + done, contents.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  const bool ok =
      ::close(fd) == 0 && done == contents.size() && ::rename(temp.c_str(), path.c_str()) == 0;
  if (!ok) ::unlink(temp.c_str());
  return ok;
}

bool RemoveIfPresent(const std::string& path) { return ::unlink(path.c_str()) == 0; }

// Runs a desktop database tool when it is installed, with its output thrown
// away; waits at most ten seconds for it.
void RunTool(const char* tool, const std::string& folder) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  std::string arg0 = tool, arg1 = folder;
  char* argv[] = {arg0.data(), arg1.data(), nullptr};
  pid_t pid = 0;
  const int rc = posix_spawnp(&pid, tool, &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return;
  for (int waited = 0; waited < 1000; ++waited) {
    const pid_t r = ::waitpid(pid, nullptr, WNOHANG);
    if (r == pid || (r < 0 && errno != EINTR)) return;
    const timespec tick{0, 10'000'000};
    ::nanosleep(&tick, nullptr);
  }
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
}

std::string_view TrimView(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
    s.remove_suffix(1);
  return s;
}

std::string XmlEscape(std::string_view text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&apos;";
        break;
      default:
        out.push_back(c);
    }
  }
  return out;
}

// A desktop entry string: backslash, line breaks and tabs as escapes.
std::string DesktopEscape(std::string_view text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        out.push_back(c);
    }
  }
  return out;
}

// The mimeapps.list line of our type, its value, and where the group is.
struct HandlerLine {
  size_t group = std::string::npos;  // index of "[Default Applications]"
  size_t line = std::string::npos;   // index of our key inside it
  std::string value;
};

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

HandlerLine FindHandler(const std::vector<std::string>& lines) {
  HandlerLine h;
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string_view line = TrimView(lines[i]);
    if (!line.empty() && line.front() == '[') {
      if (h.group != std::string::npos) break;
      if (line == kDefaultGroup) h.group = i;
    } else if (h.group != std::string::npos) {
      const size_t eq = line.find('=');
      if (eq != std::string_view::npos && TrimView(line.substr(0, eq)) == kCatalogMimeType) {
        h.line = i;
        h.value = std::string(TrimView(line.substr(eq + 1)));
        return h;
      }
    }
  }
  return h;
}

bool IsOurHandler(const std::string& value) {
  return value == kDesktopEntryId || value.rfind(std::string(kDesktopEntryId) + ";", 0) == 0;
}

// uca.xml without our actions: every <action> element whose unique id or
// name is ours is cut out, with the blanks before it and its line end.
std::string WithoutOurThunarActions(const std::string& text) {
  std::string out;
  size_t pos = 0;
  while (true) {
    const size_t open = text.find("<action>", pos);
    if (open == std::string::npos) break;
    const size_t close = text.find("</action>", open);
    if (close == std::string::npos) break;
    size_t end = close + 9;
    const std::string_view block(text.data() + open, end - open);
    const bool ours =
        block.find(std::string("<unique-id>") + kThunarId + "</unique-id>") != std::string::npos ||
        block.find(std::string("<name>") + kFolderActionCaption + "</name>") != std::string::npos;
    size_t cut = open;
    if (ours) {
      while (cut > pos && (text[cut - 1] == ' ' || text[cut - 1] == '\t')) --cut;
      if (end < text.size() && text[end] == '\n') ++end;
    }
    out.append(text, pos, (ours ? cut : end) - pos);
    pos = end;
  }
  out.append(text, pos, std::string::npos);
  return out;
}

}  // namespace

std::string ShellQuote(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      out.push_back(c);
    }
  }
  return out + "'";
}

std::string DesktopExec(const std::string& program, const std::string& arguments) {
  static constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";
  std::string arg;
  for (char c : program) {
    if (c == '%') arg.push_back('%');
    arg.push_back(c);
  }
  if (arg.find_first_of(kReserved) != std::string::npos) {
    std::string quoted = "\"";
    for (char c : arg) {
      if (c == '"' || c == '`' || c == '$' || c == '\\') quoted.push_back('\\');
      quoted.push_back(c);
    }
    arg = quoted + "\"";
  }
  return DesktopEscape(arg + (arguments.empty() ? "" : " " + arguments));
}

ShellIntegration::ShellIntegration(std::string program)
    : program_(std::move(program)),
      dataHome_(HomeOr("XDG_DATA_HOME", ".local/share")),
      configHome_(HomeOr("XDG_CONFIG_HOME", ".config")) {
  const char* dirs = std::getenv("XDG_CONFIG_DIRS");
  configDirs_ = dirs && *dirs ? dirs : "/etc/xdg";
}

std::string ShellIntegration::DesktopProgram() {
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    if (exe.filename() == "gorvan") return exe.string();
    const fs::path sibling = exe.parent_path() / "gorvan";
    if (::access(sibling.c_str(), X_OK) == 0) return sibling.string();
  }
  return "gorvan";
}

std::string ShellIntegration::Path(const char* relative, bool config) const {
  return (config ? configHome_ : dataHome_) + "/" + relative;
}

std::string ShellIntegration::MimePackage() {
  return std::string(
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
             "  <mime-type type=\"") +
         kCatalogMimeType +
         "\">\n"
         "    <comment>" +
         kCatalogTypeDescription +
         "</comment>\n"
         "    <icon name=\"gorvan\"/>\n"
         "    <glob pattern=\"*.cd\"/>\n"
         "  </mime-type>\n"
         "</mime-info>\n";
}

std::string ShellIntegration::DesktopEntry(const std::string& program) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Gorvan\n"
         "GenericName=Media Catalog\n"
         "Comment=Catalog CDs, DVDs, USB sticks and folders, then browse and search the "
         "catalog\n"
         "Exec=" +
         DesktopExec(program, "%f") +
         "\n"
         "Icon=gorvan\n"
         "Terminal=false\n"
         "Categories=Utility;Archiving;\n"
         "MimeType=" +
         kCatalogMimeType +
         ";\n"
         "Keywords=catalog;CD;DVD;disc;media;scan;\n";
}

std::string ShellIntegration::NautilusScript() const {
  // Nautilus runs scripts in the folder shown and passes the chosen names;
  // with nothing chosen, the folder shown is catalogued.
  return "#!/bin/sh\n"
         "# Catalog with Gorvan: opens Gorvan's scan dialog for the chosen folder.\n"
         "exec " +
         ShellQuote(program_) + " --scan \"${1:-.}\"\n";
}

std::string ShellIntegration::DolphinServiceMenu() const {
  return std::string(
             "[Desktop Entry]\n"
             "Type=Service\n"
             "MimeType=inode/directory;\n"
             "Actions=catalogWithGorvan;\n"
             "X-KDE-ServiceTypes=KonqPopupMenu/Plugin\n"
             "\n"
             "[Desktop Action catalogWithGorvan]\n"
             "Name=") +
         kFolderActionCaption +
         "\n"
         "Icon=gorvan\n"
         "Exec=" +
         DesktopExec(program_, "--scan %f") + "\n";
}

std::string ShellIntegration::NemoAction() const {
  return std::string(
             "[Nemo Action]\n"
             "Name=") +
         kFolderActionCaption +
         "\n"
         "Comment=Open Gorvan's scan dialog for this folder\n"
         "Exec=" +
         DesktopEscape(ShellQuote(program_) + " --scan %F") +
         "\n"
         "Icon-Name=gorvan\n"
         "Selection=s\n"
         "Extensions=dir;\n"
         "Quote=double\n";
}

std::string ShellIntegration::ThunarAction() const {
  // Thunar quotes the path it puts in for %f.
  return std::string(
             "<action>\n"
             "\t<icon>gorvan</icon>\n"
             "\t<name>") +
         kFolderActionCaption +
         "</name>\n"
         "\t<unique-id>" +
         kThunarId +
         "</unique-id>\n"
         "\t<command>" +
         XmlEscape(ShellQuote(program_) + " --scan %f") +
         "</command>\n"
         "\t<description>Open Gorvan's scan dialog for this folder</description>\n"
         "\t<patterns>*</patterns>\n"
         "\t<directories/>\n"
         "</action>\n";
}

bool ShellIntegration::SetDefaultHandler(bool set) const {
  const std::string path = Path(kMimeAppsPath, true);
  std::optional<std::string> text = ReadSmall(path);
  if (!text) {
    // An unreadable or oversized list is left alone; a missing one starts empty.
    if (::access(path.c_str(), F_OK) == 0) return false;
    if (!set) return false;
    text.emplace();
  }
  std::vector<std::string> lines = SplitLines(*text);
  const HandlerLine h = FindHandler(lines);
  const std::string entry = std::string(kCatalogMimeType) + "=" + kDesktopEntryId;
  if (set) {
    if (h.line != std::string::npos) {
      if (h.value == kDesktopEntryId) return false;
      lines[h.line] = entry;
    } else if (h.group != std::string::npos) {
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(h.group + 1), entry);
    } else {
      if (!lines.empty() && !TrimView(lines.back()).empty()) lines.emplace_back();
      lines.push_back(kDefaultGroup);
      lines.push_back(entry);
    }
  } else {
    // Another program's handler, chosen by the user, stays.
    if (h.line == std::string::npos || !IsOurHandler(h.value)) return false;
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(h.line));
  }
  std::string out;
  for (const std::string& line : lines) out.append(line).push_back('\n');
  return WriteIfDifferent(path, out, false);
}

bool ShellIntegration::EditThunarActions(bool install) const {
  const std::string path = Path(kThunarPath, true);
  std::optional<std::string> text = ReadSmall(path);
  if (!text) {
    if (::access(path.c_str(), F_OK) == 0 || !install) return false;
    // A user without uca.xml has the system's actions; the new file starts
    // from them so that they do not disappear.
    std::string_view dirs = configDirs_;
    while (!text && !dirs.empty()) {
      const size_t colon = dirs.find(':');
      const std::string dir(dirs.substr(0, colon));
      dirs = colon == std::string_view::npos ? std::string_view() : dirs.substr(colon + 1);
      if (!dir.empty() && dir.front() == '/') text = ReadSmall(dir + "/" + kThunarPath);
    }
    if (!text) text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n";
  }
  std::string out = WithoutOurThunarActions(*text);
  if (install) {
    if (const size_t empty = out.find("<actions/>"); empty != std::string::npos) {
      out.replace(empty, 10, "<actions>\n</actions>");
    }
    const size_t end = out.rfind("</actions>");
    // A file without its closing tag is damaged; it is not ours to repair.
    if (end == std::string::npos) return false;
    out.insert(end, ThunarAction());
  }
  if (out == *text) return false;
  return WriteIfDifferent(path, out, false);
}

void ShellIntegration::RegisterFileType() const {
  if (WriteIfDifferent(Path(kMimePackagePath), MimePackage(), false)) {
    RunTool("update-mime-database", Path("mime"));
  }
  if (WriteIfDifferent(Path(kDesktopEntryPath), DesktopEntry(program_), false)) {
    RunTool("update-desktop-database", Path("applications"));
  }
  SetDefaultHandler(true);
  if (const std::string icon = Resources::File(kIconResource); !icon.empty()) {
    if (const std::optional<std::string> svg = ReadSmall(icon)) {
      WriteIfDifferent(Path(kIconPath), *svg, false);
    }
  }
}

void ShellIntegration::UnregisterFileType() const {
  if (RemoveIfPresent(Path(kMimePackagePath))) RunTool("update-mime-database", Path("mime"));
  if (RemoveIfPresent(Path(kDesktopEntryPath))) {
    RunTool("update-desktop-database", Path("applications"));
  }
  SetDefaultHandler(false);
  RemoveIfPresent(Path(kIconPath));
}

void ShellIntegration::InstallFolderActions() const {
  WriteIfDifferent(Path(kNautilusPath), NautilusScript(), true);
  // Dolphin runs service menus from the user's folder only when they are executable.
  WriteIfDifferent(Path(kDolphinPath), DolphinServiceMenu(), true);
  WriteIfDifferent(Path(kNemoPath), NemoAction(), false);
  EditThunarActions(true);
}

void ShellIntegration::RemoveFolderActions() const {
  RemoveIfPresent(Path(kNautilusPath));
  RemoveIfPresent(Path(kDolphinPath));
  RemoveIfPresent(Path(kNemoPath));
  EditThunarActions(false);
}

std::vector<ShellIntegration::Item> ShellIntegration::Status() const {
  const auto fileState = [](const std::string& path, const std::string& expected) {
    const std::optional<std::string> text = ReadSmall(path);
    if (!text) return State::kMissing;
    return *text == expected ? State::kInstalled : State::kDiffers;
  };
  std::vector<Item> items;
  items.push_back({"MIME type", Path(kMimePackagePath),
                   fileState(Path(kMimePackagePath), MimePackage()), false});
  items.push_back({"desktop entry", Path(kDesktopEntryPath),
                   fileState(Path(kDesktopEntryPath), DesktopEntry(program_)), false});
  {
    const std::optional<std::string> text = ReadSmall(Path(kMimeAppsPath, true));
    const HandlerLine h = FindHandler(text ? SplitLines(*text) : std::vector<std::string>());
    const State s = h.line == std::string::npos  ? State::kMissing
                    : h.value == kDesktopEntryId ? State::kInstalled
                                                 : State::kDiffers;
    items.push_back({"default handler", Path(kMimeAppsPath, true), s, false});
  }
  {
    const std::string icon = Resources::File(kIconResource);
    const std::optional<std::string> svg = icon.empty() ? std::nullopt : ReadSmall(icon);
    const State s =
        !svg ? (::access(Path(kIconPath).c_str(), F_OK) == 0 ? State::kInstalled : State::kMissing)
             : fileState(Path(kIconPath), *svg);
    items.push_back({"icon", Path(kIconPath), s, false});
  }
  const auto scriptState = [&](const std::string& path, const std::string& expected) {
    const State s = fileState(path, expected);
    return s == State::kInstalled && !IsExecutable(path) ? State::kDiffers : s;
  };
  items.push_back({"Nautilus script", Path(kNautilusPath),
                   scriptState(Path(kNautilusPath), NautilusScript()), true});
  items.push_back({"Dolphin service menu", Path(kDolphinPath),
                   scriptState(Path(kDolphinPath), DolphinServiceMenu()), true});
  items.push_back({"Nemo action", Path(kNemoPath), fileState(Path(kNemoPath), NemoAction()), true});
  {
    const std::optional<std::string> text = ReadSmall(Path(kThunarPath, true));
    State s = State::kMissing;
    if (text && text->find(ThunarAction()) != std::string::npos) {
      s = State::kInstalled;
    } else if (text && WithoutOurThunarActions(*text) != *text) {
      s = State::kDiffers;
    }
    items.push_back({"Thunar custom action", Path(kThunarPath, true), s, true});
  }
  return items;
}

}  // namespace gorvan
