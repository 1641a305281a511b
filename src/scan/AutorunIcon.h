#pragma once
// The icon a data CD names for itself: the "icon" line of the autorun.inf at
// its root, as an icon key "f_" + the icon file + "," + its index
// ("f_setup.ico,0"). "" when there is no such file or line. The file name is
// matched ignoring case, as the disc's own system would; at most the first
// 64 KiB of the file are read.

#include <string>

namespace gorvan {

std::string AutorunIconKey(const std::string& root);

}  // namespace gorvan
