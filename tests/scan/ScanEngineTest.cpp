#include <gtest/gtest.h>

#include "scan/ExtensionFilter.h"
#include "scan/ScanChecks.h"
#include "scan/ScanEngine.h"
#include "scan/ScanPath.h"
#include "scan/ScanTestTree.h"
#include "support/CatalogCursors.h"
#include "support/FullDisk.h"

namespace gorvan {
namespace {

using namespace test;  // NOLINT: the scan test helpers

// A tree to scan, a catalog, and settings whose mount point is the tree.
class ScanEngineTest : public ::testing::Test {
 protected:
  ScanEngineTest() { o.v.mountPoint = tree.path(); }
  int32_t Run() { return Scan(*cat.data, tree.path(), o, &engine); }
  classCd& Disc(int32_t id) { return cursors.Disc(id); }

  TempDir tree;
  TestCatalog cat;
  CatalogCursors cursors{*cat.data};
  ScanOptions o;
  ScanEngine* engine = nullptr;
};

// A tree with the awkward cases: empty folders, dot names, links (one to its
// own folder, one dangling), a read-only file, odd bytes in names, a 255-byte
// name, sizes that differ and times around daylight-saving changes and 1970.
void BuildNastyTree(const std::string& root) {
  for (const char* d : {"/empty", "/a", "/a/deeper", "/a/deeper/deepest", "/.hiddendir"}) {
    MakeDir(root + d);
  }
  MakeFile(root + "/.hiddendir/inside.txt", "x");
  MakeFile(root + "/.dotfile", "dot");
  MakeFile(root + "/plain.txt", "hello", 1616893200);     // 02:00 CET becomes 03:00 CEST
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
    SetTime(root + d, kFixedTime + 60);
  }
}

TEST_F(ScanEngineTest, FixtureTreeMatchesAnIndependentWalk) {
  ZoneGuard zone("Europe/Berlin");  // local dates across daylight-saving changes
  BuildNastyTree(tree.path());
  classCat& category = cursors.NewCat();
  category.SetCatName("Backups");
  ASSERT_TRUE(cursors.CommitCat());
  o.s.categoryId = category.GetCatId();
  o.v.mountPoint = "/";
  const int32_t id = Run();
  ASSERT_NE(id, 0);
  // On the volume "/", the scanned folder's texts are its path from the root.
  std::string parent, name;
  ScanPath::FolderTexts("/", ScanPath::Normalise(tree.path()), &parent, &name);
  std::vector<ExpectedDir> expected;
  ExpectWalk(tree.path(), parent, name, false, &expected);
  ASSERT_EQ(expected.size(), 5u);           // root, empty, a, deeper, deepest
  ASSERT_EQ(expected[0].subtreeFiles, 10);  // 3 + 2 + 3 + 1 + 1; dot names left out
  ExpectDiscMatches(*cat.data, id, expected);

  classCd& cd = Disc(id);
  EXPECT_EQ(cd.GetCdName(), "Disc");
  EXPECT_EQ(cd.GetCdNotes(), "Some notes");
  EXPECT_EQ(cd.GetCdLabel(), "LABEL");
  EXPECT_EQ(cd.GetCdBasepath(), ScanPath::Normalise(tree.path()));
  EXPECT_EQ(cd.GetCdCategory(), o.s.categoryId);
  EXPECT_EQ(cd.GetCdFreeSpace(), 12345);
  EXPECT_EQ(static_cast<uint32_t>(cd.GetCdDiskId()), 0xABCD1234u);
  EXPECT_NEAR(cd.GetCdLastScanned(), OleDateNow(), 1.0 / 24);
  EXPECT_EQ(cd.GetCdExtra(), "");
  ExpectSoundCatalog(*cat.data);

  // Hidden names on request, scanning the mount point itself; the dot folder
  // carries the hidden attribute.
  o.s.includeHidden = true;
  o.v.mountPoint = tree.path();
  const int32_t withHidden = Run();
  expected.clear();
  ExpectWalk(tree.path(), "\\", "", true, &expected);
  ASSERT_EQ(expected.size(), 6u);
  ExpectDiscMatches(*cat.data, withHidden, expected);
  EXPECT_EQ(expected[5].name + " " + std::to_string(expected[5].attr), ".hiddendir 18");
  EXPECT_EQ(cat.data->GetCdCount(), 2);
  ExpectSoundCatalog(*cat.data);
}

TEST_F(ScanEngineTest, FolderTextsFollowTheVolumeRoot) {
  for (const char* d : {"A", "A/B", "A/B/C"}) MakeDir(tree.File(d));
  // The mount point itself: root "" under "\", then A under "\".
  EXPECT_EQ(Folders(*cat.data, Run()), (std::vector<std::string>{"\\|", "\\|A", "A|B", "A\\B|C"}));
  // A folder below it keeps the full path from the volume's root; a trailing
  // slash and "." in the given path change nothing.
  const std::vector<std::string> below = {"A|B", "A\\B|C"};
  EXPECT_EQ(Folders(*cat.data, Scan(*cat.data, tree.File("A/B"), o)), below);
  EXPECT_EQ(Folders(*cat.data, Scan(*cat.data, tree.path() + "/A/./B/", o)), below);
}

// What the scan dialog checks before a scan: the path, the default disc
// name, and whether the place was scanned before.
TEST_F(ScanEngineTest, ChecksBeforeAScan) {
  MakeDir(tree.File("A"));
  const Status missing = ScanChecks::CheckPath(tree.File("nope"));
  EXPECT_TRUE(missing.IsNotFound());
  EXPECT_EQ(missing.message(), "Folder or Directory Does Not Exist!!\nPlease Try Again");
  EXPECT_TRUE(ScanChecks::CheckPath(tree.File("A")).ok());
  EXPECT_FALSE(ScanChecks::CheckPath(MakeFile(tree.File("file"), "x")).ok()) << "not a folder";
  ScanVolume v{.mountPoint = tree.path(), .serial = 0xABCD1234};
  EXPECT_EQ(ScanChecks::DefaultDiscName(tree.File("A/"), "LABEL", v), "A");
  EXPECT_EQ(ScanChecks::DefaultDiscName(tree.path(), "LABEL", v), "LABEL");

  o.s.volumeLabel = "STICK";
  const int32_t id = Scan(*cat.data, tree.File("A"), o);
  ASSERT_NE(id, 0);
  auto before = [&](const std::string& path, const std::string& label, const ScanVolume& vol) {
    return ScanChecks::FindScannedBefore(*cat.data, path, label, vol);
  };
  EXPECT_EQ(before(tree.File("A"), "STICK", v), id);
  EXPECT_EQ(before(tree.path(), "STICK", v), 0);
  EXPECT_EQ(before(tree.File("A"), "OTHER", v), 0);
  EXPECT_EQ(before(tree.File("A"), "STICK", {.mountPoint = tree.path(), .serial = 0x9999}), 0);
  // The same stick mounted elsewhere: same serial, label and place inside it.
  TempDir elsewhere;
  MakeDir(elsewhere.File("A"));
  EXPECT_EQ(
      before(elsewhere.File("A"), "STICK", {.mountPoint = elsewhere.path(), .serial = v.serial}),
      id);
  // Without a serial the scanned path must match too.
  o.v.serial = 0;
  o.v.mountPoint = elsewhere.path();
  const int32_t second = Scan(*cat.data, elsewhere.File("A"), o);
  ASSERT_NE(second, 0);
  EXPECT_EQ(before(tree.File("A"), "STICK", {.mountPoint = tree.path()}), 0);
  EXPECT_EQ(before(elsewhere.File("A"), "STICK", {.mountPoint = elsewhere.path()}), second);
}

TEST_F(ScanEngineTest, FiltersDecideRecordsButEveryFileCounts) {
  // MatchExtList: 1 for a catch-all, 0 for the extension named, else 2 (the
  // scans below show the other rules).
  const std::tuple<const char*, const char*, int> matches[] = {
      {"a.mp3", "*.mp;", 2}, {"a.tar.gz", "*.gz;", 0}, {"dotlast.", "*.;", 0}};
  for (const auto& [name, list, want] : matches) {
    EXPECT_EQ(ExtensionFilter::MatchExtList(name, list), want) << name << " " << list;
  }
  // SetVars stores the patterns as typed and hands the cleaned text back.
  ScanSettings s;
  s.includeText = "*.mp3 ;*.wav  ;";
  s.excludeText = "*.txt ;";
  ScanEngine(*cat.data).SetVars(s);
  EXPECT_EQ(s.includeText + s.excludeText, "*.mp3;*.wav;*.txt;");

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
      {"*.MP3;*.wav", "*.mp3", false, {"a.mp3", "b.WAV"}},  // include wins over exclude
      {"*.*", "*.*", false, {"a.mp3", "b.WAV", "c.txt", "noext"}},
      {"", "", false, {}},                     // empty include: nothing written
      {"*.mp3 ;*.txt", "", false, {"c.txt"}},  // blank before ";" never matches
      {"*.", "", false, {"noext"}},
      {"*.*", "", true, {}},  // directories only
  };
  for (Row& r : rows) {
    SCOPED_TRACE(r.include + " / " + r.exclude);
    o.s.includeText = r.include;
    o.s.excludeText = r.exclude;
    o.s.directoriesOnly = r.dirsOnly;
    classCd& cd = Disc(Run());
    EXPECT_EQ(Files(cd.GetDirFirst(), true), r.kept);
    EXPECT_EQ(cd.GetCdNumOfFiles(), 4);
    EXPECT_EQ(cd.GetCdtotalSize(), 11);
    EXPECT_EQ(cd.GetDirFirst().GetDirCountOfFilesDirect(), 4);
  }
}

