// Random sequences of catalog operations applied both to the catalog and to a
// plain in-memory model; after reopening, the catalog must hold exactly what
// the model holds, pass the integrity check, and account for every byte.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/CatalogEditor.h"
#include "catalog/TextCodec.h"

namespace gorvan::test {
namespace {

struct ModelDisc {
  std::string name, notes;
  int32_t category = 0;
  std::vector<std::vector<std::string>> folders;  // file names per folder
};

struct Model {
  std::map<int32_t, ModelDisc> discs;  // by id; chain order is id order (appended)
  std::map<int32_t, std::pair<std::string, int32_t>> cats;  // name, parent
};

std::string RandomName(std::mt19937& rng) {
  static const char* const kParts[] = {"a", "Zz", "caf\xC3\xA9", " ", "x.mp3", "\\", ",", "日本"};
  std::string s;
  const int n = static_cast<int>(rng() % 4);
  for (int i = 0; i < n; ++i) s += kParts[rng() % 8];
  return s;
}

void Verify(classData& data, const Model& model) {
  std::vector<int32_t> ids;
  classCd cd = data.CdCursor();
    for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    ids.push_back(cd.GetCdId());
    auto it = model.discs.find(cd.GetCdId());
    ASSERT_NE(it, model.discs.end());
    const ModelDisc& m = it->second;
    EXPECT_EQ(cd.GetCdName(), m.name);
    EXPECT_EQ(cd.GetCdNotes(), m.notes);
    EXPECT_EQ(cd.GetCdCategory(), m.category);
    size_t folder = 0;
    for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext(), ++folder) {
      ASSERT_LT(folder, m.folders.size());
      std::vector<std::string> names;
      for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext()) {
        names.push_back(f.GetFileName());
      }
      EXPECT_EQ(names, m.folders[folder]);
    }
    EXPECT_EQ(folder, m.folders.size());
  }
  EXPECT_EQ(ids.size(), model.discs.size());
  EXPECT_EQ(data.GetCdCount(), static_cast<int32_t>(model.discs.size()));
  size_t cats = 0;
  classCat c = data.CatCursor();
  for (c.MoveFirst(); !c.isEof(); c.MoveNext(), ++cats) {
    auto it = model.cats.find(c.GetCatId());
    ASSERT_NE(it, model.cats.end());
    EXPECT_EQ(c.GetCatName(), it->second.first);
    EXPECT_EQ(c.GetCatParentId(), it->second.second);
  }
  EXPECT_EQ(cats, model.cats.size());
  EXPECT_TRUE(data.ok());
  const std::vector<std::string> problems = CatalogCheck(data.file()).Run();
  EXPECT_TRUE(problems.empty()) << problems.front();
}

class ModelTest : public CatalogTest, public ::testing::WithParamInterface<int> {};

TEST_P(ModelTest, CatalogMatchesTheModelAfterRandomOperations) {
  std::mt19937 rng(static_cast<unsigned>(GetParam()));
  OpenCatalog("model.cd", GetParam() % 2 ? TextEncoding::kUtf8 : TextEncoding::kWindows1252);
  Model model;
  CatalogEditor editor(&data_);
  // What a text reads back as: a Windows-1252 catalog stores "?" for what it cannot hold.
  const TextEncoding enc = data_.GetEncoding();
  auto stored = [enc](const std::string& text) {
    std::string bytes, back;
    TextCodec::Encode(enc, text, &bytes);
    TextCodec::Decode(enc, bytes, &back);
    return back;
  };
  for (int step = 0; step < 150; ++step) {
    const unsigned op = rng() % 8;
    if (op <= 1) {
      ModelDisc m;
      const std::string name = RandomName(rng);
      m.name = stored(name);
      classCd& cd = cur_.NewDisc();
      cd.SetCdName(name);
      const int folders = static_cast<int>(rng() % 4);
      for (int d = 0; d < folders; ++d) {
        classDir& dir = cd.GetDirAppend();
        dir.SetDirName(RandomName(rng));
        dir.GetFileAppendStart();
        m.folders.emplace_back();
        const int files = static_cast<int>(rng() % 5);
        for (int f = 0; f < files; ++f) {
          const std::string file = RandomName(rng);
          m.folders.back().push_back(stored(file));
          dir.GetFileAppend().SetFileName(file);
        }
        dir.GetFileAppendFinish();
      }
      cd.GetDirAppendFinish();
      ASSERT_TRUE(cur_.CommitDisc());
      model.discs[cd.GetCdId()] = m;
    } else if (op == 2 && !model.discs.empty()) {
      auto it = std::next(model.discs.begin(), static_cast<long>(rng() % model.discs.size()));
      ASSERT_TRUE(editor.DeleteDisc(it->first).ok());
      model.discs.erase(it);
    } else if (op == 3 && !model.discs.empty()) {
      auto it = std::next(model.discs.begin(), static_cast<long>(rng() % model.discs.size()));
      const std::string notes = RandomName(rng);
      it->second.notes = stored(notes);
      ASSERT_TRUE(editor.SetDiscNotes(it->first, notes).ok());
    } else if (op == 4) {
      int32_t parent = 0;
      if (!model.cats.empty() && rng() % 2) {
        parent = std::next(model.cats.begin(), static_cast<long>(rng() % model.cats.size()))->first;
      }
      const std::string name = RandomName(rng);
      int32_t id = 0;
      ASSERT_TRUE(editor.AddCategory(name, parent, &id).ok());
      model.cats[id] = {name.empty() ? "New Category" : stored(name), parent};
    } else if (op == 5 && !model.cats.empty()) {
      auto it = std::next(model.cats.begin(), static_cast<long>(rng() % model.cats.size()));
      const bool hasChildren = editor.CategoryHasChildren(it->first);
      EXPECT_EQ(editor.DeleteCategory(it->first).ok(), !hasChildren);
      if (!hasChildren) model.cats.erase(it);
    } else if (op == 6 && !model.cats.empty() && !model.discs.empty()) {
      auto disc = std::next(model.discs.begin(), static_cast<long>(rng() % model.discs.size()));
      auto cat = std::next(model.cats.begin(), static_cast<long>(rng() % model.cats.size()));
      ASSERT_TRUE(editor.MoveDisc(disc->first, cat->first).ok());
      disc->second.category = cat->first;
    } else if (op == 7 && !model.cats.empty()) {
      auto it = std::next(model.cats.begin(), static_cast<long>(rng() % model.cats.size()));
      const std::string name = RandomName(rng);
      it->second.first = stored(name);
      ASSERT_TRUE(editor.RenameCategory(it->first, name).ok());
    }
  }
  data_.CloseFiles();
  ASSERT_TRUE(data_.OpenFiles(Path("model.cd"), false, true));
  Verify(data_, model);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ModelTest, ::testing::Range(1, 9));

}  // namespace
}  // namespace gorvan::test
