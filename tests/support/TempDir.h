#pragma once
// TempDir: a fresh folder under $TMPDIR for one test, removed with everything in
// it when the object goes away (permissions are restored first so that fixture
// trees with unreadable folders can be removed too).

#include <string>

namespace gorvan::test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // path() + "/" + name
  std::string File(const std::string& name) const;

 private:
  std::string path_;
};

// Whole contents of a file as bytes; empty when it cannot be read.
std::string ReadFileBytes(const std::string& path);
// Replaces a file's contents; returns false on failure.
bool WriteFileBytes(const std::string& path, const std::string& bytes);

}  // namespace gorvan::test
