// The desktop program's tests: GoogleTest with a QApplication on the offscreen
// platform, and, as every test process, an application folder and settings
// store of its own.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QApplication>
#include <cstdlib>
#include <string>

#include "ui/widgets/ThemeIcons.h"

int main(int argc, char** argv) {
  std::string home =
      std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/gorvan-home-XXXXXX";
  if (mkdtemp(home.data())) {
    setenv("GORVAN_HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);
    const std::string runtime = home + "/runtime";
    if (mkdir(runtime.c_str(), 0700) == 0) setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  }
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // The test machine's locale must not change dates and sizes under test.
  setenv("LC_ALL", "C", 1);
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationName(QStringLiteral("Gorvan"));
  gorvan::ui::ThemeIcons::Setup();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
