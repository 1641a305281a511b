// The test main: every test process gets its own application folder, so that the
// error log, settings and desktop files written by the code under test never touch the user's.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  std::string home = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                     "/gorvan-home-XXXXXX";
  if (mkdtemp(home.data())) {
    setenv("GORVAN_HOME", home.c_str(), 1);
    // The settings store and the desktop integration write below these.
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);
  }
  // Requests to the local test server never go through a proxy of the environment.
  setenv("no_proxy", "127.0.0.1,localhost", 1);
  setenv("NO_PROXY", "127.0.0.1,localhost", 1);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
