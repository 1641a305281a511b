// A compaction killed with SIGKILL at many moments: afterwards the catalog's
// name always opens and holds the whole catalog, either the old file or the
// compacted one.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "CatalogFixture.h"
#include "LiveContent.h"
#include "catalog/CatalogCheck.h"
#include "catalog/basBackup.h"

namespace gorvan::test {
namespace {

using Clock = std::chrono::steady_clock;

class CompactKillTest : public CatalogTest {
 protected:
  // Runs a compaction of the catalog in a child process; kills it after
  // delayUs microseconds unless it is negative. Returns the child's status.
  int CompactInChild(int delayUs) {
    const pid_t pid = ::fork();
    if (pid == 0) {
      classData data;
      if (!data.OpenFiles(Path(), false, false)) ::_exit(2);
      JobControl job;
      const MaintenanceResult r = CompactDataFiles(data, job);
      ::_exit(r.status.ok() ? 0 : 1);
    }
    if (delayUs >= 0) {
      ::usleep(static_cast<useconds_t>(delayUs));
      ::kill(pid, SIGKILL);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
  }
};

TEST_F(CompactKillTest, TheCatalogNameAlwaysHoldsTheOldOrTheNewCatalog) {
  OpenCatalog();
  data_.SetDataNotes("garbage soon");
  data_.SetDataNotes("catalog notes");
  for (int i = 0; i < 12; ++i) {
    const int32_t id = AddDisc("disc " + std::to_string(i), 30, 60);
    // Garbage for the compaction to drop: a replaced text and a removed disc.
    cur_.Disc(id).SetCdNotes("n" + std::to_string(i));
    cur_.Disc(id).SetCdNotes("notes " + std::to_string(i));
    if (i % 4 == 3) {
      ASSERT_TRUE(data_.GetCdDelete(id));
    }
  }
  const std::string expected = LiveContent(data_);
  data_.CloseFiles();
  const std::string original = ReadFileBytes(Path());

  // One undisturbed run gives the compacted length and the time to spread the
  // kills over.
  const Clock::time_point start = Clock::now();
  const int st = CompactInChild(-1);
  const auto total = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
  ASSERT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0);
  const size_t compactedLength = ReadFileBytes(Path()).size();
  ASSERT_LT(compactedLength, original.size());

  constexpr int kRuns = 40;
  int sawOld = 0, sawNew = 0;
  // On a loaded machine a run can take several times the undisturbed one, so
  // the kills could all land before the replace: then further runs wait
  // twice as long each time, until one outlives the compaction (or kill at
  // once, should none have landed before it).
  for (int i = 0, extra = 0; i < kRuns || ((sawOld == 0 || sawNew == 0) && extra < 12); ++i) {
    ASSERT_TRUE(WriteFileBytes(Path(), original));
    // Spread over the whole run, and a little past it.
    int64_t delay = total.count() * (i + 1) / (kRuns - 4);
    if (i >= kRuns) delay = sawNew == 0 ? total.count() << ++extra : (++extra, 0);
    CompactInChild(static_cast<int>(std::min<int64_t>(delay, 20'000'000)));

    const size_t length = ReadFileBytes(Path()).size();
    if (length == original.size()) {
      ++sawOld;
    } else {
      ASSERT_EQ(length, compactedLength) << "run " << i << ": neither the old nor the new file";
      ++sawNew;
    }
    classData data;
    ASSERT_TRUE(data.OpenFiles(Path(), false, false)) << "run " << i << ": " << data.GetErrorText();
    EXPECT_EQ(LiveContent(data), expected) << "run " << i;
    EXPECT_TRUE(CatalogCheck(data.file()).Run().empty()) << "run " << i;
  }
  // The moments are only useful if some kills hit before the replace and some
  // after; timing on a loaded machine can still bunch them.
  EXPECT_GT(sawOld, 0);
  EXPECT_GT(sawNew, 0);
  RecordProperty("old", sawOld);
  RecordProperty("new", sawNew);
}

}  // namespace
}  // namespace gorvan::test
