#include "catalog/CatalogFile.h"

#include <algorithm>

#include "catalog/Coding.h"

namespace gorvan {

CatalogFile::CatalogFile(std::unique_ptr<DataFile> data, std::string path)
    : data_(std::move(data)), path_(std::move(path)) {}

bool CatalogFile::Fail(const Status& s) {
  if (error_.ok()) error_ = s;
  return false;
}

const uint8_t* CatalogFile::ReadBlockSlow(int32_t id, size_t size, uint8_t* buf,
                                          const char* kind) {
  if (!error_.ok()) return nullptr;
  if (!IsBlockInside(id, size)) {
    Fail(Status::Corruption(std::string("a link to a ") + kind + " points outside the file (" +
                            std::to_string(id) + ")"));
    return nullptr;
  }
  if (const uint8_t* p = data_->Peek(id, size)) return p;
  return Check(data_->Read(id, buf, size)) ? buf : nullptr;
}

bool CatalogFile::Read(int32_t id, HeaderRecord* out) {
  uint8_t buf[HeaderRecord::kSize];
  const uint8_t* p = ReadBlock(id, sizeof buf, buf, "header");
  if (!p) return false;
  HeaderRecord::Decode(p, out);
  return true;
}

namespace {
std::string WrongKind(const char* kind, int32_t id) {
  return std::string("the ") + kind + " link " + std::to_string(id) +
         " does not point at a record of its kind";
}
}  // namespace

bool CatalogFile::Read(int32_t id, CdRecord* out) {
  uint8_t buf[CdRecord::kSize];
  const uint8_t* p = ReadBlock(id, sizeof buf, buf, "disc");
  if (!p) return false;
  CdRecord::Decode(p, out);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("disc", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, DirRecord* out) {
  uint8_t buf[DirRecord::kSize];
  const uint8_t* p = ReadBlock(id, sizeof buf, buf, "folder");
  if (!p) return false;
  DirRecord::Decode(p, out);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("folder", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, FileRecord* out) {
  uint8_t buf[FileRecord::kSize];
  const uint8_t* p = ReadBlock(id, sizeof buf, buf, "file");
  if (!p) return false;
  FileRecord::Decode(p, out);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("file", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, CatRecord* out) {
  uint8_t buf[CatRecord::kSize];
  const uint8_t* p = ReadBlock(id, sizeof buf, buf, "category");
  if (!p) return false;
  CatRecord::Decode(p, out);
  if (out->id != id || out->kind != CatRecord::kKind) {
    return Fail(Status::Corruption(WrongKind("category", id)));
  }
  return true;
}

namespace {

// The checks of Read without its verdict: whether the block at id can be
// loaded as a record of its kind.
template <typename Record>
bool OwnId(const Record& r, int32_t id) {
  return r.id == id;
}
template <>
bool OwnId(const CatRecord& r, int32_t id) {
  return r.id == id && r.kind == CatRecord::kKind;
}

template <typename Record>
bool TryReadBlock(CatalogFile& f, DataFile& data, int32_t id, Record* out) {
  if (!f.ok() || !f.IsBlockInside(id, Record::kSize)) return false;
  uint8_t buf[Record::kSize];
  const Status s = data.Read(id, buf, sizeof buf);
  if (!s.ok()) return f.Fail(s);
  Record rec;
  Record::Decode(buf, &rec);
  if (!OwnId(rec, id)) return false;
  *out = rec;
  return true;
}

}  // namespace

bool CatalogFile::TryRead(int32_t id, CdRecord* out) {
  assert(OnOwnerThread());
  return TryReadBlock(*this, *data_, id, out);
}
bool CatalogFile::TryRead(int32_t id, DirRecord* out) {
  assert(OnOwnerThread());
  return TryReadBlock(*this, *data_, id, out);
}
bool CatalogFile::TryRead(int32_t id, FileRecord* out) {
  assert(OnOwnerThread());
  return TryReadBlock(*this, *data_, id, out);
}
bool CatalogFile::TryRead(int32_t id, CatRecord* out) {
  assert(OnOwnerThread());
  return TryReadBlock(*this, *data_, id, out);
}

bool CatalogFile::WriteHeader() {
  assert(OnOwnerThread());
  uint8_t buf[HeaderRecord::kSize];
  header_.EncodeTo(buf);
  return Check(data_->Write(1, buf, sizeof buf));
}

int32_t CatalogFile::AppendBlock(size_t size) {
  assert(OnOwnerThread());
  static constexpr uint8_t kZeros[128] = {};
  int64_t pos = 0;
  if (!Check(data_->Append(kZeros, std::min(size, sizeof kZeros), &pos))) return 0;
  return static_cast<int32_t>(pos);
}

bool CatalogFile::ReadRawText(const TextRef& ref, std::string* out) {
  assert(OnOwnerThread());
  if (ref.count == 0) {
    out->clear();
    return true;
  }
  if (ref.count < 0 || ref.pos < 1 ||
      static_cast<int64_t>(ref.pos) - 1 + ref.count > Length()) {
    out->clear();
    return Fail(Status::Corruption("a text lies outside the file (position " +
                                   std::to_string(ref.pos) + ", " + std::to_string(ref.count) +
                                   " bytes)"));
  }
  const auto n = static_cast<size_t>(ref.count);
  if (const uint8_t* p = data_->Peek(ref.pos, n)) {
    out->assign(reinterpret_cast<const char*>(p), n);
    return true;
  }
  out->resize(n);
  if (!Check(data_->Read(ref.pos, out->data(), n))) {
    out->clear();
    return false;
  }
  return true;
}

bool CatalogFile::PeekRawTextSlow(const TextRef& ref, std::string_view* out) {
  // Empty, across the read window's end, or damaged: the copying path decides.
  const bool ok = ReadRawText(ref, &peeked_);
  *out = peeked_;
  return ok;
}

bool CatalogFile::ReadText(const TextRef& ref, std::string* out) {
  if (encoding() == TextEncoding::kUtf8) return ReadRawText(ref, out);
  if (!ReadRawText(ref, &scratch_)) {
    out->clear();
    return false;
  }
  TextCodec::Windows1252ToUtf8(scratch_, out);
  return true;
}

bool CatalogFile::WriteRawText(std::string_view raw, TextRef* ref, int64_t* bytesDelta) {
  assert(OnOwnerThread());
  if (!error_.ok()) return false;
  if (raw.size() > static_cast<size_t>(INT32_MAX)) {
    return Fail(Status::InvalidArgument("a text is too long for the catalog"));
  }
  *bytesDelta -= std::max(ref->count, 0);
  if (raw.empty()) {
    *ref = TextRef{};
    return true;
  }
  int64_t pos = 0;
  if (!Check(data_->Append(raw.data(), raw.size(), &pos))) return false;
  ref->pos = static_cast<int32_t>(pos);
  ref->count = static_cast<int32_t>(raw.size());
  *bytesDelta += ref->count;
  return true;
}

bool CatalogFile::WriteText(std::string_view utf8, TextRef* ref, int64_t* bytesDelta) {
  if (encoding() == TextEncoding::kUtf8) return WriteRawText(utf8, ref, bytesDelta);
  warnings_ += TextCodec::Utf8ToWindows1252(utf8, &scratch_);
  return WriteRawText(scratch_, ref, bytesDelta);
}

bool CatalogFile::AdjustCdBytes(int32_t cdId, int64_t delta) {
  if (delta == 0) return true;
  CdRecord cd;
  if (!Read(cdId, &cd)) return false;
  cd.bytesUsed = static_cast<int32_t>(cd.bytesUsed + delta);
  return Write(cd);
}

}  // namespace gorvan
