#include "export/CsvExportWriter.h"

#include "catalog/TextFormat.h"
#include "export/OutputWriter.h"
#include "export/basExport.h"

namespace gorvan {

void CsvExportWriter::Begin(const ExportStart& start) { ansi_ = start.ansi; }

void CsvExportWriter::Disc(const ExportDisc& d) {
  line_ = "C";
  Field(", ", d.name);
  Field(", ", ExportDateText(d.lastScanned, ansi_));
  Field(",", FormatNumber(d.totalSize));
  Field(",", FormatNumber(d.freeSpace));
  Field(",", std::to_string(d.countOfDirs));
  Field(",", std::to_string(d.countOfFiles));
  Field(",", std::to_string(d.mediaType));
  Field(",", d.notes);
  out_.WriteLine(line_);
}

void CsvExportWriter::Folder(const ExportFolder& f) {
  line_ = "D";
  Field(", ", f.name);
  Field(", ", f.fullName);
  Field(", ", fields_.dirDate ? ExportDateText(f.date, ansi_) : std::string());
  Field(",", std::to_string(f.attr));
  Field(",", fields_.dirSize ? FormatNumber(f.size) : std::string());
  Field(",", std::to_string(f.countOfDirs));
  Field(",", std::to_string(f.countOfFiles));
  Field(",", std::to_string(f.countOfFilesDirect));
  Field(",", fields_.dirNotes ? f.notes : std::string_view());
  out_.WriteLine(line_);
}

void CsvExportWriter::File(const ExportFile& f) {
  line_ = "F";
  Field(", ", f.name);
  Field(", ", f.fullName);
  Field(", ", fields_.fileDates ? ExportDateText(f.date, ansi_) : std::string());
  Field(",", std::to_string(f.attr));
  Field(",", fields_.fileSizes ? FormatNumber(f.size) : std::string());
  Field(",", fields_.fileNotes ? f.notes : std::string_view());
  out_.WriteLine(line_);
}

Status CsvExportWriter::End() { return out_.error(); }

bool CsvExportWriter::ok() const { return out_.ok(); }

}  // namespace gorvan
