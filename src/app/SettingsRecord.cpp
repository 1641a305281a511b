#include "app/SettingsRecord.h"

#include <charconv>
#include <variant>

#include "app/AppFolder.h"
#include "app/Prompt.h"
#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "app/basIniFiles.h"

namespace gorvan {
namespace {

using Member =
    std::variant<bool SettingsRecord::*, int32_t SettingsRecord::*, std::string SettingsRecord::*>;

struct Field {
  std::string key;
  SettingType type;
  Member member;
};

// The "Switches" keys in load order; the key text is the stored key, exactly.
const std::vector<Field>& Fields() {
  using R = SettingsRecord;
  using T = SettingType;
  static const std::vector<Field> fields = {
      {"FreeDbEnabled", T::kBool, &R::freeDbEnabled},
      {"FreeDbUseDatabase", T::kBool, &R::freeDbUseDatabase},
      {"FreeDbUseUrl", T::kBool, &R::freeDbUseUrl},
      {"FreedbDatabasePath", T::kText, &R::freedbDatabasePath},
      {"FreeDbUrl", T::kText, &R::freeDbUrl},
      {"FreeDbArtistAfterIf", T::kText, &R::freeDbArtistAfterIf},
      {"FreeDbArtistBeforeIf", T::kText, &R::freeDbArtistBeforeIf},
      {"CurrentBackground", T::kInteger, &R::currentBackground},
      {"lEnableSkinSupport", T::kBool, &R::lEnableSkinSupport},
      {"DefaultFont", T::kText, &R::defaultFont},
      {"htmlColor1", T::kColour, &R::htmlColor1},
      {"htmlColor2", T::kColour, &R::htmlColor2},
      {"htmlColor3", T::kColour, &R::htmlColor3},
      {"htmlColor4", T::kColour, &R::htmlColor4},
      {"lDragDrop", T::kBool, &R::dragDrop},
      {"lNotifyNoInternet", T::kBool, &R::lNotifyNoInternet},
      {"lNotifyConnectFreedb", T::kBool, &R::lNotifyConnectFreedb},
      {"lNotifyConnectFreedbAction", T::kBool, &R::lNotifyConnectFreedbAction},
      {"lNotifyBackup", T::kBool, &R::lNotifyBackup},
      {"lNotifySaveAs", T::kBool, &R::lNotifySaveAs},
      {"lNotifyCdChange", T::kBool, &R::lNotifyCdChange},
      {"lNotifyCompact", T::kBool, &R::lNotifyCompact},
      {"lNotifyUpgrade", T::kBool, &R::lNotifyUpgrade},
      {"lNotifyErrorSend", T::kBool, &R::lNotifyErrorSend},
      {"lNotifyExport", T::kBool, &R::lNotifyExport},
      {"lNotifyExport_Search", T::kBool, &R::lNotifyExport_Search},
      {"lNotifyNewVersion", T::kBool, &R::lNotifyNewVersion},
      {"lShowAutoUpdateNotice", T::kBool, &R::lShowAutoUpdateNotice},
      {"lNotifyPackGarbage", T::kBool, &R::lNotifyPackGarbage},
      {"lShellIntegration", T::kBool, &R::lShellIntegration},
      {"RetainSize", T::kBool, &R::retainSize},
      {"UnicodeEnabled", T::kBool, &R::unicodeEnabled},
      {"StartupDriveSelect", T::kInteger, &R::startupDriveSelect},
      {"lEnableAutoInsert", T::kBool, &R::lEnableAutoInsert},
      {"lNotifyEnhancedCd", T::kBool, &R::lNotifyEnhancedCd},
      {"lAssumeEnhancedCd", T::kBool, &R::lAssumeEnhancedCd},
      {"lInteractiveSearch", T::kBool, &R::lInteractiveSearch},
      {"SkinName", T::kText, &R::skinName},
      {"SkinSupportEnabled", T::kBool, &R::skinSupportEnabled},
      {SettingsRecord::VersionReminderKey(), T::kBool, &R::showVersionReminder},
      {"SupportServer", T::kText, &R::supportServer},
      {"SupportWebAddress", T::kText, &R::supportWebAddress},
      {"SupportEmail", T::kText, &R::supportEmail},
      {"FreeDbProtocolLevel", T::kInteger, &R::freeDbProtocolLevel},
      {"MusicBrainzEnabled", T::kBool, &R::musicBrainzEnabled},
  };
  return fields;
}

// The save routine's keys, in its order. The skin-support switch goes out
// under its key with the trailing blank.
constexpr const char* kSkinSupportSaveKey = "lEnableSkinSupport ";
const std::vector<std::string> kSaveOrder = {
    "FreeDbEnabled", "FreeDbUseDatabase", "FreeDbUseUrl", "FreedbDatabasePath", "FreeDbUrl",
    "FreeDbArtistAfterIf", "FreeDbArtistBeforeIf", "CurrentBackground", "DefaultFont", "htmlColor1",
    "htmlColor2", "htmlColor3", "htmlColor4", "lDragDrop",
    // the notification switches
    "lNotifyNoInternet", "lNotifyConnectFreedb", "lNotifyConnectFreedbAction", "lNotifyBackup",
    "lNotifySaveAs", "lNotifyCdChange", "lNotifyCompact", "lNotifyUpgrade", "lNotifyErrorSend",
    "lNotifyExport", "lNotifyExport_Search", "lNotifyNewVersion", "lNotifyPackGarbage",
    "lShellIntegration", kSkinSupportSaveKey, "RetainSize", "UnicodeEnabled", "StartupDriveSelect",
    "lEnableAutoInsert", "lNotifyEnhancedCd", "lAssumeEnhancedCd", "lInteractiveSearch",
    "SkinSupportEnabled", "SkinName",
    // keys this program adds
    "SupportServer", "SupportWebAddress", "SupportEmail", "FreeDbProtocolLevel",
    "MusicBrainzEnabled"};

const Field* FieldOf(const std::string& key) {
  const std::string& k = key == kSkinSupportSaveKey ? std::string("lEnableSkinSupport") : key;
  for (const Field& f : Fields()) {
    if (f.key == k) return &f;
  }
  return nullptr;
}

std::string TextOf(const SettingsRecord& r, const Field& f) {
  if (auto b = std::get_if<bool SettingsRecord::*>(&f.member)) {
    return SettingsStore::BoolText(r.**b);
  }
  if (auto i = std::get_if<int32_t SettingsRecord::*>(&f.member)) return std::to_string(r.**i);
  return r.*std::get<std::string SettingsRecord::*>(f.member);
}

// Sets the field from stored text; text of the wrong type leaves the default.
void SetFrom(SettingsRecord& r, const Field& f, const std::string& text) {
  if (auto b = std::get_if<bool SettingsRecord::*>(&f.member)) {
    r.** b = SettingsStore::ParseBool(text);
  } else if (auto i = std::get_if<int32_t SettingsRecord::*>(&f.member)) {
    int32_t n = 0;
    if (SettingsRecord::Parse(f.type, text, &n)) r.** i = n;
  } else {
    r.*std::get<std::string SettingsRecord::*>(f.member) = text;
  }
}

}  // namespace

std::string SettingsRecord::VersionReminderKey() { return "Gorvan" + VersionString(); }

bool SettingsRecord::Parse(SettingType type, const std::string& text, int32_t* number) {
  if (type == SettingType::kBool || type == SettingType::kText) return true;
  // Decimal text, optionally signed, nothing around it. Colours may also be
  // stored as their unsigned 32-bit value (a system colour's high bit).
  const char* first = text.data();
  const char* last = first + text.size();
  if (first != last && *first == '+') ++first;
  int64_t value = 0;
  const auto [end, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || end != last || first == last) return false;
  if (type == SettingType::kColour && value > INT32_MAX && value <= UINT32_MAX) {
    value -= int64_t{1} << 32;
  }
  if (value < INT32_MIN || value > INT32_MAX) return false;
  *number = static_cast<int32_t>(value);
  return true;
}

std::string SettingsRecord::Text(const std::string& key) const {
  const Field* f = FieldOf(key);
  return f ? TextOf(*this, *f) : std::string();
}

bool SettingsRecord::SetText(const std::string& key, const std::string& text) {
  const Field* f = FieldOf(key);
  int32_t number = 0;
  if (!f || !Parse(f->type, text, &number)) return false;
  SetFrom(*this, *f, text);
  return true;
}

const std::vector<SettingKey>& SettingsRecord::Keys() {
  static const std::vector<SettingKey> keys = [] {
    std::vector<SettingKey> out;
    const SettingsRecord defaults;
    for (const Field& f : Fields()) out.push_back({f.key, f.type, TextOf(defaults, f)});
    return out;
  }();
  return keys;
}

const std::vector<std::string>& SettingsRecord::SaveOrder() { return kSaveOrder; }

const SettingKey* SettingsRecord::Find(const std::string& section, const std::string& key) {
  if (section != kSwitches) return nullptr;
  for (const SettingKey& k : Keys()) {
    if (k.key == key) return &k;
  }
  return nullptr;
}

void SettingsRecord::Load(Prompt& prompt, const ShellIntegration& shell) {
  *this = SettingsRecord();
  dragDrop = GetIniBool("DragDrop", true);
  noSubclass = GetIniBool("NoSubclass", true);
  backgroundList = GetIniBool("BackgroundList", true);
  backgroundTree = GetIniBool("BackgroundTree", true);
  backgroundDetails = GetIniBool("BackgroundDetails", true);
  if (!GetIniBool("Background", true)) backgroundList = backgroundTree = backgroundDetails = false;

  const SettingsRecord defaults;
  for (const Field& f : Fields()) {
    SetFrom(*this, f, SettingsStore::GetText(kSwitches, f.key, TextOf(defaults, f)));
  }
  if (currentBackground < 1) currentBackground = 1;

  if (skinName.empty()) {
    // The first run: asked once, and the answer is kept.
    skinSupportEnabled = prompt.YesNo(kSkinQuestion);
    SettingsStore::PutBool(kSwitches, "SkinSupportEnabled", skinSupportEnabled);
    skinName = kDefaultSkinName;
    SettingsStore::PutText(kSwitches, "SkinName", skinName);
  }
  shell.Apply(lShellIntegration);
}

void SettingsRecord::Save(const ShellIntegration& shell, const Writer& write) const {
  const Writer put =
      write ? write
            : [](const std::string& section, const std::string& key, const std::string& value) {
                return SettingsStore::PutText(section, key, value);
              };
  for (const std::string& key : kSaveOrder) put(kSwitches, key, TextOf(*this, *FieldOf(key)));
  shell.Apply(lShellIntegration);
}

int SettingsRecord::BackgroundPicture() const {
  return !skinSupportEnabled && currentBackground >= 1 && currentBackground <= 9 ? currentBackground
                                                                                 : 0;
}

}  // namespace gorvan
