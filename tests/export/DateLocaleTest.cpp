// Dates in exports follow the date locale chosen at start-up from the user's
// environment, never the process locale: the command line and the desktop
// program (which sets the process locale) write the same dates.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>

#include "catalog/CatalogFixture.h"
#include "catalog/TextFormat.h"

namespace gorvan::test {
namespace {

constexpr double kNoon2004 = 38000.5;  // 14 Jan 2004 12:00:00

class DateLocaleTest : public CatalogTest {
 protected:
  void SetUp() override {
    // A German locale compiled into the test's own folder, so the test needs
    // no locale installed on the machine.
    locales_ = dir_.File("locales");
    const std::string cmd = "mkdir -p " + locales_ + " && localedef -i de_DE -f UTF-8 " + locales_ +
                            "/de_DE.UTF-8 2>/dev/null";
    if (::access("/usr/bin/localedef", X_OK) != 0 || std::system(cmd.c_str()) != 0) {
      GTEST_SKIP() << "localedef or the de_DE locale source is missing";
    }
    setenv("LOCPATH", locales_.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("LOCPATH");
    std::setlocale(LC_ALL, "C");
    (void)SetDateLocale("");
  }

  // The export's disc line from gorvan-cli run with LC_ALL set to locale.
  std::string CliExport(const std::string& locale) {
    const std::string out = dir_.File("out-" + locale + ".csv");
    const std::string cmd = "LC_ALL=" + locale + " " + GORVAN_CLI_PATH + " -q -c " + Path() +
                            " export " + out + " --format csv";
    if (std::system(cmd.c_str()) != 0) return "export failed";
    const std::string text = ReadFileBytes(out);
    return text.substr(0, text.find("\r\n"));
  }

  std::string locales_;
};

TEST_F(DateLocaleTest, TheDateLocaleDecidesAndTheProcessLocaleDoesNot) {
  OpenCatalog();
  cur_.Disc(AddDisc("Disc", 0, 0)).setCdLastScanned(kNoon2004);
  data_.CloseFiles();
  EXPECT_EQ(CliExport("C"), "C, Disc, 1/14/2004 12:00:00 PM,0,0,0,0,3,");
  EXPECT_EQ(CliExport("de_DE.UTF-8"), "C, Disc, 14.01.2004 12:00:00,0,0,0,0,3,");

  // In one process: the process locale (as a toolkit sets it) changes nothing.
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  ASSERT_TRUE(SetDateLocale("C"));
  EXPECT_EQ(FormatGeneralDate(kNoon2004), "1/14/2004 12:00:00 PM");
  std::setlocale(LC_ALL, "C");
  ASSERT_TRUE(SetDateLocale("de_DE.UTF-8"));
  EXPECT_EQ(FormatGeneralDate(kNoon2004), "14.01.2004 12:00:00");
  EXPECT_FALSE(SetDateLocale("xx_NOWHERE.UTF-8"));
  EXPECT_EQ(FormatGeneralDate(kNoon2004), "1/14/2004 12:00:00 PM") << "an unknown locale: C";
}

}  // namespace
}  // namespace gorvan::test
