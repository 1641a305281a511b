// A catalog assembled byte by byte, as another program following the format
// would write it, reads correctly through the object model in both encodings.
#include <gtest/gtest.h>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/Coding.h"

namespace gorvan::test {
namespace {

class ForeignBytes {
 public:
  int32_t Block(size_t size) {
    const auto id = static_cast<int32_t>(bytes_.size() + 1);
    bytes_.append(size, '\0');
    return id;
  }
  std::pair<int32_t, int32_t> Text(const std::string& text) {
    const auto pos = static_cast<int32_t>(bytes_.size() + 1);
    bytes_ += text;
    return {pos, static_cast<int32_t>(text.size())};
  }
  void I16(int32_t id, int off, int16_t v) { EncodeFixed16(At(id, off), v); }
  void I32(int32_t id, int off, int32_t v) { EncodeFixed32(At(id, off), v); }
  void F64(int32_t id, int off, double v) { EncodeDouble(At(id, off), v); }
  void SetText(int32_t id, int off, std::pair<int32_t, int32_t> t) {
    I32(id, off, t.first);
    I32(id, off + 4, t.second);
  }
  std::string& bytes() { return bytes_; }

 private:
  uint8_t* At(int32_t id, int off) { return reinterpret_cast<uint8_t*>(&bytes_[id - 1 + off]); }
  std::string bytes_;
};

std::string BuildCatalog(bool utf8, const std::string& discName) {
  ForeignBytes f;
  const int32_t h = f.Block(118);
  f.bytes().replace(0, 4, "KTRV");
  f.I16(h, 4, 2);
  f.I16(h, 6, 1);
  f.I16(h, 8, 4321);
  if (utf8) f.bytes().replace(50, 4, "UTF8");
  const auto name = f.Text("Old catalog");
  f.SetText(h, 78, name);
  f.I32(h, 66, 118 + 11);

  const int32_t cat = f.Block(61);
  f.bytes()[cat - 1] = 2;
  f.I32(cat, 1, cat);
  const auto catName = f.Text("Films");
  f.SetText(cat, 21, catName);
  f.I32(cat, 57, 61 + 5);

  const int32_t cd = f.Block(116);
  f.I32(cd, 0, cd);
  const auto cdName = f.Text(discName);
  f.SetText(cd, 20, cdName);
  f.F64(cd, 96, 2.0);
  f.I32(cd, 104, 5);
  f.I32(cd, 108, cat);
  const int32_t dir = f.Block(92);
  f.I32(dir, 0, dir);
  f.I32(dir, 4, cd);
  f.SetText(dir, 44, f.Text("\\"));
  f.SetText(dir, 52, f.Text("VIDEO_TS"));
  const int32_t file = f.Block(80);
  f.I32(file, 0, file);
  f.I32(file, 4, dir);
  f.I32(file, 8, cd);
  f.F64(file, 28, 1073741824.0);
  f.SetText(file, 56, f.Text("VTS_01_1.VOB"));
  f.I32(dir, 16, file);
  f.I32(dir, 20, file);
  f.I32(cd, 12, dir);
  f.I32(cd, 16, dir);
  f.I32(cd, 112, 116 + static_cast<int32_t>(discName.size()) + 92 + 1 + 8 + 80 + 12);

  f.I32(h, 18, cd);
  f.I32(h, 22, cd);
  f.I32(h, 26, cat);
  f.I32(h, 30, cat);
  f.I32(h, 34, 1);
  f.I32(h, 38, 1);
  return f.bytes();
}

using ForeignCatalogTest = CatalogTest;

TEST_F(ForeignCatalogTest, ReadsInBothEncodings) {
  for (bool utf8 : {false, true}) {
    const std::string stored = utf8 ? "Am\xC3\xA9lie" : "Am\xE9lie";  // "Amélie"
    WriteFileBytes(Path(), BuildCatalog(utf8, stored));
    ASSERT_TRUE(data_.OpenFiles(Path(), true, true)) << data_.GetErrorText();
    EXPECT_EQ(data_.VersionRevision(), 4321);
    EXPECT_EQ(data_.GetDataName(), "Old catalog");
    classCd& cd = cur_.FirstDisc();
    ASSERT_FALSE(cd.isEof());
    EXPECT_EQ(cd.GetCdName(), "Am\xC3\xA9lie");
    EXPECT_EQ(cd.GetCdIconKey(), "cdrom");
    EXPECT_EQ(cur_.Cat(cd.GetCdCategory()).GetCatName(), "Films");
    classDir& dir = cd.GetDirFirst();
    EXPECT_EQ(dir.GetDirFullName(), "\\VIDEO_TS");
    ClassFile& file = dir.GetFileFirst();
    EXPECT_EQ(file.GetFileName(), "VTS_01_1.VOB");
    EXPECT_EQ(file.GetFileSize(), 1073741824.0);
    CatalogCheck check(data_.file());
    const std::vector<std::string> problems = check.Run();
    EXPECT_TRUE(problems.empty()) << problems.front();
    EXPECT_EQ(check.garbage(), 0);

    // Edits keep the catalog's encoding.
    ASSERT_TRUE(cd.SetCdNotes("caf\xC3\xA9"));
    std::string raw;
    data_.file()->ReadRawText(cd.record().notes, &raw);
    EXPECT_EQ(raw, utf8 ? "caf\xC3\xA9" : "caf\xE9");
    data_.CloseFiles();
  }
}

}  // namespace
}  // namespace gorvan::test
