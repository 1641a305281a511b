#pragma once
// CatalogFile: the open catalog as every cursor sees it — the data file, the
// header record, the text encoding and a sticky error. Cursors hold a pointer to
// it the way they would hold a file number.
//
// Every record read is checked: the id must leave room for the whole block
// inside the file and the block must carry its own id (categories also their
// kind byte). Every text read is checked: count >= 0, inside the file. The first
// failure is kept (error()) and turns later walks into clean ends, so that a
// damaged catalog gives the data-file error and never a crash or a hang.
//
// Thread contract. A CatalogFile and every cursor over it are used by one
// thread at a time: the thread that opened it, or the thread of a job it was
// handed to for the job's length (ThreadHandover). Reading changes state as
// well (the read window, the scratch buffers, the sticky error), so a second
// thread that reads at the same time needs a CatalogFile of its own
// (classData::OpenReader). Debug builds assert the owning thread on every read
// and write.

#include <cassert>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "catalog/DataFile.h"
#include "catalog/Records.h"
#include "catalog/Status.h"
#include "catalog/TextCodec.h"

namespace gorvan {

class CatalogFile {
 public:
  CatalogFile(std::unique_ptr<DataFile> data, std::string path);

  DataFile& data() { return *data_; }
  const std::string& path() const { return path_; }
  HeaderRecord& header() { return header_; }
  const HeaderRecord& header() const { return header_; }
  TextEncoding encoding() const { return encoding_; }
  // Takes the encoding from the header's marker; call after the header is set.
  void UpdateEncoding() {
    encoding_ = header_.IsUtf8() ? TextEncoding::kUtf8 : TextEncoding::kWindows1252;
  }
  int64_t Length() const { return data_->Length(); }

  // True when a block of size bytes at id lies inside the file.
  bool IsBlockInside(int32_t id, size_t size) const {
    return id >= 1 && static_cast<int64_t>(id) - 1 + static_cast<int64_t>(size) <= Length();
  }
  // The most records of a size one chain could hold; a longer walk is a cycle.
  int64_t MaxChainLength(size_t size) const { return Length() / static_cast<int64_t>(size) + 1; }

  // Hands the file to the calling thread for the object's lifetime and back
  // to its previous owner afterwards: a job running on a worker thread takes
  // the catalog it was given this way, while the opening thread leaves it alone.
  class ThreadHandover {
   public:
    explicit ThreadHandover(CatalogFile* file)
        : file_(file), previous_(file ? file->owner_ : std::thread::id()) {
      if (file_) file_->owner_ = std::this_thread::get_id();
    }
    ~ThreadHandover() {
      if (file_) file_->owner_ = previous_;
    }
    ThreadHandover(const ThreadHandover&) = delete;
    ThreadHandover& operator=(const ThreadHandover&) = delete;

   private:
    CatalogFile* file_;
    std::thread::id previous_;
  };
  bool OnOwnerThread() const { return owner_ == std::this_thread::get_id(); }
  std::thread::id owner() const { return owner_; }
  void SetOwner(std::thread::id owner) { owner_ = owner; }

  bool Read(int32_t id, HeaderRecord* out);
  bool Read(int32_t id, CdRecord* out);
  bool Read(int32_t id, DirRecord* out);
  bool Read(int32_t id, FileRecord* out);
  bool Read(int32_t id, CatRecord* out);

  // Loads a record for an id that comes from outside (a user, a command
  // line): false, with the error state left clear, when the id does not lie
  // inside the file or the block there is no record of this kind. Only a
  // failed read of the file itself is an error.
  bool TryRead(int32_t id, CdRecord* out);
  bool TryRead(int32_t id, DirRecord* out);
  bool TryRead(int32_t id, FileRecord* out);
  bool TryRead(int32_t id, CatRecord* out);

  // Writes a block at its own id.
  template <typename Record>
  bool Write(const Record& rec) {
    assert(OnOwnerThread());
    uint8_t buf[Record::kSize];
    rec.EncodeTo(buf);
    return Check(data_->Write(rec.id, buf, Record::kSize));
  }
  bool WriteHeader();

