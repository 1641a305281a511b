#pragma once
// classCd: a cursor over the catalog's disc chain, holding one disc record at a
// time, and the owner of the folder cursor for the loaded disc.

#include <cstdint>
#include <string>

#include "catalog/CatalogFile.h"
#include "catalog/ChainCursor.h"
#include "catalog/Records.h"
#include "catalog/classDir.h"

namespace gorvan {

class classCd : public ChainCursor<CdRecord> {
 public:
  // A new disc record holds this "last scanned" date until the scan sets one.
  static constexpr double kNewLastScanned = 2.0;

  explicit classCd(CatalogFile* file = nullptr) : ChainCursor(file, "disc"), dirs_(file) {}
  void Bind(CatalogFile* file) {
    file_ = file;
    eof_ = true;
    dirs_.SetDefaultCdRec(file, 0, 0, 0);
  }

  // A new unlinked disc block at the end of the file: every field 0, last
  // scanned 2.0, bytes used 116. Loaded.
  int32_t recordAdd();
  bool MoveFirst();
  bool MoveNext();

  int32_t GetCdId() const { return rec_.id; }
  // With withArtist set: the name, " - " and the audio artist ("AR") when the
  // disc's extra data has one.
  std::string GetCdName(bool withArtist = false) const;
  bool GetCdName(std::string* out) const { return file_->ReadText(rec_.name, out); }
  std::string GetCdNotes() const { return Text(rec_.notes); }
  std::string GetCdLabel() const { return Text(rec_.label); }
  std::string GetCdBasepath() const { return Text(rec_.basePath); }
  std::string GetCdExtra() const { return Text(rec_.extra); }
  // The stored icon key when it names a known icon, else the media type's key.
  std::string GetCdIconKey() const;
  std::string GetCdStoredIconKey() const { return Text(rec_.iconKey); }
  // The media type reduced to an icon type: 2..6 stay, 101 and above give 105,
  // anything else 0.
  int32_t GetCdTypeExt() const { return TypeExt(rec_.mediaType); }
  static int32_t TypeExt(int32_t mediaType);
  double GetCdtotalSize() const { return rec_.totalSize; }
  double GetCdFreeSpace() const { return rec_.freeSpace; }
  int32_t GetCdNumOfSubdirs() const { return rec_.numOfSubdirs; }
  int32_t GetCdNumOfFiles() const { return rec_.numOfFiles; }
  int32_t GetCdMediaType() const { return rec_.mediaType; }
  int32_t GetCdCategory() const { return rec_.category; }
  int32_t GetCdDiskId() const { return rec_.diskId; }
  double GetCdLastScanned() const { return rec_.lastScanned; }

  bool SetCdName(const std::string& v) { return SetText(&rec_.name, v); }
  bool SetCdNotes(const std::string& v) { return SetText(&rec_.notes, v); }
  bool SetCdLabel(const std::string& v) { return SetText(&rec_.label, v); }
  bool SetCdBasepath(const std::string& v) { return SetText(&rec_.basePath, v); }
  bool SetCdExtra(const std::string& v) { return SetText(&rec_.extra, v); }
  bool setCdIconKey(const std::string& v) { return SetText(&rec_.iconKey, v); }
  bool setCdTotalSize(double v) { return rec_.totalSize = v, RecordUpdate(); }
  bool setCdFreeSpace(double v) { return rec_.freeSpace = v, RecordUpdate(); }
  bool setCdNumOfSubdirs(int32_t v) { return rec_.numOfSubdirs = v, RecordUpdate(); }
  bool setCdNumOfFiles(int32_t v) { return rec_.numOfFiles = v, RecordUpdate(); }
  bool setCdMediaType(int32_t v) { return rec_.mediaType = v, RecordUpdate(); }
  bool setCdCategory(int32_t v) { return rec_.category = v, RecordUpdate(); }
  bool setCdDiskId(int32_t v) { return rec_.diskId = v, RecordUpdate(); }
  bool setCdLastScanned(double v) { return rec_.lastScanned = v, RecordUpdate(); }

  int32_t CdGetNextRecord() const { return rec_.next; }
  int32_t CdGetPrevRecord() const { return rec_.prev; }
  bool SetCdNextRecord(int32_t id) { return rec_.next = id, RecordUpdate(); }
  bool SetCdPrevRecord(int32_t id) { return rec_.prev = id, RecordUpdate(); }
  int32_t GetBytesUsed() const { return rec_.bytesUsed; }
  // Adds delta to the disc's bytes used.
  bool UpdateBytesUsed(int64_t delta);

  // The folders of the loaded disc.
  classDir& SetDefaultCdRec();  // binds the folder cursor to this disc's chain
  classDir& GetDirFirst();
  classDir& GetDirNext();
  classDir& GetDirGoto(int32_t id);
  bool GetDirEof() const { return dirs_.isEof(); }
  // Appends a folder to the disc being built (the first call starts the chain).
  classDir& GetDirAppend();
  // Finishes the folder chain: its first and last folder, and the bytes of
  // everything appended join the disc's bytes used.
  bool GetDirAppendFinish();
  bool GetDirRemove(int32_t dirId);
  classDir& dirs() { return dirs_; }


 private:
  bool SetText(TextRef* ref, const std::string& value);

  bool appending_ = false;
  int64_t running_ = 0;
  classDir dirs_;
};

}  // namespace gorvan
