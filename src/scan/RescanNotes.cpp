#include "scan/RescanNotes.h"

namespace gorvan {

bool RescanNotes::Start(int32_t previousDiscId) {
  if (!old_.recordGet(previousDiscId)) return false;
  old_.GetDirFirst();
  filesValid_ = false;
  return true;
}

std::string RescanNotes::FolderNotes(const std::string& parentPath, std::string_view name) {
  filesValid_ = false;
  classDir& d = old_.dirs();
  while (!d.isEof()) {
    const std::string stored = d.GetDirPath();
    if (stored == parentPath && d.GetDirName() == name) {
      std::string notes = d.GetDirNotes();
      d.GetFileFirst();
      filesValid_ = true;
      d.MoveNext();
      return notes;
    }
    if (stored != "\\" && stored > parentPath) return {};
    d.MoveNext();
  }
  return {};
}

const std::string& RescanNotes::FileNotes(std::string_view name) {
  notes_.clear();
  if (!filesValid_) return notes_;
  ClassFile& f = old_.dirs().files();
  while (!f.isEof()) {
    f.GetFileName(&name_);
    if (name_ == name) {
      notes_ = f.GetFileNotes();
      f.MoveNext();
      return notes_;
    }
    if (std::string_view(name_) > name) return notes_;
    f.MoveNext();
  }
  return notes_;
}

}  // namespace gorvan
