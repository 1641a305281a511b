#pragma once
// ReportGather: the lines of the printed reports, read from a catalog on the
// thread that owns it (a reader of a job of its own). Each read ends early
// when stop is asked (Cancelled) and reports progress through job; a damaged
// chain ends it with the catalog's error.
//
// - The catalog report: the discs by category (categories nested, in tree
//   order, discs in the catalog's order), each disc with its last scan, its
//   folders, files and size; a total after each category and for the
//   catalog. Discs in no category come last.
// - A disc's report: the disc's fields, then each folder (in the order the
//   scan met them) as a heading with its files as rows.
// - A disc's cover: what its inlays print.

#include <QString>
#include <QStringList>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"
#include "ui/reports/ReportDocument.h"

namespace gorvan::ui {

inline constexpr const char* kCatalogReportTitle = "Gorvan Catalog Report";
inline constexpr const char* kDiscReportTitle = "Gorvan Disc Report";
inline constexpr const char* kCatalogReportCaption = "Creating Catalog Report";
inline constexpr const char* kDiscReportCaption = "Creating Disc Report";

// What a disc's cover prints.
struct CoverContent {
  QString name;
  QString artist;
  QString category;  // the disc's category path ("Music / Jazz"), or the audio genre
  QString date;      // the audio year, else the date of the last scan
  bool audio = false;
  // The back: an audio CD's tracks (number and title, length), or a data
  // disc's top folders (name, size), then its top files.
  struct Entry {
    QString text;
    QString value;
  };
  std::vector<Entry> entries;
  QString totals;  // "12 tracks, 52:10" or "1,234 files in 56 folders, 4.7 GB"
};

class ReportGather {
 public:
  static Status CatalogReport(classData& data, JobControl& job, ReportDocument* out);
  static Status DiscReport(classData& data, int32_t discId, JobControl& job, ReportDocument* out);
  static Status Cover(classData& data, int32_t discId, CoverContent* out);
};

}  // namespace gorvan::ui
