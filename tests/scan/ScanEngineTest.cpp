#include "scan/ScanEngine.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>

#include "catalog/CatalogCheck.h"
#include "catalog/ExtraData.h"
#include "scan/ScanPath.h"
#include "scan/ScanTestTree.h"

namespace gorvan {
namespace {

using test::ExpectedDir;
using test::MakeDir;
using test::MakeFile;
using test::TempDir;
using test::TestCatalog;

struct Options {
  std::string include = "*.*", exclude;
  bool zip = false, mp3 = false, dirsOnly = false, hidden = false;
  int32_t previous = 0, mode = 0, category = 0;
  std::string mountPoint;  // "" = "/"
  int driveType = 3;
  std::string label = "LABEL";
  std::function<void(ScanEngine&, const ScanProgress&)> progress;
};

int32_t Scan(classData& data, const std::string& path, Options o = {},
             ScanEngine** keep = nullptr) {
  static std::unique_ptr<ScanEngine> engine;
  engine = std::make_unique<ScanEngine>(data);
  engine->SetVars(o.previous, path, "Disc", "Some notes", o.label, o.category, o.include,
                  o.exclude, o.zip, o.mp3, o.dirsOnly, o.mode);
  engine->SetIncludeHidden(o.hidden);
  ScanVolume v;
  v.mountPoint = o.mountPoint.empty() ? "/" : o.mountPoint;
  v.serial = 0xABCD1234;
  v.freeBytes = 12345;
  v.driveType = o.driveType;
  engine->SetVolume(v);
  if (o.progress) {
    ScanEngine* e = engine.get();
    engine->SetProgress([e, &o](const ScanProgress& p) { o.progress(*e, p); });
  }
  const int32_t id = engine->ScanCd();
  if (keep) *keep = engine.get();
  return id;
}

// A tree with the awkward cases: empty folders, dot names, links (one to its
// own folder, one dangling), a read-only file, odd bytes in names, a 255-byte
// name, sizes that differ and times around daylight-saving changes and 1970.
void BuildNastyTree(const std::string& root) {
  for (const char* d : {"/empty", "/a", "/a/deeper", "/a/deeper/deepest", "/.hiddendir"}) {
    MakeDir(root + d);
  }
  MakeFile(root + "/.hiddendir/inside.txt", "x");
  MakeFile(root + "/.dotfile", "dot");
  MakeFile(root + "/plain.txt", "hello", 1616893200);  // 02:00 CET becomes 03:00 CEST
  MakeFile(root + "/a/new\nline.txt", "nl", 1635642000);  // 03:00 CEST becomes 02:00 CET
  MakeFile(root + "/a/tab\there.TXT", "tab", 1635645600);
  MakeFile(root + "/a/back\\slash", "bs", 1234567891);
  MakeFile(root + "/a/bad\xff\xfe utf8.bin", std::string(3000, 'b'));
  MakeFile(root + "/a/deeper/" + std::string(251, 'n') + ".dat", "long");
  MakeFile(root + "/a/deeper/deepest/old.txt", "old", -86400 * 365);  // before 1970
  MakeFile(root + "/readonly.txt", "ro");
  ::chmod((root + "/readonly.txt").c_str(), 0444);
  ::symlink(".", (root + "/a/loop").c_str());
  ::symlink("/nonexistent/target", (root + "/dangling").c_str());
  for (const char* d : {"/empty", "/a/deeper/deepest", "/a/deeper", "/a", "/.hiddendir", ""}) {
    test::SetTime(root + d, test::kFixedTime + 60);
  }
}

// Checks every folder and file record of disc `id` against the independent walk.
void ExpectDiscMatches(classData& data, int32_t id, const std::vector<ExpectedDir>& expected) {
  classCd cd(data.file());
  ASSERT_TRUE(cd.recordGet(id));
  size_t i = 0;
  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); dir.MoveNext(), ++i) {
    ASSERT_LT(i, expected.size());
    const ExpectedDir& e = expected[i];
    SCOPED_TRACE("folder " + e.parent + " | " + e.name);
    EXPECT_EQ(dir.GetDirPath(), e.parent);
    EXPECT_EQ(dir.GetDirName(), e.name);
    EXPECT_EQ(dir.GetDirDate(), e.date);
    EXPECT_EQ(dir.GetDirAttr(), e.attr);
    EXPECT_EQ(dir.GetDirSize(), -e.bytes);
    EXPECT_TRUE(std::signbit(dir.GetDirSize()));
    EXPECT_EQ(dir.GetDirCountOfFiles(), e.subtreeFiles);
    EXPECT_EQ(dir.GetDirCountOfDirs(), e.subtreeDirs);
    EXPECT_EQ(dir.GetDirCountOfFilesDirect(), static_cast<int32_t>(e.files.size()));
    size_t k = 0;
    for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); f.MoveNext(), ++k) {
      ASSERT_LT(k, e.files.size());
      EXPECT_EQ(f.GetFileName(), e.files[k].name);
      EXPECT_EQ(f.GetFileSize(), e.files[k].size);
      EXPECT_EQ(f.GetFileDate(), e.files[k].date);
      EXPECT_EQ(f.getFileAttr(), e.files[k].attr);
      EXPECT_EQ(f.GetFileNotes(), "");
      EXPECT_EQ(f.GetFilePath(), "");
    }
    EXPECT_EQ(k, e.files.size());
  }
  EXPECT_EQ(i, expected.size());
  EXPECT_EQ(cd.GetCdNumOfFiles(), expected[0].subtreeFiles);
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), expected[0].subtreeDirs);
  EXPECT_EQ(cd.GetCdtotalSize(), expected[0].bytes);
}

