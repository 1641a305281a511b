#pragma once
// UiSettings: the per-user settings the main window reads and writes itself —
// its placement ("Startup"/"WindowState", "Left", "Top", "Height", "Width"),
// the view mode ("Startup"/"ViewModeExplorer") and the few "Switches" it
// consults (the lNotify* prompt switches, "lDragDrop", the first-start
// question about update notices), with the settings record's defaults.
//
// Thread contract: the GUI thread.

#include <optional>
#include <string>

namespace gorvan::ui {

inline constexpr const char* kAutoUpdateQuestion =
    "You can let Gorvan automatically notify you of new Gorvan updates when you are online!!\n"
    "Do want to enable this feature?\n"
    "You can always chnage your selection later in the Gorvan options!!";

struct WindowPlacement {
  // 0 normal, 1 minimised, 2 maximised.
  int state = 0;
  int left = 0;
  int top = 0;
  int height = 0;
  int width = 0;
  bool hasPosition = false;  // "Left" and "Top" were stored
  bool hasSize = false;      // "Height" and "Width" were stored
};

class UiSettings {
 public:
  static WindowPlacement LoadPlacement();
  static void SavePlacement(const WindowPlacement& placement);

  // "Startup"/"ViewModeExplorer", default True: only a stored "false" (any
  // case) chooses the traditional view.
  static bool ViewModeExplorer();
  static void SetViewModeExplorer(bool explorer);

  // The explorer list's style ("Startup"/"ListStyle": 0 large icons, 1 small
  // icons, 2 list, 3 details; default 3) and whether the status panels show
  // ("Startup"/"ShowPanels", default True).
  static int ListStyle();
  static void SetListStyle(int style);
  static bool ShowPanels();
  static void SetShowPanels(bool show);

  // A "Switches" bool, read afresh from the store (a prompt switched off a
  // moment ago stays off), with the settings record's default for the key
  // (True for the keys the record does not know).
  static bool Switch(const std::string& key);
  static void SetSwitch(const std::string& key, bool value);
};

}  // namespace gorvan::ui
