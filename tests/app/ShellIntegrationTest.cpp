// The desktop integration in temporary XDG folders: the files validated by
// the freedesktop tools, installing twice, removing, other programs' entries
// kept, and the resource folder the icon comes from.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QMimeDatabase>

#include "app/AppTestSupport.h"
#include "app/Resources.h"
#include "app/ShellIntegration.h"

namespace gorvan {
namespace {

using State = ShellIntegration::State;
using test::ReadFileBytes;
using test::WriteFileBytes;

bool Have(const char* tool) {
  return std::system(("command -v " + std::string(tool) + " >/dev/null 2>&1").c_str()) == 0;
}

class ShellIntegrationTest : public ::testing::Test {
 protected:
  ShellIntegrationTest() {
    setenv("XDG_CONFIG_HOME", user_.dir().File("config").c_str(), 1);
    setenv("XDG_CONFIG_DIRS", user_.dir().File("etc-xdg").c_str(), 1);
  }
  ~ShellIntegrationTest() override { unsetenv("XDG_CONFIG_DIRS"); }
  std::string Data(const std::string& p) { return user_.dir().File("data/" + p); }
  std::string Config(const std::string& p) { return user_.dir().File("config/" + p); }
  static ino_t Inode(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 ? st.st_ino : 0;
  }
  static size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
  }