void ExpectSoundCatalog(classData& data) {
  ASSERT_TRUE(data.Flush());
  CatalogCheck check(data.file());
  EXPECT_EQ(check.Run(), std::vector<std::string>());
  EXPECT_EQ(check.garbage(), 0);
}

// Sets TZ for one test and puts the old value back.
struct ZoneGuard {
  const char* old = std::getenv("TZ");
  std::string saved = old ? old : "";
  explicit ZoneGuard(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZoneGuard() {
    old ? ::setenv("TZ", saved.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }
};

TEST(ScanEngineTest, FixtureTreeMatchesAnIndependentWalk) {
  ZoneGuard zone("Europe/Berlin");  // local dates across daylight-saving changes
  TempDir tree;
  BuildNastyTree(tree.path());
  TestCatalog cat;
  classCat& cat7 = cat.data->GetCatAppend();
  cat7.SetCatName("Backups");
  ASSERT_TRUE(cat.data->GetCatCommit());
  Options o;
  o.category = cat7.GetCatId();
  const int32_t id = Scan(*cat.data, tree.path(), o);
  ASSERT_NE(id, 0);
  // On the volume "/", the scanned folder's texts are its path from the root.
  std::string parent, name;
  ScanPath::FolderTexts("/", ScanPath::Normalise(tree.path()), &parent, &name);
  EXPECT_EQ(parent + "\\" + name,
            ScanPath::VolumeRelative("/", ScanPath::Normalise(tree.path())));
  std::vector<ExpectedDir> expected;
  test::ExpectWalk(tree.path(), parent, name, false, &expected);
  ASSERT_EQ(expected.size(), 5u);  // root, empty, a, deeper, deepest
  ASSERT_EQ(expected[0].subtreeFiles, 10);  // 3 + 2 + 3 + 1 + 1; dot names left out
  ExpectDiscMatches(*cat.data, id, expected);

  classCd& cd = cat.data->GetCdGoto(id);
  EXPECT_EQ(cd.GetCdName(), "Disc");
  EXPECT_EQ(cd.GetCdNotes(), "Some notes");
  EXPECT_EQ(cd.GetCdLabel(), "LABEL");
  EXPECT_EQ(cd.GetCdBasepath(), ScanPath::Normalise(tree.path()));
  EXPECT_EQ(cd.GetCdCategory(), o.category);
  EXPECT_EQ(cd.GetCdFreeSpace(), 12345);
  EXPECT_EQ(static_cast<uint32_t>(cd.GetCdDiskId()), 0xABCD1234u);
  EXPECT_NEAR(cd.GetCdLastScanned(), OleDateNow(), 1.0 / 24);
  EXPECT_EQ(cd.GetCdExtra(), "");
  ExpectSoundCatalog(*cat.data);

  // Hidden names on request, scanning the mount point itself; the dot folder
  // carries the hidden attribute.
  o.hidden = true;
  o.mountPoint = tree.path();
  const int32_t withHidden = Scan(*cat.data, tree.path(), o);
  expected.clear();
  test::ExpectWalk(tree.path(), "\\", "", true, &expected);
  ASSERT_EQ(expected.size(), 6u);
  ExpectDiscMatches(*cat.data, withHidden, expected);
  EXPECT_EQ(std::count_if(expected.begin(), expected.end(),
                          [](const ExpectedDir& d) { return d.name == ".hiddendir" && (d.attr & 2); }),
            1);
  EXPECT_EQ(cat.data->GetCdCount(), 2);
  ExpectSoundCatalog(*cat.data);
}

// (path, name) of every folder record of a disc.
std::vector<std::string> Folders(classData& data, int32_t id) {
  std::vector<std::string> got;
  classCd cd(data.file());
  if (!cd.recordGet(id)) return got;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    got.push_back(d.GetDirPath() + "|" + d.GetDirName());
  }
  return got;
}

TEST(ScanEngineTest, FolderTextsFollowTheVolumeRoot) {
  TempDir tree;
  MakeDir(tree.File("A"));
  MakeDir(tree.File("A/B"));
  MakeDir(tree.File("A/B/C"));
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  // The mount point itself: root "" under "\", then A under "\".
  EXPECT_EQ(Folders(*cat.data, Scan(*cat.data, tree.path(), o)),
            (std::vector<std::string>{"\\|", "\\|A", "A|B", "A\\B|C"}));
  // A folder below it keeps the full path from the volume's root; a trailing
  // slash and "." in the given path change nothing.
  const std::vector<std::string> below = {"A|B", "A\\B|C"};
  EXPECT_EQ(Folders(*cat.data, Scan(*cat.data, tree.File("A/B"), o)), below);
  EXPECT_EQ(Folders(*cat.data, Scan(*cat.data, tree.path() + "/A/./B/", o)), below);
}

TEST(ScanEngineTest, FiltersDecideRecordsButEveryFileCounts) {
  // MatchExtList: 1 for a catch-all, 0 for the extension named, else 2.
  const std::tuple<const char*, const char*, int> matches[] = {
      {"a.mp3", "*.*;", 1},       {"a.mp3", "*.MP3;*.wav;", 0}, {"A.Mp3", "*.wav;*.mp3;", 0},
      {"a.mp3", "*.mp;", 2},      {"a.mp3", "*.mp3 ;", 2},      {"a.tar.gz", "*.gz;", 0},
      {"noext", "*.;", 0},        {"dotlast.", "*.;", 0},       {"a.mp3", ";", 2}};
  for (const auto& [name, list, want] : matches) {
    EXPECT_EQ(ScanEngine::MatchExtList(name, list), want) << name << " " << list;
  }
  // KeepFile(include, exclude): include 0 always keeps; 1 keeps unless
  // excluded by name (an exclude of "*.*" drops nothing); 2 never.
  for (int inc = 0; inc < 3; ++inc) {
    for (int exc = 0; exc < 3; ++exc) {
      EXPECT_EQ(ScanEngine::KeepFile(inc, exc), inc == 0 || (inc == 1 && exc != 0)) << inc << exc;
    }
  }
  // SetVars stores the patterns cleaned and hands the cleaned text back.
  TestCatalog cat;
  {
    ScanEngine engine(*cat.data);
    std::string include = "*.mp3 ;*.wav  ;", exclude = "*.txt ;";
    engine.SetVars(0, "/", "", "", "", 0, include, exclude, false, false, false, 0);
    EXPECT_EQ(include, "*.mp3;*.wav;");
    EXPECT_EQ(exclude, "*.txt;");
  }
  TempDir tree;
  MakeFile(tree.File("a.mp3"), "12345");
  MakeFile(tree.File("b.WAV"), "123");
  MakeFile(tree.File("c.txt"), "1");
  MakeFile(tree.File("noext"), "12");
  struct Row {
    std::string include, exclude;
    bool dirsOnly;
    std::vector<std::string> kept;
  } rows[] = {
      {"*.*", "", false, {"a.mp3", "b.WAV", "c.txt", "noext"}},
      {"*.*", "*.txt;*.mp3", false, {"b.WAV", "noext"}},
      {"*.mp3;*.wav", "*.mp3", false, {"a.mp3", "b.WAV"}},  // include wins over exclude
      {"*.*", "*.*", false, {"a.mp3", "b.WAV", "c.txt", "noext"}},
      {"", "", false, {}},                                 // empty include: nothing written
      {"*.mp3 ;*.txt", "", false, {"c.txt"}},              // blank before ";" never matches
      {"*.", "", false, {"noext"}},
      {"*.*", "", true, {}},                               // directories only
  };
  for (Row& r : rows) {
    SCOPED_TRACE(r.include + " / " + r.exclude);
    Options o;
    o.include = r.include;
    o.exclude = r.exclude;
    o.dirsOnly = r.dirsOnly;
    const int32_t id = Scan(*cat.data, tree.path(), o);
    ASSERT_NE(id, 0);
    classCd& cd = cat.data->GetCdGoto(id);
    std::vector<std::string> names;
    for (ClassFile& f = cd.GetDirFirst().GetFileFirst(); !f.isEof(); f.MoveNext()) {
      names.push_back(f.GetFileName());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, r.kept);
    EXPECT_EQ(cd.GetCdNumOfFiles(), 4);
    EXPECT_EQ(cd.GetCdtotalSize(), 11);
    EXPECT_EQ(cd.GetDirFirst().GetDirCountOfFilesDirect(), 4);
  }
}

// Every note of a disc, keyed by folder ("path\name") or "folder|file".
std::map<std::string, std::string> AllNotes(classData& data, int32_t disc) {
  std::map<std::string, std::string> notes;
  classCd cd(data.file());
  if (!cd.recordGet(disc)) return notes;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    if (!d.GetDirNotes().empty()) notes[d.GetDirFullName()] = d.GetDirNotes();
    for (ClassFile& f = d.GetFileFirst(); !f.isEof(); f.MoveNext()) {
      if (!f.GetFileNotes().empty()) notes[d.GetDirFullName() + "|" + f.GetFileName()] = f.GetFileNotes();
    }
  }
  return notes;
}

