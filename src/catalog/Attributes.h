#pragma once
// The attribute bits a catalog stores for folders, files and archive members
// (the values of the format, on every platform), and the media type codes of
// a disc record.

#include <cstdint>

namespace gorvan {

inline constexpr int32_t kAttrReadOnly = 1;
inline constexpr int32_t kAttrHidden = 2;
inline constexpr int32_t kAttrDirectory = 16;
inline constexpr int32_t kAttrArchive = 32;
inline constexpr int32_t kAttrReparsePoint = 1024;
// Set on an archive member whose data is encrypted.
inline constexpr int32_t kAttrEncrypted = 0x4000;

// Media types: the drive type of the scanned volume, and the code of an audio
// CD (an optical drive's type plus 100), which is also the scan mode that
// catalogues one.
inline constexpr int32_t kMediaRemovable = 2;
inline constexpr int32_t kMediaFixed = 3;
inline constexpr int32_t kMediaRemote = 4;
inline constexpr int32_t kMediaOptical = 5;
inline constexpr int32_t kMediaRam = 6;
inline constexpr int32_t kMediaAudioCd = 105;

}  // namespace gorvan
