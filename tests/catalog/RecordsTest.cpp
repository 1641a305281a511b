// Byte layouts: the codecs against hand-placed bytes, and a new catalog file
// byte for byte.
#include <gtest/gtest.h>

#include <cstring>

#include "catalog/Coding.h"
#include "catalog/Records.h"
#include "catalog/classData.h"
#include "support/TempDir.h"

namespace gorvan {
namespace {

TEST(CodingTest, LittleEndianByteOrderIsPinned) {
  uint8_t buf[8];
  EncodeFixed16(buf, static_cast<int16_t>(0x0102));
  EXPECT_EQ(buf[0], 0x02);
  EXPECT_EQ(buf[1], 0x01);
  EncodeFixed32(buf, -2);
  EXPECT_EQ(std::memcmp(buf, "\xFE\xFF\xFF\xFF", 4), 0);
  EXPECT_EQ(DecodeFixed32(buf), -2);
  EncodeDouble(buf, 2.0);  // 0x4000000000000000
  EXPECT_EQ(std::memcmp(buf, "\0\0\0\0\0\0\0\x40", 8), 0);
  EXPECT_EQ(DecodeDouble(buf), 2.0);
  EncodeFixed16(buf, -32768);
  EXPECT_EQ(DecodeFixed16(buf), -32768);
}

TEST(RecordsTest, FieldsLandAtTheirOffsets) {
  CdRecord cd;
  cd.id = 0x11;
  cd.basePath = {0x22, 3};
  cd.totalSize = 2.0;
  cd.diskId = 0x33;
  cd.iconKey = {0x44, 5};
  cd.lastScanned = 2.0;
  cd.mediaType = 105;
  cd.category = 0x55;
  cd.bytesUsed = 116;
  uint8_t b[CdRecord::kSize] = {};
  cd.EncodeTo(b);
  EXPECT_EQ(DecodeFixed32(b + 0), 0x11);
  EXPECT_EQ(DecodeFixed32(b + 44), 0x22);
  EXPECT_EQ(DecodeFixed32(b + 48), 3);
  EXPECT_EQ(DecodeDouble(b + 52), 2.0);
  EXPECT_EQ(DecodeFixed32(b + 76), 0x33);
  EXPECT_EQ(DecodeFixed32(b + 80), 0x44);
  EXPECT_EQ(DecodeDouble(b + 96), 2.0);
  EXPECT_EQ(DecodeFixed32(b + 104), 105);
  EXPECT_EQ(DecodeFixed32(b + 108), 0x55);
  EXPECT_EQ(DecodeFixed32(b + 112), 116);

  DirRecord d;
  d.attr = 16;
  d.path = {7, 8};
  d.countOfFiles = 9;
  d.countOfFilesDirect = 10;
  uint8_t db[DirRecord::kSize] = {};
  d.EncodeTo(db);
  EXPECT_EQ(DecodeFixed32(db + 40), 16);
  EXPECT_EQ(DecodeFixed32(db + 44), 7);
  EXPECT_EQ(DecodeFixed32(db + 76), 9);
  EXPECT_EQ(DecodeFixed32(db + 84), 10);

  FileRecord f;
  f.firstZip = 5;
  f.size = 1.5;
  f.extra = {12, 13};
  uint8_t fb[FileRecord::kSize] = {};
  f.EncodeTo(fb);
  EXPECT_EQ(DecodeFixed32(fb + 20), 5);
  EXPECT_EQ(DecodeDouble(fb + 28), 1.5);
  EXPECT_EQ(DecodeFixed32(fb + 72), 12);
  EXPECT_EQ(DecodeFixed32(fb + 76), 13);

  CatRecord c;
  c.id = 0x0A0B0C0D;
  c.parent = 7;
  c.bytesUsed = 61;
  uint8_t cb[CatRecord::kSize] = {};
  c.EncodeTo(cb);
  EXPECT_EQ(cb[0], 2);  // record kind
  EXPECT_EQ(DecodeFixed32(cb + 1), 0x0A0B0C0D);
  EXPECT_EQ(DecodeFixed32(cb + 53), 7);
  EXPECT_EQ(DecodeFixed32(cb + 57), 61);

  // The header's fields beyond those a new catalog pins, and back.
  HeaderRecord h;
  h.signature = {'K', 'T', 'R', 'V'};
  h.versionRevision = 77;
  h.catCount = 3;
  h.reserved[15] = 0xAB;
  h.password = {100, 4};
  uint8_t hb[HeaderRecord::kSize];
  h.EncodeTo(hb);
  EXPECT_EQ(DecodeFixed16(hb + 8), 77);
  EXPECT_EQ(DecodeFixed32(hb + 38), 3);
  EXPECT_EQ(hb[65], 0xAB);
  EXPECT_EQ(DecodeFixed32(hb + 110), 100);
  HeaderRecord back = HeaderRecord::DecodeFrom(hb);
  EXPECT_EQ(back.reserved[15], 0xAB);
  EXPECT_EQ(back.password.count, 4);
}

TEST(NewCatalogTest, IsTheHeaderPlusTheNameTextByteForByteAndMarksUtf8) {
  test::TempDir dir;
  classData data;
  data.SetNewCatalogEncoding(TextEncoding::kWindows1252);
  ASSERT_TRUE(data.OpenFiles(dir.File("new.cd"), false, true));
  data.CloseFiles();
  const std::string bytes = test::ReadFileBytes(dir.File("new.cd"));
  ASSERT_EQ(bytes.size(), 124u);
  const auto* b = reinterpret_cast<const uint8_t*>(bytes.data());
  EXPECT_EQ(bytes.substr(0, 4), "KTRV");
  EXPECT_EQ(DecodeFixed16(b + 4), 2);
  EXPECT_EQ(DecodeFixed16(b + 6), 1);
  EXPECT_EQ(DecodeFixed16(b + 8), GORVAN_VERSION_REVISION);
  EXPECT_GT(DecodeDouble(b + 10), 40000.0);  // created: now, as an OLE date
  for (int off = 18; off < 42; off += 4) EXPECT_EQ(DecodeFixed32(b + off), 0) << off;
  EXPECT_EQ(DecodeDouble(b + 42), DecodeDouble(b + 10));
  for (int off = 50; off < 66; ++off) EXPECT_EQ(b[off], 0) << off;  // no UTF-8 marker
  EXPECT_EQ(DecodeFixed32(b + 66), 124);                            // bytes used: header + "Gorvan"
  EXPECT_EQ(DecodeFixed32(b + 78), 119);  // the name text follows the header
  EXPECT_EQ(DecodeFixed32(b + 82), 6);
  for (int off : {70, 74, 86, 90, 94, 98, 102, 106, 110, 114}) EXPECT_EQ(DecodeFixed32(b + off), 0);
  EXPECT_EQ(bytes.substr(118), "Gorvan");

  // A UTF-8 catalog is marked; a plain create writes no texts.
  classData utf8Data;
  ASSERT_TRUE(utf8Data.OpenFiles(dir.File("u.cd"), false, false));
  utf8Data.CloseFiles();
  const std::string utf8 = test::ReadFileBytes(dir.File("u.cd"));
  ASSERT_EQ(utf8.size(), 118u);
  EXPECT_EQ(utf8.substr(50, 4), "UTF8");
}

}  // namespace
}  // namespace gorvan
