// The rules on moving, deleting and renaming, and the password dialog's rules.
#include <gtest/gtest.h>

#include "CatalogFixture.h"
#include "catalog/CatalogEditor.h"
#include "catalog/CatalogRules.h"
#include "catalog/PasswordCheck.h"

namespace gorvan::test {
namespace {

TEST(CatalogRulesTest, MessagesForEachRefusal) {
  using K = NodeKind;
  EXPECT_EQ(CatalogRules::CheckMove(K::kFile, K::kCategory, false),
            "Drag && Drop is only avaiable for the containers, and not the individual files or "
            "directories");
  EXPECT_EQ(CatalogRules::CheckMove(K::kFolder, K::kCategory, false),
            CatalogRules::CheckMove(K::kFile, K::kCategory, false));
  EXPECT_EQ(CatalogRules::CheckMove(K::kCatalog, K::kCategory, false),
            "You can only move a CD or folder between categories");
  EXPECT_EQ(CatalogRules::CheckMove(K::kDisc, K::kDisc, false),
            "You can only move a CD or folder between categories");
  EXPECT_EQ(CatalogRules::CheckMove(K::kCategory, K::kCategory, true),
            "A node can't be made a child of its own children.");
  EXPECT_EQ(CatalogRules::CheckMove(K::kDisc, K::kCategory, false), "");
  EXPECT_EQ(CatalogRules::CheckMove(K::kCategory, K::kCatalog, false), "");

  EXPECT_EQ(CatalogRules::CheckDelete(K::kNone, false), "You have to select something to delete");
  EXPECT_EQ(CatalogRules::CheckDelete(K::kFolder, false),
            "You can only delete either a Category or a Folder Container");
  EXPECT_EQ(CatalogRules::CheckDelete(K::kCategory, true),
            "Cannot delete category because it contains children!! remove all children and try "
            "again");
  EXPECT_EQ(CatalogRules::CheckDelete(K::kDisc, false), "");

  EXPECT_EQ(CatalogRules::CheckRename(K::kFile),
            "You can only edit container names, cd names, folder names or the data name");
  EXPECT_EQ(CatalogRules::CheckRename(K::kCatalog), "");
  EXPECT_EQ(CatalogRules::CheckEdit(K::kCategory),
            "You can only edit a cd or a folder from this option");
  EXPECT_EQ(CatalogRules::CheckRescan(K::kFile),
            "You can only rescan a cd or a folder from this option");
  EXPECT_EQ(CatalogRules::CheckRescan(K::kFolder), "");
}

using EditorTest = CatalogTest;

TEST_F(EditorTest, CategoriesFollowTheRules) {
  OpenCatalog();
  CatalogEditor editor(&data_);
  int32_t music = 0, jazz = 0;
  ASSERT_TRUE(editor.AddCategory("", 0, &music).ok());
  EXPECT_EQ(cur_.Cat(music).GetCatName(), "New Category");
  ASSERT_TRUE(editor.AddCategory("Jazz", music, &jazz).ok());
  EXPECT_TRUE(editor.AddCategory("x", 9999, &jazz).IsNotFound());

  Status s = editor.MoveCategory(music, jazz);
  EXPECT_EQ(s.message(), "A node can't be made a child of its own children.");
  EXPECT_FALSE(editor.MoveCategory(music, music).ok());
  s = editor.DeleteCategory(music);
  EXPECT_EQ(
      s.message(),
      "Cannot delete category because it contains children!! remove all children and try again");

  const int32_t disc = AddDisc("d", 0, 0);
  ASSERT_TRUE(editor.MoveDisc(disc, jazz).ok());
  EXPECT_EQ(cur_.Disc(disc).GetCdCategory(), jazz);
  EXPECT_FALSE(editor.DeleteCategory(jazz).ok()) << "a disc is a child too";
  ASSERT_TRUE(editor.MoveDisc(disc, 0).ok());
  ASSERT_TRUE(editor.DeleteCategory(jazz).ok());
  ASSERT_TRUE(editor.DeleteCategory(music).ok());
  EXPECT_EQ(data_.GetCatCount(), 0);
  EXPECT_TRUE(editor.DeleteDisc(disc + 1).IsNotFound()) << "only ids of live discs";
  ASSERT_TRUE(editor.DeleteDisc(disc).ok());
}

TEST_F(EditorTest, AFolderRenameRewritesThePathsBelowItAndNothingElse) {
  OpenCatalog();
  // top (no name) > a > a\b > a\b\c, and ab beside a (a prefix of no path below a).
  classCd& cd = cur_.NewDisc();
  const std::pair<const char*, const char*> folders[] = {{"", "\\"},    {"a", "\\"},  {"b", "a"},
                                                         {"c", "a\\b"}, {"ab", "\\"}, {"d", "ab"}};
  std::vector<int32_t> ids;
  for (const auto& [name, path] : folders) {
    classDir& dir = cd.GetDirAppend();
    if (*name) dir.SetDirName(name);
    dir.SetDirPath(path);
    ids.push_back(dir.GetDirId());
  }
  cd.GetDirAppendFinish();
  ASSERT_TRUE(cur_.CommitDisc());
  CatalogEditor editor(&data_);
  JobControl job;
  ASSERT_TRUE(editor.RenameFolder(ids[1], "alpha", job).ok());
  std::vector<std::string> paths;
  for (classDir& d = cur_.Disc(cd.GetCdId()).GetDirFirst(); !d.isEof(); d.MoveNext()) {
    paths.push_back(d.GetDirPath() + "|" + d.GetDirName());
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"\\|", "\\|alpha", "alpha|b", "alpha\\b|c", "\\|ab",
                                             "ab|d"}));
  EXPECT_EQ(editor.RenameFolder(ids[2], "x\\y", job).message(), kFolderNameRefusal);
  EXPECT_TRUE(editor.RenameFolder(ids[0], "top", job).IsInvalidArgument())
      << "renamed with its disc";
  EXPECT_TRUE(editor.RenameFolder(ids[5] + 1, "z", job).IsNotFound());
  std::stop_source stop;
  stop.request_stop();
  JobControl stopped(stop.get_token());
  EXPECT_TRUE(editor.RenameFolder(ids[1], "beta", stopped).IsCancelled());
  EXPECT_EQ(cur_.Disc(cd.GetCdId()).GetDirGoto(ids[2]).GetDirPath(), "alpha") << "nothing written";

