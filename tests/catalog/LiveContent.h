#pragma once
// LiveContent: everything a user can see in a catalog, as one text — header
// texts, categories with their parents' names, discs with their folders, files
// and archive members — without ids, links or bytes used, so that a catalog and
// its copy (or the catalog before and after a compaction) compare equal.

#include <string>

#include "catalog/classData.h"

namespace gorvan::test {

inline std::string LiveContent(classData& data) {
  std::string out;
  auto num = [](double v) { return std::to_string(v); };
  out += "H|" + data.GetDataName() + "|" + data.GetDataNotes() + "|" + data.GetDataExtra() + "|" +
         data.GetDataIconKey() + "|" + data.GetDataPassword() + "\n";
  auto catName = [&data](int32_t id) {
    if (id == 0) return std::string("-");
    classCat c(data.file());
    return c.recordGet(id) ? c.GetCatName() : std::string("?");
  };
  classCat cat(data.file());
  for (cat.MoveFirst(); !cat.isEof(); cat.MoveNext()) {
    out += "K|" + cat.GetCatName() + "|" + cat.GetCatNotes() + "|" + cat.GetCatExtra() + "|" +
           cat.GetCatIconKey() + "|" + num(cat.GetCatCreated()) + "|" +
           catName(cat.GetCatParentId()) + "\n";
  }
  classCd cd(data.file());
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    out += "C|" + cd.GetCdName() + "|" + cd.GetCdNotes() + "|" + cd.GetCdLabel() + "|" +
           cd.GetCdBasepath() + "|" + cd.GetCdExtra() + "|" + cd.GetCdStoredIconKey() + "|" +
           num(cd.GetCdtotalSize()) + "|" + num(cd.GetCdFreeSpace()) + "|" +
           std::to_string(cd.GetCdDiskId()) + "|" + std::to_string(cd.GetCdNumOfSubdirs()) + "|" +
           std::to_string(cd.GetCdNumOfFiles()) + "|" + num(cd.GetCdLastScanned()) + "|" +
           std::to_string(cd.GetCdMediaType()) + "|" + catName(cd.GetCdCategory()) + "\n";
    for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
      out += " D|" + d.GetDirPath() + "|" + d.GetDirName() + "|" + d.GetDirNotes() + "|" +
             d.GetDirExtra() + "|" + num(d.GetDirSize()) + "|" + num(d.GetDirDate()) + "|" +
             std::to_string(d.GetDirAttr()) + "|" + std::to_string(d.GetDirCountOfFiles()) + "|" +
             std::to_string(d.GetDirCountOfDirs()) + "|" +
             std::to_string(d.GetDirCountOfFilesDirect()) + "\n";
      for (ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
        out += "  F|" + f.GetFilePath() + "|" + f.GetFileName() + "|" + f.GetFileNotes() + "|" +
               f.GetFileExtra() + "|" + num(f.GetFileSize()) + "|" + num(f.GetFileDate()) + "|" +
               std::to_string(f.getFileAttr()) + "\n";
        if (!f.IsArchive()) continue;
        for (ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) {
          out += "   M|" + m.GetFilePath() + "|" + m.GetFileName() + "|" + m.GetFileNotes() +
                 "|" + num(m.GetFileSize()) + "|" + num(m.GetFileDate()) + "\n";
        }
      }
    }
  }
  if (!data.ok()) out += "ERROR " + data.status().message() + "\n";
  return out;
}

}  // namespace gorvan::test
