#include "app/StartupSequence.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "app/AppFolder.h"
#include "app/CatalogHistory.h"
#include "app/ErrorLog.h"
#include "app/Prompt.h"
#include "app/Resources.h"
#include "app/SettingsStore.h"
#include "app/SupportClient.h"
#include "app/basIniFiles.h"
#include "catalog/ReadOnlyCheck.h"

namespace gorvan {
namespace fs = std::filesystem;
using std::chrono::sys_days;

namespace {

bool Exists(const std::string& path) {
  std::error_code ec;
  return !path.empty() && fs::is_regular_file(path, ec);
}

bool StartsWithNoCase(const std::string& text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) !=
        std::tolower(static_cast<unsigned char>(prefix[i]))) {
      return false;
    }
  }
  return true;
}

std::string Join(std::vector<std::string>::const_iterator first,
                 std::vector<std::string>::const_iterator last) {
  std::string out;
  for (auto it = first; it != last; ++it) {
    if (it != first) out.push_back(' ');
    out += *it;
  }
  const size_t begin = out.find_first_not_of(" \t");
  if (begin == std::string::npos) return {};
  return out.substr(begin, out.find_last_not_of(" \t") - begin + 1);
}

std::string Absolute(const std::string& path) {
  std::error_code ec;
  const fs::path p = fs::absolute(path, ec);
  return ec ? path : p.lexically_normal().string();
}

std::string DateText(sys_days day) {
  const std::chrono::year_month_day ymd(day);
  char text[16];
  std::snprintf(text, sizeof text, "%04d/%02u/%02u", static_cast<int>(ymd.year()),
                static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
  return text;
}

}  // namespace

AppFiles AppFiles::Fix() {
  AppFiles f;
  f.appFolder = AppFolder::Path();
  const auto app = [&f](const char* name) { return f.appFolder + "/" + name; };
  f.imagesFolder = Resources::File("images");
  f.skinsFolder = app("skins");
  f.iconsFolder = app("icons");
  f.iniFile = app(kIniFileName);
  f.errorLog = app(kErrorLogName);
  f.mapFile = app(kIconMapName);
  f.tipsFile = Resources::File("tips/Gorvan.tip");
  f.styleSheet = app("Gorvan.xsx");
  f.reportTemplate = app("Gorvan.hxm");
  f.reportTemplate2 = app("Gorvan.hym");
  f.helpFile = Resources::File("help/index.html");
  f.defaultCatalog = app(kDefaultCatalogFile);
  return f;
}

StartupSequence::StartupSequence(Prompt& prompt, StartupHooks hooks, ShellIntegration shell)
    : prompt_(prompt), hooks_(std::move(hooks)), shell_(std::move(shell)) {}

CommandLine StartupSequence::ParseCommandLine(const std::vector<std::string>& args,
                                              const std::string& appFolder) {
  CommandLine line;
  if (args.empty()) return line;
  const std::string& first = args.front();
  if (first == "--scan" || (first.size() == 5 && StartsWithNoCase(first, "/scan"))) {
    const std::string path = Join(args.begin() + 1, args.end());
    if (!path.empty()) line.scanPath = Absolute(path);
    return line;
  }
  if (first.rfind("--scan=", 0) == 0) {
    std::vector<std::string> rest(args.begin(), args.end());
    rest.front() = first.substr(7);
    const std::string path = Join(rest.begin(), rest.end());
    if (!path.empty()) line.scanPath = Absolute(path);
    return line;
  }
  const std::string path = Join(args.begin(), args.end());
  if (path.empty()) return line;
  line.catalog = path.find('/') == std::string::npos ? appFolder + "/" + path : path;
  return line;
}

std::string StartupSequence::ChooseFont(const std::function<bool(const std::string&)>& installed) {
  const std::string chosen = SettingsStore::GetText("Fonts", "Default", "Arial");
  if (!installed || installed(chosen)) return chosen;
  for (const char* fallback : {"Arial", "Tahoma", "Times Roman", "Courier"}) {
    if (installed(fallback)) return fallback;
  }
  return {};
}

