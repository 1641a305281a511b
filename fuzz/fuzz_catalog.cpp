// Fuzzes the catalog reader: arbitrary bytes are opened as a catalog, every
// record is walked and read, and the integrity check runs. Nothing may crash,
// hang, or allocate more than the input could justify.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "catalog/CatalogCheck.h"
#include "catalog/MemoryFile.h"
#include "catalog/classData.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  gorvan::classData catalog;
  if (!catalog.OpenWith(std::make_unique<gorvan::MemoryFile>(&bytes), "fuzz.cd", true, false,
                        false)) {
    return 0;
  }
  catalog.file()->ArmWalkBudget(4);
  std::string text;
  gorvan::classCat c = catalog.CatCursor();
  for (c.MoveFirst(); !c.isEof(); c.MoveNext()) {
    c.GetCategoryPathIncludingMine();
  }
  gorvan::classCd cd = catalog.CdCursor();
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    cd.GetCdName(true);
    cd.GetCdIconKey();
    for (gorvan::classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
      d.GetDirFullName(true);
      for (gorvan::ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
        f.GetFileName(&text);
        if (!f.IsArchive()) continue;
        for (gorvan::ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) m.GetFileName(&text);
      }
    }
  }
  catalog.file()->ClearError();
  gorvan::CatalogCheck(catalog.file()).Run();
  gorvan::classData::PhysicalSize physical;
  (void)catalog.CalcPhysicalSize(&physical);
  return 0;
}