TEST(ScanEngineTest, RescanCarriesNotesOverAndReplacesTheDisc) {
  TempDir tree;
  for (const char* d : {"A", "A/Sub", "B"}) MakeDir(tree.File(d));
  for (const char* f : {"A/x.txt", "A/Sub/y.txt", "B/z.txt"}) MakeFile(tree.File(f), "x");
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  const int32_t first = Scan(*cat.data, tree.path(), o);
  ASSERT_NE(first, 0);
  {
    classCd cd(cat.data->file());
    ASSERT_TRUE(cd.recordGet(first));
    for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
      if (d.GetDirName().empty()) continue;
      d.SetDirNotes("note " + d.GetDirName());
      for (ClassFile& f = d.GetFileFirst(); !f.isEof(); f.MoveNext()) f.SetFileNotes(f.GetFileName());
    }
  }
  const auto before = AllNotes(*cat.data, first);
  ASSERT_EQ(before.size(), 6u);
  MakeFile(tree.File("B/new.txt"), "n");
  o.previous = first;
  const int32_t second = Scan(*cat.data, tree.path(), o);
  ASSERT_NE(second, 0);
  // Same order on the same file system: the forward search finds every one.
  EXPECT_EQ(AllNotes(*cat.data, second), before);
  EXPECT_EQ(cat.data->GetCdCount(), 1);
  EXPECT_EQ(cat.data->GetTableHeader().firstCd, second);
  EXPECT_EQ(cat.data->GetCdGoto(second).GetCdNumOfFiles(), 4);
}

