#pragma once
// Shared helpers for the catalog tests: a temporary folder, a catalog opened in
// it, and a way to fill a disc with folders and files through the object model
// the way a scan does.

#include <gtest/gtest.h>

#include <string>

#include "catalog/classData.h"
#include "support/CatalogCursors.h"
#include "support/TempDir.h"

namespace gorvan::test {

class CatalogTest : public ::testing::Test {
 protected:
  std::string Path(const std::string& name = "test.cd") const { return dir_.File(name); }

  // Creates (or opens) the catalog at Path(name) with the default texts.
  void OpenCatalog(const std::string& name = "test.cd",
                   TextEncoding enc = TextEncoding::kUtf8) {
    data_.SetNewCatalogEncoding(enc);
    ASSERT_TRUE(data_.OpenFiles(Path(name), false, true)) << data_.GetErrorText();
  }

  // Appends and commits a disc with dirs folders of files files each; returns its id.
  int32_t AddDisc(const std::string& name, int dirs, int files, int32_t category = 0) {
    classCd& cd = cur_.NewDisc();
    cd.SetCdName(name);
    cd.SetCdLabel("LABEL");
    cd.setCdCategory(category);
    cd.setCdMediaType(3);
    for (int d = 0; d < dirs; ++d) {
      classDir& dir = cd.GetDirAppend();
      dir.SetDirName("dir" + std::to_string(d));
      dir.SetDirPath("\\");
      dir.GetFileAppendStart();
      for (int f = 0; f < files; ++f) {
        ClassFile& file = dir.GetFileAppend();
        file.SetFileName("file" + std::to_string(f) + ".txt");
        file.setFileSize(100.0 * f);
      }
      dir.GetFileAppendFinish();
      dir.setDirCountOfFilesDirect(files);
    }
    cd.setCdNumOfSubdirs(dirs);
    cd.setCdNumOfFiles(dirs * files);
    cd.GetDirAppendFinish();
    const int32_t id = cd.GetCdId();
    EXPECT_TRUE(cur_.CommitDisc());
    return id;
  }

  int32_t AddCategory(const std::string& name, int32_t parent = 0) {
    classCat& cat = cur_.NewCat();
    cat.SetCatName(name);
    cat.SetCatParentId(parent);
    EXPECT_TRUE(cur_.CommitCat());
    return cat.GetCatId();
  }

  TempDir dir_;
  classData data_;
  CatalogCursors cur_{data_};
};

}  // namespace gorvan::test
