#pragma once
// ShellIntegration: Gorvan's place in the user's desktop, the freedesktop way,
// for the current user only:
//
//   the file type   MIME type "application/x-gorvan-catalog" for "*.cd"
//                   ($XDG_DATA_HOME/mime/packages/gorvan.xml), the desktop
//                   entry that opens a catalog with "gorvan %f"
//                   ($XDG_DATA_HOME/applications/gorvan.desktop), that entry
//                   as the type's default handler ($XDG_CONFIG_HOME/mimeapps.list)
//                   and the program's icon (hicolor, scalable);
//   folder actions  "Catalog with Gorvan", running "gorvan --scan FOLDER", for
//                   Nautilus (a script), Dolphin (a service menu), Nemo (an
//                   action) and Thunar (a custom action in uca.xml), installed
//                   and removed together.
//
// A file is rewritten only when its contents differ; files of other programs
// that are shared (mimeapps.list, uca.xml) keep everything that is not ours,
// and installing twice leaves one entry. update-mime-database and
// update-desktop-database run after a change when they are installed. Like
// any shell registration, failures report nothing: a missing tool or an
// unwritable folder leaves that item as it was and the next one is tried.
// $XDG_DATA_HOME and $XDG_CONFIG_HOME are honoured (defaults
// ~/.local/share and ~/.config), read when the object is made.
//
// Thread contract: one call at a time per user (the desktop program's start,
// its options dialog, or gorvan-cli integrate).

#include <string>
#include <vector>

namespace gorvan {

inline constexpr const char* kCatalogMimeType = "application/x-gorvan-catalog";
inline constexpr const char* kCatalogTypeDescription = "Gorvan Data File";
inline constexpr const char* kDesktopEntryId = "gorvan.desktop";
inline constexpr const char* kFolderActionCaption = "Catalog with Gorvan";

class ShellIntegration {
 public:
  enum class State { kMissing, kInstalled, kDiffers };
  struct Item {
    std::string name;  // "MIME type", "desktop entry", ..., "Thunar custom action"
    std::string path;
    State state;
    bool folderAction;  // one of the four folder actions
  };

  // program: the desktop program that the desktop entry and the folder
  // actions run, by its full path.
  explicit ShellIntegration(std::string program = DesktopProgram());

  // The desktop program: the running executable when it is "gorvan", else a
  // "gorvan" beside it, else "gorvan" as found on the PATH.
  static std::string DesktopProgram();

  // The file type with its desktop entry, default handler and icon.
  void RegisterFileType() const;
  void UnregisterFileType() const;
  // The four folder actions. Installing leaves exactly one entry of each.
  void InstallFolderActions() const;
  void RemoveFolderActions() const;
  // Installs the folder actions when install is true, removes them otherwise.
  void Apply(bool install) const { install ? InstallFolderActions() : RemoveFolderActions(); }
  // Every item with its state, file type first.
  std::vector<Item> Status() const;

  // What is written, for the packaging and the tests.
  static std::string MimePackage();
  static std::string DesktopEntry(const std::string& program);
  std::string NautilusScript() const;
  std::string DolphinServiceMenu() const;
  std::string NemoAction() const;
  std::string ThunarAction() const;  // one <action> element of uca.xml

  const std::string& program() const { return program_; }
  const std::string& dataHome() const { return dataHome_; }
  const std::string& configHome() const { return configHome_; }

 private:
  std::string Path(const char* relative, bool config = false) const;
  bool SetDefaultHandler(bool set) const;
  bool EditThunarActions(bool install) const;

  std::string program_;
  std::string dataHome_;
  std::string configHome_;
  std::string configDirs_;
};

// The Exec value of a desktop entry that runs program with the given
// arguments: program quoted when it holds reserved characters, "%" doubled,
// and the result escaped as a desktop entry string.
std::string DesktopExec(const std::string& program, const std::string& arguments);
// text in single quotes for a POSIX shell.
std::string ShellQuote(const std::string& text);

}  // namespace gorvan