TEST(ScanEngineTest, NotesSearchGoesForwardOnly) {
  TempDir tree;
  MakeDir(tree.File("A"));
  MakeFile(tree.File("a.txt"), "a");
  MakeFile(tree.File("b.txt"), "b");
  TestCatalog cat;
  classData& data = *cat.data;
  // A previous disc written by hand: root, then a folder whose path sorts
  // after everything sought, then A. Root files stored as b.txt, a.txt.
  classCd& old = data.GetCdAppend();
  const int32_t oldId = old.GetCdId();
  classDir& root = old.GetDirAppend();
  root.SetDirPath("\\");
  root.SetDirNotes("root notes");
  root.GetFileAppendStart();
  for (const char* f : {"b", "a"}) {
    root.GetFileAppend().SetFileName(std::string(f) + ".txt");
    root.files().SetFileNotes(std::string(f) + " notes");
  }
  root.GetFileAppendFinish();
  classDir& z = old.GetDirAppend();
  z.SetDirPath("zz");
  z.SetDirName("Q");
  classDir& a = old.GetDirAppend();
  a.SetDirPath("\\");
  a.SetDirName("A");
  a.SetDirNotes("A notes");
  old.GetDirAppendFinish();
  ASSERT_TRUE(data.GetCdCommit());

  Options o;
  o.mountPoint = tree.path();
  o.previous = oldId;
  const int32_t id = Scan(data, tree.path(), o);
  ASSERT_NE(id, 0);
  const auto notes = AllNotes(data, id);
  EXPECT_EQ(notes.at("\\"), "root notes");
  // "\" folders are passed over, and "zz" sorts after "\", so the search for A
  // stops there: a miss.
  EXPECT_EQ(notes.count("\\A"), 0u);
  // Files: whichever of a.txt/b.txt the file system lists first decides.
  std::vector<ExpectedDir> walk;
  test::ExpectWalk(tree.path(), "\\", "", false, &walk);
  ASSERT_EQ(walk[0].files.size(), 2u);
  EXPECT_EQ(notes.at("\\|b.txt"), "b notes");
  if (walk[0].files[0].name == "b.txt") {
    EXPECT_EQ(notes.at("\\|a.txt"), "a notes");
  } else {
    EXPECT_EQ(notes.count("\\|a.txt"), 0u);  // "b.txt" sorts after "a.txt": a miss
  }
  EXPECT_EQ(data.GetCdCount(), 1);
}

