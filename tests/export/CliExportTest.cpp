// gorvan-cli export and the maintenance commands run as a user runs them:
// files written, messages, exit codes, and Ctrl-C in the middle of the work.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

#include "catalog/CatalogFixture.h"

namespace gorvan::test {
namespace {

bool Exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

class CliExportTest : public CatalogTest {
 protected:
  void SetUp() override {
    if (!Exists(GORVAN_CLI_PATH)) GTEST_SKIP() << "gorvan-cli is not built";
  }

  // Discs of folders of files, each disc's notes replaced once to leave garbage.
  void Build(int discs, int folders, int files) {
    OpenCatalog("c.cd");
    for (int c = 0; c < discs; ++c) {
      discs_.push_back(AddDisc("disc " + std::to_string(c), folders, files));
      for (const char* notes : {"garbage", "notes"}) {
        cur_.Disc(discs_.back()).SetCdNotes(notes);
      }
    }
    data_.CloseFiles();
  }

  // Runs gorvan-cli -c <catalog> -q <args>, interrupting it once `appears`
  // exists if that is given; returns its exit code.
  int Run(std::vector<std::string> args, const std::string& appears = "") {
    args.insert(args.begin(), {GORVAN_CLI_PATH, "-c", catalog_, "-q"});
    const pid_t pid = ::fork();
    if (pid == 0) {
      std::vector<char*> argv;
      for (std::string& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    if (!appears.empty()) {
      const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      while (!Exists(appears) && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
      }
      ::kill(pid, SIGINT);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  const std::string catalog_ = Path("c.cd");
  std::vector<int32_t> discs_;
};

TEST_F(CliExportTest, ExportsAndMaintenanceCommandsWriteTheirFiles) {
  Build(2, 2, 2);
  EXPECT_EQ(Run({"export", dir_.File("all.xml")}), 0);
  EXPECT_THAT(
      ReadFileBytes(dir_.File("all.xml")),
      ::testing::StartsWith("<?xml-stylesheet type=\"text/xsl\" href=\"Gorvan.xsl\"?>\r\n"));
  EXPECT_TRUE(Exists(dir_.File("Gorvan.xsl")));
  // --disc picks discs; the extension picks the format.
  EXPECT_EQ(Run({"export", dir_.File("one.csv"), "--disc", std::to_string(discs_[0])}), 0);
  EXPECT_THAT(ReadFileBytes(dir_.File("one.csv")), ::testing::StartsWith("C, disc 0, "));
  EXPECT_EQ(Run({"export", dir_.File("x"), "--disc", "5"}), 1);
  EXPECT_EQ(Run({"export", dir_.File("x"), "--format", "xls"}), 2);
  // Each type by its extension or by --format.
  const std::pair<std::vector<std::string>, std::string> types[] = {
      {{"all.XLSX"}, "PK\x03\x04"},
      {{"all.htm"}, "<!DOCTYPE html>"},
      {{"all.html"}, "<!DOCTYPE html>"},
      {{"page", "--format", "html"}, "<!DOCTYPE html>"},
      {{"book", "--format", "xlsx"}, "PK\x03\x04"},
      {{"lines", "--format", "csv"}, "C, disc 0, "}};
  for (auto [args, start] : types) {
    const std::string file = dir_.File(args[0]);
    args[0] = file;
    args.insert(args.begin(), "export");
    EXPECT_EQ(Run(args), 0) << file;
    EXPECT_THAT(ReadFileBytes(file), ::testing::StartsWith(start)) << file;
  }

  EXPECT_EQ(Run({"backup", catalog_}), 1);
  EXPECT_EQ(Run({"backup", dir_.File("b.cd")}), 0);
  EXPECT_EQ(Run({"compact"}), 0);
  EXPECT_LT(ReadFileBytes(catalog_).size(), ReadFileBytes(dir_.File("c.bak")).size());
  EXPECT_EQ(Run({"merge", dir_.File("b.cd")}), 0);
  ASSERT_TRUE(data_.OpenFiles(catalog_, false, false));
  EXPECT_EQ(data_.GetCdCount(), 4);
}

TEST_F(CliExportTest, CtrlCCancelsAndLeavesNoPartialFile) {
  Build(20, 100, 100);
  EXPECT_EQ(Run({"export", dir_.File("big.xml")}, dir_.File("big.xml.part")), 130);
  EXPECT_FALSE(Exists(dir_.File("big.xml")) || Exists(dir_.File("big.xml.part")));

  const std::string before = ReadFileBytes(catalog_);
  EXPECT_EQ(Run({"compact"}, dir_.File("~Temp_cd.~~~")), 130);
  EXPECT_FALSE(Exists(dir_.File("~Temp_cd.~~~")) || Exists(dir_.File("c.bak")));
  const std::string after = ReadFileBytes(catalog_);
  // Opening the catalog writes its last-opened date and nothing else.
  ASSERT_EQ(after.size(), before.size());
  EXPECT_EQ(after.substr(200), before.substr(200));
}

}  // namespace
}  // namespace gorvan::test
