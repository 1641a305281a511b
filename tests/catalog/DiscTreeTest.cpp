// DiscTree: scanned folder trees against an independent walk, hand-made chains
// (missing parents, duplicate paths, roots stored late) and damaged chains.
#include "catalog/DiscTree.h"

#include <algorithm>
#include <numeric>

#include "CatalogFixture.h"
#include "scan/ScanTestTree.h"

namespace gorvan::test {
namespace {

using Chain = std::vector<std::pair<std::string, std::string>>;  // parent path, name

// The tree depth first as "name;.child;..grandchild", "<>" for an empty name.
// Checks on the way that depths follow the parent links and that the walk
// meets every node once.
std::string Render(const DiscTree& t) {
  std::string out;
  int32_t seen = 0;
  t.VisitDepthFirst([&](int32_t n) {
    ++seen;
    const int32_t p = t.parent(n);
    EXPECT_EQ(t.depth(n), p == DiscTree::kNone ? 0 : t.depth(p) + 1) << n;
    if (!out.empty()) out += ';';
    out += std::string(static_cast<size_t>(t.depth(n)), '.');
    out += t.name(n).empty() ? std::string("<>") : std::string(t.name(n));
  });
  EXPECT_EQ(seen, t.size());
  return out;
}

class DiscTreeTest : public CatalogTest {
 protected:
  // A disc holding these folders in this order (its folder count left at 0).
  int32_t AddChain(const Chain& chain) {
    classCd& cd = data_.GetCdAppend();
    ids_.clear();
    for (const auto& [path, name] : chain) {
      classDir& d = cd.GetDirAppend();
      d.SetDirPath(path);
      d.SetDirName(name);
      ids_.push_back(d.GetDirId());
    }
    cd.GetDirAppendFinish();
    const int32_t id = cd.GetCdId();
    EXPECT_TRUE(data_.GetCdCommit());
    return id;
  }

