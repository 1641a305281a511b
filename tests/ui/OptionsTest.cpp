// The options dialog: every setting it shows goes from the store to the
// dialog and back unchanged, every control's change reaches the store, Cancel
// writes nothing, the prompt switches and the folder actions take effect,
// and the Test button looks the known disc up on a worker thread.
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFontComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "audio/DiscId.h"
#include "ui/OptionsFixture.h"
#include "ui/main/frmMenu.h"
#include "ui/options/frmOptions.h"
#include "ui/session/NotifyPrompt.h"

namespace gorvan::test {
namespace {

using ui::frmOptions;

// A value for every key that differs from its default, as stored.
std::map<std::string, std::string> StoredValues() {
  std::map<std::string, std::string> values;
  int colour = 0x102030;
  for (const std::string& key : SettingsRecord::SaveOrder()) {
    const SettingKey* k = SettingsRecord::Find(kSwitches, key);
    if (!k) continue;  // "lEnableSkinSupport ", which is never read back
    switch (k->type) {
      case SettingType::kBool:
        values[key] = k->defaultText == "True" ? "False" : "True";
        break;
      case SettingType::kColour:
        values[key] = std::to_string(colour += 0x010101);
        break;
      case SettingType::kInteger:
        values[key] = key == "CurrentBackground" ? "7" : key == "StartupDriveSelect" ? "1" : "5";
        break;
      case SettingType::kText:
        values[key] = key == "SkinName" ? "Dark" : "stored " + key;
        break;
    }
  }
  values[SettingsRecord::VersionReminderKey()] = "False";
  return values;
}

QString OtherFont(const QString& than) {
  for (const QString& f : QFontDatabase::families()) {
    if (f != than) return f;
  }
  return than;
}

// Changes the control of key to another value and returns what the store
// should then hold.
std::string Change(frmOptions* dialog, const QString& key, const std::string& was) {
  QWidget* w = dialog->control(key);
  if (auto* box = qobject_cast<QCheckBox*>(w)) {
    box->setChecked(!box->isChecked());
    return box->isChecked() ? "True" : "False";
  }
  if (auto* font = qobject_cast<QFontComboBox*>(w)) {
    const QString family = OtherFont(font->currentText());
    font->setCurrentFont(QFont(family));
    return family.toStdString();
  }
  if (auto* edit = qobject_cast<QLineEdit*>(w)) {
    edit->setText(QStringLiteral("changed ") + key);
    return "changed " + key.toStdString();
  }
  if (auto* spin = qobject_cast<QSpinBox*>(w)) {
    spin->setValue(4);
    return "4";
  }
  if (auto* combo = qobject_cast<QComboBox*>(w)) {
    const QVariant want = key == QLatin1String("SkinName") ? QVariant(QStringLiteral("Light"))
                          : key == QLatin1String("CurrentBackground") ? QVariant(3)
                                                                      : QVariant(0);
    const int index = combo->findData(want);
    EXPECT_GE(index, 0) << key.toStdString();
    combo->setCurrentIndex(index);
    return want.toString().toStdString();
  }
  if (auto* button = qobject_cast<QPushButton*>(w)) {
    // A colour: chosen in the colour dialog the button opens.
    button->click();
    QPointer<QColorDialog> colours = dialog->findChild<QColorDialog*>(QStringLiteral("dlgColour"));
    EXPECT_TRUE(colours) << key.toStdString();
    if (!colours) return was;
    colours->setCurrentColor(QColor(0x11, 0x22, 0x33));
    colours->accept();
    delete colours.data();
    return std::to_string(0x11 | (0x22 << 8) | (0x33 << 16));
  }
  ADD_FAILURE() << "no control for " << key.toStdString();
  return was;
}

TEST_F(OptionsTest, EverySettingRoundTripsThroughTheDialogAndEveryChangeIsSaved) {
  const std::map<std::string, std::string> stored = StoredValues();
  for (const auto& [key, value] : stored) SettingsStore::PutText(kSwitches, key, value);
  SettingsStore::PutText("Defaults", "UserEmail", "ann@example.org");
  Start("");
  Trigger("mnuViewOptions");
  auto* dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);

  // Every key the save routine writes has its control (the skin-support
  // switch with the blank is never read back, so there is nothing to show).
  for (const std::string& key : SettingsRecord::SaveOrder()) {
    if (key == "lEnableSkinSupport ") continue;
    EXPECT_TRUE(dialog->keys().contains(QString::fromStdString(key))) << key;
  }
  // What the dialog holds is what was stored.
  const SettingsRecord shown = dialog->Edited();
  for (const auto& [key, value] : stored) EXPECT_EQ(shown.Text(key), value) << key;
  EXPECT_EQ(qobject_cast<QLineEdit*>(dialog->control(QStringLiteral("UserEmail")))->text(),
            QStringLiteral("ann@example.org"));

