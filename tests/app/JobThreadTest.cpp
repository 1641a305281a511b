// Long jobs on worker threads: a job owns the catalog it was handed for its
// length, a stop asked before it starts ends it at its first check, and a
// stop asked from another thread ends it mid-walk.
#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <stop_token>
#include <thread>

#include "catalog/CatalogCheck.h"
#include "catalog/basBackup.h"
#include "export/basExport.h"
#include "scan/ScanEngine.h"
#include "scan/ScanTestTree.h"
#include "search/CatalogSearch.h"
#include "support/CatalogCursors.h"

namespace gorvan {
namespace {

using namespace test;  // NOLINT: the scan test helpers

class JobThreadTest : public ::testing::Test {
 protected:
  JobThreadTest() {
    for (const char* d : {"A", "B", "C"}) MakeFiles(MakeDir(tree.File(d)), 40, "f", "1234");
  }

  int32_t ScanTree(JobControl& job, ScanEngine* engine) {
    ScanSettings s;
    s.path = tree.path();
    s.discName = "tree";
    engine->SetVars(s);
    return engine->ScanCd(job);
  }

  std::vector<std::string> Problems() { return CatalogCheck(cat.data->file()).Run(); }

  TempDir tree;
  TestCatalog cat;
};

// A job whose first progress report waits until the test thread has asked
// for the stop: the stop is then seen at the job's next check, mid-walk.
class StopFromOutside {
 public:
  StopFromOutside()
      : job_(stop_.get_token(),
             [this](const JobProgress&) {
               if (!reported_.exchange(true)) {
                 started_.count_down();
                 stopped_.wait();
               }
             },
             JobControl::kEveryStep) {}

  JobControl& job() { return job_; }
  // On the test thread: waits for the job's first report, then stops it.
  void StopWhenStarted() {
    started_.wait();
    stop_.request_stop();
    stopped_.count_down();
  }

