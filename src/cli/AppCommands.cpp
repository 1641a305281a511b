// gorvan-cli settings, integrate, version-check and send-error.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "app/ErrorLog.h"
#include "app/Resources.h"
#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "app/SupportClient.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"

namespace gorvan::cli {
namespace {

struct SettingsArgs {
  std::string section;
  std::string key;
  std::string value;
};

void PrintLine(const std::string& sectionKey, const std::string& value) {
  std::cout << TsvEscape(sectionKey) << "=" << TsvEscape(value) << "\n";
}

int SettingsList() {
  for (const auto& [key, value] : SettingsStore::List()) PrintLine(key, value);
  return kExitOk;
}

int SettingsGet(const CliContext& ctx, const SettingsArgs& a) {
  const std::string name = a.section + "/" + a.key;
  for (const auto& [key, value] : SettingsStore::List()) {
    if (key == name) {
      PrintLine(key, value);
      return kExitOk;
    }
  }
  if (const SettingKey* known = SettingsRecord::Find(a.section, a.key)) {
    PrintLine(name, known->defaultText);
    return kExitOk;
  }
  return ctx.Fail(name + " is not set");
}

int SettingsSet(const CliContext& ctx, const SettingsArgs& a) {
  const std::string name = a.section + "/" + a.key;
  std::string value = a.value;
  if (const SettingKey* known = SettingsRecord::Find(a.section, a.key)) {
    int32_t number = 0;
    if (known->type == SettingType::kBool) {
      std::string lower = value;
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (lower != "true" && lower != "false")
        return ctx.Fail(name + " is True or False", kExitUsage);
      value = SettingsStore::BoolText(lower == "true");
    } else if (known->type != SettingType::kText &&
               !SettingsRecord::Parse(known->type, value, &number)) {
      return ctx.Fail(name + " is a whole number", kExitUsage);
    }
  }
  if (!SettingsStore::PutText(a.section, a.key, value)) {
    return ctx.Fail("The settings could not be written to " + SettingsStore::FilePath());
  }
  PrintLine(name, value);
  return kExitOk;
}

const char* StateText(ShellIntegration::State s) {
  switch (s) {
    case ShellIntegration::State::kInstalled:
      return "installed";
    case ShellIntegration::State::kDiffers:
      return "differs";
    case ShellIntegration::State::kMissing:
      break;
  }
  return "missing";
}

// Prints every item; returns the names of those not in the wanted state.
std::string PrintStatus(const ShellIntegration& shell, bool check, bool installed) {
  std::string wrong;
  for (const ShellIntegration::Item& item : shell.Status()) {
    std::cout << item.name << "\t" << StateText(item.state) << "\t" << TsvEscape(item.path) << "\n";
    // Without the icon among the resources there is no icon to install.
    if (item.name == "icon" && installed && Resources::File("images/gorvan.svg").empty()) continue;
    const bool ok = installed ? item.state == ShellIntegration::State::kInstalled
                              : item.state == ShellIntegration::State::kMissing;
    if (check && !ok) wrong += (wrong.empty() ? "" : ", ") + item.name;
  }
  return wrong;
}

int Integrate(const CliContext& ctx, const std::string& action) {
  const ShellIntegration shell;
  if (action == "status") {
    PrintStatus(shell, false, true);
    return kExitOk;
  }
  const bool install = action == "install";
  // The folder actions follow "lShellIntegration" at every start of the
  // desktop program: the switch goes with the command.
  SettingsStore::PutBool(kSwitches, "lShellIntegration", install);
  if (install) {
    shell.RegisterFileType();
    shell.InstallFolderActions();
  } else {
    shell.RemoveFolderActions();
    shell.UnregisterFileType();
  }
  const std::string wrong = PrintStatus(shell, true, install);
  if (!wrong.empty()) {
    return ctx.Fail(std::string(install ? "not installed: " : "not removed: ") + wrong);
  }
  return kExitOk;
}

// The support settings of the record, as stored.
SettingsRecord SupportSettings() {
  SettingsRecord r;
  r.supportServer = SettingsStore::GetText(kSwitches, "SupportServer");
  r.supportWebAddress = SettingsStore::GetText(kSwitches, "SupportWebAddress");
  r.supportEmail = SettingsStore::GetText(kSwitches, "SupportEmail");
  return r;
}

int Report(const CliContext& ctx, const SupportClient::Outcome& outcome) {
  for (const std::string& m : outcome.messages) (outcome.ok ? std::cout : std::cerr) << m << "\n";
  if (outcome.ok) return kExitOk;
  return outcome.detail.empty() ? kExitFailure : ctx.Fail(outcome.detail);
}

}  // namespace

void AddAppCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto a = std::make_shared<SettingsArgs>();
  CLI::App* settings = app.add_subcommand("settings", "The per-user settings store");
  settings->require_subcommand(1);
  settings->add_subcommand("list", "Every stored value as section/key=value")->callback([result] {
    *result = SettingsList();
  });
  CLI::App* get =
      settings->add_subcommand("get", "One value (a known setting's default when unset)");
  get->add_option("SECTION", a->section)->required();
  get->add_option("KEY", a->key)->required();
  get->callback([&ctx, result, a] { *result = SettingsGet(ctx, *a); });
  CLI::App* set = settings->add_subcommand("set", "Store a value");
  set->add_option("SECTION", a->section)->required();
  set->add_option("KEY", a->key)->required();
  set->add_option("VALUE", a->value)->required();
  set->callback([&ctx, result, a] { *result = SettingsSet(ctx, *a); });

  auto action = std::make_shared<std::string>();
  CLI::App* integrate =
      app.add_subcommand("integrate", "The catalog file type and the folder actions");
  integrate->add_option("ACTION", *action, "install, remove or status")
      ->required()
      ->check(CLI::IsMember({"install", "remove", "status"}));
  integrate->callback([&ctx, result, action] { *result = Integrate(ctx, *action); });

  app.add_subcommand("version-check", "Ask the support server for the current version")
      ->callback([&ctx, result] {
        *result = Report(ctx, SupportClient(SupportSettings()).CheckVersion(true));
      });

  auto email = std::make_shared<std::string>();
  CLI::App* send = app.add_subcommand("send-error", "Send the error log to the support server");
  send->add_option("--email", *email, "An address for the notice when the bug is fixed");
  send->callback([&ctx, result, email] {
    // The address entered is kept, as the send dialog keeps it.
    if (!email->empty()) SettingsStore::PutText("Defaults", "UserEmail", *email);
    *result = Report(
        ctx,
        SupportClient(SupportSettings()).SubmitErrorLog(ErrorLog::Default().path(), *email, true));
  });
}

}  // namespace gorvan::cli