TEST_F(ScanEngineTest, RescanCarriesNotesOverAndReplacesTheDisc) {
  for (const char* d : {"A", "A/Sub", "B"}) MakeDir(tree.File(d));
  for (const char* f : {"A/x.txt", "A/Sub/y.txt", "B/z.txt"}) MakeFile(tree.File(f), "x");
  const int32_t first = Run();
  ASSERT_NE(first, 0);
  for (classDir& d = Disc(first).GetDirFirst(); !d.isEof(); d.MoveNext()) {
    if (d.GetDirName().empty()) continue;
    d.SetDirNotes("note " + d.GetDirName());
    for (ClassFile& f = d.GetFileFirst(); !f.isEof(); f.MoveNext()) f.SetFileNotes(f.GetFileName());
  }
  const auto before = AllNotes(*cat.data, first);
  ASSERT_EQ(before.size(), 6u);
  MakeFile(tree.File("B/new.txt"), "n");
  o.s.previousDiscId = first;
  const int32_t second = Run();
  ASSERT_NE(second, 0);
  // Same order on the same file system: the forward search finds every one.
  EXPECT_EQ(AllNotes(*cat.data, second), before);
  EXPECT_EQ(cat.data->GetCdCount(), 1);
  EXPECT_EQ(cat.data->GetTableHeader().firstCd, second);
  EXPECT_EQ(Disc(second).GetCdNumOfFiles(), 4);
  // A previous id that is no disc is refused and leaves the catalog clean.
  o.s.previousDiscId = second + 4;
  EXPECT_EQ(Run(), 0);
  EXPECT_TRUE(engine->status().IsInvalidArgument()) << engine->status().message();
  EXPECT_TRUE(cat.data->ok());
}

