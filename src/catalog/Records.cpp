#include "catalog/Records.h"

#include <algorithm>

#include "catalog/Coding.h"

namespace gorvan {
namespace {

// A cursor over a block: each Put/Get moves on by the field's width, so the
// field order below is the byte layout.
class Writer {
 public:
  explicit Writer(uint8_t* p) : p_(p) {}
  void I16(int16_t v) { EncodeFixed16(p_, v), p_ += 2; }
  void I32(int32_t v) { EncodeFixed32(p_, v), p_ += 4; }
  void F64(double v) { EncodeDouble(p_, v), p_ += 8; }
  void Text(const TextRef& t) { I32(t.pos), I32(t.count); }
  template <size_t N>
  void Bytes(const std::array<uint8_t, N>& a) {
    std::copy(a.begin(), a.end(), p_), p_ += N;
  }
  void U8(uint8_t v) { *p_++ = v; }

 private:
  uint8_t* p_;
};

class Reader {
 public:
  explicit Reader(const uint8_t* p) : p_(p) {}
  int16_t I16() { return p_ += 2, DecodeFixed16(p_ - 2); }
  int32_t I32() { return p_ += 4, DecodeFixed32(p_ - 4); }
  double F64() { return p_ += 8, DecodeDouble(p_ - 8); }
  TextRef Text() {
    TextRef t;
    t.pos = I32();
    t.count = I32();
    return t;
  }
  template <size_t N>
  void Bytes(std::array<uint8_t, N>* a) {
    std::copy(p_, p_ + N, a->begin()), p_ += N;
  }
  uint8_t U8() { return *p_++; }

