// DiscTree: scanned folder trees against the folders made on disk, hand-made
// chains (missing parents, duplicate paths, roots stored late), damaged chains.
#include "catalog/DiscTree.h"

#include <algorithm>

#include "CatalogFixture.h"
#include "scan/ScanTestTree.h"

namespace gorvan::test {
namespace {

using Chain = std::vector<std::pair<std::string, std::string>>;  // parent path, name

// The tree depth first as "name;.child;..grandchild", "<>" for an empty name,
// checking that depths follow the parents and that the walk meets every node once.
std::string Render(const DiscTree& t) {
  std::string out;
  int32_t seen = 0;
  t.VisitDepthFirst([&](int32_t n) {
    ++seen;
    EXPECT_EQ(t.depth(n), n == t.root() ? 0 : t.depth(t.parent(n)) + 1) << n;
    out += (out.empty() ? "" : ";") + std::string(static_cast<size_t>(t.depth(n)), '.');
    out += t.name(n).empty() ? std::string("<>") : std::string(t.name(n));
  });
  EXPECT_EQ(seen, t.size());
  return out;
}

class DiscTreeTest : public CatalogTest {
 protected:
  // A disc holding these folders in this order (its folder count left at 0).
  int32_t AddChain(const Chain& chain) {
    classCd& cd = cur_.NewDisc();
    ids_.clear();
    for (const auto& [path, name] : chain) {
      classDir& d = cd.GetDirAppend();
      d.SetDirPath(path);
      d.SetDirName(name);
      ids_.push_back(d.GetDirId());
    }
    cd.GetDirAppendFinish();
    EXPECT_TRUE(cur_.CommitDisc());
    return cd.GetCdId();
  }

