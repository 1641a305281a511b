// Looks: the shipped skins load and colour the program, a chosen skin
// survives a restart, a skin that is no style sheet falls back to the
// desktop's look and says so once, the skin designer writes a skin that
// loads, a dark desktop palette is made right for the views, the nine
// backgrounds differ, and the list style and the panels are remembered.
#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QTreeView>
#include <fstream>

#include "app/SettingsStore.h"
#include "ui/ExplorerFixture.h"
#include "ui/OptionsFixture.h"
#include "ui/looks/Backgrounds.h"
#include "ui/looks/Skins.h"
#include "ui/looks/frmSkinDesigner.h"
#include "ui/looks/frmSkins.h"
#include "ui/main/frmMenu.h"

namespace gorvan::test {
namespace {

using ui::Looks;
using ui::Skins;

bool WriteFile(const QString& path, const QByteArray& bytes) {
  QFile f(path);
  return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

TEST_F(OptionsTest, ShippedSkinsLoadWithTheirColours) {
  QStringList names;
  for (const Skins::Skin& s : Skins::List()) {
    names << s.name;
    QString sheet, error;
    ui::SkinColours colours;
    bool hasColours = false;
    EXPECT_TRUE(Skins::Read(s.path, &sheet, &colours, &hasColours, &error)) << error.toStdString();
    EXPECT_TRUE(hasColours) << s.name.toStdString();
    EXPECT_EQ(Looks::IsDark(colours.Palette()), s.name != QLatin1String("Light"))
        << s.name.toStdString();
  }
  EXPECT_TRUE(names.contains(QStringLiteral("Light")));
  EXPECT_TRUE(names.contains(QStringLiteral("Dark")));
  EXPECT_TRUE(names.contains(QStringLiteral("High Contrast")));
  // The default name stands for the light or the dark skin, as the desktop is.
  QPalette dark;
  dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
  EXPECT_EQ(Skins::DefaultSkin(dark), QStringLiteral("Dark"));
  QPalette light;
  light.setColor(QPalette::Window, Qt::white);
  EXPECT_EQ(Skins::DefaultSkin(light), QStringLiteral("Light"));
}

TEST_F(OptionsTest, ChosenSkinAppliesAndSurvivesARestart) {
  Start("");
  Trigger("mnuViewSkinChange");
  auto* chooser = Opened<ui::frmSkins>("frmSkins");
  ASSERT_TRUE(chooser);
  QListWidget* list = chooser->list();
  for (int i = 0; i < list->count(); ++i) {
    if (list->item(i)->data(Qt::UserRole).toString() == QLatin1String("Dark")) {
      list->setCurrentRow(i);
    }
  }
  Screenshot(chooser, "frmSkins");
  chooser->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "SkinName"), "Dark");
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "SkinSupportEnabled"), "True");
  EXPECT_EQ(Looks::CurrentSkin(), QStringLiteral("Dark"));
  EXPECT_TRUE(Looks::IsDark(QApplication::palette()));
  EXPECT_EQ(Looks::StyleName().toLower(), QStringLiteral("fusion"));
  EXPECT_FALSE(qApp->styleSheet().isEmpty());
  window->resize(900, 600);
  Screenshot(window.get(), "frmMenu-skin-dark");

  // A restart: the record is read again from the store and the look applied.
  SettingsRecord desktop;
  desktop.skinSupportEnabled = false;
  Looks::ApplySkin(desktop);
  EXPECT_FALSE(Looks::IsDark(QApplication::palette()));
  ui::ProgramState::Reset();
  ui::ApplyLooksAtStart(prompt);
  EXPECT_EQ(Looks::CurrentSkin(), QStringLiteral("Dark"));
  EXPECT_TRUE(Looks::IsDark(QApplication::palette()));

  // Skins off: the desktop's style and palette, and the chosen background.
  SettingsStore::PutText(kSwitches, "CurrentBackground", "5");
  ui::ProgramState::Reset();
  Trigger("mnuViewSkinChange");
  chooser = Opened<ui::frmSkins>("frmSkins");
  ASSERT_TRUE(chooser);
  chooser->list()->setCurrentRow(0);
  chooser->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "SkinSupportEnabled"), "False");
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "SkinName"), "Dark") << "the name stays";
  EXPECT_EQ(Looks::CurrentSkin(), QString());
  EXPECT_TRUE(qApp->styleSheet().isEmpty());
  EXPECT_EQ(QApplication::palette().color(QPalette::Window),
            Looks::DesktopPalette().color(QPalette::Window));
  EXPECT_EQ(window->documents()->background().textureImage(),
            ui::Backgrounds::Brush(5, QApplication::palette()).textureImage());
}

