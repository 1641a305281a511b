// Damaged catalogs, made by byte surgery: every one is refused cleanly or read
// to a clean stop, and the integrity check names the damage.
#include <gtest/gtest.h>

#include <random>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/Coding.h"

namespace gorvan::test {
namespace {

class DamageTest : public CatalogTest {
 protected:
  void SetUp() override {
    OpenCatalog();
    AddCategory("c");
    disc_ = AddDisc("one", 3, 4);
    AddDisc("two", 2, 2);
    classCd& cd = cur_.Disc(disc_);
    dir_ = cd.record().firstDir;
    file_ = cd.GetDirFirst().record().firstFile;
    data_.CloseFiles();
    good_ = ReadFileBytes(Path());
  }

  void Poke32(std::string* bytes, int64_t offset, int32_t value) {
    EncodeFixed32(reinterpret_cast<uint8_t*>(&(*bytes)[static_cast<size_t>(offset)]), value);
  }

  // Opens the damaged bytes, walks every record and runs the check.
  std::vector<std::string> OpenWalkAndCheck(const std::string& bytes, bool* opened) {
    WriteFileBytes(Path(), bytes);
    classData data;
    *opened = data.OpenFiles(Path(), false, true);
    if (!*opened) return {};
    classCd cd = data.CdCursor();
    for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
      cd.GetCdName();
      for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
        for (ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) f.GetFileName();
      }
    }
    walkOk_ = data.ok();
    return CatalogCheck(data.file()).Run();
  }

  std::string good_;
  int32_t disc_ = 0, dir_ = 0, file_ = 0;
  bool walkOk_ = true;
};

TEST_F(DamageTest, LinksPointingAnywhereOrInACircleAreReported) {
  bool sound = false;
  EXPECT_TRUE(OpenWalkAndCheck(good_, &sound).empty());
  EXPECT_TRUE(sound && walkOk_) << "the undamaged catalog";
  // The first folder's next link pointing anywhere, a file that is its own
  // successor, and the disc chain looping on the first disc.
  std::vector<std::pair<int64_t, int32_t>> pokes;
  for (int32_t bad : {-5, 1, 3, 1 << 30, file_ + 7}) pokes.emplace_back(dir_ - 1 + 8, bad);
  pokes.emplace_back(file_ - 1 + 12, file_);
  pokes.emplace_back(disc_ - 1 + 4, disc_);
  for (const auto& [offset, value] : pokes) {
    std::string bytes = good_;
    Poke32(&bytes, offset, value);
    bool opened = false;
    const auto problems = OpenWalkAndCheck(bytes, &opened);
    ASSERT_TRUE(opened);
    EXPECT_FALSE(walkOk_) << offset << ": " << value;
    EXPECT_FALSE(problems.empty()) << offset << ": " << value;
  }
}

TEST_F(DamageTest, HeaderLinksOutsideTheFileRefuseTheCatalogUntouched) {
  std::string bytes = good_;
  Poke32(&bytes, 18, static_cast<int32_t>(bytes.size()) + 10);  // first disc
  bool opened = true;
  OpenWalkAndCheck(bytes, &opened);
  EXPECT_FALSE(opened);
  EXPECT_EQ(ReadFileBytes(Path()), bytes);
}

TEST_F(DamageTest, TextCountsOutOfBounds) {
  for (int32_t count : {-1, INT32_MAX, static_cast<int32_t>(good_.size())}) {
    std::string bytes = good_;
    Poke32(&bytes, file_ - 1 + 60, count);  // the first file's name count
    bool opened = false;
    const auto problems = OpenWalkAndCheck(bytes, &opened);
    ASSERT_TRUE(opened);
    EXPECT_FALSE(walkOk_);
    ASSERT_FALSE(problems.empty());
    EXPECT_NE(problems.front().find("text lies outside"), std::string::npos) << problems.front();
  }
}

TEST_F(DamageTest, CountsAndBytesThatDoNotAddUp) {
  std::string bytes = good_;
  Poke32(&bytes, 34, 7);               // disc count
  Poke32(&bytes, disc_ - 1 + 112, 5);  // the disc's bytes used
  Poke32(&bytes, dir_ - 1 + 12, 999);  // a previous link
  bool opened = false;
  const auto problems = OpenWalkAndCheck(bytes, &opened);
  ASSERT_TRUE(opened);
  EXPECT_EQ(problems.size(), 3u);
}

TEST_F(DamageTest, TruncatedAndFlippedFilesNeverCrash) {
  for (size_t keep : {size_t{60}, size_t{118}, good_.size() / 2, good_.size() - 1}) {
    bool opened = false;
    OpenWalkAndCheck(good_.substr(0, keep), &opened);
  }
  std::mt19937 rng(7);
  for (int i = 0; i < 200; ++i) {
    std::string bytes = good_;
    for (int k = 0; k < 4; ++k) bytes[rng() % bytes.size()] ^= static_cast<char>(1 << (rng() % 8));
    bool opened = false;
    const auto problems = OpenWalkAndCheck(bytes, &opened);
    // Whatever stops a walk is damage the check must name.
    if (opened && !walkOk_) {
      EXPECT_FALSE(problems.empty()) << "trial " << i;
    }
  }
}

TEST_F(DamageTest, WalksPastTheBudgetEndWithTheDataFileError) {
  // Chains that loop into each other or are shared by many owners make a walk
  // of everything endless or quadratic; the budget keeps it linear.
  std::string bytes = good_;
  WriteFileBytes(Path(), bytes);
  classData data;
  ASSERT_TRUE(data.OpenFiles(Path(), false, true));
  data.file()->ArmWalkBudget(0);  // nothing left: the first load ends the walk
  EXPECT_TRUE(CatalogCursors(data).FirstDisc().isEof());
  EXPECT_TRUE(data.status().IsCorruption());

  ASSERT_TRUE(data.OpenFiles(Path(), false, true));
  data.file()->ArmWalkBudget(1);
  int64_t loads = 0;
  classCd cd = data.CdCursor();
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    for (int round = 0; round < 1000 && data.ok(); ++round) {
      for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) ++loads;
    }
  }
  EXPECT_FALSE(data.ok()) << "re-walking without end is cut off";
  EXPECT_LT(loads, static_cast<int64_t>(bytes.size()));
}

}  // namespace
}  // namespace gorvan::test
