#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "scan/ArchiveLister.h"
#include "scan/ScanTestTree.h"

namespace gorvan {
namespace {

using test::TempDir;

struct Entry {
  std::string path, data;
  mode_t mode = AE_IFREG | 0644;
  time_t mtime = test::kFixedTime;
};

la_ssize_t Append(struct archive*, void* out, const void* buf, size_t len) {
  static_cast<std::string*>(out)->append(static_cast<const char*>(buf), len);
  return static_cast<la_ssize_t>(len);
}

// Builds an archive in memory with libarchive's writer. `setup` picks format,
// filters and options; returns "" when libarchive cannot write it. Names are
// taken as UTF-8 with `utf8Names`, else as raw bytes.
std::string Build(const std::function<bool(struct archive*)>& setup,
                  const std::vector<Entry>& entries, bool utf8Names = false) {
  std::string out;
  struct archive* a = archive_write_new();
  archive_write_set_bytes_in_last_block(a, 1);  // no padding: a cut must cut into data
  bool ok = setup(a) && archive_write_open(a, &out, nullptr, Append, nullptr) == ARCHIVE_OK;
  for (const Entry& e : entries) {
    if (!ok) break;
    struct archive_entry* entry = archive_entry_new();
    if (utf8Names) {
      archive_entry_update_pathname_utf8(entry, e.path.c_str());
    } else {
      archive_entry_copy_pathname(entry, e.path.c_str());
    }
    archive_entry_set_mode(entry, e.mode);
    archive_entry_set_mtime(entry, e.mtime, 0);
    archive_entry_set_size(entry, static_cast<la_int64_t>(e.data.size()));
    ok = archive_write_header(a, entry) >= ARCHIVE_WARN &&
         (e.data.empty() || archive_write_data(a, e.data.data(), e.data.size()) ==
                                static_cast<la_ssize_t>(e.data.size()));
    archive_entry_free(entry);
  }
  ok = archive_write_close(a) == ARCHIVE_OK && ok;
  archive_write_free(a);
  return ok ? out : std::string();
}

bool Zip(struct archive* a) { return archive_write_set_format_zip(a) == ARCHIVE_OK; }
bool StoredZip(struct archive* a) {
  return Zip(a) && archive_write_set_options(a, "zip:compression=store") == ARCHIVE_OK;
}
bool Gnutar(struct archive* a) { return archive_write_set_format_gnutar(a) == ARCHIVE_OK; }
bool Tgz(struct archive* a) {
  return archive_write_set_format_ustar(a) == ARCHIVE_OK &&
         archive_write_add_filter_gzip(a) == ARCHIVE_OK;
}

const std::vector<Entry> kSampleTree = {
    {"top.txt", "hello"},
    {"dir/", "", AE_IFDIR | 0755},
    {"dir/sub/", "", AE_IFDIR | 0755},
    {"dir/sub/deep.bin", std::string(5000, 'z')},
    {"dir/locked.txt", "read only", AE_IFREG | 0444, 946684800},  // 2000-01-01
};

struct Listing {
  Status status;
  std::vector<ArchiveMember> members;
  // "path|name|size|mtime|attributes|encrypted" of each member.
  std::vector<std::string> Summary(bool attributes = true) const {
    std::vector<std::string> out;
    for (const ArchiveMember& m : members) {
      out.push_back(m.path + "|" + m.name + "|" + std::to_string(m.size) + "|" +
                    (m.hasTime ? std::to_string(m.mtime) : "-") + "|" +
                    (attributes ? std::to_string(m.attributes) : "") + "|" +
                    (m.encrypted ? "E" : ""));
    }
    return out;
  }
};

Listing List(const std::string& bytesOrPath, bool isPath = false) {
  Listing l;
  auto add = [&](const ArchiveMember& m) {
    l.members.push_back(m);
    return true;
  };
  l.status =
      isPath ? ArchiveLister::List(bytesOrPath, add) : ArchiveLister::ListMemory(bytesOrPath, add);
  return l;
}

// Real archives made by zip and checked against zipinfo are in ScanEngineTest.
TEST(ArchiveListerTest, EveryFormatListsTheSameTree) {
  enum Packed { kUnknown, kStored, kDeflated };
  const std::pair<const char*, std::function<bool(struct archive*)>> formats[] = {
      {"zip", Zip},
      {"stored zip", StoredZip},
      {"7z", [](struct archive* a) { return archive_write_set_format_7zip(a) == ARCHIVE_OK; }},
      {"tar",
       [](struct archive* a) { return archive_write_set_format_pax_restricted(a) == ARCHIVE_OK; }},
      {"tar.gz", Tgz},
      {"tar.xz",
       [](struct archive* a) { return Gnutar(a) && archive_write_add_filter_xz(a) == ARCHIVE_OK; }},
      {"iso", [](struct archive* a) { return archive_write_set_format_iso9660(a) == ARCHIVE_OK; }},
  };
  const Packed packed[] = {kDeflated, kStored, kUnknown, kStored, kUnknown, kUnknown, kStored};
  const std::string a = std::to_string(kAttrArchive),
                    ro = std::to_string(kAttrArchive | kAttrReadOnly);
  for (size_t i = 0; i < std::size(formats); ++i) {
    SCOPED_TRACE(formats[i].first);
    const Listing l = List(Build(formats[i].second, kSampleTree));
    ASSERT_TRUE(l.status.ok()) << l.status.message();
    // Folder entries are not listed. ISO 9660 has no write bits of its own:
    // every member of an image reads as read-only, so attributes are left out.
    const bool iso = i + 1 == std::size(formats);
    EXPECT_EQ(l.Summary(!iso),
              (std::vector<std::string>{"|top.txt|5|1600000000|" + (iso ? "" : a) + "|",
                                        "dir\\sub|deep.bin|5000|1600000000|" + (iso ? "" : a) + "|",
                                        "dir|locked.txt|9|946684800|" + (iso ? "" : ro) + "|"}));
    for (const ArchiveMember& m : l.members) {
      if (packed[i] != kDeflated) {
        EXPECT_EQ(m.packedSize, packed[i] == kStored ? m.size : -1) << m.name;
      }
    }
    // 5000 equal bytes deflate to a few dozen.
    if (packed[i] == kDeflated && l.members.size() == 3) {
      EXPECT_GT(l.members[1].packedSize, 0);
      EXPECT_LT(l.members[1].packedSize, 200);
    }
  }
}

TEST(ArchiveListerTest, NamesAreNormalisedButKeepTheirBytes) {
  Listing l = List(Build(Gnutar, {{"./a/./b//c.txt", "x"},
                                  {"/abs/file", "y"},
                                  {"./", "", AE_IFDIR | 0755},
                                  {"link", "", AE_IFLNK | 0777},
                                  {"caf\xE9/na\xEFve.txt", "x"}}));  // legacy 8-bit, not UTF-8
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  const std::string t = std::to_string(test::kFixedTime) + "|";
  const std::string file = std::to_string(kAttrArchive) + "|";
  EXPECT_EQ(l.Summary(),
            (std::vector<std::string>{"a\\b|c.txt|1|" + t + file, "abs|file|1|" + t + file,
                                      "|link|0|" + t + std::to_string(kAttrReparsePoint) + "|",
                                      "caf\xE9|na\xEFve.txt|1|" + t + file}));
  // A ZIP that marks its names as UTF-8.
  l = List(Build(Zip, {{"\u00E9t\u00E9/\u65E5\u672C.txt", "y"}}, true));
  ASSERT_EQ(l.members.size(), 1u);
  EXPECT_EQ(l.members[0].path + "|" + l.members[0].name, "\u00E9t\u00E9|\u65E5\u672C.txt");
}

TEST(ArchiveListerTest, EncryptedZipListsEveryMember) {
  const std::string zip = Build(
      [](struct archive* a) {
        return Zip(a) && archive_write_set_options(a, "zip:encryption=zipcrypt") == ARCHIVE_OK &&
               archive_write_set_passphrase(a, "secret") == ARCHIVE_OK;
      },
      kSampleTree);
  if (zip.empty()) GTEST_SKIP() << "this libarchive cannot write encrypted ZIP files";
  const Listing l = List(zip);
  ASSERT_TRUE(l.status.ok()) << l.status.message();
  ASSERT_EQ(l.members.size(), 3u);
  for (const ArchiveMember& m : l.members) EXPECT_TRUE(m.encrypted) << m.name;
  EXPECT_EQ(l.members[1].size, 5000);
}

TEST(ArchiveListerTest, DamagedInputAndFileErrors) {
  std::vector<Entry> entries;
  for (int i = 0; i < 10; ++i) {
    entries.push_back({"f" + std::to_string(i) + ".txt", std::string(1000, 'a' + i)});
  }
  // Cut in the middle: no central directory, so the members are read one by
  // one from the front until the data runs out.
  const std::string stored = Build(StoredZip, entries);
  const Listing cut = List(stored.substr(0, stored.size() / 2));
  EXPECT_TRUE(cut.status.IsCorruption());
  EXPECT_FALSE(cut.status.message().empty());
  EXPECT_GE(cut.members.size(), 3u);
  EXPECT_LE(cut.members.size(), 6u);
  for (std::size_t i = 0; i < cut.members.size(); ++i) {
    EXPECT_EQ(cut.members[i].name, "f" + std::to_string(i) + ".txt");
  }
  const std::string tgz = Build(Tgz, entries);
  EXPECT_FALSE(List(tgz.substr(0, tgz.size() / 2)).status.ok());
  std::string garbage(4096, '\0');
  for (std::size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i * 131 + 7);
  const Listing g = List(garbage);
  EXPECT_TRUE(g.status.IsCorruption());
  EXPECT_TRUE(g.members.empty());
  EXPECT_TRUE(List("").status.IsCorruption());
  EXPECT_TRUE(List("PK\x03\x04").status.IsCorruption());

  TempDir dir;
  EXPECT_TRUE(List(dir.File("missing.zip"), true).status.IsNotFound());
  EXPECT_TRUE(List(dir.path(), true).status.IsIOError());
  const Status s = List(test::MakeFile(dir.File("text.zip"), "not an archive"), true).status;
  EXPECT_TRUE(s.IsCorruption());
  EXPECT_NE(s.message().find("text.zip"), std::string::npos);
  ASSERT_EQ(::mkfifo(dir.File("pipe.zip").c_str(), 0600), 0);
  EXPECT_TRUE(List(dir.File("pipe.zip"), true).status.IsIOError());
  // The callback can stop the listing.
  int calls = 0;
  EXPECT_TRUE(ArchiveLister::ListMemory(Build(Zip, kSampleTree), [&](const ArchiveMember&) {
                return ++calls > 1;
              }).IsCancelled());
  EXPECT_EQ(calls, 1);
}

TEST(ArchiveListerTest, WhichNamesAreTried) {
  for (const char* yes : {"a.zip", "A.ZIP", "x.7z", "x.tar.gz", "x.TGZ", "x.tar.Z", "disc.iso"}) {
    EXPECT_TRUE(ArchiveLister::IsArchiveName(yes)) << yes;
  }
  for (const char* no : {".zip", "zip", "a.zip ", "a.zipx", "a.gz", "a.docx", "", "a.z"}) {
    EXPECT_FALSE(ArchiveLister::IsArchiveName(no)) << no;
  }
}

}  // namespace
}  // namespace gorvan
