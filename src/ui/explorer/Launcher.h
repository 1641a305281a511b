#pragma once
// Launcher: opens a catalogued folder or file with the desktop's default
// program — when the medium is there. A disc's base path is the native path
// that was scanned; the folder's place below the disc's top folder comes from
// the disc's tree. When the base path is not there (the disc is not in its
// drive, the stick not plugged in) the user is told that the disc is not
// mounted, and nothing is opened.
//
// Thread contract: the GUI thread.

#include <functional>
#include <string>

#include "catalog/DiscTree.h"
#include "ui/session/CatalogRows.h"

namespace gorvan::ui {

class CatalogSession;

class Launcher {
 public:
  // The native path of folderNode of the disc (DiscTree::kNone: the disc's
  // top folder) and, when file is not empty, of that file in it. "" when the
  // disc has no base path (an audio CD).
  static std::string NativePath(const DiscRow& disc, const DiscTree* tree, int32_t folderNode,
                                const std::string& file);
  // Opens the path with the desktop's default program, or says why not.
  // True when it was handed to the desktop.
  static bool Launch(CatalogSession& session, const DiscRow& disc, const DiscTree* tree,
                     int32_t folderNode, const std::string& file);

  // What hands a path to the desktop (QDesktopServices by default; tests
  // watch it). An empty function puts the default back.
  using Opener = std::function<bool(const std::string& path)>;
  static void SetOpener(Opener opener);
};

}  // namespace gorvan::ui