TEST_F(OptionsTest, ShippedSkinsScreenshots) {
  Start("");
  window->resize(900, 600);
  for (const char* name : {"Light", "High Contrast"}) {
    SettingsRecord r;
    r.skinName = name;
    EXPECT_EQ(Looks::ApplySkin(r), QString()) << name;
    Screenshot(window.get(), std::string("frmMenu-skin-") + name);
  }
}

TEST_F(OptionsTest, SkinThatIsNoStyleSheetFallsBackAndSaysSoOnce) {
  const QString folder = QString::fromStdString(state().files().skinsFolder);
  ASSERT_TRUE(QDir().mkpath(folder));
  ASSERT_TRUE(WriteFile(folder + QStringLiteral("/Broken.qss"), "QWidget { color: red; "));
  ASSERT_TRUE(WriteFile(folder + QStringLiteral("/Binary.qss"), QByteArray("\x89PNG\0\0\x01", 7)));
  EXPECT_TRUE(Skins::IsValidSheet(QStringLiteral("QWidget { color: red; }")));
  Start("");
  for (const char* name : {"Broken", "Binary", "Missing"}) {
    SettingsRecord r;
    r.skinName = name;
    const size_t before = prompt.asked.size();
    ui::Looks::Apply(window->documents(), r, prompt);
    ui::Looks::Apply(window->documents(), r, prompt);
    ASSERT_EQ(prompt.asked.size(), before + 1) << name << ": told once";
    EXPECT_NE(prompt.LastText().find("desktop's look"), std::string::npos) << prompt.LastText();
    EXPECT_EQ(Looks::CurrentSkin(), QString()) << name;
    EXPECT_TRUE(qApp->styleSheet().isEmpty()) << name;
  }
}

TEST_F(OptionsTest, SkinDesignerWritesASkinThatLoadsAndIsUsed) {
  Start("");
  Trigger("mnuViewSkinDesigner");
  auto* designer = Opened<ui::frmSkinDesigner>("frmSkinDesigner");
  ASSERT_TRUE(designer);
  designer->SetColour(&ui::SkinColours::window, QColor(0x12, 0x34, 0x56));
  designer->SetColour(&ui::SkinColours::highlight, QColor(0xaa, 0x22, 0x00));
  // The preview follows at once.
  EXPECT_EQ(designer->preview()->palette().color(QPalette::Window), QColor(0x12, 0x34, 0x56));
  Screenshot(designer, "frmSkinDesigner");
  designer->findChild<QLineEdit*>(QStringLiteral("txtSkinName"))
      ->setText(QStringLiteral("Night/Blue"));
  const ui::SkinColours made = designer->colours();
  const QString path = designer->Save();
  ASSERT_FALSE(path.isEmpty());
  EXPECT_TRUE(path.endsWith(QStringLiteral("/skins/Night_Blue.qss"))) << path.toStdString();

  QString sheet, error;
  ui::SkinColours read;
  bool hasColours = false;
  ASSERT_TRUE(Skins::Read(path, &sheet, &read, &hasColours, &error)) << error.toStdString();
  EXPECT_TRUE(hasColours);
  EXPECT_EQ(read, made);
  EXPECT_EQ(SettingsStore::GetText(kSwitches, "SkinName"), "Night_Blue");
  EXPECT_EQ(Looks::CurrentSkin(), QStringLiteral("Night_Blue"));
  EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(0x12, 0x34, 0x56));
  // The new skin is offered beside the shipped ones.
  EXPECT_EQ(Skins::PathOf(QStringLiteral("night_blue")), path);
}

