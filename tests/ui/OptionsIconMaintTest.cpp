// Icon maintenance: the map's entries as a table, edits written back in the
// file's form, broken lines told and dropped, pictures that are no pictures
// refused, and the views' file-type icons taken from the map first.
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <fstream>
#include <sstream>

#include "app/IconMap.h"
#include "ui/OptionsFixture.h"
#include "ui/main/frmMenu.h"
#include "ui/options/MapIcons.h"
#include "ui/options/frmIconMaint.h"

namespace gorvan::test {
namespace {

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

QImage Picture(const QIcon& icon) { return icon.pixmap(16, 16).toImage(); }

class IconMaintTest : public OptionsTest {
 protected:
  ui::frmIconMaint* Open(const std::string& mapText) {
    std::ofstream(state().files().mapFile, std::ios::binary | std::ios::trunc) << mapText;
    state().iconMap().Load(state().files().mapFile);
    Start("");
    Trigger("mnuViewIconMaint");
    return Opened<ui::frmIconMaint>("frmIconMaint");
  }
  void Select(ui::frmIconMaint* d, const QString& extension) {
    for (int row = 0; row < d->table()->rowCount(); ++row) {
      if (d->table()->item(row, 0)->text() == extension) d->table()->selectRow(row);
    }
  }
};

TEST_F(IconMaintTest, EditsAreWrittenInTheMapsFormAndBrokenLinesAreToldAndDropped) {
  auto* dialog = Open("zip,i_0143\r\nthis line is broken\ndoc,i_0144\na,b,c\nxls,i_0100\n");
  ASSERT_TRUE(dialog);
  ASSERT_EQ(dialog->table()->rowCount(), 3);
  EXPECT_EQ(dialog->table()->item(0, 0)->text(), QStringLiteral("zip"));
  EXPECT_EQ(dialog->table()->item(0, 1)->text(), QStringLiteral("Archive (i_0143)"));
  EXPECT_FALSE(dialog->table()->item(0, 1)->icon().isNull()) << "the map's own keys have pictures";
  const QString note = dialog->findChild<QLabel*>(QStringLiteral("lblNote"))->text();
  EXPECT_TRUE(note.contains(QStringLiteral("2 lines of Gorvan.map"))) << note.toStdString();
  Screenshot(dialog, "frmIconMaint");

  Select(dialog, QStringLiteral("doc"));
  dialog->findChild<QPushButton*>(QStringLiteral("btnRemove"))->click();
  Select(dialog, QStringLiteral("zip"));
  dialog->SetKey(QStringLiteral("package-x-generic"));
  dialog->AddRow(QStringLiteral(".RAW"), QStringLiteral("image-x-generic"));
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_EQ(ReadAll(state().files().mapFile),
            "zip,package-x-generic\nxls,i_0100\nRAW,image-x-generic\n");
  EXPECT_EQ(state().iconMap().KeyOf("raw"), "image-x-generic");

  // The views use the map before the file type's own icon.
  EXPECT_EQ(Picture(ui::ThemeIcons::File("scan0001.raw")),
            Picture(ui::MapIcons::IconOf(QStringLiteral("image-x-generic"))));
  EXPECT_EQ(Picture(ui::ThemeIcons::File("backup.ZIP")),
            Picture(ui::MapIcons::IconOf(QStringLiteral("package-x-generic"))));
}

TEST_F(IconMaintTest, RowsTheMapCannotHoldAreRefusedAndNothingIsWritten) {
  const std::string text = "zip,i_0143\n";
  for (const auto& [extension, key] : std::vector<std::pair<QString, QString>>{
           {QStringLiteral("zip"), QStringLiteral("folder")},
           {QStringLiteral(""), QStringLiteral("folder")},
           {QStringLiteral("a,b"), QStringLiteral("folder")},
           {QStringLiteral("png"), QStringLiteral("/x,y.png")}}) {
    auto* dialog = Open(text);
    ASSERT_TRUE(dialog);
    dialog->AddRow(extension, key);
    const size_t asked = prompt.asked.size();
    EXPECT_FALSE(dialog->Apply()) << extension.toStdString();
    EXPECT_EQ(prompt.asked.size(), asked + 1);
    EXPECT_EQ(ReadAll(state().files().mapFile), text);
    dialog->close();
    window->ForceQuit();
    window.reset();
    Flush();
  }
}

TEST_F(IconMaintTest, PickerTakesThemeIconsAndPicturesButNotOtherFiles) {
  const std::string png = dir.path() + "/raw.png";
  QImage image(32, 32, QImage::Format_RGB32);
  image.fill(Qt::red);
  ASSERT_TRUE(image.save(QString::fromStdString(png)));
  const std::string text = dir.path() + "/notes.png";
  std::ofstream(text) << "not a picture";

  ui::frmIconPicker picker(QStringLiteral("folder"));
  EXPECT_EQ(picker.key(), QStringLiteral("folder"));
  EXPECT_GE(picker.list()->count(), 10);
  Screenshot(&picker, "frmIconPicker");
  EXPECT_FALSE(picker.ChooseFile(QString::fromStdString(text)));
  EXPECT_TRUE(picker.message().contains(QStringLiteral("not a picture")));
  EXPECT_EQ(picker.key(), QStringLiteral("folder"));
  EXPECT_TRUE(picker.ChooseFile(QString::fromStdString(png)));
  EXPECT_EQ(picker.key(), QString::fromStdString(png));

  // A picture in the map shows; one that is gone leaves the type's own icon.
  const QImage cr2 = Picture(ui::ThemeIcons::File("a.cr2"));
  IconMap map;
  map.Set("raw", png);
  map.Set("cr2", dir.path() + "/missing.png");
  ui::MapIcons::Apply(map);
  EXPECT_EQ(Picture(ui::ThemeIcons::File("a.raw")).pixelColor(8, 8), QColor(Qt::red));
  EXPECT_EQ(Picture(ui::ThemeIcons::File("a.cr2")), cr2);
}

}  // namespace
}  // namespace gorvan::test
