#pragma once
// The fixed blocks of a catalog file and their byte-exact codecs. Every record
// kind has a plain struct (the in-memory form) and EncodeTo/DecodeFrom, which
// go through the little-endian helpers field by field. docs/catalog-format.md
// describes the same layouts in prose; keep the two in step.

#include <array>
#include <cstddef>
#include <cstdint>

namespace gorvan {

// A text field: 1-based position and byte count of text stored elsewhere in
// the file. Count 0 is the empty text, whatever the position.
struct TextRef {
  int32_t pos = 0;
  int32_t count = 0;
};

struct HeaderRecord {
  static constexpr size_t kSize = 118;
  static constexpr int16_t kVersionMajor = 2;
  static constexpr int16_t kVersionMinor = 1;

  std::array<uint8_t, 4> signature{};
  int16_t versionMajor = 0;
  int16_t versionMinor = 0;
  int16_t versionRevision = 0;
  double created = 0;
  int32_t firstCd = 0;
  int32_t lastCd = 0;
  int32_t firstCat = 0;
  int32_t lastCat = 0;
  int32_t cdCount = 0;
  int32_t catCount = 0;
  double lastOpened = 0;
  std::array<uint8_t, 16> reserved{};  // kept as read; "UTF8" marks a UTF-8 catalog
  int32_t bytesUsed = 0;
  TextRef font, name, notes, extra, iconKey, password;

  bool HasSignature() const;
  bool IsUtf8() const;
  void EncodeTo(uint8_t* dst) const;
  static void Decode(const uint8_t* src, HeaderRecord* out);  // every field is set
  static HeaderRecord DecodeFrom(const uint8_t* src) {
    HeaderRecord rec;
    Decode(src, &rec);
    return rec;
  }
};

struct CdRecord {
  static constexpr size_t kSize = 116;

  int32_t id = 0;
  int32_t next = 0;
  int32_t prev = 0;
  int32_t firstDir = 0;
  int32_t lastDir = 0;
  TextRef name, notes, label, basePath;
  double totalSize = 0;
  double freeSpace = 0;
  TextRef extra;
  int32_t diskId = 0;
  TextRef iconKey;
  int32_t numOfSubdirs = 0;
  int32_t numOfFiles = 0;
  double lastScanned = 0;
  int32_t mediaType = 0;
  int32_t category = 0;
  int32_t bytesUsed = 0;

  void EncodeTo(uint8_t* dst) const;
  static void Decode(const uint8_t* src, CdRecord* out);  // every field is set
  static CdRecord DecodeFrom(const uint8_t* src) {
    CdRecord rec;
    Decode(src, &rec);
    return rec;
  }
};

struct DirRecord {
  static constexpr size_t kSize = 92;

  int32_t id = 0;
  int32_t cdId = 0;
  int32_t next = 0;
  int32_t prev = 0;
  int32_t firstFile = 0;
  int32_t lastFile = 0;
  double size = 0;
  double date = 0;
  int32_t attr = 0;
  TextRef path, name, notes, extra;
  int32_t countOfFiles = 0;
  int32_t countOfDirs = 0;
  int32_t countOfFilesDirect = 0;
  int32_t reserved = 0;

  void EncodeTo(uint8_t* dst) const;
  static void Decode(const uint8_t* src, DirRecord* out);  // every field is set
  static DirRecord DecodeFrom(const uint8_t* src) {
    DirRecord rec;
    Decode(src, &rec);
    return rec;
  }
};

struct FileRecord {
  static constexpr size_t kSize = 80;

  int32_t id = 0;
  int32_t dirId = 0;
  int32_t cdId = 0;
  int32_t next = 0;
  int32_t prev = 0;
  int32_t firstZip = 0;
  int32_t lastZip = 0;
  double size = 0;
  double date = 0;
  int32_t attr = 0;
  TextRef path, name, notes, extra;

  void EncodeTo(uint8_t* dst) const;
  static void Decode(const uint8_t* src, FileRecord* out);  // every field is set
  static FileRecord DecodeFrom(const uint8_t* src) {
    FileRecord rec;
    Decode(src, &rec);
    return rec;
  }
};

struct CatRecord {
  static constexpr size_t kSize = 61;
  static constexpr uint8_t kKind = 2;

  uint8_t kind = kKind;
  int32_t id = 0;
  int32_t next = 0;
  int32_t prev = 0;
  double created = 0;
  TextRef name, notes, extra, iconKey;
  int32_t parent = 0;
  int32_t bytesUsed = 0;

  void EncodeTo(uint8_t* dst) const;
  static void Decode(const uint8_t* src, CatRecord* out);  // every field is set
  static CatRecord DecodeFrom(const uint8_t* src) {
    CatRecord rec;
    Decode(src, &rec);
    return rec;
  }
};

// Copies a disc's values — totals, counts, serial, dates, media type and
// category — but neither its links, its texts nor its bytes used (a rescan
// starting from the previous disc, a copy into another catalog).
void CopyDiscValues(const CdRecord& from, CdRecord* to);

// The bytes the texts of a record occupy.
int64_t TextBytes(const HeaderRecord& r);
int64_t TextBytes(const CdRecord& r);
int64_t TextBytes(const DirRecord& r);
int64_t TextBytes(const FileRecord& r);
int64_t TextBytes(const CatRecord& r);

}  // namespace gorvan