TEST_F(ScanEngineTest, NotesSearchGoesForwardOnly) {
  MakeDir(tree.File("A"));
  MakeFile(tree.File("a.txt"), "a");
  MakeFile(tree.File("b.txt"), "b");
  // A previous disc written by hand: root, then a folder whose path sorts
  // after everything sought, then A. Root files stored as b.txt, a.txt.
  classCd& old = cursors.NewDisc();
  o.s.previousDiscId = old.GetCdId();
  classDir& root = old.GetDirAppend();
  root.SetDirPath("\\");
  root.SetDirNotes("root notes");
  root.GetFileAppendStart();
  for (const char* f : {"b", "a"}) {
    root.GetFileAppend().SetFileName(std::string(f) + ".txt");
    root.files().SetFileNotes(std::string(f) + " notes");
  }
  root.GetFileAppendFinish();
  for (const char* path : {"zz", "\\"}) {
    classDir& d = old.GetDirAppend();
    d.SetDirPath(path);
    d.SetDirName(*path == 'z' ? "Q" : "A");
    d.SetDirNotes("A notes");
  }
  old.GetDirAppendFinish();
  ASSERT_TRUE(cursors.CommitDisc());

  const auto notes = AllNotes(*cat.data, Run());
  EXPECT_EQ(notes.at("\\"), "root notes");
  // "\" folders are passed over, and "zz" sorts after "\", so the search for A
  // stops there: a miss.
  EXPECT_EQ(notes.count("\\A"), 0u);
  // Files: whichever of a.txt/b.txt the file system lists first decides.
  std::vector<ExpectedDir> walk;
  ExpectWalk(tree.path(), "\\", "", false, &walk);
  EXPECT_EQ(notes.at("\\|b.txt"), "b notes");
  if (walk[0].files[0].rfind("b.txt=", 0) == 0) {
    EXPECT_EQ(notes.at("\\|a.txt"), "a notes");
  } else {
    EXPECT_EQ(notes.count("\\|a.txt"), 0u);  // "b.txt" sorts after "a.txt": a miss
  }
  EXPECT_EQ(cat.data->GetCdCount(), 1);
}

