#pragma once
// ExportWriter: one export format. The catalog export's walk (basExport) hands
// every writer the same records in the same order — a disc, then each of its
// folders followed by that folder's files — as typed values; the writer turns
// them into its format. Texts are the catalog's stored bytes in its encoding
// (ExportStart::ansi tells which), so a writer that wants UTF-8 converts
// (ExportTextToUtf8), and one that writes the catalog's own bytes does not pay
// for a conversion.

#include <cstdint>
#include <string>
#include <string_view>

#include "catalog/Status.h"

namespace gorvan {

struct ExportFields;

// What every writer learns before the first disc.
struct ExportStart {
  double extractDate = 0;        // the moment of the export, an OLE date
  bool ansi = false;             // texts are Windows-1252 (else UTF-8)
  std::string_view catalogName;  // the catalog's name, UTF-8
};

struct ExportDisc {
  int32_t id = 0;
  std::string_view name, notes, extra;
  double lastScanned = 0;
  double totalSize = 0;
  double freeSpace = 0;
  int32_t countOfDirs = 0;
  int32_t countOfFiles = 0;
  int32_t mediaType = 0;
  int32_t category = 0;
};

struct ExportFolder {
  int32_t id = 0;
  std::string_view name, fullName, notes, extra;
  // The parent folder's full name as stored: the fullName of the folder that
  // holds this one (or, for a disc's top folder, its place on the volume).
  std::string_view path;
  double date = 0;
  int32_t attr = 0;
  double size = 0;  // bytes of the whole subtree, never negative
  int32_t countOfDirs = 0;
  int32_t countOfFiles = 0;
  int32_t countOfFilesDirect = 0;
};

struct ExportFile {
  int32_t id = 0;
  // fullName: the folder's full name, a backslash and the file's name.
  std::string_view name, fullName, notes, extra;
  double date = 0;
  int32_t attr = 0;
  double size = 0;
};

class ExportWriter {
 public:
  virtual ~ExportWriter() = default;

  // Before the first disc.
  virtual void Begin(const ExportStart& start) = 0;
  virtual void Disc(const ExportDisc& disc) = 0;
  virtual void Folder(const ExportFolder& folder) = 0;
  virtual void File(const ExportFile& file) = 0;
  virtual void EndFolder() {}
  virtual void EndDisc() {}
  // After the last disc. The writer's first failure, if any.
  virtual Status End() = 0;
  // False once writing failed: the walk stops.
  virtual bool ok() const = 0;
};

// A date as the export formats write it: the general date format, in the
// catalog's encoding.
std::string ExportDateText(double ole, bool ansi);

// The extra value T1..T4 of an extra text ("" for an empty text).
std::string ExportExtraValue(std::string_view extra, int index);

// A stored text as valid UTF-8: Windows-1252 (ansi) converted, UTF-8 with
// every invalid sequence (a raw file name) replaced by U+FFFD. Replaces *out.
void ExportTextToUtf8(std::string_view stored, bool ansi, std::string* out);

}  // namespace gorvan