TEST(Looks, DarkDesktopPaletteIsMadeRightForTheViews) {
  QPalette dark;
  dark.setColor(QPalette::Window, QColor(0x30, 0x30, 0x30));
  dark.setColor(QPalette::WindowText, QColor(0xee, 0xee, 0xee));
  dark.setColor(QPalette::Base, QColor(0x20, 0x20, 0x20));
  dark.setColor(QPalette::Text, QColor(0xee, 0xee, 0xee));
  // What a light theme leaves behind: white alternate rows and tool-tips,
  // lines as dark as the window.
  dark.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf7, 0xf7));
  dark.setColor(QPalette::ToolTipBase, QColor(0xff, 0xff, 0xdc));
  dark.setColor(QPalette::ToolTipText, QColor(0, 0, 0));
  dark.setColor(QPalette::Mid, QColor(0x30, 0x30, 0x30));
  dark.setColor(QPalette::PlaceholderText, QColor(0x25, 0x25, 0x25));
  const QPalette fixed = Looks::FollowDark(dark);
  auto near = [](const QColor& a, const QColor& b, double most) {
    return std::abs(a.lightnessF() - b.lightnessF()) <= most;
  };
  EXPECT_TRUE(near(fixed.color(QPalette::AlternateBase), fixed.color(QPalette::Base), 0.12));
  EXPECT_NE(fixed.color(QPalette::AlternateBase), fixed.color(QPalette::Base));
  EXPECT_TRUE(Looks::IsDark(QPalette(fixed.color(QPalette::ToolTipBase))));
  EXPECT_FALSE(near(fixed.color(QPalette::ToolTipText), fixed.color(QPalette::ToolTipBase), 0.4));
  EXPECT_FALSE(near(fixed.color(QPalette::Mid), fixed.color(QPalette::Window), 0.12));
  EXPECT_FALSE(near(fixed.color(QPalette::PlaceholderText), fixed.color(QPalette::Base), 0.25));
  // A light palette stays as it is.
  QPalette light;
  light.setColor(QPalette::Window, QColor(0xf0, 0xf0, 0xf0));
  light.setColor(QPalette::AlternateBase, QColor(0x10, 0x10, 0x10));
  EXPECT_EQ(Looks::FollowDark(light), light);
}

TEST(Looks, NineBackgroundsDifferInLightAndDark) {
  for (const QColor window : {QColor(0xf0, 0xf0, 0xf0), QColor(0x2b, 0x2b, 0x2b)}) {
    QPalette p;
    p.setColor(QPalette::Window, window);
    QList<QImage> seen;
    for (int n = 1; n <= ui::Backgrounds::kCount; ++n) {
      EXPECT_FALSE(ui::Backgrounds::Name(n).isEmpty());
      const QImage image = ui::Backgrounds::Sample(n, p, QSize(96, 64)).toImage();
      for (const QImage& other : seen) EXPECT_NE(image, other) << "background " << n;
      seen << image;
      // Quiet: every pixel stays near the window colour.
      const QColor centre = image.pixelColor(48, 32);
      EXPECT_LT(std::abs(centre.lightnessF() - window.lightnessF()), 0.25) << n;
    }
  }
  EXPECT_TRUE(ui::Backgrounds::Name(0).isEmpty());
}

TEST_F(OptionsTest, ExplorerOnADarkDesktopAndInTheDarkSkin) {
  BuildSample(dir.File("sample.cd"));
  Start(dir.File("sample.cd"));
  auto* browse = qobject_cast<ui::frmBrowse2*>(window->activeView());
  ASSERT_TRUE(browse);
  ui::CatalogTreeModel* tree = browse->treeModel();
  const QModelIndex photos = tree->index(0, 0, tree->CatalogIndex()).siblingAtRow(1);
  browse->tree()->expandAll();
  Idle();
  for (int r = 0; r < tree->rowCount(photos); ++r) {
    browse->tree()->setCurrentIndex(tree->index(r, 0, photos));
  }
  Idle();
  window->resize(1000, 560);
  // A dark desktop without a skin: the desktop's palette, made right.
  QPalette dark;
  dark.setColor(QPalette::Window, QColor(0x2d, 0x2d, 0x2d));
  dark.setColor(QPalette::WindowText, QColor(0xe8, 0xe8, 0xe8));
  dark.setColor(QPalette::Base, QColor(0x1c, 0x1c, 0x1c));
  dark.setColor(QPalette::Text, QColor(0xe8, 0xe8, 0xe8));
  dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x35));
  dark.setColor(QPalette::ButtonText, QColor(0xe8, 0xe8, 0xe8));
  dark.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf7, 0xf7));
  QApplication::setPalette(Looks::FollowDark(dark));
  Screenshot(window.get(), "frmMenu-dark-desktop");
  SettingsRecord skin;
  skin.skinName = "Dark";
  EXPECT_EQ(Looks::ApplySkin(skin), QString());
  Screenshot(window.get(), "frmMenu-skin-dark-catalog");
}