TEST_F(ScanEngineTest, CancelLeavesThePartialDiscAsAppended) {
  for (const char* d : {"A", "B", "C"}) MakeFiles(MakeDir(tree.File(d)), 5, "f", "1234");
  o.s.previousDiscId = Run();
  ASSERT_NE(o.s.previousDiscId, 0);
  o.progress = [](std::stop_source& stop, const JobProgress& p) {
    if (p.value == 9) stop.request_stop();
  };
  EXPECT_EQ(Run(), 0);
  EXPECT_TRUE(engine->status().IsCancelled());
  const int32_t partial = engine->NewDiscId();
  ASSERT_NE(partial, 0);
  // Both discs stay: the previous one and the partial one, linked.
  EXPECT_EQ(cat.data->GetCdCount(), 2);
  EXPECT_EQ(cat.data->GetTableHeader().lastCd, partial);
  // Values as appended (copied from the previous disc), no new totals; yet
  // every folder written gets its own.
  EXPECT_EQ(Disc(partial).GetCdNumOfFiles(), 15);
  const auto folders = Folders(
      *cat.data, partial, [](classDir& d) { return d.GetDirSize() == -1.0 ? " no totals" : ""; });
  EXPECT_TRUE(folders.size() >= 1 && folders.size() < 4) << folders.size();
  for (const std::string& f : folders) EXPECT_EQ(f.find(" no totals"), std::string::npos) << f;
  ExpectSoundCatalog(*cat.data);
  // A new disc cancelled before its first entry: an empty name, linked.
  o.s.previousDiscId = 0;
  o.progress = [](std::stop_source& stop, const JobProgress&) { stop.request_stop(); };
  EXPECT_EQ(Run(), 0);
  classCd& empty = Disc(engine->NewDiscId());
  EXPECT_EQ(empty.GetCdName(), "");
  EXPECT_EQ(empty.GetCdNumOfFiles(), 0);
  EXPECT_EQ(empty.GetCdtotalSize(), 0);
  EXPECT_EQ(cat.data->GetCdCount(), 3);
}