TEST(ScanEngineTest, CancelLeavesThePartialDiscAsAppended) {
  TempDir tree;
  for (const char* d : {"A", "B", "C"}) {
    MakeDir(tree.File(d));
    for (int i = 0; i < 5; ++i) MakeFile(tree.File(std::string(d) + "/f" + std::to_string(i)), "1234");
  }
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  const int32_t full = Scan(*cat.data, tree.path(), o);
  ASSERT_NE(full, 0);

  o.previous = full;
  o.progress = [](ScanEngine& e, const ScanProgress& p) {
    if (p.entries == 9) e.RequestCancel();
  };
  ScanEngine* engine = nullptr;
  EXPECT_EQ(Scan(*cat.data, tree.path(), o, &engine), 0);
  EXPECT_TRUE(engine->status().IsCancelled());
  const int32_t partial = engine->NewDiscId();
  ASSERT_NE(partial, 0);
  // Both discs stay: the previous one and the partial one, linked.
  EXPECT_EQ(cat.data->GetCdCount(), 2);
  EXPECT_EQ(cat.data->GetTableHeader().lastCd, partial);
  classCd cd(cat.data->file());
  ASSERT_TRUE(cd.recordGet(partial));
  // Values as appended (copied from the previous disc), no new totals.
  EXPECT_EQ(cd.GetCdNumOfFiles(), 15);
  int folders = 0;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext(), ++folders) {
    EXPECT_NE(d.GetDirSize(), -1.0) << "every folder written gets its totals";
  }
  EXPECT_GE(folders, 1);
  EXPECT_LT(folders, 4);
  ExpectSoundCatalog(*cat.data);

  // A new disc cancelled before its first entry: an empty name, linked.
  o.previous = 0;
  o.progress = [](ScanEngine& e, const ScanProgress&) { e.RequestCancel(); };
  EXPECT_EQ(Scan(*cat.data, tree.path(), o, &engine), 0);
  ASSERT_TRUE(cd.recordGet(engine->NewDiscId()));
  EXPECT_EQ(cd.GetCdName(), "");
  EXPECT_EQ(cd.GetCdNumOfFiles(), 0);
  EXPECT_EQ(cd.GetCdtotalSize(), 0);
  EXPECT_EQ(cat.data->GetCdCount(), 3);
}

// Drops the capabilities that let root read any folder, so that a folder
// without permissions is unreadable for this process too.
bool DropReadOverride() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct caps[2] = {};
  if (::syscall(SYS_capget, &header, caps) != 0) return false;
  for (int bit : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
    caps[bit / 32].effective &= ~(1u << (bit % 32));
  }
  return ::syscall(SYS_capset, &header, caps) == 0;
}

TEST(ScanEngineTest, UnreadableFolderIsRecordedCountedAndSkipped) {
  TempDir tree;
  MakeDir(tree.File("locked"));
  MakeFile(tree.File("locked/secret.txt"), "s");
  MakeDir(tree.File("open"));
  MakeFile(tree.File("open/f.txt"), "f");
  ::chmod(tree.File("locked").c_str(), 0);
  TestCatalog cat;
  cat.data->CloseFiles();
  // The scan runs in a child without the override capabilities; the parent
  // checks the catalog it wrote.
  const pid_t pid = ::fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    if (!DropReadOverride()) ::_exit(3);
    classData data;
    if (!data.OpenFiles(cat.path, false, true)) ::_exit(4);
    Options o;
    o.mountPoint = tree.path();
    ScanEngine* engine = nullptr;
    const int32_t id = Scan(data, tree.path(), o, &engine);
    ::_exit(id != 0 && engine->warnings() == 1 ? 0 : 5);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  ASSERT_EQ(WEXITSTATUS(status), 0);
  cat.Reopen();
  classCd& cd = cat.data->GetCdFirst();
  ASSERT_FALSE(cd.isEof());
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), 2);
  EXPECT_EQ(cd.GetCdNumOfFiles(), 1);
  bool sawLocked = false;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    if (d.GetDirName() != "locked") continue;
    sawLocked = true;
    EXPECT_EQ(d.GetDirCountOfFiles(), 0);
    EXPECT_EQ(d.GetDirAttr(), 16 | 1);  // no write bit: read-only
  }
  EXPECT_TRUE(sawLocked);
}