  const int32_t cat = AddCategory("c");
  ASSERT_TRUE(editor.SetCategoryNotes(cat, "notes").ok());
  EXPECT_EQ(cur_.Cat(cat).GetCatNotes(), "notes");
}

TEST(PasswordCheckTest, ValidationTrimmingAndChanges) {
  using R = PasswordCheck::Result;
  EXPECT_TRUE(PasswordCheck::isValidPassword(""));
  EXPECT_TRUE(PasswordCheck::isValidPassword(" ~\x7F"));
  EXPECT_FALSE(PasswordCheck::isValidPassword("caf\xC3\xA9"));
  EXPECT_FALSE(PasswordCheck::isValidPassword("tab\there"));

  EXPECT_EQ(PasswordCheck::AskPassword("  pw  ", "pw"), R::kPassed);
  EXPECT_EQ(PasswordCheck::AskPassword("pw2", "pw"), R::kWrongPassword);
  EXPECT_EQ(PasswordCheck::AskPassword("\xC3\xA9", "pw"), R::kInvalidCharacters);
  EXPECT_STREQ(PasswordCheck::Message(R::kInvalidCharacters), "Invalid Characters !!");
  EXPECT_STREQ(PasswordCheck::Message(R::kWrongPassword), "Invalid or Wrong Password !!");

  std::string chosen;
  EXPECT_EQ(PasswordCheck::ChangePassword("pw", "a", "b", "pw", &chosen), R::kNotIdentical);
  EXPECT_STREQ(PasswordCheck::Message(R::kNotIdentical), "The new passwords are not identical !!");
  EXPECT_EQ(PasswordCheck::ChangePassword("bad", "a", "a", "pw", &chosen), R::kWrongPassword);
  EXPECT_EQ(PasswordCheck::ChangePassword("pw", "\xC3\xA9", "\xC3\xA9", "pw", &chosen),
            R::kInvalidCharacters);
  EXPECT_EQ(PasswordCheck::ChangePassword(" pw", " new ", "new", "pw", &chosen), R::kPassed);
  EXPECT_EQ(chosen, "new");
  EXPECT_EQ(PasswordCheck::ChangePassword("", "", "", "", &chosen), R::kPassed);
}

}  // namespace
}  // namespace gorvan::test
