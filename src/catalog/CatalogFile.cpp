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

bool CatalogFile::ReadBlock(int32_t id, size_t size, uint8_t* buf, const char* kind) {
  if (!error_.ok()) return false;
  if (!IsBlockInside(id, size)) {
    return Fail(Status::Corruption(std::string("a link to a ") + kind + " points outside the file (" +
                                   std::to_string(id) + ")"));
  }
  return Check(data_->Read(id, buf, size));
}

bool CatalogFile::Read(int32_t id, HeaderRecord* out) {
  uint8_t buf[HeaderRecord::kSize];
  if (!ReadBlock(id, sizeof buf, buf, "header")) return false;
  *out = HeaderRecord::DecodeFrom(buf);
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
  if (!ReadBlock(id, sizeof buf, buf, "disc")) return false;
  *out = CdRecord::DecodeFrom(buf);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("disc", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, DirRecord* out) {
  uint8_t buf[DirRecord::kSize];
  if (!ReadBlock(id, sizeof buf, buf, "folder")) return false;
  *out = DirRecord::DecodeFrom(buf);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("folder", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, FileRecord* out) {
  uint8_t buf[FileRecord::kSize];
  if (!ReadBlock(id, sizeof buf, buf, "file")) return false;
  *out = FileRecord::DecodeFrom(buf);
  if (out->id != id) return Fail(Status::Corruption(WrongKind("file", id)));
  return true;
}

bool CatalogFile::Read(int32_t id, CatRecord* out) {
  uint8_t buf[CatRecord::kSize];
  if (!ReadBlock(id, sizeof buf, buf, "category")) return false;
  *out = CatRecord::DecodeFrom(buf);
  if (out->id != id || out->kind != CatRecord::kKind) {
    return Fail(Status::Corruption(WrongKind("category", id)));
  }
  return true;
}

bool CatalogFile::WriteHeader() {
  uint8_t buf[HeaderRecord::kSize];
  header_.EncodeTo(buf);
  return Check(data_->Write(1, buf, sizeof buf));
}

int32_t CatalogFile::AppendBlock(size_t size) {
  static constexpr uint8_t kZeros[128] = {};
  int64_t pos = 0;
  if (!Check(data_->Append(kZeros, std::min(size, sizeof kZeros), &pos))) return 0;
  return static_cast<int32_t>(pos);
}

bool CatalogFile::ReadRawText(const TextRef& ref, std::string* out) {
  out->clear();
  if (ref.count == 0) return true;
  if (ref.count < 0 || ref.pos < 1 ||
      static_cast<int64_t>(ref.pos) - 1 + ref.count > Length()) {
    return Fail(Status::Corruption("a text lies outside the file (position " +
                                   std::to_string(ref.pos) + ", " + std::to_string(ref.count) +
                                   " bytes)"));
  }
  out->resize(static_cast<size_t>(ref.count));
  if (!Check(data_->Read(ref.pos, out->data(), out->size()))) {
    out->clear();
    return false;
  }
  return true;
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
