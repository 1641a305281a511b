// The view loader: reads run on its thread with a reader of the catalog, a
// newer request under the same key drops the older one, a commit of the
// writer is seen after MarkStale, and a failed read is tried once more before
// it is reported.
#include <QSignalSpy>
#include <atomic>
#include <chrono>
#include <thread>

#include "ui/UiTestSupport.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/ViewLoader.h"

namespace gorvan::test {
namespace {

using Clock = std::chrono::steady_clock;

class ViewLoaderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    builder = std::make_unique<CatalogBuilder>(dir.File("v.cd"));
    builder->Disc({.name = "one"});
    Status s;
    auto reader = builder->data().OpenReader(&s);
    ASSERT_TRUE(reader) << s.message();
    loader.SetReader(std::move(reader));
  }
  // The number of discs as the loader's reader sees them.
  int Discs() {
    int seen = -1;
    loader.Load<int>(
        &receiver, "count",
        [](classData& d, const std::stop_token& stop) {
          return static_cast<int>(ui::CatalogReads::Catalog(d, stop).discs.size());
        },
        [&seen](int& n) { seen = n; });
    EXPECT_TRUE(WaitFor([&] { return seen >= 0; }));
    return seen;
  }

  TempDir dir;
  std::unique_ptr<CatalogBuilder> builder;
  ui::ViewLoader loader;
  QObject receiver;
};

TEST_F(ViewLoaderTest, ANewerRequestDropsTheOlderOne) {
  std::atomic<bool> started{false};
  bool oldDone = false, newDone = false, oldStopped = false;
  loader.Load<int>(
      &receiver, "list",
      [&](classData&, const std::stop_token& stop) {
        started = true;
        const auto until = Clock::now() + std::chrono::seconds(5);
        while (!stop.stop_requested() && Clock::now() < until) std::this_thread::yield();
        oldStopped = stop.stop_requested();
        return 1;
      },
      [&](int&) { oldDone = true; });
  ASSERT_TRUE(WaitFor([&] { return started.load(); }));
  loader.Load<int>(
      &receiver, "list", [](classData&, const std::stop_token&) { return 2; },
      [&](int& n) { newDone = n == 2; });
  ASSERT_TRUE(WaitFor([&] { return newDone; }));
  EXPECT_TRUE(oldStopped);
  EXPECT_FALSE(oldDone);
  EXPECT_EQ(loader.pending(), 0);
}

TEST_F(ViewLoaderTest, TheWritersCommitIsSeenAfterMarkStale) {
  EXPECT_EQ(Discs(), 1);
  builder->Disc({.name = "two"});
  EXPECT_EQ(Discs(), 1) << "the reader's header is as it was";
  loader.MarkStale();
  EXPECT_EQ(Discs(), 2);
}

TEST_F(ViewLoaderTest, AFailedReadIsTriedAgainAndThenReportedOnce) {
  QSignalSpy failed(&loader, &ui::ViewLoader::readFailed);
  int runs = 0;
  bool done = false;
  loader.Load<int>(
      &receiver, "bad",
      [&runs](classData& d, const std::stop_token&) {
        ++runs;
        CdRecord r;
        (void)d.file()->Read(1 << 30, &r);  // far beyond the file: a damaged link
        return 0;
      },
      [&done](int&) { done = true; });
  ASSERT_TRUE(WaitFor([&] { return done && failed.count() > 0; }));
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(failed.count(), 1);
  // The next read starts clean.
  EXPECT_EQ(Discs(), 1);
  EXPECT_EQ(failed.count(), 1);
}

TEST_F(ViewLoaderTest, AResultForAReceiverThatIsGoneIsDropped) {
  bool done = false;
  {
    QObject gone;
    loader.Load<int>(
        &gone, "x", [](classData&, const std::stop_token&) { return 1; },
        [&done](int&) { done = true; });
  }
  EXPECT_EQ(Discs(), 1);  // every earlier task is through
  QTest::qWait(20);
  EXPECT_FALSE(done);
}

}  // namespace
}  // namespace gorvan::test
