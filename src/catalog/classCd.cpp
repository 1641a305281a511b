#include "catalog/classCd.h"

#include "catalog/Attributes.h"
#include "catalog/ChainOps.h"
#include "catalog/ExtraData.h"
#include "catalog/IconKeys.h"

namespace gorvan {

int32_t classCd::recordAdd() {
  const int32_t id = file_->AppendBlock(CdRecord::kSize);
  if (id == 0) return 0;
  rec_ = CdRecord{};
  rec_.id = id;
  rec_.lastScanned = kNewLastScanned;
  rec_.bytesUsed = static_cast<int32_t>(CdRecord::kSize);
  if (!recordWrite()) return 0;
  eof_ = false;
  appending_ = false;
  running_ = 0;
  return id;
}

bool classCd::MoveFirst() { return WalkFrom(file_->header().firstCd); }

bool classCd::MoveNext() { return WalkNext(); }

bool classCd::SetText(TextRef* ref, const std::string& value) {
  int64_t delta = 0;
  if (!file_->WriteText(value, ref, &delta)) return false;
  rec_.bytesUsed = static_cast<int32_t>(rec_.bytesUsed + delta);
  return RecordUpdate();
}

std::string classCd::GetCdName(bool withArtist) const {
  std::string name = Text(rec_.name);
  if (withArtist) {
    const std::string artist = GetExtraValue(GetCdExtra(), kExtraAudioArtist);
    if (!artist.empty()) name += " - " + artist;
  }
  return name;
}

int32_t classCd::TypeExt(int32_t mediaType) {
  if (mediaType >= kMediaRemovable && mediaType <= kMediaRam) return mediaType;
  if (mediaType >= 101) return kMediaAudioCd;
  return 0;
}

std::string classCd::GetCdIconKey() const {
  const std::string stored = GetCdStoredIconKey();
  if (IconKeys::IsKnown(stored)) return stored;
  return std::string(IconKeys::ForMediaType(GetCdTypeExt()));
}

bool classCd::UpdateBytesUsed(int64_t delta) {
  rec_.bytesUsed = static_cast<int32_t>(rec_.bytesUsed + delta);
  return RecordUpdate();
}

classDir& classCd::SetDefaultCdRec() {
  dirs_.SetDefaultCdRec(file_, rec_.id, rec_.firstDir, rec_.lastDir);
  return dirs_;
}

classDir& classCd::GetDirFirst() {
  SetDefaultCdRec().MoveFirst();
  return dirs_;
}

classDir& classCd::GetDirNext() {
  dirs_.MoveNext();
  return dirs_;
}

classDir& classCd::GetDirGoto(int32_t id) {
  SetDefaultCdRec().recordGet(id);
  return dirs_;
}

classDir& classCd::GetDirAppend() {
  if (!appending_) {
    appending_ = true;
    running_ = 0;
    dirs_.SetDefaultCdRec(file_, rec_.id, 0, 0);
    dirs_.SetAppendStart(rec_.id, &running_);
  }
  dirs_.recordAdd();
  return dirs_;
}

bool classCd::GetDirAppendFinish() {
  if (appending_) {
    rec_.firstDir = dirs_.getDirRecFirst();
    rec_.lastDir = dirs_.getDirRecLast();
    rec_.bytesUsed = static_cast<int32_t>(rec_.bytesUsed + running_);
  }
  appending_ = false;
  running_ = 0;
  return RecordUpdate();
}

bool classCd::GetDirRemove(int32_t dirId) {
  classDir& d = GetDirGoto(dirId);
  if (d.isEof() || d.GetDirCdId() != rec_.id || !d.DeleteDirectory()) return false;
  return recordGet(rec_.id);
}

}  // namespace gorvan
