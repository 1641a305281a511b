#include "scan/clsID3.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "support/TempDir.h"

namespace gorvan {
namespace {

using test::ReadFileBytes;
using test::TempDir;
using test::WriteFileBytes;

// A raw field: `text` followed by `pad` up to `width` bytes.
std::string Field(const std::string& text, std::size_t width, char pad = '\0') {
  std::string f = text.substr(0, width);
  f.resize(width, pad);
  return f;
}

std::string Tag(const std::string& title, const std::string& artist = "",
                const std::string& album = "", const std::string& year = "",
                const std::string& comment = "", unsigned char genre = 0) {
  std::string t = "TAG" + Field(title, 30) + Field(artist, 30) + Field(album, 30) +
                  Field(year, 4) + Field(comment, 30);
  t += static_cast<char>(genre);
  return t;
}

std::string Audio(std::size_t n) { return std::string(n, '\xFF'); }

class ID3Test : public ::testing::Test {
 protected:
  std::string Make(const std::string& name, const std::string& bytes) {
    std::string path = dir_.File(name);
    EXPECT_TRUE(WriteFileBytes(path, bytes));
    return path;
  }
  TempDir dir_;
};

TEST_F(ID3Test, LoadReadsEveryFieldFromTheTrailingBlock) {
  std::string path = Make("song.mp3", Audio(1000) + Tag("Title", "Artist", "Album", "1999",
                                                        "Comment", 255));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  EXPECT_TRUE(id3.HasTag());
  EXPECT_EQ(id3.FileName(), path);
  EXPECT_EQ(id3.Title(), "Title");
  EXPECT_EQ(id3.Artist(), "Artist");
  EXPECT_EQ(id3.Album(), "Album");
  EXPECT_EQ(id3.Year(), "1999");
  EXPECT_EQ(id3.Comment(), "Comment");
  EXPECT_EQ(id3.Genre(), 255);  // the byte's value, never negative
}

TEST_F(ID3Test, LengthLimits) {
  clsID3 id3;
  // A file that is nothing but the tag block is read.
  EXPECT_TRUE(id3.Load(Make("exact.mp3", Tag("Only tag"))));
  EXPECT_EQ(id3.Title(), "Only tag");
  // One byte short: the block would start before the file.
  EXPECT_FALSE(id3.Load(Make("short.mp3", Tag("Only tag").substr(1))));
  EXPECT_FALSE(id3.HasTag());
  EXPECT_FALSE(id3.Load(Make("empty.mp3", "")));
  EXPECT_FALSE(id3.Load(Make("tiny.mp3", "TAG")));
}

TEST_F(ID3Test, FailedLoadClearsFlagAndNameButKeepsValues) {
  clsID3 id3;
  ASSERT_TRUE(id3.Load(Make("a.mp3", Audio(10) + Tag("First", "", "", "", "", 7))));
  // "TAG" is compared exactly: a lower-case signature is no tag.
  std::string lower = Tag("Second");
  lower.replace(0, 3, "tag");
  EXPECT_FALSE(id3.Load(Make("b.mp3", Audio(10) + lower)));
  EXPECT_FALSE(id3.HasTag());
  EXPECT_EQ(id3.FileName(), "");
  EXPECT_EQ(id3.Title(), "First");
  EXPECT_EQ(id3.Genre(), 7);
  // A tag at the start of the file (ID3v2 style) is not looked for.
  EXPECT_FALSE(id3.Load(Make("c.mp3", Tag("Front") + Audio(500))));
  EXPECT_FALSE(id3.Load(dir_.File("missing.mp3")));
  EXPECT_EQ(id3.Title(), "First");
}

TEST_F(ID3Test, FileNameMustEndInMp3AnyCase) {
  const std::string bytes = Audio(5) + Tag("T");
  clsID3 id3;
  EXPECT_TRUE(id3.Load(Make("mixed.Mp3", bytes)));
  EXPECT_TRUE(id3.Load(Make("upper.MP3", bytes)));
  EXPECT_FALSE(id3.Load(Make("blank.mp3 ", bytes)));
  EXPECT_FALSE(id3.Load(Make("other.wav", bytes)));
  EXPECT_FALSE(id3.Load(Make("mp3", bytes)));
  // A directory with an .mp3 name is not a file.
  ASSERT_EQ(::mkdir(dir_.File("folder.mp3").c_str(), 0755), 0);
  EXPECT_FALSE(id3.Load(dir_.File("folder.mp3")));

  EXPECT_TRUE(clsID3::IsMp3Name(".mp3"));
  EXPECT_TRUE(clsID3::IsMp3Name("a.mP3"));
  EXPECT_FALSE(clsID3::IsMp3Name("a.mp"));
  EXPECT_FALSE(clsID3::IsMp3Name("a_mp3"));
}

TEST(ID3CleanTest, TrimComesBeforeNulRemoval) {
  // Blanks standing before NUL padding survive the trim.
  EXPECT_EQ(clsID3::CleanField(Field("Abc  ", 30)), "Abc  ");
  // Blank padding is trimmed.
  EXPECT_EQ(clsID3::CleanField(Field("Abc", 30, ' ')), "Abc");
  EXPECT_EQ(clsID3::CleanField(std::string("  Abc", 5)), "Abc");
  // A NUL before leading blanks protects them as well.
  EXPECT_EQ(clsID3::CleanField(std::string("\0  Abc", 6)), "  Abc");
  // NULs inside the text are removed wherever they are.
  EXPECT_EQ(clsID3::CleanField(std::string("A\0B\0\0C", 6)), "ABC");
  EXPECT_EQ(clsID3::CleanField(std::string(30, ' ')), "");
  EXPECT_EQ(clsID3::CleanField(std::string(30, '\0')), "");
  // Only blanks are trimmed, not tabs.
  EXPECT_EQ(clsID3::CleanField("\tA\t"), "\tA\t");
}

TEST_F(ID3Test, TextIsWindows1252) {
  clsID3 id3;
  ASSERT_TRUE(id3.Load(Make("w.mp3", Tag("Caf\xE9 \x80 \x93x\x94", "\x81"))));
  EXPECT_EQ(id3.Title(), "Caf\u00E9 \u20AC \u201Cx\u201D");
  EXPECT_EQ(id3.Artist(), "\u0081");  // an undefined byte survives as its C1 control
}

TEST_F(ID3Test, SettersPadCutAndConvert) {
  std::string path = Make("s.mp3", Audio(300) + Tag("Old", "Old", "Old", "2000", "Old", 1));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  id3.SetTitle("New");
  id3.SetArtist(std::string(31, 'x') + "y");
  id3.SetAlbum("Caf\u00E9 \u20AC \u65E5");
  id3.SetYear("19999");
  id3.SetComment("");
  id3.SetGenre(255);
  std::string_view buf = id3.TagBuffer();
  EXPECT_EQ(buf.substr(0, 3), "TAG");
  EXPECT_EQ(buf.substr(3, 30), Field("New", 30));
  EXPECT_EQ(buf.substr(33, 30), std::string(30, 'x'));
  EXPECT_EQ(buf.substr(63, 30), Field("Caf\xE9 \x80 ?", 30));
  EXPECT_EQ(buf.substr(93, 4), "1999");
  EXPECT_EQ(buf.substr(97, 30), std::string(30, '\0'));
  EXPECT_EQ(static_cast<unsigned char>(buf[127]), 255);
  // The values read as a later load would read them.
  EXPECT_EQ(id3.Title(), "New");
  EXPECT_EQ(id3.Artist(), std::string(30, 'x'));
  EXPECT_EQ(id3.Album(), "Caf\u00E9 \u20AC ?");
  EXPECT_EQ(id3.Year(), "1999");
  EXPECT_EQ(id3.Comment(), "");
  EXPECT_EQ(id3.Genre(), 255);

  id3.SetYear("99");
  EXPECT_EQ(id3.TagBuffer().substr(93, 4), std::string("99\0\0", 4));
  // Genres outside 0..255 are ignored.
  id3.SetGenre(256);
  id3.SetGenre(-1);
  EXPECT_EQ(id3.Genre(), 255);
  id3.SetGenre(0);
  EXPECT_EQ(id3.Genre(), 0);
  EXPECT_EQ(id3.TagBuffer()[127], '\0');
}

TEST_F(ID3Test, SettersDoNothingWithoutTheLoadedFile) {
  std::string path = Make("gone.mp3", Audio(10) + Tag("Kept", "", "", "", "", 3));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  const std::string before(id3.TagBuffer());
  ASSERT_EQ(::unlink(path.c_str()), 0);
  id3.SetTitle("Changed");
  id3.SetYear("2024");
  id3.SetGenre(9);
  EXPECT_EQ(id3.Title(), "Kept");
  EXPECT_EQ(id3.Genre(), 3);
  EXPECT_EQ(std::string(id3.TagBuffer()), before);
  EXPECT_EQ(id3.Save(), "File not found");

  // After a failed load there is no file to edit either.
  clsID3 fresh;
  EXPECT_FALSE(fresh.Load(Make("none.mp3", Audio(200))));
  fresh.SetTitle("X");
  EXPECT_EQ(fresh.Title(), "");
  EXPECT_EQ(fresh.Save(), "File not found");
}

TEST_F(ID3Test, SaveOverwritesOnlyTheExistingBlock) {
  const std::string audio = Audio(4000);
  std::string path = Make("save.mp3", audio + Tag("Before", "Artist", "", "", "", 12));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  id3.SetTitle("After");
  id3.SetGenre(80);
  EXPECT_EQ(id3.Save(), "");
  const std::string bytes = ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), audio.size() + 128);
  EXPECT_EQ(bytes.substr(0, audio.size()), audio);
  EXPECT_EQ(bytes.substr(audio.size()), Tag("After", "Artist", "", "", "", 80));

