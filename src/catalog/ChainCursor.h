#pragma once
// ChainCursor: what every cursor object shares — one loaded record of its kind,
// the walk along its chain with a bound on the number of steps (a chain longer
// than the file could hold is a loop), and the reading of its texts.

#include <cstdint>
#include <string>

#include "catalog/CatalogFile.h"
#include "catalog/ChainOps.h"

namespace gorvan {

template <typename Record>
class ChainCursor {
 public:
  ChainCursor(const ChainCursor&) = delete;
  ChainCursor& operator=(const ChainCursor&) = delete;

  // Loads the block at id. A block that fails its checks ends the walk (the
  // buffer is then stale) and records the data-file error.
  bool recordGet(int32_t id) {
    if (!file_->ChargeWalk() || !file_->Read(id, &rec_)) return eof_ = true, false;
    eof_ = false;
    return true;
  }
  bool recordWrite() { return file_->Write(rec_); }
  // Writes the buffer after a field change; every setter calls it.
  bool RecordUpdate() { return recordWrite(); }
  bool MoveAbsolute(int32_t id) { return recordGet(id); }
  bool isEof() const { return eof_; }

  CatalogFile* file() const { return file_; }
  Record& record() { return rec_; }
  const Record& record() const { return rec_; }

 protected:
  ChainCursor(CatalogFile* file, const char* kind) : file_(file), kind_(kind) {}
  ~ChainCursor() = default;

  // Starts a walk at first; an empty chain (0) is at its end at once.
  bool WalkFrom(int32_t first) {
    steps_ = 0;
    stepLimit_ = 0;
    if (first == 0) return eof_ = true, false;
    return recordGet(first);
  }

  bool WalkNext() {
    if (eof_) return false;
    if (rec_.next == 0) return eof_ = true, false;
    // The bound is worked out once per walk: a division per record would show.
    if (stepLimit_ == 0) stepLimit_ = file_->MaxChainLength(Record::kSize);
    if (++steps_ > stepLimit_) {
      file_->Fail(LoopError(kind_));
      return eof_ = true, false;
    }
    return recordGet(rec_.next);
  }

  std::string Text(const TextRef& ref) const {
    std::string out;
    file_->ReadText(ref, &out);
    return out;
  }

  // Sets a text of a folder or file record. Its bytes count for the disc being
  // built (*running, while appending) or else for the owning disc in the file.
  bool SetDiscText(TextRef* ref, const std::string& value, int64_t* running) {
    int64_t delta = 0;
    if (!file_->WriteText(value, ref, &delta)) return false;
    if (!RecordUpdate()) return false;
    if (running) {
      *running += delta;
      return true;
    }
    return file_->AdjustCdBytes(rec_.cdId, delta);
  }

  CatalogFile* file_;
  Record rec_;
  bool eof_ = true;

 private:
  const char* kind_;
  int64_t steps_ = 0;
  int64_t stepLimit_ = 0;  // 0 until the walk's first step
};

}  // namespace gorvan
