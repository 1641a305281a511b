#include "scan/ArchiveLister.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "scan/ScanTestTree.h"
#include "support/TempDir.h"

namespace gorvan {
namespace {

using test::TempDir;
using test::WriteFileBytes;

struct Entry {
  std::string path;
  std::string data;
  mode_t mode = AE_IFREG | 0644;
  time_t mtime = 1600000000;  // 2020-09-13 12:26:40 UTC
  bool utf8Name = false;      // set the name as UTF-8 rather than raw bytes
};

la_ssize_t Append(struct archive*, void* out, const void* buf, size_t len) {
  static_cast<std::string*>(out)->append(static_cast<const char*>(buf), len);
  return static_cast<la_ssize_t>(len);
}

// Builds an archive in memory with libarchive's writer. `setup` picks format,
// filters and options; returns "" when libarchive cannot write it.
std::string Build(const std::function<bool(struct archive*)>& setup,
                  const std::vector<Entry>& entries) {
  std::string out;
  struct archive* a = archive_write_new();
  // No padding after the archive: a test that cuts an archive must cut into
  // its data.
  archive_write_set_bytes_in_last_block(a, 1);
  bool ok = setup(a) && archive_write_open(a, &out, nullptr, Append, nullptr) == ARCHIVE_OK;
  for (const Entry& e : entries) {
    if (!ok) break;
    struct archive_entry* entry = archive_entry_new();
    if (e.utf8Name) {
      archive_entry_update_pathname_utf8(entry, e.path.c_str());
    } else {
      archive_entry_copy_pathname(entry, e.path.c_str());
    }
    archive_entry_set_mode(entry, e.mode);
    archive_entry_set_mtime(entry, e.mtime, 0);
    archive_entry_set_size(entry, static_cast<la_int64_t>(e.data.size()));
    ok = archive_write_header(a, entry) >= ARCHIVE_WARN;
    if (ok && !e.data.empty()) {
      ok = archive_write_data(a, e.data.data(), e.data.size()) ==
           static_cast<la_ssize_t>(e.data.size());
    }
    archive_entry_free(entry);
  }
  ok = archive_write_close(a) == ARCHIVE_OK && ok;
  archive_write_free(a);
  return ok ? out : std::string();
}

bool Zip(struct archive* a) { return archive_write_set_format_zip(a) == ARCHIVE_OK; }

std::vector<Entry> SampleTree() {
  return {
      {"top.txt", "hello"},
      {"dir/", "", AE_IFDIR | 0755},
      {"dir/sub/", "", AE_IFDIR | 0755},
      {"dir/sub/deep.bin", std::string(5000, 'z')},
      {"dir/locked.txt", "read only", AE_IFREG | 0444, 946684800},  // 2000-01-01
  };
}

struct Listing {
  Status status;
  std::vector<ArchiveMember> members;
};

Listing ListBytes(const std::string& bytes) {
  Listing l;
  l.status = ArchiveLister::ListMemory(bytes, [&](const ArchiveMember& m) {
    l.members.push_back(m);
    return true;
  });
  return l;
}

Listing ListFile(const std::string& path) {
  Listing l;
  l.status = ArchiveLister::List(path, [&](const ArchiveMember& m) {
    l.members.push_back(m);
    return true;
  });
  return l;
}

// Checks the sample tree's files as every format must report them.
void ExpectSampleTree(const Listing& l) {
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  ASSERT_EQ(l.members.size(), 3u);  // folder entries are not listed
  const ArchiveMember& top = l.members[0];
  EXPECT_EQ(top.name, "top.txt");
  EXPECT_EQ(top.path, "");
  EXPECT_EQ(top.size, 5);
  EXPECT_TRUE(top.hasTime);
  EXPECT_EQ(top.mtime, 1600000000);
  EXPECT_EQ(top.attributes, ArchiveMember::kArchive);
  EXPECT_FALSE(top.encrypted);

  const ArchiveMember& deep = l.members[1];
  EXPECT_EQ(deep.name, "deep.bin");
  EXPECT_EQ(deep.path, "dir\\sub");
  EXPECT_EQ(deep.size, 5000);

  const ArchiveMember& locked = l.members[2];
  EXPECT_EQ(locked.name, "locked.txt");
  EXPECT_EQ(locked.path, "dir");
  EXPECT_EQ(locked.mtime, 946684800);
  EXPECT_EQ(locked.attributes, ArchiveMember::kArchive | ArchiveMember::kReadOnly);
}

// Real archives made by zip and tar, listed by zipinfo and bsdtar: the
// listing must agree member by member.
TEST(ArchiveListerTest, ListingsAgreeWithZipinfoAndBsdtar) {
  for (const char* tool : {"zip", "zipinfo", "tar", "bsdtar"}) {
    if (!test::HaveTool(tool)) GTEST_SKIP() << tool << " is not installed";
  }
  TempDir src;
  const time_t recent = (std::time(nullptr) - 86400) / 2 * 2;  // ZIP times count in 2 s
  test::MakeDir(src.File("d"));
  test::MakeDir(src.File("d/sub"));
  test::MakeDir(src.File("d/empty"));
  test::MakeFile(src.File("d/a.txt"), std::string(3000, 'a'), recent);
  test::MakeFile(src.File("d/sub/z.bin"), std::string(5000, 'z'), 946684800);
  test::MakeFile(src.File("d/sub/two words.txt"), "x", test::kFixedTime);
  test::MakeFile(src.File("d/locked"), "", recent - 3600);
  ::chmod(src.File("d/locked").c_str(), 0444);
  const std::string zip = src.File("t.zip"), tgz = src.File("t.tar.gz");
  ASSERT_EQ(std::system(("cd '" + src.path() + "' && zip -qr t.zip d && tar czf t.tar.gz d").c_str()), 0);

  struct Case {
    std::string archive;
    std::vector<test::ToolMember> expected;
    std::string (*date)(time_t);
  };
  for (const Case& c : {Case{zip, test::ZipinfoMembers(zip), test::ZipinfoDate},
                        Case{tgz, test::BsdtarMembers(tgz), test::BsdtarDate}}) {
    SCOPED_TRACE(c.archive);
    ASSERT_EQ(c.expected.size(), 4u);
    std::map<std::string, ArchiveMember> listed;
    const Listing l = ListFile(c.archive);
    ASSERT_TRUE(l.status.ok()) << l.status.message();
    for (const ArchiveMember& m : l.members) {
      std::string path = m.path;
      for (char& ch : path) ch = ch == '\\' ? '/' : ch;
      listed[path.empty() ? m.name : path + "/" + m.name] = m;
    }
    EXPECT_EQ(listed.size(), l.members.size());  // no member listed twice
    for (const test::ToolMember& e : c.expected) {
      SCOPED_TRACE(e.path);
      ASSERT_EQ(listed.count(e.path), 1u);
      const ArchiveMember& m = listed[e.path];
      EXPECT_EQ(m.size, e.size);
      // zipinfo states the packed size; tar members are compressed as a whole.
      EXPECT_EQ(m.packedSize, e.packed);
      ASSERT_TRUE(m.hasTime);
      EXPECT_EQ(c.date(m.mtime), e.date);
      EXPECT_EQ((m.attributes & ArchiveMember::kReadOnly) != 0, !e.writable);
    }
  }
}

TEST(ArchiveListerTest, EveryFormatListsTheSameTree) {
  struct Case {
    const char* label;
    std::function<bool(struct archive*)> setup;
    // -1: the format cannot tell; 0: stored, packed equals size; 1: deflated.
    int packed;
  };
  const Case cases[] = {
      {"zip", Zip, 1},
      {"stored zip",
       [](struct archive* a) {
         return Zip(a) && archive_write_set_options(a, "zip:compression=store") == ARCHIVE_OK;
       },
       0},
      {"7z", [](struct archive* a) { return archive_write_set_format_7zip(a) == ARCHIVE_OK; },
       -1},
      {"tar", [](struct archive* a) { return archive_write_set_format_pax_restricted(a) == ARCHIVE_OK; },
       0},
      {"tar.gz",
       [](struct archive* a) {
         return archive_write_set_format_ustar(a) == ARCHIVE_OK &&
                archive_write_add_filter_gzip(a) == ARCHIVE_OK;
       },
       -1},
      {"tar.xz",
       [](struct archive* a) {
         return archive_write_set_format_gnutar(a) == ARCHIVE_OK &&
                archive_write_add_filter_xz(a) == ARCHIVE_OK;
       },
       -1},
      {"iso",
       [](struct archive* a) { return archive_write_set_format_iso9660(a) == ARCHIVE_OK; },
       0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::string bytes = Build(c.setup, SampleTree());
    ASSERT_FALSE(bytes.empty());
    Listing l = ListBytes(bytes);
    // ISO 9660 has no write bits of its own: every member of an image reads as
    // read-only, so only names, sizes and times are compared there.
    if (std::string(c.label) == "iso") {
      ASSERT_TRUE(l.status.ok()) << l.status.message();
      ASSERT_EQ(l.members.size(), 3u);
      EXPECT_EQ(l.members[1].path, "dir\\sub");
      EXPECT_EQ(l.members[1].size, 5000);
      EXPECT_EQ(l.members[2].mtime, 946684800);
    } else {
      ExpectSampleTree(l);
    }
    if (testing::Test::HasFatalFailure()) return;
    for (const ArchiveMember& m : l.members) {
      const int64_t want = c.packed < 0 ? -1 : c.packed == 0 ? m.size : m.packedSize;
      EXPECT_EQ(m.packedSize, want) << m.name;
    }
    // 5000 equal bytes deflate to a few dozen.
    if (c.packed == 1) {
      EXPECT_LT(l.members[1].packedSize, 200);
    }
  }
}

TEST(ArchiveListerTest, PathsAreNormalised) {
  std::string tar = Build(
      [](struct archive* a) { return archive_write_set_format_gnutar(a) == ARCHIVE_OK; },
      {{"./a/./b//c.txt", "x"}, {"/abs/file", "y"}, {"./", "", AE_IFDIR | 0755},
       {"link", "", AE_IFLNK | 0777}});
  Listing l = ListBytes(tar);
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  ASSERT_EQ(l.members.size(), 3u);
  EXPECT_EQ(l.members[0].path, "a\\b");
  EXPECT_EQ(l.members[0].name, "c.txt");
  EXPECT_EQ(l.members[1].path, "abs");
  EXPECT_EQ(l.members[1].name, "file");
  EXPECT_EQ(l.members[2].name, "link");
  EXPECT_EQ(l.members[2].attributes, ArchiveMember::kReparsePoint);
}

TEST(ArchiveListerTest, NamesKeepTheirBytes) {
  // A tar name in some legacy 8-bit encoding: not valid UTF-8, kept as is.
  std::string tar = Build(
      [](struct archive* a) { return archive_write_set_format_gnutar(a) == ARCHIVE_OK; },
      {{"caf\xE9/na\xEFve.txt", "x"}});
  Listing l = ListBytes(tar);
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  ASSERT_EQ(l.members.size(), 1u);
  EXPECT_EQ(l.members[0].name, "na\xEFve.txt");
  EXPECT_EQ(l.members[0].path, "caf\xE9");

  // A ZIP that marks its names as UTF-8.
  Entry utf8{"\u00E9t\u00E9/\u65E5\u672C.txt", "y"};
  utf8.utf8Name = true;
  std::string zip = Build(
      [](struct archive* a) {
        return Zip(a);
      },
      {utf8});
  Listing z = ListBytes(zip);
  ASSERT_TRUE(z.status.ok()) << z.status.message();
  ASSERT_EQ(z.members.size(), 1u);
  EXPECT_EQ(z.members[0].name, "\u65E5\u672C.txt");
  EXPECT_EQ(z.members[0].path, "\u00E9t\u00E9");
}

TEST(ArchiveListerTest, EncryptedZipListsEveryMember) {
  std::string zip = Build(
      [](struct archive* a) {
        return Zip(a) && archive_write_set_options(a, "zip:encryption=zipcrypt") == ARCHIVE_OK &&
               archive_write_set_passphrase(a, "secret") == ARCHIVE_OK;
      },
      SampleTree());
  if (zip.empty()) GTEST_SKIP() << "this libarchive cannot write encrypted ZIP files";
  Listing l = ListBytes(zip);
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  ASSERT_EQ(l.members.size(), 3u);
  for (const ArchiveMember& m : l.members) EXPECT_TRUE(m.encrypted) << m.name;
  EXPECT_EQ(l.members[1].size, 5000);
}

TEST(ArchiveListerTest, DamagedInputGivesAWarningAndWhatCouldBeRead) {
  std::vector<Entry> entries;
  for (int i = 0; i < 10; ++i) {
    entries.push_back({"f" + std::to_string(i) + ".txt", std::string(1000, 'a' + i)});
  }
  std::string stored = Build(
      [](struct archive* a) {
        return Zip(a) && archive_write_set_options(a, "zip:compression=store") == ARCHIVE_OK;
      },
      entries);
  ASSERT_FALSE(stored.empty());
  // Cut in the middle: no central directory, so the members are read one by
  // one from the front until the data runs out.
  Listing cut = ListBytes(stored.substr(0, stored.size() / 2));
  EXPECT_TRUE(cut.status.IsCorruption());
  EXPECT_FALSE(cut.status.message().empty());
  EXPECT_GE(cut.members.size(), 3u);
  EXPECT_LE(cut.members.size(), 6u);
  for (std::size_t i = 0; i < cut.members.size(); ++i) {
    EXPECT_EQ(cut.members[i].name, "f" + std::to_string(i) + ".txt");
  }

  std::string tgz = Build(
      [](struct archive* a) {
        return archive_write_set_format_ustar(a) == ARCHIVE_OK &&
               archive_write_add_filter_gzip(a) == ARCHIVE_OK;
      },
      entries);
  Listing cutTgz = ListBytes(tgz.substr(0, tgz.size() / 2));
  EXPECT_FALSE(cutTgz.status.ok());

  std::string garbage(4096, '\0');
  for (std::size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i * 131 + 7);
  Listing g = ListBytes(garbage);
  EXPECT_TRUE(g.status.IsCorruption());
  EXPECT_TRUE(g.members.empty());
  EXPECT_TRUE(ListBytes("").status.IsCorruption());
  EXPECT_TRUE(ListBytes("PK\x03\x04").status.IsCorruption());
}

TEST(ArchiveListerTest, FileErrors) {
  TempDir dir;
  auto ignore = [](const ArchiveMember&) { return true; };
  EXPECT_TRUE(ArchiveLister::List(dir.File("missing.zip"), ignore).IsNotFound());
  EXPECT_TRUE(ArchiveLister::List(dir.path(), ignore).IsIOError());
  ASSERT_TRUE(WriteFileBytes(dir.File("text.zip"), "just some text, not an archive"));
  Status s = ArchiveLister::List(dir.File("text.zip"), ignore);
  EXPECT_TRUE(s.IsCorruption());
  EXPECT_NE(s.message().find("text.zip"), std::string::npos);
  ASSERT_EQ(::mkfifo(dir.File("pipe.zip").c_str(), 0600), 0);
  EXPECT_TRUE(ArchiveLister::List(dir.File("pipe.zip"), ignore).IsIOError());
}

TEST(ArchiveListerTest, CallbackCanStopTheListing) {
  int calls = 0;
  Status s = ArchiveLister::ListMemory(Build(Zip, SampleTree()), [&](const ArchiveMember&) {
    ++calls;
    return false;
  });
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_EQ(calls, 1);
}

TEST(ArchiveListerTest, WhichNamesAreTried) {
  for (const char* yes : {"a.zip", "A.ZIP", "x.7z", "x.rar", "x.tar", "x.tar.gz", "x.TGZ",
                          "x.tar.bz2", "x.tbz2", "x.tar.xz", "x.tar.zst", "x.tar.Z", "disc.iso",
                          "setup.cab"}) {
    EXPECT_TRUE(ArchiveLister::IsArchiveName(yes)) << yes;
  }
  for (const char* no : {".zip", "zip", "a.zip ", "a.zipx", "a.gz", "a.docx", "a.jar",
                         "a.mp3", "", "a.z"}) {
    EXPECT_FALSE(ArchiveLister::IsArchiveName(no)) << no;
  }
}

}  // namespace
}  // namespace gorvan
