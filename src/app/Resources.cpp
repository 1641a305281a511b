#include "app/Resources.h"

#include <filesystem>
#include <system_error>

namespace gorvan {
namespace fs = std::filesystem;

std::string Resources::FolderFrom(const std::string& exePath) {
  std::error_code ec;
  fs::path dir = fs::path(exePath).parent_path();
  // <dir>/share/gorvan (portable), <dir>/../share/gorvan (installed: bin and
  // share side by side), then further up for the build tree, where the
  // programs sit in subfolders of the folder that holds share/.
  for (int up = 0; up <= 3 && !dir.empty(); ++up) {
    const fs::path candidate = dir / "share" / "gorvan";
    if (fs::is_directory(candidate, ec)) return candidate.lexically_normal().string();
    if (dir == dir.parent_path()) break;
    dir = dir.parent_path();
  }
  return {};
}

std::string Resources::Folder() {
  // The executable does not move while it runs: looked up once.
  static const std::string folder = [] {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    return ec ? std::string() : FolderFrom(exe.string());
  }();
  return folder;
}

std::string Resources::File(const std::string& name) {
  const std::string folder = Folder();
  if (folder.empty()) return {};
  std::error_code ec;
  const std::string path = folder + "/" + name;
  return fs::exists(path, ec) ? path : std::string();
}

}  // namespace gorvan