TEST_F(ScanEngineTest, UnreadableFolderIsRecordedCountedAndSkipped) {
  MakeFile(MakeDir(tree.File("locked")) + "/secret.txt", "s");
  MakeFile(MakeDir(tree.File("open")) + "/f.txt", "f");
  ::chmod(tree.File("locked").c_str(), 0);
  cat.data->CloseFiles();
  // The scan runs in a child without the override capabilities.
  ASSERT_EQ(RunInChild([&] {
              classData data;
              if (!DropReadOverride()) return 3;
              if (!data.OpenFiles(cat.path, false, true)) return 4;
              return Scan(data, tree.path(), o, &engine) != 0 && engine->warnings() == 1 ? 0 : 5;
            }),
            0);
  cat.Reopen();
  CatalogCursors reopened(*cat.data);
  classCd& cd = reopened.FirstDisc();
  ASSERT_FALSE(cd.isEof());
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), 2);
  EXPECT_EQ(cd.GetCdNumOfFiles(), 1);
  // Files below, then attributes: "locked" has no files and no write bit.
  auto folders = Folders(*cat.data, cd.GetCdId(), [](classDir& d) {
    return " " + std::to_string(d.GetDirCountOfFiles()) + " " + std::to_string(d.GetDirAttr());
  });
  std::sort(folders.begin(), folders.end());
  EXPECT_EQ(folders, (std::vector<std::string>{"\\| 1 16", "\\|locked 0 17", "\\|open 1 16"}));
}

TEST_F(ScanEngineTest, LongPathsAndLinkLoopsAreHandled) {
  // 20 levels of 250-byte names: over 5000 bytes, beyond what a path may hold.
  int fd = ::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY);
  const std::string level(250, 'L');
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(::mkdirat(fd, level.c_str(), 0755), 0);
    const int next = ::openat(fd, level.c_str(), O_RDONLY | O_DIRECTORY);
    ::close(fd);
    fd = next;
  }
  ASSERT_TRUE(WriteFileBytes("/proc/self/fd/" + std::to_string(fd) + "/song.mp3",
                             Id3Tag("Deep", "Artist")));
  ::symlinkat(".", fd, "self");
  ::symlinkat("..", fd, "up");
  ::close(fd);
  o.s.scanMp3 = true;
  classCd& cd = Disc(Run());
  EXPECT_EQ(engine->warnings(), 0u);
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), 20);
  EXPECT_EQ(cd.GetCdNumOfFiles(), 3);
  classDir& d = cd.GetDirGoto(cd.record().lastDir);
  EXPECT_GT(d.GetDirPath().size(), 4096u);
  // The links are recorded as links (1024), not followed; the tag is read.
  EXPECT_EQ(Files(d, true,
                  [](ClassFile& file) {
                    return std::to_string(file.getFileAttr()) + " " + file.GetFileExtra();
                  }),
            (std::vector<std::string>{"self=1024 ", "song.mp3=32 MRArtist|`|MTDeep", "up=1024 "}));
  EXPECT_EQ(std::system(("rm -rf '" + tree.File(level) + "'").c_str()), 0);
}

TEST_F(ScanEngineTest, FilesVanishingDuringTheScanAreWarnings) {
  MakeFiles(tree.path(), 20, "f", "x");
  int removed = 0;
  // At the first file, remove all the others: their names are already read.
  o.progress = [&](std::stop_source&, const JobProgress& p) {
    if (p.detail.empty() || removed > 0) return;
    for (int i = 0; i < 20; ++i) {
      const std::string n = "f" + std::to_string(i);
      if (n != p.detail && ::unlink(tree.File(n).c_str()) == 0) ++removed;
    }
  };
  const int32_t id = Run();
  EXPECT_EQ(removed, 19);
  EXPECT_EQ(engine->warnings(), 19u);
  EXPECT_EQ(Disc(id).GetCdNumOfFiles(), 1);
  ExpectSoundCatalog(*cat.data);
}

