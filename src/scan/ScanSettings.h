#pragma once
// ScanSettings: the choices of the scan dialog that one scan runs with, and
// the volume facts it records.

#include <cstdint>
#include <string>

namespace gorvan {

class VolumeInfo;

struct ScanSettings {
  int32_t previousDiscId = 0;  // the disc a rescan replaces; below 1 for a new disc
  std::string path;            // the drive or folder
  std::string discName;
  std::string notes;
  std::string volumeLabel;
  int32_t categoryId = 0;
  std::string includeText = "*.*";  // "*.jpg;*.png" as typed
  std::string excludeText;
  bool scanZip = false;
  bool scanMp3 = false;
  bool directoriesOnly = false;
  int32_t scanMode = 0;        // kMediaAudioCd for an audio CD's track list
  bool includeHidden = false;  // names beginning with "." (left out unless set)
};

// Replaces every " ;" in text by ";" until none is left — the clean-up the
// dialog applies to its pattern fields once a scan has taken them.
void CleanPatternText(std::string* text);

// The volume facts a scan records. Read from the volume holding the path
// unless the caller sets them (tests, or the audio-disc lookup).
struct ScanVolume {
  std::string mountPoint = "/";
  uint32_t serial = 0;
  double freeBytes = 0;
  int driveType = 3;

  static ScanVolume ForPath(const std::string& path);
  static ScanVolume From(const VolumeInfo& info);
};

}  // namespace gorvan
