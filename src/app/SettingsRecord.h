#pragma once
// SettingsRecord: the process-wide record of every setting, filled once at
// start-up by Load and written back by Save when the options dialog is
// confirmed. Other code reads the record, never the stores, except for the
// sections windows keep for themselves (sizes, column layout, history).
//
// Two stores feed it: "Gorvan.ini" (section "Switches", five switches read
// before anything else) and the per-user store, section "Switches". Booleans
// are "True"/"False" and read as true only when the lower-cased text is
// "true"; numbers are decimal text; a value of the wrong type reads as the
// key's default.
//
// The skin-support key is asymmetric and stays so: Load reads
// "lEnableSkinSupport", Save writes "lEnableSkinSupport " (one trailing blank),
// so a saved change of that switch is never read back.
//
// Thread contract: Load and Save on the thread that owns the record (the GUI
// thread in the desktop program).

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace gorvan {

class Prompt;
class ShellIntegration;

inline constexpr const char* kSwitches = "Switches";
// The skin name stored after the first-run question.
inline constexpr const char* kDefaultSkinName = "____2222____";
inline constexpr const char* kSkinQuestion = "Do you want to enable skins";

enum class SettingType { kBool, kInteger, kColour, kText };

// One key of the per-user section "Switches" as the record holds it.
struct SettingKey {
  std::string key;
  SettingType type;
  std::string defaultText;  // as stored: "True", "1", "Arial", ...
};

class SettingsRecord {
 public:
  // "Gorvan.ini", section "Switches".
  bool dragDrop = true;  // "DragDrop", then overwritten by "lDragDrop"
  bool noSubclass = true;
  bool backgroundList = true;  // the three are forced off by "Background" = False
  bool backgroundTree = true;
  bool backgroundDetails = true;

  // Per-user "Switches", in the order they load.
  bool freeDbEnabled = false;
  bool freeDbUseDatabase = false;
  bool freeDbUseUrl = false;
  std::string freedbDatabasePath;
  std::string freeDbUrl;
  std::string freeDbArtistAfterIf;
  std::string freeDbArtistBeforeIf;
  int32_t currentBackground = 1;  // below 1 loads as 1
  bool lEnableSkinSupport = true;
  std::string defaultFont = "Arial";
  int32_t htmlColor1 = 0;  // colours: blue-green-red, red in the low byte
  int32_t htmlColor2 = 255;
  int32_t htmlColor3 = 16711680;
  int32_t htmlColor4 = 65280;
  bool lNotifyNoInternet = true;
  bool lNotifyConnectFreedb = true;
  bool lNotifyConnectFreedbAction = true;
  bool lNotifyBackup = true;
  bool lNotifySaveAs = true;
  bool lNotifyCdChange = true;
  bool lNotifyCompact = true;
  bool lNotifyUpgrade = true;
  bool lNotifyErrorSend = true;
  bool lNotifyExport = true;
  bool lNotifyExport_Search = true;
  bool lNotifyNewVersion = false;
  bool lShowAutoUpdateNotice = true;
  bool lNotifyPackGarbage = false;
  bool lShellIntegration = true;
  bool retainSize = true;
  bool unicodeEnabled = true;
  int32_t startupDriveSelect = 2;
  bool lEnableAutoInsert = true;
  bool lNotifyEnhancedCd = true;
  bool lAssumeEnhancedCd = false;
  bool lInteractiveSearch = false;
  std::string skinName;  // "" until the first-run question, then "____2222____"
  bool skinSupportEnabled = true;
  bool showVersionReminder = true;  // "Gorvan" + the version string
  // Keys this program adds.
  std::string supportServer;      // "SupportServer": host[:port] or URL; "" = none
  std::string supportWebAddress;  // "SupportWebAddress"
  std::string supportEmail;       // "SupportEmail"
  int32_t freeDbProtocolLevel = 6;
  bool musicBrainzEnabled = false;

  // Loads the whole record, in this order: the INI switches (a False
  // "Background" turns the three background switches off); the "Switches"
  // keys in the order of Keys() ("lDragDrop" overwrites "DragDrop",
  // "CurrentBackground" below 1 becomes 1); the skin choice — when "SkinName"
  // is empty (first run) the skin question is asked once through prompt and
  // "SkinSupportEnabled" and "SkinName" are stored; last, the folder actions
  // are installed or removed according to "lShellIntegration".
  void Load(Prompt& prompt, const ShellIntegration& shell);

  // Writes one value to the per-user store; false when the write failed.
  using Writer = std::function<bool(const std::string& section, const std::string& key,
                                    const std::string& value)>;
  // Writes the "Switches" keys in the order of SaveOrder() (through write,
  // the per-user store by default), then installs or removes the folder
  // actions according to "lShellIntegration". The INI file is not written. A
  // failed write is logged by the store and the others are still tried.
  void Save(const ShellIntegration& shell, const Writer& write = {}) const;

  // The number of the main window's background picture ("back_01" ..
  // "back_09"): currentBackground when skins are off and it is 1 to 9, else 0.
  int BackgroundPicture() const;

  // The value of a "Switches" key of Keys() as it is stored ("True", "12",
  // "Arial"); "" for a key the record does not know.
  std::string Text(const std::string& key) const;
  // Sets the field of a key of Keys() from stored text. false for a key the
  // record does not know or a number that does not parse (the field stays).
  bool SetText(const std::string& key, const std::string& text);

  // The "Switches" keys Load reads, in its order, with their types and defaults.
  static const std::vector<SettingKey>& Keys();
  // The keys Save writes, in its order ("lEnableSkinSupport " among them).
  static const std::vector<std::string>& SaveOrder();
  // The record's entry for key of "Switches"; nullptr for other keys.
  static const SettingKey* Find(const std::string& section, const std::string& key);
  // "Gorvan" followed by the version string: the reminder's switch.
  static std::string VersionReminderKey();
  // Parses text as the type; false when it does not read as one (then the
  // key's default applies). Booleans always parse.
  static bool Parse(SettingType type, const std::string& text, int32_t* number);
};

}  // namespace gorvan