  clsID3 again;
  ASSERT_TRUE(again.Load(path));
  EXPECT_EQ(again.Title(), "After");
  EXPECT_EQ(again.Genre(), 80);
}

TEST_F(ID3Test, SaveNeverAppendsATag) {
  std::string path = Make("later.mp3", Audio(400) + Tag("Was tagged"));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  id3.SetTitle("New title");
  // The file loses its tag before the save: nothing is written, no message.
  const std::string untagged = Audio(700);
  ASSERT_TRUE(WriteFileBytes(path, untagged));
  EXPECT_EQ(id3.Save(), "");
  EXPECT_EQ(ReadFileBytes(path), untagged);

  // A file that is exactly one tag block is read but not rewritten: the save
  // needs a file longer than the block.
  std::string exact = Make("exact.mp3", Tag("Exact"));
  ASSERT_TRUE(id3.Load(exact));
  id3.SetTitle("Other");
  EXPECT_EQ(id3.Save(), "");
  EXPECT_EQ(ReadFileBytes(exact), Tag("Exact"));
}

TEST(ID3MemoryTest, LoadFromMemoryUsesTheLastBlock) {
  clsID3 id3;
  EXPECT_TRUE(id3.LoadFromMemory(Audio(3) + Tag("Mem", "", "", "", "", 2)));
  EXPECT_EQ(id3.Title(), "Mem");
  EXPECT_EQ(id3.Genre(), 2);
  EXPECT_EQ(id3.FileName(), "");
  EXPECT_FALSE(id3.LoadFromMemory(Tag("Mem").substr(0, 127)));
  EXPECT_FALSE(id3.HasTag());
}

}  // namespace
}  // namespace gorvan