 private:
  const uint8_t* p_;
};

int64_t Count(const TextRef& t) { return t.count > 0 ? t.count : 0; }

}  // namespace

bool HeaderRecord::HasSignature() const {
  return signature == std::array<uint8_t, 4>{'K', 'T', 'R', 'V'};
}

bool HeaderRecord::IsUtf8() const {
  return reserved[0] == 'U' && reserved[1] == 'T' && reserved[2] == 'F' && reserved[3] == '8';
}

void HeaderRecord::EncodeTo(uint8_t* dst) const {
  Writer w(dst);
  w.Bytes(signature);
  w.I16(versionMajor);
  w.I16(versionMinor);
  w.I16(versionRevision);
  w.F64(created);
  w.I32(firstCd);
  w.I32(lastCd);
  w.I32(firstCat);
  w.I32(lastCat);
  w.I32(cdCount);
  w.I32(catCount);
  w.F64(lastOpened);
  w.Bytes(reserved);
  w.I32(bytesUsed);
  for (const TextRef* t : {&font, &name, &notes, &extra, &iconKey, &password}) w.Text(*t);
}

void HeaderRecord::Decode(const uint8_t* src, HeaderRecord* out) {
  Reader r(src);
  HeaderRecord& h = *out;
  r.Bytes(&h.signature);
  h.versionMajor = r.I16();
  h.versionMinor = r.I16();
  h.versionRevision = r.I16();
  h.created = r.F64();
  h.firstCd = r.I32();
  h.lastCd = r.I32();
  h.firstCat = r.I32();
  h.lastCat = r.I32();
  h.cdCount = r.I32();
  h.catCount = r.I32();
  h.lastOpened = r.F64();
  r.Bytes(&h.reserved);
  h.bytesUsed = r.I32();
  for (TextRef* t : {&h.font, &h.name, &h.notes, &h.extra, &h.iconKey, &h.password}) *t = r.Text();
}

void CdRecord::EncodeTo(uint8_t* dst) const {
  Writer w(dst);
  w.I32(id);
  w.I32(next);
  w.I32(prev);
  w.I32(firstDir);
  w.I32(lastDir);
  w.Text(name);
  w.Text(notes);
  w.Text(label);
  w.Text(basePath);
  w.F64(totalSize);
  w.F64(freeSpace);
  w.Text(extra);
  w.I32(diskId);
  w.Text(iconKey);
  w.I32(numOfSubdirs);
  w.I32(numOfFiles);
  w.F64(lastScanned);
  w.I32(mediaType);
  w.I32(category);
  w.I32(bytesUsed);
}

void CdRecord::Decode(const uint8_t* src, CdRecord* out) {
  Reader r(src);
  CdRecord& c = *out;
  c.id = r.I32();
  c.next = r.I32();
  c.prev = r.I32();
  c.firstDir = r.I32();
  c.lastDir = r.I32();
  c.name = r.Text();
  c.notes = r.Text();
  c.label = r.Text();
  c.basePath = r.Text();
  c.totalSize = r.F64();
  c.freeSpace = r.F64();
  c.extra = r.Text();
  c.diskId = r.I32();
  c.iconKey = r.Text();
  c.numOfSubdirs = r.I32();
  c.numOfFiles = r.I32();
  c.lastScanned = r.F64();
  c.mediaType = r.I32();
  c.category = r.I32();
  c.bytesUsed = r.I32();
}

void DirRecord::EncodeTo(uint8_t* dst) const {
  Writer w(dst);
  w.I32(id);
  w.I32(cdId);
  w.I32(next);
  w.I32(prev);
  w.I32(firstFile);
  w.I32(lastFile);
  w.F64(size);
  w.F64(date);
  w.I32(attr);
  w.Text(path);
  w.Text(name);
  w.Text(notes);
  w.Text(extra);
  w.I32(countOfFiles);
  w.I32(countOfDirs);
  w.I32(countOfFilesDirect);
  w.I32(reserved);
}

void DirRecord::Decode(const uint8_t* src, DirRecord* out) {
  Reader r(src);
  DirRecord& d = *out;
  d.id = r.I32();
  d.cdId = r.I32();
  d.next = r.I32();
  d.prev = r.I32();
  d.firstFile = r.I32();
  d.lastFile = r.I32();
  d.size = r.F64();
  d.date = r.F64();
  d.attr = r.I32();
  d.path = r.Text();
  d.name = r.Text();
  d.notes = r.Text();
  d.extra = r.Text();
  d.countOfFiles = r.I32();
  d.countOfDirs = r.I32();
  d.countOfFilesDirect = r.I32();
  d.reserved = r.I32();
}

void FileRecord::EncodeTo(uint8_t* dst) const {
  Writer w(dst);
  w.I32(id);
  w.I32(dirId);
  w.I32(cdId);
  w.I32(next);
  w.I32(prev);
  w.I32(firstZip);
  w.I32(lastZip);
  w.F64(size);
  w.F64(date);
  w.I32(attr);
  w.Text(path);
  w.Text(name);
  w.Text(notes);
  w.Text(extra);
}

void FileRecord::Decode(const uint8_t* src, FileRecord* out) {
  Reader r(src);
  FileRecord& f = *out;
  f.id = r.I32();
  f.dirId = r.I32();
  f.cdId = r.I32();
  f.next = r.I32();
  f.prev = r.I32();
  f.firstZip = r.I32();
  f.lastZip = r.I32();
  f.size = r.F64();
  f.date = r.F64();
  f.attr = r.I32();
  f.path = r.Text();
  f.name = r.Text();
  f.notes = r.Text();
  f.extra = r.Text();
}

void CatRecord::EncodeTo(uint8_t* dst) const {
  Writer w(dst);
  w.U8(kind);
  w.I32(id);
  w.I32(next);
  w.I32(prev);
  w.F64(created);
  w.Text(name);
  w.Text(notes);
  w.Text(extra);
  w.Text(iconKey);
  w.I32(parent);
  w.I32(bytesUsed);
}

void CatRecord::Decode(const uint8_t* src, CatRecord* out) {
  Reader r(src);
  CatRecord& c = *out;
  c.kind = r.U8();
  c.id = r.I32();
  c.next = r.I32();
  c.prev = r.I32();
  c.created = r.F64();
  c.name = r.Text();
  c.notes = r.Text();
  c.extra = r.Text();
  c.iconKey = r.Text();
  c.parent = r.I32();
  c.bytesUsed = r.I32();
}

void CopyDiscValues(const CdRecord& from, CdRecord* to) {
  to->totalSize = from.totalSize;
  to->freeSpace = from.freeSpace;
  to->diskId = from.diskId;
  to->numOfSubdirs = from.numOfSubdirs;
  to->numOfFiles = from.numOfFiles;
  to->lastScanned = from.lastScanned;
  to->mediaType = from.mediaType;
  to->category = from.category;
}

int64_t TextBytes(const HeaderRecord& r) {
  return Count(r.font) + Count(r.name) + Count(r.notes) + Count(r.extra) + Count(r.iconKey) +
         Count(r.password);
}
int64_t TextBytes(const CdRecord& r) {
  return Count(r.name) + Count(r.notes) + Count(r.label) + Count(r.basePath) + Count(r.extra) +
         Count(r.iconKey);
}
int64_t TextBytes(const DirRecord& r) {
  return Count(r.path) + Count(r.name) + Count(r.notes) + Count(r.extra);
}
int64_t TextBytes(const FileRecord& r) {
  return Count(r.path) + Count(r.name) + Count(r.notes) + Count(r.extra);
}
int64_t TextBytes(const CatRecord& r) {
  return Count(r.name) + Count(r.notes) + Count(r.extra) + Count(r.iconKey);
}

}  // namespace gorvan
