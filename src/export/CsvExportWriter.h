#pragma once
// CsvExportWriter: the comma-separated export — one line per disc ("C"),
// folder ("D") and file ("F"), the first fields after ", " and the rest after
// ",", texts as the catalog stores them (no quoting). Option boxes that are
// not ticked empty their field, so every line of a kind keeps its layout;
// dirFiles leaves the file lines out.

#include <string>

#include "export/ExportWriter.h"

namespace gorvan {

class OutputWriter;

class CsvExportWriter final : public ExportWriter {
 public:
  CsvExportWriter(OutputWriter& out, const ExportFields& fields) : out_(out), fields_(fields) {}

  void Begin(const ExportStart& start) override;
  void Disc(const ExportDisc& disc) override;
  void Folder(const ExportFolder& folder) override;
  void File(const ExportFile& file) override;
  Status End() override;
  bool ok() const override;

 private:
  void Field(std::string_view sep, std::string_view value) {
    line_ += sep;
    line_ += value;
  }

  OutputWriter& out_;
  const ExportFields& fields_;
  bool ansi_ = false;
  std::string line_;
};

}  // namespace gorvan