TEST(ScanEngineTest, LongPathsAndLinkLoopsAreHandled) {
  TempDir tree;
  // 20 levels of 250-byte names: over 5000 bytes, beyond what a path may hold.
  int fd = ::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY);
  const std::string level(250, 'L');
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(::mkdirat(fd, level.c_str(), 0755), 0);
    const int next = ::openat(fd, level.c_str(), O_RDONLY | O_DIRECTORY);
    ::close(fd);
    fd = next;
  }
  const std::string tag = test::Id3Tag("Deep", "Artist");
  const int f = ::openat(fd, "song.mp3", O_WRONLY | O_CREAT, 0644);
  ASSERT_EQ(::write(f, tag.data(), tag.size()), static_cast<ssize_t>(tag.size()));
  ::close(f);
  ::symlinkat(".", fd, "self");
  ::symlinkat("..", fd, "up");
  ::close(fd);

  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  o.mp3 = true;
  ScanEngine* engine = nullptr;
  const int32_t id = Scan(*cat.data, tree.path(), o, &engine);
  ASSERT_NE(id, 0);
  EXPECT_EQ(engine->warnings(), 0u);
  classCd& cd = cat.data->GetCdGoto(id);
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), 20);
  EXPECT_EQ(cd.GetCdNumOfFiles(), 3);
  classDir& d = cd.GetDirGoto(cd.record().lastDir);
  EXPECT_GT(d.GetDirPath().size(), 4096u);
  std::map<std::string, std::pair<int32_t, std::string>> files;
  for (ClassFile& file = d.GetFileFirst(); !file.isEof(); file.MoveNext()) {
    files[file.GetFileName()] = {file.getFileAttr(), file.GetFileExtra()};
  }
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files["self"].first, 1024);
  EXPECT_EQ(files["up"].first, 1024);
  EXPECT_EQ(GetExtraValue(files["song.mp3"].second, kExtraMp3Title), "Deep");
  EXPECT_EQ(GetExtraValue(files["song.mp3"].second, kExtraMp3Artist), "Artist");
  EXPECT_EQ(std::system(("rm -rf '" + tree.File(level) + "'").c_str()), 0);
}

TEST(ScanEngineTest, FilesVanishingDuringTheScanAreWarnings) {
  TempDir tree;
  for (int i = 0; i < 20; ++i) MakeFile(tree.File("f" + std::to_string(i)), "x");
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  int removed = 0;
  // At the first file, remove all the others: their names are already read.
  o.progress = [&](ScanEngine&, const ScanProgress& p) {
    if (p.name.empty() || removed > 0) return;
    for (int i = 0; i < 20; ++i) {
      const std::string n = "f" + std::to_string(i);
      if (n != p.name && ::unlink(tree.File(n).c_str()) == 0) ++removed;
    }
  };
  ScanEngine* engine = nullptr;
  const int32_t id = Scan(*cat.data, tree.path(), o, &engine);
  ASSERT_NE(id, 0);
  EXPECT_EQ(removed, 19);
  EXPECT_EQ(engine->warnings(), 19u);
  EXPECT_EQ(cat.data->GetCdGoto(id).GetCdNumOfFiles(), 1);
  ExpectSoundCatalog(*cat.data);
}

TEST(ScanEngineTest, Mp3TagsBecomeExtraLists) {
  TempDir tree;
  MakeFile(tree.File("tagged.MP3"),
           std::string(500, '\xff') + test::Id3Tag("Title", "Artist", "Album", "1999", ""));
  MakeFile(tree.File("untagged.mp3"), std::string(500, '\xff'));
  MakeFile(tree.File("short.mp3"), "TAG");
  MakeFile(tree.File("tag.txt"), std::string(500, '\xff') + test::Id3Tag("T"));
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  o.mp3 = true;
  const int32_t id = Scan(*cat.data, tree.path(), o);
  std::map<std::string, std::string> extra;
  classCd& cd = cat.data->GetCdGoto(id);
  for (ClassFile& f = cd.GetDirFirst().GetFileFirst(); !f.isEof(); f.MoveNext()) {
    extra[f.GetFileName()] = f.GetFileExtra();
  }
  ASSERT_EQ(extra.size(), 4u);
  EXPECT_EQ(extra["tagged.MP3"], "MAAlbum|`|MRArtist|`|MTTitle|`|MY1999");
  EXPECT_EQ(extra["untagged.mp3"], "");
  EXPECT_EQ(extra["short.mp3"], "");
  EXPECT_EQ(extra["tag.txt"], "");
  // Without "scan MP3" no tag is read.
  o.mp3 = false;
  const int32_t plain = Scan(*cat.data, tree.path(), o);
  for (ClassFile& f = cat.data->GetCdGoto(plain).GetDirFirst().GetFileFirst(); !f.isEof();
       f.MoveNext()) {
    EXPECT_EQ(f.GetFileExtra(), "");
  }
}