  test::FreshUser user_;
};

TEST_F(ShellIntegrationTest, InstalledFilesAreValidAndFound) {
  const ShellIntegration shell("/opt/My Apps/gorvan");
  shell.RegisterFileType();
  shell.InstallFolderActions();
  for (const ShellIntegration::Item& item : shell.Status()) {
    EXPECT_EQ(item.state, State::kInstalled) << item.name;
  }
  const std::string entry = ReadFileBytes(Data("applications/gorvan.desktop"));
  EXPECT_NE(entry.find("\nExec=\"/opt/My Apps/gorvan\" %f\n"), std::string::npos) << entry;
  EXPECT_NE(ReadFileBytes(Config("mimeapps.list"))
                .find("[Default Applications]\napplication/x-gorvan-catalog=gorvan.desktop\n"),
            std::string::npos);
  EXPECT_NE(ReadFileBytes(Data("nautilus/scripts/Catalog with Gorvan"))
                .find("exec '/opt/My Apps/gorvan' --scan \"${1:-.}\""),
            std::string::npos);
  EXPECT_NE(Inode(Data("icons/hicolor/scalable/apps/gorvan.svg")), 0u);
  // The packaged files are what the integration writes for an installed program.
  EXPECT_EQ(ReadFileBytes(GORVAN_SOURCE_DIR "/packaging/gorvan.xml"),
            ShellIntegration::MimePackage());
  EXPECT_EQ(ReadFileBytes(GORVAN_SOURCE_DIR "/packaging/gorvan.desktop"),
            ShellIntegration::DesktopEntry("gorvan"));

  if (!Have("desktop-file-validate") || !Have("update-mime-database")) {
    GTEST_SKIP() << "desktop-file-utils or shared-mime-info is not installed";
  }
  EXPECT_EQ(std::system(("desktop-file-validate '" + Data("applications/gorvan.desktop") + "' '" +
                         GORVAN_SOURCE_DIR "/packaging/gorvan.desktop'")
                            .c_str()),
            0);
  // update-mime-database accepted the package and compiled the type.
  EXPECT_NE(ReadFileBytes(Data("mime/application/x-gorvan-catalog.xml")).find("Gorvan Data File"),
            std::string::npos);
  EXPECT_NE(ReadFileBytes(Data("applications/mimeinfo.cache")).find("gorvan.desktop"),
            std::string::npos);
  EXPECT_EQ(QMimeDatabase().mimeTypeForFile("discs.cd", QMimeDatabase::MatchExtension).name(),
            QStringLiteral("application/x-gorvan-catalog"));
}

TEST_F(ShellIntegrationTest, InstallingTwiceKeepsOneEntryAndOtherProgramsEntries) {
  // Thunar's system actions seed the user's file; mimeapps.list holds others' entries.
  ASSERT_EQ(std::system(("mkdir -p '" + user_.dir().File("etc-xdg/Thunar") + "'").c_str()), 0);
  WriteFileBytes(user_.dir().File("etc-xdg/Thunar/uca.xml"),
                 "<?xml version=\"1.0\"?>\n<actions>\n<action>\n\t<name>Open Terminal Here</name>\n"
                 "</action>\n</actions>\n");
  ASSERT_EQ(::mkdir(Config("").c_str(), 0755), 0);
  const std::string others =
      "[Added Associations]\ntext/plain=gedit.desktop;\n\n"
      "[Default Applications]\nimage/png=eog.desktop\n";
  WriteFileBytes(Config("mimeapps.list"), others);

  const ShellIntegration shell("/usr/bin/gorvan");
  shell.RegisterFileType();
  shell.InstallFolderActions();
  const std::vector<std::string> files = {Data("mime/packages/gorvan.xml"),
                                          Data("applications/gorvan.desktop"),
                                          Config("mimeapps.list"),
                                          Data("kio/servicemenus/gorvan-catalog.desktop"),
                                          Data("nemo/actions/gorvan-catalog.nemo_action"),
                                          Config("Thunar/uca.xml")};
  std::vector<ino_t> first;
  for (const std::string& f : files) first.push_back(Inode(f));
  shell.RegisterFileType();
  shell.InstallFolderActions();
  ShellIntegration("/usr/bin/gorvan").InstallFolderActions();
  for (size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(Inode(files[i]), first[i]) << files[i] << " was rewritten";
  }
  const std::string uca = ReadFileBytes(Config("Thunar/uca.xml"));
  EXPECT_EQ(Count(uca, "<name>Catalog with Gorvan</name>"), 1u) << uca;
  EXPECT_EQ(Count(uca, "Open Terminal Here"), 1u);
  struct stat st {};
  ASSERT_EQ(::stat(Data("kio/servicemenus/gorvan-catalog.desktop").c_str(), &st), 0);
  EXPECT_TRUE(st.st_mode & S_IXUSR) << "Dolphin runs only executable service menus";

  // A moved program rewrites the entries that name it, still one each.
  ShellIntegration moved("/opt/gorvan/bin/gorvan");
  moved.InstallFolderActions();
  EXPECT_EQ(Count(ReadFileBytes(Config("Thunar/uca.xml")), "<unique-id>"), 1u);
  EXPECT_EQ(shell.Status()[6].state, State::kDiffers) << shell.Status()[6].name;

  moved.RemoveFolderActions();
  shell.UnregisterFileType();
  for (const ShellIntegration::Item& item : shell.Status()) {
    EXPECT_EQ(item.state, State::kMissing) << item.name;
  }
  EXPECT_NE(ReadFileBytes(Config("Thunar/uca.xml")).find("Open Terminal Here"), std::string::npos);
  EXPECT_EQ(ReadFileBytes(Config("mimeapps.list")), others);

  // The user's own choice of handler is not ours to remove.
  WriteFileBytes(Config("mimeapps.list"),
                 "[Default Applications]\napplication/x-gorvan-catalog=other.desktop\n");
  shell.UnregisterFileType();
  EXPECT_NE(ReadFileBytes(Config("mimeapps.list")).find("other.desktop"), std::string::npos);
}

TEST_F(ShellIntegrationTest, FailuresAreSilentAndDamagedFilesAreLeftAlone) {
  WriteFileBytes(user_.dir().File("data"), "a file where the data folder should be");
  ASSERT_EQ(::mkdir(Config("").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(Config("Thunar").c_str(), 0755), 0);
  const std::string damaged = "<actions>\n<action><name>x</name></action>\n";
  WriteFileBytes(Config("Thunar/uca.xml"), damaged);
  const std::string path = std::getenv("PATH");
  setenv("PATH", "/nonexistent", 1);
  const ShellIntegration shell("/usr/bin/gorvan");
  shell.RegisterFileType();
  shell.InstallFolderActions();
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(ReadFileBytes(Config("Thunar/uca.xml")), damaged);
  const std::vector<ShellIntegration::Item> items = shell.Status();
  EXPECT_EQ(items[0].state, State::kMissing);
  EXPECT_EQ(items[2].state, State::kInstalled) << "the config side still works";
}

TEST(DesktopExecTest, QuotesAndEscapesAsTheDesktopEntryRulesSay) {
  const std::pair<const char*, const char*> cases[] = {
      {"/usr/bin/gorvan", "/usr/bin/gorvan %f"},
      {"/opt/a b/gorvan", "\"/opt/a b/gorvan\" %f"},
      {"/opt/100%/gorvan", "/opt/100%%/gorvan %f"},
      {"/opt/$x\"y/gorvan", "\"/opt/\\\\$x\\\\\"y/gorvan\" %f"},
      {"/opt/back\\slash", "\"/opt/back\\\\\\\\slash\" %f"},
  };
  for (const auto& [program, exec] : cases) EXPECT_EQ(DesktopExec(program, "%f"), exec) << program;
  EXPECT_EQ(ShellQuote("it's"), "'it'\\''s'");
}

TEST(ResourcesTest, FoundBesideInstalledAndBuildTreePrograms) {
  test::TempDir dir;
  for (const char* folder :
       {"/usr/bin", "/usr/share/gorvan", "/build/src/cli", "/build/share/gorvan", "/lone/bin"}) {
    ASSERT_EQ(std::system(("mkdir -p '" + dir.path() + folder + "'").c_str()), 0);
  }
  EXPECT_EQ(Resources::FolderFrom(dir.File("usr/bin/gorvan")), dir.File("usr/share/gorvan"));
  EXPECT_EQ(Resources::FolderFrom(dir.File("build/src/cli/gorvan-cli")),
            dir.File("build/share/gorvan"));
  EXPECT_EQ(Resources::FolderFrom(dir.File("lone/bin/gorvan")), "");
  // This test program is in the build tree, whose share/gorvan the build filled.
  EXPECT_NE(Resources::File("Gorvan.xsl"), "");
  EXPECT_NE(Resources::File("images/gorvan.svg"), "");
  EXPECT_EQ(Resources::File("no such file"), "");
}

}  // namespace
}  // namespace gorvan
