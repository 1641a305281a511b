#include "export/XmlExportWriter.h"

#include "catalog/TextFormat.h"
#include "export/OutputWriter.h"
#include "export/basExport.h"

namespace gorvan {

void XmlExportWriter::Begin(const ExportStart& start) {
  ansi_ = start.ansi;
  out_.WriteLine("<?xml-stylesheet type=\"text/xsl\" href=\"" + std::string(kStylesheetName) +
                 "\"?>");
  out_.WriteLine("<Gorvan ExtractDate=\"" + ExportDateText(start.extractDate, ansi_) + "\" Version=\"" +
                 std::to_string(GORVAN_VERSION_MAJOR) + "." +
                 std::to_string(GORVAN_VERSION_MINOR) + "." +
                 std::to_string(GORVAN_VERSION_REVISION) + "\">");
}

void XmlExportWriter::Element(std::string_view indent, std::string_view tag,
                              std::string_view value, bool escape) {
  line_.assign(indent);
  line_ += '<';
  line_ += tag;
  line_ += '>';
  if (escape) {
    AppendXmlEscaped(value, ansi_, &line_);
  } else {
    line_ += value;
  }
  line_ += "</";
  line_ += tag;
  line_ += '>';
  out_.WriteLine(line_);
}

void XmlExportWriter::Extras(std::string_view indent, std::string_view extra) {
  static constexpr const char* kTags[] = {"Extra1", "Extra2", "Extra3", "Extra4"};
  for (int i = 0; i < 4; ++i) Element(indent, kTags[i], ExportExtraValue(extra, i));
}

void XmlExportWriter::Disc(const ExportDisc& d) {
  out_.WriteLine("<Cd>");
  Element("  ", "Name", d.name);
  Element("  ", "LastScannedDate", ExportDateText(d.lastScanned, ansi_), false);
  Element("  ", "TotalSize", FormatNumber(d.totalSize), false);
  Element("  ", "FreeSpace", FormatNumber(d.freeSpace), false);
  Element("  ", "CountOfDirs", std::to_string(d.countOfDirs), false);
  Element("  ", "CountOfFiles", std::to_string(d.countOfFiles), false);
  Element("  ", "MediaType", std::to_string(d.mediaType), false);
  Element("  ", "Notes", d.notes);
  Extras("  ", d.extra);
}

void XmlExportWriter::Folder(const ExportFolder& f) {
  out_.WriteLine("  <Directory>");
  Element("    ", "Name", f.name);
  Element("    ", "FullName", f.fullName);
  Element("    ", "Date", fields_.dirDate ? ExportDateText(f.date, ansi_) : std::string(), false);
  Element("    ", "Attr", std::to_string(f.attr), false);
  Element("    ", "Size", fields_.dirSize ? FormatNumber(f.size) : std::string(), false);
  Element("    ", "CountOfDirs", std::to_string(f.countOfDirs), false);
  Element("    ", "CountOfFiles", std::to_string(f.countOfFiles), false);
  Element("    ", "CountOfFilesDirect", std::to_string(f.countOfFilesDirect), false);
  Element("    ", "Notes", fields_.dirNotes ? f.notes : std::string_view());
  Extras("    ", f.extra);
}

void XmlExportWriter::File(const ExportFile& f) {
  out_.WriteLine("    <File>");
  Element("      ", "Name", f.name);
  Element("      ", "FullName", f.fullName);
  Element("      ", "Date", fields_.fileDates ? ExportDateText(f.date, ansi_) : std::string(),
          false);
  Element("      ", "Attr", std::to_string(f.attr), false);
  Element("      ", "Size", fields_.fileSizes ? FormatNumber(f.size) : std::string(), false);
  Element("      ", "Notes", fields_.fileNotes ? f.notes : std::string_view());
  Extras("      ", f.extra);
  out_.WriteLine("    </File>");
}

void XmlExportWriter::EndFolder() { out_.WriteLine("  </Directory>"); }

void XmlExportWriter::EndDisc() { out_.WriteLine("</Cd>"); }

Status XmlExportWriter::End() {
  out_.WriteLine("</Gorvan>");
  return out_.error();
}

bool XmlExportWriter::ok() const { return out_.ok(); }

}  // namespace gorvan
