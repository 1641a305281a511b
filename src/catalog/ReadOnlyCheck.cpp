#include "catalog/ReadOnlyCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace gorvan {

bool ReadOnlyCheck::Run(const std::string& path, const Ask& ask, std::string* error) {
  error->clear();
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return true;  // a new catalog
  if ((st.st_mode & S_IWUSR) != 0 && ::access(path.c_str(), W_OK) == 0) return true;
  if (!ask || !ask(kReadOnlyQuestion)) return false;
  if (::chmod(path.c_str(), (st.st_mode & 07777) | S_IWUSR) != 0) {
    *error = path + ": " + std::strerror(errno);
    return false;
  }
  if (::access(path.c_str(), W_OK) != 0) {
    *error = path + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace gorvan
