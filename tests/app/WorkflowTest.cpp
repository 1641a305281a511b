// The workflows both front ends share: opening a catalog with its questions,
// the history, the preparation of a scan and the refusals before a search.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/CatalogHistory.h"
#include "app/CatalogOpener.h"
#include "app/ScanRequest.h"
#include "app/SearchRequest.h"
#include "support/CatalogCursors.h"
#include "support/ScriptedPrompt.h"
#include "support/TempDir.h"

namespace gorvan::test {
namespace {

class WorkflowTest : public ::testing::Test {
 protected:
  std::string Path(const std::string& name = "c.cd") const { return dir_.File(name); }

  // A catalog with the given password, closed again.
  void MakeCatalog(const std::string& password) {
    classData data;
    ASSERT_TRUE(data.OpenFiles(Path(), false, true));
    if (!password.empty()) {
      ASSERT_TRUE(data.SetDataPassword(password));
    }
    data.CloseFiles();
  }

  TempDir dir_;
  ScriptedPrompt prompt_;
};

TEST_F(WorkflowTest, OpeningAsksForThePasswordUnderTheDialogsRules) {
  MakeCatalog("secret");
  // Wrong, then invalid characters, then right: the dialog stays open with
  // each message until the password passes.
  prompt_.passwords = {{"nope", "", ""}, {"s\xC3\xA9", "", ""}, {"  secret ", "", ""}};
  OpenOutcome out = CatalogOpener::Open(Path(), prompt_);
  ASSERT_TRUE(out.data) << out.message;
  EXPECT_EQ(prompt_.passwordMessages,
            (std::vector<std::string>{"Invalid or Wrong Password !!", "Invalid Characters !!"}));
  out.data.reset();

  // Cancel: refused with the product's words.
  out = CatalogOpener::Open(Path(), prompt_);
  EXPECT_FALSE(out.data);
  EXPECT_TRUE(out.status.IsRefused());
  EXPECT_EQ(out.error, classData::kPasswordNotGiven);
  EXPECT_EQ(out.message, "Logon Denied!!");

  // A password given in advance is tried once; a wrong one says why.
  OpenOptions given;
  given.password = "wrong";
  given.passwordGiven = true;
  out = CatalogOpener::Open(Path(), prompt_, given);
  EXPECT_FALSE(out.data);
  EXPECT_EQ(prompt_.Texts().back(), "Invalid or Wrong Password !!");
  given.password = "secret";
  EXPECT_TRUE(CatalogOpener::Open(Path(), prompt_, given).data);
}

TEST_F(WorkflowTest, OpeningRefusesWhatIsNoCatalogAndAsksAboutReadOnlyFiles) {
  OpenOptions mustExist;
  mustExist.mustExist = true;
  EXPECT_TRUE(CatalogOpener::Open(Path("none.cd"), prompt_, mustExist).status.IsNotFound());
  EXPECT_NE(::access(Path("none.cd").c_str(), F_OK), 0) << "nothing is created";

  ASSERT_TRUE(WriteFileBytes(Path("text.cd"), std::string(200, 'x')));
  OpenOutcome out = CatalogOpener::Open(Path("text.cd"), prompt_);
  EXPECT_EQ(out.error, classData::kWrongVersion);
  EXPECT_EQ(out.message, kWrongVersionMessage);

  MakeCatalog("");
  ::chmod(Path().c_str(), 0444);
  prompt_.Answer(PromptAnswer::kNo);
  out = CatalogOpener::Open(Path(), prompt_);
  EXPECT_TRUE(out.status.IsRefused());
  EXPECT_EQ(prompt_.Texts().back(), "Your data file is read-only,\ndo you want to make it read-write?");
  prompt_.Answer(PromptAnswer::kYes);
  EXPECT_TRUE(CatalogOpener::Open(Path(), prompt_).data);
  struct stat st;
  ASSERT_EQ(::stat(Path().c_str(), &st), 0);
  EXPECT_NE(st.st_mode & S_IWUSR, 0u);
}

TEST_F(WorkflowTest, TheHistoryKeepsFiveEntriesNewestFirstWithoutRepeats) {
  for (int i = 1; i <= 7; ++i) CatalogHistory::Push("/c/" + std::to_string(i) + ".cd");
  CatalogHistory::Push("/c/5.cd");
  EXPECT_EQ(CatalogHistory::Entries(),
            (std::vector<std::string>{"/c/5.cd", "/c/7.cd", "/c/6.cd", "/c/4.cd", "/c/3.cd"}));
  CatalogHistory::Remove("/c/7.cd");
  EXPECT_EQ(CatalogHistory::Newest(), "/c/5.cd");
  EXPECT_EQ(CatalogHistory::Entries().size(), 4u);
  // Odd characters survive the settings file's own escaping.
  CatalogHistory::Push("/c/a=b;\"quoted\" [x]\\y.cd");
  EXPECT_EQ(CatalogHistory::Newest(), "/c/a=b;\"quoted\" [x]\\y.cd");
}

TEST_F(WorkflowTest, ScanAndSearchRequestsSayWhatTheDialogsSay) {
  OpenOutcome out = CatalogOpener::Open(Path(), prompt_);
  ASSERT_TRUE(out.data);
  classData& data = *out.data;
  SearchOptions search;
  EXPECT_EQ(SearchRequest::Check(data, search).message(), kNoDiscToSearch) << "checked first";

  CatalogCursors cur(data);
  classCd& cd = cur.NewDisc();
  const int32_t disc = cd.GetCdId();
  cd.SetCdName("Old name");
  cd.SetCdNotes("old notes");
  cd.setCdCategory(7);
  ASSERT_TRUE(cur.CommitDisc());
  EXPECT_EQ(SearchRequest::Check(data, search).message(), "Nothing To Search For");
  search.text = "x";
  EXPECT_EQ(SearchRequest::Check(data, search).message(),
            "You have to select something to search within");

  ScanSettings settings;
  settings.previousDiscId = disc;
  settings.discName = "typed";
  ASSERT_TRUE(ScanRequest::RescanDefaults(data, true, false, false, &settings).ok());
  EXPECT_EQ(settings.discName, "typed");
  EXPECT_EQ(settings.notes, "old notes");
  EXPECT_EQ(settings.categoryId, 7);
  settings.previousDiscId = disc + 1;  // inside the disc's block: no disc
  EXPECT_TRUE(ScanRequest::RescanDefaults(data, false, false, false, &settings).IsNotFound());
  EXPECT_TRUE(data.ok()) << "a wrong id leaves the catalog clean";

  EXPECT_EQ(ScanRequest::CheckPath(dir_.File("missing")).message(),
            "Folder or Directory Does Not Exist!!\nPlease Try Again");
  const ScanProposal p = ScanRequest::Propose(dir_.path());
  EXPECT_TRUE(p.volume.ok());
  EXPECT_FALSE(p.discName.empty());
}

}  // namespace
}  // namespace gorvan::test