  // OK without a change writes back exactly what was stored.
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  Flush();
  for (const auto& [key, value] : stored) {
    EXPECT_EQ(SettingsStore::GetText(kSwitches, key), value) << key;
    EXPECT_EQ(state().settings().Text(key), value) << key;
  }
  EXPECT_EQ(SettingsStore::GetText("Defaults", "UserEmail"), "ann@example.org");

  // Every control changed: the store and the program's record follow.
  Trigger("mnuViewOptions");
  dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);
  std::map<std::string, std::string> expected;
  for (const QString& key : dialog->keys()) {
    if (key == QLatin1String("SkinSupportEnabled")) continue;  // one control with SkinName
    const std::string k = key.toStdString();
    expected[k] = Change(dialog, key, stored.count(k) ? stored.at(k) : std::string());
  }
  expected["SkinSupportEnabled"] = "True";  // a skin was chosen
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  for (const auto& [key, value] : expected) {
    if (key == "UserEmail") {
      EXPECT_EQ(SettingsStore::GetText("Defaults", "UserEmail"), value);
      continue;
    }
    EXPECT_EQ(SettingsStore::GetText(kSwitches, key), value) << key;
    EXPECT_EQ(state().settings().Text(key), value) << key;
  }
  EXPECT_EQ(SettingsStore::GetText("Fonts", "Default"), expected["DefaultFont"])
      << "the interface font of the next start";
  // The look follows at once: the skin chosen, the font chosen.
  EXPECT_EQ(ui::Looks::CurrentSkin(), QStringLiteral("Light"));
  EXPECT_EQ(QApplication::font().family().toStdString(), expected["DefaultFont"]);
}

TEST_F(OptionsTest, CancelWritesNothingAndTheDialogOpensOnce) {
  Start("");
  const auto before = SettingsStore::List();
  Trigger("mnuViewOptions");
  Trigger("mnuViewOptions");
  auto* dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);
  EXPECT_EQ(window->findChildren<frmOptions*>().size(), 1);
  for (const QString& key : dialog->keys()) {
    if (auto* box = qobject_cast<QCheckBox*>(dialog->control(key))) box->toggle();
    if (auto* edit = qobject_cast<QLineEdit*>(dialog->control(key)))
      edit->setText(QStringLiteral("x"));
  }
  dialog->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  auto after = SettingsStore::List();
  // The dialog's remembered size is the only thing written.
  std::erase_if(after,
                [](const auto& kv) { return kv.first.rfind("Defaults/frmOptions_", 0) == 0; });
  EXPECT_EQ(after, before);
  EXPECT_EQ(state().settings().Text("lNotifyBackup"), "True");
}

TEST_F(OptionsTest, PromptSwitchesAndFolderActionsTakeEffectOnOk) {
  // A prompt hidden with "Don't display this prompt again" ...
  SettingsStore::PutBool(kSwitches, "lNotifyCompact", false);
  SettingsStore::PutBool(kSwitches, "lShellIntegration", true);
  ShellIntegration().InstallFolderActions();
  for (const ShellIntegration::Item& item : ShellIntegration().Status()) {
    if (item.folderAction) {
      EXPECT_EQ(item.state, ShellIntegration::State::kInstalled) << item.name;
    }
  }
  Start("");
  PromptRequest compact{{},
                        "Compact Data Files ??",
                        PromptButtons::kYesNo,
                        PromptIcon::kQuestion,
                        {},
                        "lNotifyCompact",
                        false};
  const size_t asked = prompt.asked.size();
  EXPECT_EQ(ui::NotifyPrompt::Ask(prompt, compact, PromptAnswer::kYes).answer, PromptAnswer::kYes);
  EXPECT_EQ(prompt.asked.size(), asked) << "a switched-off prompt is not shown";

  // ... shows again once ticked in the options; the folder actions go when
  // their switch is unticked.
  Trigger("mnuViewOptions");
  auto* dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);
  auto* box = qobject_cast<QCheckBox*>(dialog->control(QStringLiteral("lNotifyCompact")));
  ASSERT_TRUE(box);
  EXPECT_FALSE(box->isChecked());
  box->setChecked(true);
  qobject_cast<QCheckBox*>(dialog->control(QStringLiteral("lShellIntegration")))->setChecked(false);
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();

  prompt.Answer(PromptAnswer::kNo);
  EXPECT_EQ(ui::NotifyPrompt::Ask(prompt, compact, PromptAnswer::kYes).answer, PromptAnswer::kNo);
  EXPECT_EQ(prompt.LastText(), "Compact Data Files ??");
  for (const ShellIntegration::Item& item : ShellIntegration().Status()) {
    if (item.folderAction) {
      EXPECT_EQ(item.state, ShellIntegration::State::kMissing) << item.name;
    }
  }
}

