// gorvan-cli search and translate end to end.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "catalog/classData.h"
#include "support/RunCommand.h"
#include "support/TempDir.h"

namespace gorvan::test {
namespace {

class SearchCliTest : public ::testing::Test {
 protected:
  std::string Catalog() const { return dir_.File("c.cd"); }

  CommandResult Cli(const std::string& args) {
    return RunCommand("GORVAN_HOME='" + dir_.path() + "' '" GORVAN_CLI_PATH "' -q -c '" +
                      Catalog() + "' " + args + " 2>'" + dir_.File("err") + "' </dev/null");
  }
  std::string Err() { return ReadFileBytes(dir_.File("err")); }

  // One disc "Songs, vol 1" (category Music) with folder "Albums" holding
  // files song0 .. song<files-1>; song0's notes hold a tab.
  void Build(int files) {
    classData data;
    ASSERT_TRUE(data.OpenFiles(Catalog(), false, true));
    classCat cat = data.CatCursor();
    ASSERT_TRUE(data.GetCatAppend(cat));
    cat.SetCatName("Music");
    ASSERT_TRUE(data.GetCatCommit(cat));
    musicId_ = cat.GetCatId();
    classCd cd = data.CdCursor();
    ASSERT_TRUE(data.GetCdAppend(cd));
    cd.SetCdName("Songs, vol 1");
    cd.setCdCategory(musicId_);
    cd.setCdLastScanned(38051.5);
    classDir& dir = cd.GetDirAppend();
    dir.SetDirName("Albums");
    dir.SetDirPath("Music\\Rock");
    dir.GetFileAppendStart();
    for (int i = 0; i < files; ++i) {
      ClassFile& f = dir.GetFileAppend();
      f.SetFileName("song" + std::to_string(i) + ".mp3");
      f.setFileSize(4000000);
      f.setFileDate(38051.5);
      f.setFileAttr(32);
      if (i > 0) continue;
      f.SetFileNotes("live\tversion");
      fileId_ = f.GetFileId();
    }
    dir.GetFileAppendFinish();
    dirId_ = dir.GetDirId();
    cd.GetDirAppendFinish();
    cdId_ = cd.GetCdId();
    ASSERT_TRUE(data.GetCdCommit(cd));
    data.CloseFiles();
  }

  TempDir dir_;
  int32_t musicId_ = 0, cdId_ = 0, dirId_ = 0, fileId_ = 0;
};

TEST_F(SearchCliTest, RowsInEveryFormat) {
  Build(3);
  const std::string key = "T:" + std::to_string(musicId_) + "\\\\C:" + std::to_string(cdId_) +
                          "\\\\D:" + std::to_string(dirId_) + "\\\\F:" + std::to_string(fileId_);
  CommandResult r = Cli("search song0");
  ASSERT_EQ(r.code, 0) << Err();
  EXPECT_EQ(r.out, key +
                       "\tsong0.mp3\tSongs, vol 1\tMusic/Rock/Albums\t3/5/2004 12:00:00 PM\t"
                       "4000000\t32\tlive\\tversion\t200403051200\n");
  r = Cli("search song2 --format json");
  EXPECT_NE(r.out.find("\"name\":\"song2.mp3\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"internalDate\":\"200403051200\""), std::string::npos);
  // The file formats themselves are checked with the export.
  EXPECT_EQ(Cli("search song1 --format xml").out.rfind("<SearchResults>\r\n", 0), 0u);
  ASSERT_EQ(Cli("search Albums --format csv --output '" + dir_.File("r.csv") + "'").out, "");
  EXPECT_EQ(ReadFileBytes(dir_.File("r.csv")),
            "Text,Cd,Path,Time,Size,Attr,Notes\r\n"
            "Albums,Songs  vol 1,Music/Rock/Albums,1/1/1900,0,0,\r\n");
}

TEST_F(SearchCliTest, OptionsExitCodesAndRefusals) {
  EXPECT_EQ(Cli("translate '(cat or dog)'").out, "\\b((\\bcat\\b)|(\\bdog\\b))\\b\n");
  EXPECT_EQ(Cli("translate 'a and'").out, "plain\n");
  ASSERT_EQ(Cli("create '" + Catalog() + "'").code, 0);
  EXPECT_EQ(Cli("search x").code, 1);
  EXPECT_NE(Err().find("You need at least one CD or folder scanned"), std::string::npos);

  Build(2);
  for (const auto& [args, count] : std::vector<std::pair<std::string, std::string>>{
           {"'song*'", "3\n"},  // the disc "Songs, vol 1" and the two files
           {"SONGS --case", "0\n"},
           {"Songs --mode whole", "0\n"},
           {"'songs, vol 1' --mode whole", "1\n"},
           {"Music --category " + std::to_string(musicId_), "0\n"},
           {"Music --paths", "0\n"},  // files have no path text
           {"live --comments", "1\n"}}) {
    EXPECT_EQ(Cli("search " + args + " --count").out, count) << args;
  }
  EXPECT_EQ(Cli("search x --mode sideways").code, 2);
  EXPECT_EQ(Cli("search x --format pdf").code, 2);
}

TEST_F(SearchCliTest, CtrlCStopsTheSearchAndKeepsWhatWasPrinted) {
  const int files = 60000;
  Build(files);
  int out[2];
  ASSERT_EQ(pipe(out), 0);
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    dup2(out[1], STDOUT_FILENO);
    close(out[0]);
    close(out[1]);
    setenv("GORVAN_HOME", dir_.path().c_str(), 1);
    execl(GORVAN_CLI_PATH, "gorvan-cli", "-q", "-c", Catalog().c_str(), "search", "song",
          static_cast<char*>(nullptr));
    _exit(127);
  }
  close(out[1]);
  // The pipe fills long before the search ends, so the child is still
  // searching when the signal comes after the first read.
  std::string got;
  char buf[4096];
  for (ssize_t n; (n = read(out[0], buf, sizeof buf)) > 0;) {
    if (got.empty()) kill(pid, SIGINT);
    got.append(buf, static_cast<size_t>(n));
  }
  close(out[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 130);
  ASSERT_FALSE(got.empty());
  EXPECT_EQ(got.back(), '\n') << "only whole rows";
  EXPECT_LT(std::count(got.begin(), got.end(), '\n'), files + 2);
}

}  // namespace
}  // namespace gorvan::test