TEST(ScanEngineTest, ArchiveMembersAreAppendedAndDamageIsAWarning) {
  for (const char* tool : {"zip", "zipinfo"}) {
    if (!test::HaveTool(tool)) GTEST_SKIP() << tool << " is not installed";
  }
  TempDir src;
  MakeDir(src.File("docs"));
  MakeDir(src.File("docs/old"));
  MakeDir(src.File("docs/empty"));
  MakeFile(src.File("docs/readme.txt"), std::string(4000, 'r'));
  MakeFile(src.File("docs/old/notes.txt"), "n", 946684800);
  MakeFile(src.File("top.bin"), "0123456789");
  TempDir tree;
  MakeDir(tree.File("sub"));
  const std::string pack = tree.File("sub/pack.zip");
  ASSERT_EQ(std::system(("cd '" + src.path() + "' && zip -qr '" + pack + "' docs top.bin").c_str()), 0);
  const std::vector<test::ToolMember> expected = test::ToolMembers(pack, true);
  ASSERT_EQ(expected.size(), 3u);
  const std::string zip = test::ReadFileBytes(pack);
  // Cut inside the first file member's data.
  const size_t member = zip.find("docs/readme.txt");
  ASSERT_NE(member, std::string::npos);
  MakeFile(tree.File("broken.zip"), zip.substr(0, member + 20));
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  o.zip = true;
  ScanEngine* engine = nullptr;
  const int32_t id = Scan(*cat.data, tree.path(), o, &engine);
  ASSERT_NE(id, 0);
  EXPECT_EQ(engine->warnings(), 1u);
  ASSERT_EQ(engine->warningTexts().size(), 1u);
  EXPECT_NE(engine->warningTexts()[0].find("broken.zip"), std::string::npos);
  // The members of sub/pack.zip, keyed by their path inside the archive.
  classDir& sub = cat.data->GetCdGoto(id).GetDirFirst();
  ASSERT_TRUE(sub.MoveNext());
  ASSERT_EQ(sub.GetDirName(), "sub");
  ClassFile& f = sub.GetFileFirst();
  ASSERT_FALSE(f.isEof());
  ASSERT_EQ(f.GetFileName(), "pack.zip");
  std::map<std::string, std::vector<std::string>> members;
  for (ClassFile& m = f.GetZipFirst(); !m.isEof(); m.MoveNext()) {
    std::string path = m.GetFilePath();
    for (char& ch : path) ch = ch == '\\' ? '/' : ch;
    EXPECT_EQ(m.GetFileDirId(), sub.GetDirId());
    members[path.empty() ? m.GetFileName() : path + "/" + m.GetFileName()] = {
        std::to_string(static_cast<long long>(m.GetFileSize())), m.GetFileExtra(),
        test::ZipinfoDateOfOle(m.GetFileDate())};
  }
  EXPECT_EQ(members.size(), expected.size());
  for (const test::ToolMember& e : expected) {
    // The packed size is kept in the extra text.
    const std::vector<std::string> want = {std::to_string(e.size),
                                           "ZP" + std::to_string(e.packed), e.date};
    EXPECT_EQ(members[e.path], want) << e.path;
  }
  ExpectSoundCatalog(*cat.data);
}

// A file that fails every write once it would grow past a limit: a full disk.
class FullDisk : public FileIO {
 public:
  FullDisk(std::unique_ptr<FileIO> real, uint64_t limit) : real_(std::move(real)), limit_(limit) {}
  Status ReadAt(uint64_t off, void* dst, size_t n, size_t* got) override {
    return real_->ReadAt(off, dst, n, got);
  }
  Status WriteAt(uint64_t off, const void* src, size_t n) override {
    if (off + n > limit_) return Status::IOError("No space left on device");
    return real_->WriteAt(off, src, n);
  }
  Status Truncate(uint64_t len) override { return real_->Truncate(len); }
  Status Sync() override { return real_->Sync(); }
  Status Size(uint64_t* size) override { return real_->Size(size); }

 private:
  std::unique_ptr<FileIO> real_;
  uint64_t limit_;
};

