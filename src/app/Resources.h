#pragma once
// Resources: the read-only files Gorvan ships (the export stylesheet
// "Gorvan.xsl", images, skins, help, tips), kept together in a folder
// "share/gorvan". An installed program finds it at <prefix>/share/gorvan
// beside its <prefix>/bin; a program in the build tree finds the copy the
// build puts at <build>/share/gorvan; a portable folder may hold it beside the
// executable. The folder is looked for from the running executable upwards
// (its own folder and up to three above), never at a path fixed at build time.
//
// Thread contract: any thread.

#include <string>

namespace gorvan {

class Resources {
 public:
  // The folder, without a trailing slash; "" when none is found.
  static std::string Folder();
  // Folder() + "/" + name (a file or folder) when it exists; else "".
  static std::string File(const std::string& name);
  // The folder found from the executable at exePath; "" when none.
  static std::string FolderFrom(const std::string& exePath);
};

}  // namespace gorvan