TEST_F(ScanEngineTest, Mp3TagsAndArchiveMembersOnRequest) {
  if (!HaveTool("zip") || !HaveTool("zipinfo")) GTEST_SKIP() << "zip or zipinfo is missing";
  const std::string audio(500, '\xff');
  MakeFile(tree.File("tagged.MP3"), audio + Id3Tag("Title", "Artist", "Album", "1999", ""));
  MakeFile(tree.File("untagged.mp3"), audio);
  MakeFile(tree.File("short.mp3"), "TAG");
  MakeFile(tree.File("tag.txt"), audio + Id3Tag("T"));  // not an MP3 name
  TempDir src;
  for (const char* d : {"docs", "docs/old", "docs/empty"}) MakeDir(src.File(d));
  MakeFile(src.File("docs/readme.txt"), std::string(4000, 'r'));
  MakeFile(src.File("docs/old/notes.txt"), "n", 946684800);
  MakeFile(src.File("top.bin"), "0123456789");
  const std::string pack = MakeDir(tree.File("sub")) + "/pack.zip";
  ASSERT_EQ(std::system(("cd '" + src.path() + "' && zip -qr '" + pack + "' docs top.bin").c_str()),
            0);
  const std::map<std::string, std::string> expected = ZipinfoMembers(pack);
  ASSERT_EQ(expected.size(), 3u);
  // A copy cut inside the first file member's data.
  const std::string zip = ReadFileBytes(pack);
  const size_t member = zip.find("docs/readme.txt");
  ASSERT_NE(member, std::string::npos);
  MakeFile(tree.File("broken.zip"), zip.substr(0, member + 20));
  o.s.scanMp3 = o.s.scanZip = true;
  const int32_t id = Run();
  ASSERT_NE(id, 0);
  ASSERT_EQ(engine->warningTexts().size(), 1u);
  EXPECT_NE(engine->warningTexts()[0].find("broken.zip"), std::string::npos);
  classDir& dir = Disc(id).GetDirFirst();
  EXPECT_EQ(Files(dir, true, [](ClassFile& file) { return file.GetFileExtra(); }),
            (std::vector<std::string>{"broken.zip=", "short.mp3=", "tag.txt=",
                                      "tagged.MP3=MAAlbum|`|MRArtist|`|MTTitle|`|MY1999",
                                      "untagged.mp3="}));
  // The members of sub/pack.zip, keyed by their path inside the archive; the
  // packed size is kept in the extra text.
  ASSERT_TRUE(dir.MoveNext());
  ClassFile& f = dir.GetFileFirst();
  ASSERT_EQ(f.GetFileName(), "pack.zip");
  std::map<std::string, std::string> members;
  for (ClassFile& m = f.GetZipFirst(); !m.isEof(); m.MoveNext()) {
    std::string path = m.GetFilePath();
    std::replace(path.begin(), path.end(), '\\', '/');
    EXPECT_EQ(m.GetFileDirId(), dir.GetDirId());
    members[path.empty() ? m.GetFileName() : path + "/" + m.GetFileName()] =
        Exact(m.GetFileSize()) + "|" + m.GetFileExtra() + "|" + ZipinfoDateOfOle(m.GetFileDate());
  }
  EXPECT_EQ(members, expected);
  ExpectSoundCatalog(*cat.data);
  // Without the two options no tag and no member is read.
  o.s.scanMp3 = o.s.scanZip = false;
  classCd& plain = Disc(Run());
  EXPECT_EQ(engine->warnings(), 0u);
  EXPECT_EQ(plain.GetCdNumOfFiles(), 6);
  for (classDir& d = plain.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    for (const std::string& f : Files(d, false, [](ClassFile& file) {
           return file.GetFileExtra() + (file.IsArchive() ? "archive" : "");
         })) {
      EXPECT_EQ(f.back(), '=') << f;
    }
  }
}

