#pragma once
// ScanPath: how the native path of a scanned folder becomes the folder texts
// of a catalog. Inside a catalog, paths are relative to the root of the volume
// that holds them and use '\' as the separator on every platform: scanning
// /home/ann/Music on the volume mounted at / gives a root folder named "Music"
// whose parent path is "home\ann"; scanning a mount point gives the name "" and
// the parent path "\".

#include <string>
#include <string_view>

namespace gorvan {

class ScanPath {
 public:
  // The absolute form of `path` with "." and ".." removed and symbolic links
  // resolved, without a trailing '/' (except for "/" itself). "" when the path
  // does not exist or cannot be resolved.
  static std::string Normalise(const std::string& path);

  // True when `path` names an existing folder (a link to a folder counts).
  static bool FolderExists(const std::string& path);

  // `path` relative to `mountPoint`, its components joined with '\'; "" for the
  // mount point itself and for a path outside it.
  // REQUIRES: both absolute and normalised.
  static std::string VolumeRelative(std::string_view mountPoint, std::string_view path);

  // The catalog texts of the folder at `path`: *name is its last component
  // ("" for the mount point itself) and *parent the volume-relative path of the
  // folder above it, or "\" when that is the volume root. A '\' inside a name
  // stays part of the name.
  // REQUIRES: both absolute and normalised, `path` at or below `mountPoint`.
  static void FolderTexts(std::string_view mountPoint, std::string_view path, std::string* parent,
                          std::string* name);

  // The disc name proposed for a scan of `path`: its last folder name when it
  // lies below its volume's root, else the volume label.
  static std::string DefaultDiscName(std::string_view mountPoint, std::string_view path,
                                     std::string_view volumeLabel);
};

}  // namespace gorvan