 private:
  std::stop_source stop_;
  std::latch started_{1}, stopped_{1};
  std::atomic<bool> reported_{false};
  JobControl job_;
};

TEST_F(JobThreadTest, AScanAndAnExportRunOnWorkerThreadsWhileTheOwnerWaits) {
  ScanEngine engine(*cat.data);
  int32_t id = 0;
  std::thread scan([&] {
    JobControl job;
    id = ScanTree(job, &engine);
  });
  scan.join();
  ASSERT_NE(id, 0) << engine.status().message();
  EXPECT_EQ(engine.totals().files, 120);

  ExportResult exported;
  std::thread exporter([&] {
    JobControl job;
    ExportOptions options;
    options.type = ExportType::kDelimited;
    exported = basExport(*cat.data, tree.File("out.csv"), options, job);
  });
  exporter.join();
  EXPECT_TRUE(exported.status.ok()) << exported.status.message();
  EXPECT_GT(ReadFileBytes(tree.File("out.csv")).size(), 120u * 10);
  // Back on the opening thread, the catalog is whole and takes reads again.
  EXPECT_TRUE(Problems().empty());
  EXPECT_EQ(CatalogCursors(*cat.data).Disc(id).GetCdNumOfFiles(), 120);
}

TEST_F(JobThreadTest, AStopAskedBeforeTheStartEndsEveryJobAtItsFirstCheck) {
  ScanEngine engine(*cat.data);
  JobControl plain;
  const int32_t id = ScanTree(plain, &engine);
  ASSERT_NE(id, 0);
  const std::string before = ReadFileBytes(cat.path);

  std::stop_source stop;
  stop.request_stop();
  JobControl stopped(stop.get_token());
  EXPECT_EQ(ScanTree(stopped, &engine), 0);
  EXPECT_TRUE(engine.status().IsCancelled());
  EXPECT_EQ(engine.NewDiscId(), 0) << "nothing is appended";

  CatalogSearch search(*cat.data);
  SearchOptions options;
  options.text = "f1";
  options.inNames = true;
  int rows = 0;
  EXPECT_TRUE(search.Run(options, [&](const SearchResult&) { ++rows; }, stopped).IsCancelled());
  EXPECT_EQ(rows, 0);

  EXPECT_TRUE(basExport(*cat.data, tree.File("x.xml"), {}, stopped).status.IsCancelled());
  EXPECT_NE(::access(tree.File("x.xml").c_str(), F_OK), 0);

  EXPECT_TRUE(CompactDataFiles(*cat.data, stopped).status.IsCancelled());
  EXPECT_EQ(ReadFileBytes(cat.path), before);
  EXPECT_TRUE(Problems().empty());
}

TEST_F(JobThreadTest, AStopFromAnotherThreadEndsEveryJobMidWalk) {
  ScanEngine engine(*cat.data);
  {
    StopFromOutside stop;
    auto scan = std::async(std::launch::async, [&] { return ScanTree(stop.job(), &engine); });
    stop.StopWhenStarted();
    EXPECT_EQ(scan.get(), 0);
    EXPECT_TRUE(engine.status().IsCancelled());
    // The partial disc is linked, with fewer files than the tree holds.
    ASSERT_NE(engine.NewDiscId(), 0);
    EXPECT_LT(engine.totals().files, 120);
  }
  JobControl plain;
  const int32_t id = ScanTree(plain, &engine);
  ASSERT_NE(id, 0);
  const std::string before = ReadFileBytes(cat.path);
  {
    StopFromOutside stop;
    CatalogSearch search(*cat.data);
    SearchOptions options;
    options.text = "f";
    options.inNames = true;
    auto run = std::async(std::launch::async,
                          [&] { return search.Run(options, nullptr, stop.job()); });
    stop.StopWhenStarted();
    EXPECT_TRUE(run.get().IsCancelled());
    EXPECT_GT(search.hits(), 0);
    EXPECT_LT(search.hits(), 240);
  }
  {
    StopFromOutside stop;
    auto run = std::async(std::launch::async, [&] {
      return basExport(*cat.data, tree.File("x.xml"), {}, stop.job()).status;
    });
    stop.StopWhenStarted();
    EXPECT_TRUE(run.get().IsCancelled());
    EXPECT_NE(::access(tree.File("x.xml").c_str(), F_OK), 0);
  }
  {
    StopFromOutside stop;
    auto run = std::async(std::launch::async,
                          [&] { return CompactDataFiles(*cat.data, stop.job()); });
    stop.StopWhenStarted();
    const MaintenanceResult r = run.get();
    EXPECT_TRUE(r.status.IsCancelled());
    EXPECT_EQ(r.message, kCompactCancelled);
    EXPECT_EQ(ReadFileBytes(cat.path), before);
  }
  EXPECT_TRUE(Problems().empty());
}

TEST_F(JobThreadTest, AReaderSeesWhatTheWriterCommittedAndRefusesWrites) {
  ScanEngine engine(*cat.data);
  JobControl plain;
  const int32_t first = ScanTree(plain, &engine);
  ASSERT_NE(first, 0);
  Status s;
  std::unique_ptr<classData> reader = cat.data->OpenReader(&s);
  ASSERT_TRUE(reader) << s.message();
  EXPECT_TRUE(reader->IsReader());
  EXPECT_EQ(reader->GetCdCount(), 1);

  // The writer scans again on its thread while the reader walks on another.
  const int32_t second = ScanTree(plain, &engine);
  ASSERT_NE(second, 0);
  auto count = [&reader] {
    int n = 0;
    classCd cd = reader->CdCursor();
    for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) ++n;
    return n;
  };
  std::thread walk([&] {
    classData::ThreadHandover mine(*reader);
    EXPECT_EQ(count(), 1) << "the reader keeps the header it was opened with";
    ASSERT_TRUE(reader->ReloadHeader());
    EXPECT_EQ(count(), 2);
    EXPECT_FALSE(CatalogCursors(*reader).Disc(second).SetCdNotes("no"));
  });
  walk.join();
  EXPECT_TRUE(Problems().empty());
}

}  // namespace
}  // namespace gorvan