  std::vector<int32_t> ids_;
};

struct Expected {
  std::string name;
  int32_t parent, depth;
};

// Every folder below path that a scan records, in the order it records them.
void Walk(const std::string& path, std::string name, int32_t parent, int32_t depth,
          std::vector<Expected>* out) {
  const auto me = static_cast<int32_t>(out->size());
  out->push_back({std::move(name), parent, depth});
  std::vector<std::string> subdirs;
  DIR* d = ::opendir(path.c_str());
  while (dirent* e = d ? ::readdir(d) : nullptr) {
    struct stat st;
    if (e->d_name[0] != '.' && ::lstat((path + "/" + e->d_name).c_str(), &st) == 0 &&
        S_ISDIR(st.st_mode)) {
      subdirs.push_back(e->d_name);
    }
  }
  if (d) ::closedir(d);
  for (const std::string& s : subdirs) Walk(path + "/" + s, s, me, depth + 1, out);
}

TEST_F(DiscTreeTest, ScannedTreesMatchAnIndependentWalk) {
  OpenCatalog();
  const std::string root = MakeDir(dir_.File("Bench"));
  // "a\b" and "a"/"b" have the same full path in the catalog.
  for (const char* d : {"Music", "Music/Jazz", "Music/Jazz/Bebop", "Music/Rock", "a", "a/b",
                        "a/b/d", "a\\b", "a\\b/c", "M\xC3\xBCsik", "Empty", ".hidden"}) {
    MakeDir(root + "/" + d);
  }
  MakeFile(root + "/Music/x.mp3", "x");
  for (const bool wholeVolume : {false, true}) {
    SCOPED_TRACE(wholeVolume ? "a whole volume" : "a folder");
    ScanOptions o;
    if (wholeVolume) o.mountPoint = root;
    const int32_t disc = Scan(data_, root, o);
    ASSERT_NE(disc, 0);
    std::vector<Expected> expected;
    Walk(root, wholeVolume ? "" : "Bench", DiscTree::kNone, 0, &expected);

    DiscTree tree;
    ASSERT_TRUE(tree.Build(data_.file(), disc).ok());
    ASSERT_EQ(tree.size(), static_cast<int32_t>(expected.size()));
    EXPECT_EQ(tree.root(), 0);
    EXPECT_EQ(tree.orphans(), 0);
    classCd cd(data_.file());
    ASSERT_TRUE(cd.recordGet(disc));
    int32_t i = 0;
    for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext(), ++i) {
      EXPECT_EQ(tree.folderId(i), d.GetDirId());
      EXPECT_EQ(tree.name(i), expected[i].name);
      EXPECT_EQ(tree.parent(i), expected[i].parent) << expected[i].name;
      EXPECT_EQ(tree.depth(i), expected[i].depth) << expected[i].name;
    }
    EXPECT_EQ(tree.Find(tree.folderId(3)), 3);
    // A scan stores the tree depth first: the walk meets the nodes in stored order.
    std::vector<int32_t> order, stored(expected.size());
    tree.VisitDepthFirst([&](int32_t n) { order.push_back(n); });
    std::iota(stored.begin(), stored.end(), 0);
    EXPECT_EQ(order, stored);
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
      {"a whole volume", {{"\\", ""}, {"\\", "a"}, {"a", "b"}, {"a\\b", "c"}, {"\\", "d"}},
       "<>;.a;..b;...c;.d"},
      {"a folder",
       {{"home\\ann", "Music"}, {"home\\ann\\Music", "Jazz"}, {"home\\ann\\Music\\Jazz", "Bop"},
        {"home\\ann\\Music", "Rock"}},
       "Music;.Jazz;..Bop;.Rock"},
      {"an audio disc", {{"\\", ""}}, "<>"},
      {"an empty disc", {}, "", 0, DiscTree::kNone},
      {"outer backslashes do not count",
       {{"", ""}, {"\\", "a"}, {"\\a\\", "b"}, {"a\\", "c\\"}, {"a\\c", "d"}},
       "<>;.a;..b;..c\\;...d"},
      {"case counts; a missing parent hangs under the root",
       {{"\\", ""}, {"\\", "Docs"}, {"docs", "x"}, {"zz\\yy", "lost"}, {"Docs", "y"}},
       "<>;.Docs;..y;.x;.lost", 2},
      {"duplicates: the latest before, else the first after",
       {{"\\", ""}, {"a", "early"}, {"\\", "a"}, {"a", "x"}, {"\\", "a"}, {"a", "y"}},
       "<>;.a;..early;..x;.a;..y"},
      {"the root stored last", {{"\\", "a"}, {"a", "b"}, {"\\", ""}}, "<>;.a;..b", 0, 2},
      {"a nameless folder is never its own parent",
       {{"\\", ""}, {"x", ""}, {"x", ""}, {"x", "y"}}, "<>;.<>;..<>;...y", 1},
  };
  OpenCatalog();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const int32_t disc = AddChain(c.chain);
    DiscTree tree;
    ASSERT_TRUE(tree.Build(data_.file(), disc).ok());
    EXPECT_EQ(Render(tree), c.tree);
    EXPECT_EQ(tree.orphans(), c.orphans);
    EXPECT_EQ(tree.root(), c.root);
  }
  // More folders than the disc's count (0) said: the path index grows.
  Chain flat{{"\\", ""}};
  for (int i = 0; i < 100; ++i) flat.push_back({"\\", "d" + std::to_string(i)});
  DiscTree tree;
  ASSERT_TRUE(tree.Build(data_.file(), AddChain(flat)).ok());
  EXPECT_EQ(tree.childCount(0), 100);
  EXPECT_EQ(tree.name(tree.children(0)[99]), "d99");
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
  struct Damage {
    const char* what;
    size_t folder;
    std::function<void(DirRecord*)> change;
    int32_t kept;  // nodes read before the failure; -1: any
  };
  const std::vector<Damage> damages = {
      {"the last folder links back to the first", 2, [&](DirRecord* r) { r->next = ids_[0]; }, -1},
      {"a name lies outside the file", 1,
       [&](DirRecord* r) { r->name = {static_cast<int32_t>(file->Length()) + 9, 4}; }, 1},
      {"a link to no folder", 0, [](DirRecord* r) { r->next = 3; }, 1},
  };
  for (const Damage& d : damages) {
    SCOPED_TRACE(d.what);
    DirRecord good, bad;
    ASSERT_TRUE(file->Read(ids_[d.folder], &good));
    bad = good;
    d.change(&bad);
    ASSERT_TRUE(file->Write(bad));
    DiscTree tree;
    const Status s = tree.Build(file, disc);
    EXPECT_TRUE(s.IsCorruption()) << s.message();
    EXPECT_FALSE(file->ok());
    if (d.kept >= 0) {
      EXPECT_EQ(tree.size(), d.kept);
    }
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
