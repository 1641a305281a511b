#pragma once
// XmlExportWriter: the XML export — the stylesheet instruction, a <Gorvan>
// root with ExtractDate and Version, and per disc a <Cd> element holding its
// values, notes and Extra1..Extra4, then a <Directory> per folder holding its
// <File> elements. Text goes out in the catalog's encoding: a Windows-1252
// catalog gives an all-ASCII file (bytes 128..255 as "&#xNN;"), a UTF-8
// catalog gives UTF-8. Option boxes that are not ticked empty their element;
// dirFiles leaves the files out.

#include <string>

#include "export/ExportWriter.h"

namespace gorvan {

class OutputWriter;

class XmlExportWriter final : public ExportWriter {
 public:
  XmlExportWriter(OutputWriter& out, const ExportFields& fields) : out_(out), fields_(fields) {}

  void Begin(const ExportStart& start) override;
  void Disc(const ExportDisc& disc) override;
  void Folder(const ExportFolder& folder) override;
  void File(const ExportFile& file) override;
  void EndFolder() override;
  void EndDisc() override;
  Status End() override;
  bool ok() const override;

 private:
  void Element(std::string_view indent, std::string_view tag, std::string_view value,
               bool escape = true);
  void Extras(std::string_view indent, std::string_view extra);

  OutputWriter& out_;
  const ExportFields& fields_;
  bool ansi_ = false;
  std::string line_;
};

}  // namespace gorvan