TEST_F(ScanEngineTest, FullDiskStopsCleanlyAndKeepsTheCatalogReadable) {
  for (int d = 0; d < 30; ++d) {
    MakeFiles(MakeDir(tree.File("d" + std::to_string(d))), 100, "file-with-a-longer-name-", "x");
  }
  ASSERT_NE(Run(), 0);  // one good disc first
  ASSERT_TRUE(cat.data->Sync());
  const int64_t goodLength = cat.data->file()->Length();
  cat.data->CloseFiles();
  std::unique_ptr<FileIO> real;
  ASSERT_TRUE(OpenPosixFile(cat.path, false, true, &real).ok());
  classData data;
  ASSERT_TRUE(data.OpenWith(std::make_unique<FullDisk>(std::move(real), goodLength + 20000),
                            cat.path, true, false, false));
  EXPECT_EQ(Scan(data, tree.path(), o, &engine), 0);
  EXPECT_FALSE(engine->status().ok());
  EXPECT_FALSE(engine->status().IsCancelled());
  EXPECT_NE(engine->status().message().find("No space"), std::string::npos)
      << engine->status().message();
  data.CloseFiles();
  cat.Reopen();
  ASSERT_TRUE(cat.data->IsOpen());
  EXPECT_EQ(cat.data->GetCdCount(), 1);  // the partial disc is not linked
  EXPECT_TRUE(CatalogCheck(cat.data->file()).Run().empty());
}

TEST_F(ScanEngineTest, DiscIconMediaTypeAndAudioTracks) {
  MakeFile(tree.File("AutoRun.INF"), "[autorun]\r\nopen=setup.exe\r\nICON = disc.ico , 2\r\n");
  o.tracks = {{"One", "3:01"}, {"Two", "4:02"}};
  o.audio = {"Album", "Artist", "rock", "7:03", ""};
  struct Row {
    int drive;
    std::string label, icon;
    int32_t media, mode = 0;
  } rows[] = {
      {5, "AUDIO cd", "i_0012", 105},  // a data scan of a disc labelled as audio
      {5, "DATA", "f_disc.ico,2", 5},
      {2, "STICK", "removable", 2},
      {3, "AUDIO CD", "fixed", 3},
      {5, "DATA", "i_0012", 105, kMediaAudioCd},  // from a track list, last
  };
  for (const Row& r : rows) {
    o.v.driveType = r.drive;
    o.s.volumeLabel = r.label;
    o.s.scanMode = r.mode;
    classCd& cd = Disc(Run());
    EXPECT_EQ(cd.GetCdStoredIconKey() + " " + std::to_string(cd.GetCdMediaType()),
              r.icon + " " + std::to_string(r.media))
        << r.label << " " << r.mode;
  }
  // The audio disc: named from its values, one empty file record per track
  // in list order, nothing of the folder.
  classCd& cd = Disc(cat.data->GetTableHeader().lastCd);
  EXPECT_EQ(cd.GetCdName(true), "Album - Artist");
  // An empty year still appends its bare key.
  EXPECT_EQ(cd.GetCdExtra(), "AAAlbum|`|ARArtist|`|ACrock|`|AM7:03|`|AY");
  EXPECT_EQ(cd.GetCdNumOfFiles(), 2);
  EXPECT_EQ(Folders(*cat.data, cd.GetCdId(),
                    [](classDir& d) { return " " + std::to_string(d.GetDirCountOfFiles()); }),
            (std::vector<std::string>{"\\| 2"}));
  EXPECT_EQ(
      Files(cd.GetDirFirst(), false,
            [](ClassFile& f) { return (f.GetFileSize() ? "sized " : "") + f.GetFileExtra(); }),
      (std::vector<std::string>{"One=AL3:01|`|AN1", "Two=AL4:02|`|AN2"}));
}

}  // namespace
}  // namespace gorvan
