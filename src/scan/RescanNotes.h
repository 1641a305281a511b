#pragma once
// RescanNotes: carries the notes of a disc's folders and files over to the
// same folders and files of its rescan. The new tree is written in the same
// depth-first order as the old one was, so the old disc is read forward only,
// in step with the scan: a folder is sought from where the last one was found
// and the search gives up at the first folder whose parent path sorts after
// the one sought (folders at the volume's top level, "\", are passed over);
// files are sought likewise within the folder found, by name.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "catalog/CatalogFile.h"
#include "catalog/classCd.h"

namespace gorvan {

class RescanNotes {
 public:
  explicit RescanNotes(CatalogFile* file) : old_(file) {}

  // Loads the previous disc and puts the folder search at its first folder.
  // False when the disc cannot be loaded (the catalog's error says why).
  bool Start(int32_t previousDiscId);
  const classCd& disc() const { return old_; }

  // The notes of the old folder name under parentPath; "" when none matches.
  std::string FolderNotes(const std::string& parentPath, std::string_view name);
  // The notes of the old file name in the folder FolderNotes found last.
  const std::string& FileNotes(std::string_view name);

 private:
  classCd old_;
  bool filesValid_ = false;
  std::string notes_;
  std::string name_;
};

}  // namespace gorvan
