// gorvan-cli export and the maintenance commands run as a user runs them:
// files written, messages, exit codes, and Ctrl-C in the middle of the work.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

#include "catalog/classData.h"
#include "support/TempDir.h"

namespace gorvan::test {
namespace {

bool Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

class CliExportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Exists(GORVAN_CLI_PATH)) GTEST_SKIP() << "gorvan-cli is not built";
    catalog_ = dir_.File("c.cd");
  }

  void Build(int discs, int folders, int files) {
    classData data;
    ASSERT_TRUE(data.OpenFiles(catalog_, false, true));
    for (int c = 0; c < discs; ++c) {
      classCd& cd = data.GetCdAppend();
      cd.SetCdName("disc " + std::to_string(c));
      for (int d = 0; d < folders; ++d) {
        classDir& dir = cd.GetDirAppend();
        dir.SetDirName("folder " + std::to_string(d));
        dir.SetDirPath("\\");
        dir.GetFileAppendStart();
        for (int f = 0; f < files; ++f) {
          dir.GetFileAppend().SetFileName("file " + std::to_string(f) + ".txt");
        }
        dir.GetFileAppendFinish();
      }
      cd.GetDirAppendFinish();
      ASSERT_TRUE(data.GetCdCommit());
      discs_.push_back(cd.GetCdId());
      data.GetCdGoto(cd.GetCdId()).SetCdNotes("garbage");
      data.GetCdGoto(cd.GetCdId()).SetCdNotes("notes");
    }
  }

  pid_t Start(std::vector<std::string> args) {
    args.insert(args.begin(), {GORVAN_CLI_PATH, "-c", catalog_});
    const pid_t pid = ::fork();
    if (pid == 0) {
      std::vector<char*> argv;
      for (std::string& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    return pid;
  }

  static int Wait(pid_t pid) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  int Run(std::vector<std::string> args) { return Wait(Start(std::move(args))); }

  // Starts the command, interrupts it once `appears` exists, returns its exit code.
  int Interrupt(std::vector<std::string> args, const std::string& appears) {
    const pid_t pid = Start(std::move(args));
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Exists(appears) && std::chrono::steady_clock::now() < until) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    ::kill(pid, SIGINT);
    return Wait(pid);
  }

  TempDir dir_;
  std::string catalog_;
  std::vector<int32_t> discs_;
};

TEST_F(CliExportTest, ExportsAndMaintenanceCommandsWriteTheirFiles) {
  Build(2, 2, 2);
  EXPECT_EQ(Run({"-q", "export", dir_.File("all.xml")}), 0);
  const std::string xml = ReadFileBytes(dir_.File("all.xml"));
  EXPECT_EQ(xml.rfind("<?xml-stylesheet type=\"text/xsl\" href=\"Gorvan.xsl\"?>\r\n", 0), 0u);
  EXPECT_TRUE(Exists(dir_.File("Gorvan.xsl")));
  // --disc picks discs; the extension picks the format.
  EXPECT_EQ(Run({"-q", "export", dir_.File("one.csv"), "--disc", std::to_string(discs_[0])}), 0);
  EXPECT_EQ(ReadFileBytes(dir_.File("one.csv")).rfind("C, disc 0, ", 0), 0u);
  EXPECT_EQ(Run({"-q", "export", dir_.File("x"), "--disc", "5"}), 1);
  EXPECT_EQ(Run({"-q", "export", dir_.File("x"), "--format", "html"}), 2);

  EXPECT_EQ(Run({"-q", "backup", catalog_}), 1);
  EXPECT_EQ(Run({"-q", "backup", dir_.File("b.cd")}), 0);
  EXPECT_EQ(Run({"-q", "compact"}), 0);
  EXPECT_TRUE(Exists(dir_.File("c.bak")));
  EXPECT_LT(ReadFileBytes(catalog_).size(), ReadFileBytes(dir_.File("c.bak")).size());
  EXPECT_EQ(Run({"-q", "merge", dir_.File("b.cd")}), 0);
  classData data;
  ASSERT_TRUE(data.OpenFiles(catalog_, false, false));
  EXPECT_EQ(data.GetCdCount(), 4);
}

TEST_F(CliExportTest, CtrlCCancelsAndLeavesNoPartialFile) {
  Build(20, 100, 100);
  EXPECT_EQ(Interrupt({"-q", "export", dir_.File("big.xml")}, dir_.File("big.xml.part")), 130);
  EXPECT_FALSE(Exists(dir_.File("big.xml")));
  EXPECT_FALSE(Exists(dir_.File("big.xml.part")));

  const std::string before = ReadFileBytes(catalog_);
  EXPECT_EQ(Interrupt({"-q", "compact"}, dir_.File("~Temp_cd.~~~")), 130);
  EXPECT_FALSE(Exists(dir_.File("~Temp_cd.~~~")));
  EXPECT_FALSE(Exists(dir_.File("c.bak")));
  const std::string after = ReadFileBytes(catalog_);
  // Opening the catalog writes its last-opened date and nothing else.
  ASSERT_EQ(after.size(), before.size());
  EXPECT_EQ(after.substr(200), before.substr(200));
}

}  // namespace
}  // namespace gorvan::test