// A local FreeDB folder that knows the Test button's disc.
std::string LocalFreeDb(const std::string& root) {
  std::filesystem::create_directories(root + "/rock");
  std::ofstream entry(root + "/rock/" + ui::kTestDiscId);
  entry << "# xmcd\n#\n# Disc length: 3836 seconds\n#\nDISCID=" << ui::kTestDiscId
        << "\nDTITLE=In Extremo / Sterneneisen\nDYEAR=2011\nDGENRE=Rock\n";
  for (int t = 0; t < 13; ++t) entry << "TTITLE" << t << "=Song " << t + 1 << "\n";
  entry << "EXTD=\nPLAYORDER=\n";
  return root;
}

TEST_F(OptionsTest, TestButtonLooksTheKnownDiscUpWithTheDialogsSettings) {
  EXPECT_EQ(DiscId::FreeDb(ui::kTestDiscContents), ui::kTestDiscId);
  Start("");
  Trigger("mnuViewOptions");
  auto* dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);
  auto* test = dialog->findChild<QPushButton*>(QStringLiteral("btnTest"));
  test->click();
  EXPECT_FALSE(dialog->testRunning());
  EXPECT_TRUE(dialog->testResult().contains(QStringLiteral("first"))) << "no source ticked";

  // Not saved yet: the test uses the tab as it stands.
  qobject_cast<QCheckBox*>(dialog->control(QStringLiteral("FreeDbUseDatabase")))->setChecked(true);
  qobject_cast<QLineEdit*>(dialog->control(QStringLiteral("FreedbDatabasePath")))
      ->setText(QString::fromStdString(LocalFreeDb(dir.path() + "/freedb")));
  test->click();
  ASSERT_TRUE(WaitFor([&] { return !dialog->testRunning(); }));
  EXPECT_TRUE(dialog->testResult().contains(QStringLiteral("In Extremo / Sterneneisen")))
      << dialog->testResult().toStdString();
  EXPECT_TRUE(dialog->testResult().contains(QStringLiteral("13 tracks")));
  EXPECT_TRUE(dialog->testResult().contains(QStringLiteral("local folder")));
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "FreeDbUseDatabase"), "") << "nothing saved";

  // A server that does not answer: the button stops the test at once.
  qobject_cast<QCheckBox*>(dialog->control(QStringLiteral("FreeDbUseDatabase")))->setChecked(false);
  qobject_cast<QCheckBox*>(dialog->control(QStringLiteral("FreeDbUseUrl")))->setChecked(true);
  std::atomic<int> requests{0};
  dialog->SetLookupFetch([&requests](const HttpRequest&, std::stop_token stop) {
    ++requests;
    while (!stop.stop_requested()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    HttpResponse r;
    r.error = HttpError::kCancelled;
    return r;
  });
  test->click();
  ASSERT_TRUE(WaitFor([&] { return requests > 0; }));
  EXPECT_TRUE(dialog->testRunning());
  Screenshot(dialog, "frmOptions-lookup-testing");
  test->click();
  EXPECT_FALSE(dialog->testRunning());
  EXPECT_EQ(dialog->testResult(), QStringLiteral("Test stopped."));
  // Closing the dialog during a test stops it too.
  test->click();
  ASSERT_TRUE(WaitFor([&] { return requests > 1; }));
  dialog->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  EXPECT_FALSE(dialog->testRunning());
}

TEST_F(OptionsTest, ScreenshotsOfEveryTab) {
  Start("");
  Trigger("mnuViewOptions");
  auto* dialog = Opened<frmOptions>("frmOptions");
  ASSERT_TRUE(dialog);
  for (int i = 0; i < dialog->tabs()->count(); ++i) {
    dialog->tabs()->setCurrentIndex(i);
    Screenshot(dialog, "frmOptions-" + std::to_string(i + 1));
  }
  EXPECT_EQ(dialog->tabs()->count(), 6);
  // The same in the dark skin.
  SettingsRecord dark;
  dark.skinName = "Dark";
  EXPECT_EQ(ui::Looks::ApplySkin(dark), QString());
  dialog->tabs()->setCurrentIndex(0);
  Screenshot(dialog, "frmOptions-1-dark");
  dialog->tabs()->setCurrentIndex(4);
  Screenshot(dialog, "frmOptions-5-dark");
  SettingsRecord contrast;
  contrast.skinName = "High Contrast";
  EXPECT_EQ(ui::Looks::ApplySkin(contrast), QString());
  dialog->tabs()->setCurrentIndex(2);
  Screenshot(dialog, "frmOptions-3-high-contrast");
}

}  // namespace
}  // namespace gorvan::test
