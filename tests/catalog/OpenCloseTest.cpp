// Opening, creating and refusing catalogs.
#include <gtest/gtest.h>

#include "CatalogFixture.h"
#include "catalog/Coding.h"
#include "catalog/ReadOnlyCheck.h"

#include <sys/stat.h>

namespace gorvan::test {
namespace {

using OpenTest = CatalogTest;

TEST_F(OpenTest, OpeningRewritesOnlyTheHeader) {
  OpenCatalog();
  AddDisc("one", 2, 3);
  data_.CloseFiles();
  const std::string before = ReadFileBytes(Path());
  ASSERT_TRUE(data_.OpenFiles(Path(), false, true));
  data_.CloseFiles();
  const std::string after = ReadFileBytes(Path());
  ASSERT_EQ(before.size(), after.size());
  // Only the last-opened date (offsets 42..49) may differ.
  EXPECT_EQ(before.substr(0, 42), after.substr(0, 42));
  EXPECT_EQ(before.substr(50), after.substr(50));
}

TEST_F(OpenTest, AnyRevisionOpensButOtherVersionsAndSignaturesAreRefusedUntouched) {
  OpenCatalog();
  data_.CloseFiles();
  std::string bytes = ReadFileBytes(Path());

  std::string other = bytes;
  EncodeFixed16(reinterpret_cast<uint8_t*>(&other[8]), 999);
  WriteFileBytes(Path(), other);
  EXPECT_TRUE(data_.OpenFiles(Path(), false, true));
  EXPECT_EQ(data_.VersionRevision(), 999);
  data_.CloseFiles();

  for (auto [offset, value] : {std::pair{0, 'X'}, std::pair{4, '\3'}, std::pair{6, '\2'}}) {
    std::string bad = bytes;
    bad[offset] = value;
    WriteFileBytes(Path(), bad);
    EXPECT_FALSE(data_.OpenFiles(Path(), false, true)) << offset;
    EXPECT_EQ(data_.GetError(), classData::kWrongVersion);
    EXPECT_EQ(data_.GetErrorText(),
              "Error!!\nWrong Version of the Data File\nCan't Use newer version data");
    EXPECT_EQ(ReadFileBytes(Path()), bad) << "a refused catalog is never written";
  }
}

TEST_F(OpenTest, EmptyNameAndNonCatalogFiles) {
  EXPECT_FALSE(data_.OpenFiles("", false, true));
  EXPECT_EQ(data_.GetError(), classData::kNoFileName);

  WriteFileBytes(Path("empty.cd"), "");
  EXPECT_FALSE(data_.OpenFiles(Path("empty.cd"), false, true));
  EXPECT_EQ(data_.GetError(), classData::kWrongVersion);
  EXPECT_EQ(ReadFileBytes(Path("empty.cd")), "");

  // The right signature and version but cut short: damaged, not foreign.
  WriteFileBytes(Path("short.cd"), std::string("KTRV\2\0\1\0", 8) + std::string(40, '\0'));
  EXPECT_FALSE(data_.OpenFiles(Path("short.cd"), false, true));
  EXPECT_EQ(data_.GetError(), classData::kDataFileError);
  EXPECT_NE(data_.GetErrorText().find("Data File Error (1001)"), std::string::npos);
}

TEST_F(OpenTest, PasswordIsAskedOnlyWhenSetAndMustPass) {
  OpenCatalog();
  int asked = 0;
  data_.SetPasswordPrompt([&](const std::string& current) {
    ++asked;
    return current == "s3cret";
  });
  data_.CloseFiles();
  ASSERT_TRUE(data_.OpenFiles(Path(), true, true));
  EXPECT_EQ(asked, 0) << "an empty password never asks";
  ASSERT_TRUE(data_.SetDataPassword("s3cret"));
  EXPECT_EQ(data_.GetDataPassword(), "s3cret");
  data_.CloseFiles();
  EXPECT_EQ(ReadFileBytes(Path()).find("s3cret"), std::string::npos) << "stored scrambled";

  ASSERT_TRUE(data_.OpenFiles(Path(), true, true));
  EXPECT_EQ(asked, 1);
  data_.SetPasswordPrompt([](const std::string&) { return false; });
  const std::string before = ReadFileBytes(Path());
  EXPECT_FALSE(data_.OpenFiles(Path(), true, true));
  EXPECT_EQ(data_.GetError(), classData::kPasswordNotGiven);
  EXPECT_EQ(ReadFileBytes(Path()), before);
}

TEST_F(OpenTest, ASecondOpenOfTheSameCatalogIsRefusedWhileItIsOpen) {
  OpenCatalog();
  classData other;
  EXPECT_FALSE(other.OpenFiles(Path(), false, true));
  EXPECT_EQ(other.GetError(), classData::kCannotOpen);
  data_.CloseFiles();
  EXPECT_TRUE(other.OpenFiles(Path(), false, true));
}

TEST_F(OpenTest, ReadOnlyCheckAsksAndClearsOnlyTheWriteBit) {
  OpenCatalog();
  data_.CloseFiles();
  ASSERT_EQ(::chmod(Path().c_str(), 0444), 0);
  std::string question;
  std::string error;
  EXPECT_FALSE(ReadOnlyCheck::Run(Path(), [&](const std::string& q) { return question = q, false; },
                                  &error));
  EXPECT_EQ(question, "Your data file is read-only,\ndo you want to make it read-write?");
  EXPECT_TRUE(ReadOnlyCheck::Run(Path(), [](const std::string&) { return true; }, &error));
  struct stat st;
  ASSERT_EQ(::stat(Path().c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0644u);
  EXPECT_TRUE(ReadOnlyCheck::Run(Path("missing.cd"), nullptr, &error));
}

}  // namespace
}  // namespace gorvan::test