  std::vector<int32_t> ids_;
};

TEST_F(DiscTreeTest, ScannedTreesHoldTheFoldersOnDisk) {
  OpenCatalog();
  const std::string root = MakeDir(dir_.File("Top"));
  // "a\b" and "a"/"b" have the same full path in the catalog.
  std::vector<std::string> made = {"Music", "Music/Jazz", "Music/Jazz/Bebop", "Music/Rock", "a",
                                   "a/b", "a/b/d", "a\\b", "a\\b/c", "M\xC3\xBCsik", "Empty"};
  for (const std::string& d : made) MakeDir(root + "/" + d);
  MakeDir(root + "/.hidden");
  MakeFile(root + "/Music/x.mp3", "x");
  std::sort(made.begin(), made.end());
  for (const bool wholeVolume : {false, true}) {
    SCOPED_TRACE(wholeVolume ? "a whole volume" : "a folder");
    ScanOptions o;
    if (wholeVolume) o.mountPoint = root;
    const int32_t disc = Scan(data_, root, o);
    DiscTree tree;
    ASSERT_TRUE(tree.Build(data_.file(), disc).ok());
    EXPECT_EQ(tree.name(0), wholeVolume ? "" : "Top");
    EXPECT_EQ(tree.orphans(), 0);
    // Each folder's path from its names up to the root, against what was made.
    std::vector<std::string> paths;
    for (int32_t n = 1; n < tree.size(); ++n) {
      std::string path(tree.name(n));
      for (int32_t p = tree.parent(n); p != tree.root(); p = tree.parent(p)) {
        path = std::string(tree.name(p)) + "/" + path;
      }
      paths.push_back(path);
    }
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(paths, made);
    // Nodes are in chain order, and a scan stores the tree depth first.
    std::vector<int32_t> ids, order;
    for (const std::string& f : Folders(data_, disc, [](classDir& d) {
           return "|" + std::to_string(d.GetDirId());
         })) {
      ids.push_back(std::stoi(f.substr(f.rfind('|') + 1)));
    }
    tree.VisitDepthFirst([&](int32_t n) { order.push_back(tree.folderId(n)); });
    EXPECT_EQ(order, ids);
    EXPECT_EQ(tree.Find(ids[3]), 3);
    Render(tree);
  }
}

TEST_F(DiscTreeTest, HandMadeChainsResolveAsDocumented) {
  struct Case {
    const char* what;
    Chain chain;
    std::string tree;
    int32_t orphans = 0, root = 0;
  };
  const std::vector<Case> cases = {
      {"whole volume", {{"\\", ""}, {"\\", "a"}, {"a", "b"}, {"a\\b", "c"}, {"\\", "d"}},
       "<>;.a;..b;...c;.d"},
      {"folder", {{"h\\ann", "Mu"}, {"h\\ann\\Mu", "Jazz"}, {"h\\ann\\Mu\\Jazz", "Bop"},
                  {"h\\ann\\Mu", "Rock"}}, "Mu;.Jazz;..Bop;.Rock"},
      {"audio disc", {{"\\", ""}}, "<>"},
      {"empty disc", {}, "", 0, DiscTree::kNone},
      {"outer backslashes do not count",
       {{"", ""}, {"\\", "a"}, {"\\a\\", "b"}, {"a\\", "c\\"}, {"a\\c", "d"}},
       "<>;.a;..b;..c\\;...d"},
      {"case counts; a missing parent hangs under the root",
       {{"\\", ""}, {"\\", "Docs"}, {"docs", "x"}, {"zz\\yy", "lost"}, {"Docs", "y"}},
       "<>;.Docs;..y;.x;.lost", 2},
      {"duplicates: the latest before, else the first after",
       {{"\\", ""}, {"a", "early"}, {"\\", "a"}, {"a", "x"}, {"\\", "a"}, {"\\", "b"}, {"a", "y"}},
       "<>;.a;..early;..x;.a;..y;.b"},
      {"the root stored last", {{"\\", "a"}, {"a", "b"}, {"\\", ""}}, "<>;.a;..b", 0, 2},
      {"a nameless folder is never its own parent",
       {{"\\", ""}, {"x", ""}, {"x", ""}, {"x", "y"}}, "<>;.<>;..<>;...y", 1},
  };
  OpenCatalog();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    DiscTree tree;
    ASSERT_TRUE(tree.Build(data_.file(), AddChain(c.chain)).ok());
    EXPECT_EQ(Render(tree), c.tree);
    EXPECT_EQ(tree.orphans(), c.orphans);
    EXPECT_EQ(tree.root(), c.root);
  }
  // More folders than the disc's count (0) said: the path index grows. Odd
  // folders sit under the root, even ones under d1 (d0 before it).
  Chain flat{{"\\", ""}};
  for (int i = 0; i < 100; ++i) flat.push_back({i % 2 ? "\\" : "d1", "d" + std::to_string(i)});
  DiscTree tree;
  ASSERT_TRUE(tree.Build(data_.file(), AddChain(flat)).ok());
  EXPECT_EQ(tree.childCount(0), 50);
  EXPECT_EQ(tree.childCount(2), 50);
  EXPECT_EQ(tree.name(tree.children(2).back()), "d98");
}

TEST_F(DiscTreeTest, Windows1252NamesComeOutAsUtf8) {
  OpenCatalog("ansi.cd", TextEncoding::kWindows1252);
  const int32_t disc = AddChain({{"\\", ""}, {"\\", "Caf\xC3\xA9"}, {"Caf\xC3\xA9", "Th\xC3\xA9"}});
  DiscTree tree;
  ASSERT_TRUE(tree.Build(data_.file(), disc).ok());
  EXPECT_EQ(Render(tree), "<>;.Caf\xC3\xA9;..Th\xC3\xA9");
}

TEST_F(DiscTreeTest, DamagedChainsEndWithTheDataFileErrorAndNeverHang) {
  OpenCatalog();
  const int32_t disc = AddChain({{"\\", ""}, {"\\", "a"}, {"a", std::string(20000, 'n')}});
  CatalogFile* file = data_.file();
  const int32_t outside = static_cast<int32_t>(file->Length()) + 9;
  struct Damage {
    size_t folder;
    std::function<void(DirRecord*)> change;
    int32_t kept;  // nodes read before the failure; -1: any
  };
  for (const Damage& d : std::vector<Damage>{
           {2, [&](DirRecord* r) { r->next = ids_[0]; }, -1},   // a circle
           {1, [&](DirRecord* r) { r->name = {outside, 4}; }, 1},  // a text outside the file
           {0, [](DirRecord* r) { r->next = 3; }, 1}}) {            // a link to no folder
    DirRecord good, bad;
    ASSERT_TRUE(file->Read(ids_[d.folder], &good));
    d.change(&(bad = good));
    ASSERT_TRUE(file->Write(bad));
    DiscTree tree;
    const Status s = tree.Build(file, disc);
    EXPECT_TRUE(s.IsCorruption()) << s.message();
    EXPECT_FALSE(file->ok());
    EXPECT_TRUE(d.kept < 0 || tree.size() == d.kept) << tree.size();
    // The circle re-reads the 20,000-byte name; the tree stays near the file's size.
    EXPECT_LT(tree.MemoryBytes(), static_cast<size_t>(3 * file->Length()));
    Render(tree);
    file->ClearError();
    ASSERT_TRUE(file->Write(good));
  }
  DiscTree tree;
  EXPECT_FALSE(tree.Build(file, ids_[1] - 1).ok()) << "not a disc";
  EXPECT_TRUE(tree.empty());
}

}  // namespace
}  // namespace gorvan::test