bool StartupSequence::CleanUpOnce(const std::string& errorLog, sys_days today) {
  if (!SettingsStore::GetText("Maintenance", "CleanUp1").empty()) return false;
  // The date is stored first: were the store read-only, the log would
  // otherwise be deleted at every start.
  if (!SettingsStore::PutText("Maintenance", "CleanUp1", DateText(today))) return false;
  ::unlink(errorLog.c_str());
  return true;
}

sys_days StartupSequence::BuildDate() {
  // __DATE__ is "Mmm dd yyyy"; a reproducible build sets it from SOURCE_DATE_EPOCH.
  static constexpr const char kDate[] = __DATE__;
  static constexpr const char* kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
  unsigned month = 1;
  for (unsigned m = 0; m < 12; ++m) {
    if (std::strncmp(kMonths + 3 * m, kDate, 3) == 0) month = m + 1;
  }
  const unsigned day = static_cast<unsigned>(std::atoi(kDate + 4));
  const int year = std::atoi(kDate + 7);
  return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
}

sys_days StartupSequence::Today() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return sys_days(std::chrono::year(local.tm_year + 1900) /
                  std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)) /
                  std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

void StartupSequence::OldVersionReminder(sys_days today, sys_days built) {
  // A build counts as very old two years after it was made.
  const sys_days old = sys_days(std::chrono::year_month_day(built) + std::chrono::years(2));
  const std::string key = SettingsRecord::VersionReminderKey();
  if (today <= old || !SettingsStore::GetBool(kSwitches, key, true)) return;
  std::string text = "Version (" + VersionString() + ") is very old!!\n" + kReminderLine2;
  if (!settings_.supportWebAddress.empty()) text += "\n" + settings_.supportWebAddress;
  PromptRequest request{{}, text, PromptButtons::kOk, PromptIcon::kInformation, {}, key, false};
  if (prompt_.Ask(request).dontShowAgain) {
    SettingsStore::PutBool(kSwitches, key, false);
    settings_.showVersionReminder = false;
  }
}

StartupResult StartupSequence::Run(const std::vector<std::string>& args) {
  StartupResult result;
  result.versionString = VersionString();
  result.files = AppFiles::Fix();
  if (::access(result.files.appFolder.c_str(), W_OK) != 0) {
    result.appFolderProblem = "Gorvan cannot write to its folder " + result.files.appFolder + " (" +
                              std::strerror(errno) +
                              ").\nThe error log, the icon map and the default catalog cannot "
                              "be kept there until this is put right.";
    prompt_.Message(result.appFolderProblem, PromptIcon::kWarning);
  }

  settings_.Load(prompt_, shell_);
  const sys_days today = hooks_.today != sys_days{} ? hooks_.today : Today();
  CleanUpOnce(result.files.errorLog, today);
  iconMap_.Load(result.files.mapFile);
  result.interfaceFont = ChooseFont(hooks_.fontInstalled);

  std::string catalog = CatalogHistory::Newest();
  if (catalog.empty()) catalog = result.files.defaultCatalog;
  const CommandLine line = ParseCommandLine(args, result.files.appFolder);
  if (!line.catalog.empty() && Exists(line.catalog)) catalog = line.catalog;
  result.scanPath = line.scanPath;
  if (!Exists(catalog)) catalog = result.files.defaultCatalog;

  std::string error;
  const bool writable = ReadOnlyCheck::Run(
      catalog, [this](const std::string& question) { return prompt_.YesNo(question); }, &error);
  if (!writable) {
    if (!error.empty()) prompt_.Message(error, PromptIcon::kWarning);
    catalog.clear();
  }
  result.catalogPath = catalog;

  OldVersionReminder(today, hooks_.buildDate != sys_days{} ? hooks_.buildDate : BuildDate());
  if (settings_.lNotifyNewVersion) {
    if (hooks_.versionCheck) {
      hooks_.versionCheck();
    } else {
      SupportClient(settings_).CheckVersion(false).Show(prompt_);
    }
  }
  if (hooks_.closeSplash) hooks_.closeSplash();
  shell_.RegisterFileType();

  std::string view = SettingsStore::GetText("Startup", "ViewModeExplorer", "True");
  for (char& c : view) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  result.viewModeExplorer = view != "false";
  return result;
}

}  // namespace gorvan