  // Appends a zeroed block of size bytes and returns its id (0 on failure).
  int32_t AppendBlock(size_t size);

  // Text as UTF-8 (converted from the catalog's encoding); "" on failure.
  bool ReadText(const TextRef& ref, std::string* out);
  // Text bytes exactly as stored.
  bool ReadRawText(const TextRef& ref, std::string* out);
  // The stored bytes of a text without a copy: valid only until the next read
  // or write of this catalog. For walks that test a text and keep few.
  bool PeekRawText(const TextRef& ref, std::string_view* out) {
    assert(OnOwnerThread());
    if (ref.count > 0 && ref.pos >= 1 &&
        static_cast<int64_t>(ref.pos) - 1 + ref.count <= Length()) {
      if (const uint8_t* p = data_->Peek(ref.pos, static_cast<size_t>(ref.count))) {
        *out = std::string_view(reinterpret_cast<const char*>(p), static_cast<size_t>(ref.count));
        return true;
      }
    }
    return PeekRawTextSlow(ref, out);
  }
  // The catalog's text-writing rule: the old count leaves *bytesDelta, the new
  // text is appended at the end (never over the old bytes) and its count joins
  // *bytesDelta; the empty text stores position 0 and count 0 and appends
  // nothing. The caller rewrites the record afterwards.
  bool WriteText(std::string_view utf8, TextRef* ref, int64_t* bytesDelta);
  bool WriteRawText(std::string_view raw, TextRef* ref, int64_t* bytesDelta);

  // Adds delta to the bytes used of a disc (after edits outside a scan).
  bool AdjustCdBytes(int32_t cdId, int64_t delta);

  // Walk budget. A damaged file can link its chains into loops or share one
  // chain between many owners, so that walking "everything" never ends or takes
  // quadratic time. Once armed, the cursors may load at most `factor` times as
  // many records as the file could hold; past that the walk ends with the
  // data-file error. One-shot commands arm it; a long-lived program re-arms it
  // before each full walk.
  void ArmWalkBudget(int64_t factor = 16) {
    walkBudget_ = factor * (Length() / static_cast<int64_t>(CatRecord::kSize) + 1);
  }
  // Counts one record load against the budget; false (and the error) when spent.
  bool ChargeWalk() {
    if (walkBudget_ < 0 || --walkBudget_ >= 0) return true;
    walkBudget_ = 0;
    return Fail(Status::Corruption(
        "the chains hold more records than the file can; they loop or are shared"));
  }

  bool ok() const { return error_.ok(); }
  const Status& error() const { return error_; }
  // Records the first failure; returns false so callers can `return Fail(...)`.
  bool Fail(const Status& s);
  void ClearError() { error_ = Status::OK(); }

  // Characters replaced by "?" because the catalog's encoding cannot hold them.
  size_t warnings() const { return warnings_; }
  size_t TakeWarnings() {
    const size_t n = warnings_;
    warnings_ = 0;
    return n;
  }

 private:
  bool Check(const Status& s) { return s.ok() ? true : Fail(s); }
  bool PeekRawTextSlow(const TextRef& ref, std::string_view* out);
  // The block's bytes: in place when the data file has them in memory, else
  // read into buf. Null on failure (recorded).
  const uint8_t* ReadBlock(int32_t id, size_t size, uint8_t* buf, const char* kind) {
    assert(OnOwnerThread());
    if (error_.ok() && IsBlockInside(id, size)) {
      if (const uint8_t* p = data_->Peek(id, size)) return p;
    }
    return ReadBlockSlow(id, size, buf, kind);
  }
  const uint8_t* ReadBlockSlow(int32_t id, size_t size, uint8_t* buf, const char* kind);

  std::unique_ptr<DataFile> data_;
  std::string path_;
  HeaderRecord header_;
  TextEncoding encoding_ = TextEncoding::kWindows1252;
  int64_t walkBudget_ = -1;  // -1: not armed
  Status error_;
  size_t warnings_ = 0;
  std::string scratch_;
  std::string peeked_;  // PeekRawText's copy when the bytes are not in memory
  std::thread::id owner_ = std::this_thread::get_id();
};

}  // namespace gorvan