TEST(ScanEngineTest, FullDiskStopsCleanlyAndKeepsTheCatalogReadable) {
  TempDir tree;
  for (int d = 0; d < 30; ++d) {
    MakeDir(tree.File("d" + std::to_string(d)));
    for (int i = 0; i < 100; ++i) {
      MakeFile(tree.File("d" + std::to_string(d) + "/file-with-a-longer-name-" + std::to_string(i)),
               "x");
    }
  }
  TestCatalog cat;
  Options o;
  o.mountPoint = tree.path();
  ASSERT_NE(Scan(*cat.data, tree.path(), o), 0);  // one good disc first
  ASSERT_TRUE(cat.data->Sync());
  const int64_t goodLength = cat.data->file()->Length();
  cat.data->CloseFiles();

  std::unique_ptr<FileIO> real;
  ASSERT_TRUE(OpenPosixFile(cat.path, false, true, &real).ok());
  classData data;
  ASSERT_TRUE(data.OpenWith(std::make_unique<FullDisk>(std::move(real), goodLength + 20000),
                            cat.path, true, false, false));
  ScanEngine* engine = nullptr;
  EXPECT_EQ(Scan(data, tree.path(), o, &engine), 0);
  EXPECT_FALSE(engine->status().ok());
  EXPECT_FALSE(engine->status().IsCancelled());
  EXPECT_NE(engine->status().message().find("No space"), std::string::npos)
      << engine->status().message();
  data.CloseFiles();

  cat.Reopen();
  ASSERT_TRUE(cat.data->IsOpen());
  EXPECT_EQ(cat.data->GetCdCount(), 1);  // the partial disc is not linked
  CatalogCheck check(cat.data->file());
  EXPECT_TRUE(check.Run().empty());
}

TEST(ScanEngineTest, AudioDiscFromATrackList) {
  TestCatalog cat;
  ScanEngine engine(*cat.data);
  std::string inc = "*.*", exc;
  engine.SetVars(0, "/dev/sr0", "ignored", "notes", "Audio CD", 2, inc, exc, false, false, false,
                 ScanEngine::kAudioScanMode);
  ScanVolume v;
  v.driveType = 5;
  engine.SetVolume(v);
  engine.SetAudio({{"One", "3:01"}, {"Two", "4:02"}}, {"Album", "Artist", "rock", "7:03", ""});
  const int32_t id = engine.ScanCd();
  ASSERT_NE(id, 0);
  classCd& cd = cat.data->GetCdGoto(id);
  EXPECT_EQ(cd.GetCdName(), "Album");
  EXPECT_EQ(cd.GetCdName(true), "Album - Artist");
  EXPECT_EQ(cd.GetCdMediaType(), 105);
  EXPECT_EQ(cd.GetCdStoredIconKey(), "i_0012");
  // An empty year still appends its bare key.
  EXPECT_EQ(cd.GetCdExtra(), "AAAlbum|`|ARArtist|`|ACrock|`|AM7:03|`|AY");
  EXPECT_EQ(cd.GetCdNumOfFiles(), 2);
  classDir& root = cd.GetDirFirst();
  EXPECT_EQ(root.GetDirPath(), "\\");
  EXPECT_EQ(root.GetDirName(), "");
  EXPECT_EQ(root.GetDirCountOfFiles(), 2);
  std::vector<std::string> tracks;
  for (ClassFile& f = root.GetFileFirst(); !f.isEof(); f.MoveNext()) {
    tracks.push_back(f.GetFileName() + "=" + f.GetFileExtra());
    EXPECT_EQ(f.GetFileSize(), 0);
  }
  EXPECT_EQ(tracks, (std::vector<std::string>{"One=AL3:01|`|AN1", "Two=AL4:02|`|AN2"}));
}

TEST(ScanEngineTest, DiscIconAndMediaTypeFollowTheDrive) {
  TempDir tree;
  MakeFile(tree.File("AutoRun.INF"), "[autorun]\r\nopen=setup.exe\r\nICON = disc.ico , 2\r\n");
  TestCatalog cat;
  struct Row {
    int drive;
    std::string label, icon;
    int32_t media;
  } rows[] = {
      {5, "AUDIO cd", "i_0012", 105},  // a data scan of a disc labelled as audio
      {5, "DATA", "f_disc.ico,2", 5},
      {2, "STICK", "removable", 2},
      {3, "AUDIO CD", "fixed", 3},
  };
  for (const Row& r : rows) {
    Options o;
    o.mountPoint = tree.path();
    o.driveType = r.drive;
    o.label = r.label;
    const int32_t id = Scan(*cat.data, tree.path(), o);
    classCd& cd = cat.data->GetCdGoto(id);
    EXPECT_EQ(cd.GetCdStoredIconKey(), r.icon) << r.label;
    EXPECT_EQ(cd.GetCdMediaType(), r.media) << r.label;
  }
}

}  // namespace
}  // namespace gorvan