TEST_F(OptionsTest, BackgroundShowsBehindTheViewsTheIniFileAllows) {
  // "Background" on, the tree's picture off.
  std::ofstream(state().files().iniFile) << "[Switches]\nBackgroundTree=False\n";
  SettingsStore::PutText(kSwitches, "SkinSupportEnabled", "False");
  SettingsStore::PutText(kSwitches, "CurrentBackground", "9");
  BuildSample(dir.File("sample.cd"));
  ui::ProgramState::Reset();
  Start(dir.File("sample.cd"));
  ui::ReapplyLooks(*window);
  auto texture = [this](const char* view) {
    return Find<QAbstractItemView>(view)
        ->viewport()
        ->palette()
        .brush(QPalette::Base)
        .textureImage();
  };
  const QImage nine =
      ui::Backgrounds::Brush(9, QApplication::palette(), QPalette::Base).textureImage();
  EXPECT_FALSE(nine.isNull());
  EXPECT_EQ(texture("lvwFiles"), nine);
  EXPECT_EQ(texture("lvwFilesIcons"), nine);
  EXPECT_TRUE(texture("tvwCatalog").isNull()) << "BackgroundTree=False";
  window->resize(900, 500);
  Screenshot(window.get(), "frmMenu-background-9");

  // The disc list opened later gets it as well; a skin takes it away.
  Trigger("mnuCDShowList");
  Idle();
  EXPECT_EQ(texture("lvwDiscs"), nine);
  state().settings().skinSupportEnabled = true;
  state().settings().skinName = "Dark";
  ui::ReapplyLooks(*window);
  EXPECT_TRUE(texture("lvwFiles").isNull());
  EXPECT_TRUE(texture("lvwDiscs").isNull());
}

TEST_F(OptionsTest, EveryWindowInTheDarkLook) {
  Start("");
  SettingsRecord dark;
  dark.skinName = "Dark";
  ASSERT_EQ(Looks::ApplySkin(dark), QString());
  const std::pair<const char*, const char*> windows[] = {{"mnuViewOptions", "frmOptions"},
                                                         {"mnuViewSkinChange", "frmSkins"},
                                                         {"mnuViewSkinDesigner", "frmSkinDesigner"},
                                                         {"mnuViewIconMaint", "frmIconMaint"},
                                                         {"mnuHelpTip", "frmTip"},
                                                         {"mnuHelpSendError", "frmSendError"},
                                                         {"mnuHelpAbout", "frmAbout"}};
  for (const auto& [command, name] : windows) {
    Trigger(command);
    auto* dialog = Opened<QDialog>(name);
    ASSERT_TRUE(dialog) << name;
    EXPECT_TRUE(Looks::IsDark(dialog->palette())) << name;
    Screenshot(dialog, std::string(name) + "-dark");
    dialog->close();
    Flush();
  }
}

TEST_F(OptionsTest, ListStyleAndPanelsAreRemembered) {
  Start("");
  Trigger("mnuViewList");
  Action("mnuViewPanels")->trigger();
  EXPECT_FALSE(window->statusBar()->isVisible());
  window->ForceQuit();
  window.reset();
  Start("");
  EXPECT_TRUE(Action("mnuViewList")->isChecked());
  EXPECT_TRUE(Action("popExpListViewList")->isChecked());
  EXPECT_FALSE(Action("mnuViewPanels")->isChecked());
  EXPECT_FALSE(window->statusBar()->isVisible());
}

}  // namespace
}  // namespace gorvan::test
