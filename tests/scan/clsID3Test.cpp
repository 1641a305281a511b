#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "scan/ScanTestTree.h"
#include "scan/clsID3.h"

namespace gorvan {
namespace {

using test::Id3Tag;
using test::ReadFileBytes;

std::string Audio(std::size_t n) { return std::string(n, '\xFF'); }
std::string Nul(const std::string& text, std::size_t width) {
  std::string f = text;
  f.resize(width, '\0');
  return f;
}

class ID3Test : public ::testing::Test {
 protected:
  std::string Make(const std::string& name, const std::string& bytes) {
    EXPECT_TRUE(test::WriteFileBytes(dir_.File(name), bytes));
    return dir_.File(name);
  }
  test::TempDir dir_;
};

TEST_F(ID3Test, LoadReadsTheTrailingBlockOnly) {
  clsID3 id3;
  const std::string path = Make("song.mp3", Audio(1000) + Id3Tag("Caf\xE9 \x80 \x93x\x94", "\x81",
                                                                 "Album", "1999", "Comment", 255));
  ASSERT_TRUE(id3.Load(path));
  EXPECT_TRUE(id3.HasTag());
  EXPECT_EQ(id3.FileName(), path);
  EXPECT_EQ(id3.Title(), "Caf\u00E9 \u20AC \u201Cx\u201D");  // Windows-1252
  EXPECT_EQ(id3.Artist(), "\u0081");  // an undefined byte survives as its C1 control
  EXPECT_EQ(id3.Album() + "|" + id3.Year() + "|" + id3.Comment(), "Album|1999|Comment");
  EXPECT_EQ(id3.Genre(), 255);  // the byte's value, never negative
  // A file that is nothing but the block is read; one byte less is not.
  EXPECT_TRUE(id3.Load(Make("exact.mp3", Id3Tag("Only tag", "", "", "", "", 7))));
  EXPECT_EQ(id3.Title(), "Only tag");

  // Every failed load clears the flag and the name but keeps the values.
  std::string lower = Id3Tag("Lower");
  lower.replace(0, 3, "tag");  // "TAG" is compared exactly
  ASSERT_EQ(::mkdir(dir_.File("folder.mp3").c_str(), 0755), 0);
  for (const std::string& bad :
       {Make("short.mp3", Id3Tag("Short").substr(1)), Make("empty.mp3", ""),
        Make("lower.mp3", Audio(10) + lower), Make("front.mp3", Id3Tag("Front") + Audio(500)),
        dir_.File("missing.mp3"), Make("blank.mp3 ", Audio(5) + Id3Tag("T")),
        Make("other.wav", Audio(5) + Id3Tag("T")), Make("mp3", Audio(5) + Id3Tag("T")),
        dir_.File("folder.mp3")}) {
    EXPECT_FALSE(id3.Load(bad)) << bad;
    EXPECT_FALSE(id3.HasTag());
    EXPECT_EQ(id3.FileName(), "");
    EXPECT_EQ(id3.Title() + std::to_string(id3.Genre()), "Only tag7");
  }
  EXPECT_TRUE(id3.Load(Make("mixed.Mp3", Audio(5) + Id3Tag("T"))));

  EXPECT_TRUE(id3.LoadFromMemory(Audio(3) + Id3Tag("Mem", "", "", "", "", 2)));
  EXPECT_EQ(id3.Title() + std::to_string(id3.Genre()), "Mem2");
  EXPECT_EQ(id3.FileName(), "");
  EXPECT_FALSE(id3.LoadFromMemory(Id3Tag("Mem").substr(0, 127)));
  EXPECT_FALSE(id3.HasTag());
}

TEST(ID3CleanTest, TrimComesBeforeNulRemoval) {
  const std::pair<std::string, std::string> rows[] = {
      {Nul("Abc  ", 30), "Abc  "},            // blanks before NUL padding survive
      {"Abc" + std::string(27, ' '), "Abc"},  // blank padding is trimmed
      {"  Abc", "Abc"},
      {std::string("\0  Abc", 6), "  Abc"},  // a leading NUL protects blanks too
      {std::string("A\0B\0\0C", 6), "ABC"},  // NULs go wherever they are
      {std::string(30, ' '), ""},
      {std::string(30, '\0'), ""},
      {"\tA\t", "\tA\t"},  // only blanks are trimmed
  };
  for (const auto& [raw, clean] : rows) EXPECT_EQ(clsID3::CleanField(raw), clean);
}

TEST_F(ID3Test, SettersPadCutConvertAndCheckBounds) {
  clsID3 id3;
  ASSERT_TRUE(id3.Load(Make("s.mp3", Audio(300) + Id3Tag("Old", "Old", "Old", "2000", "Old", 1))));
  id3.SetTitle("New");
  id3.SetArtist(std::string(31, 'x') + "y");
  id3.SetAlbum("Caf\u00E9 \u20AC \u65E5");
  id3.SetYear("19999");
  id3.SetComment("");
  id3.SetGenre(255);
  EXPECT_EQ(std::string(id3.TagBuffer()), "TAG" + Nul("New", 30) + std::string(30, 'x') +
                                              Nul("Caf\xE9 \x80 ?", 30) + "1999" +
                                              std::string(30, '\0') + "\xFF");
  // The values read as a later load would read them.
  EXPECT_EQ(id3.Artist(), std::string(30, 'x'));
  EXPECT_EQ(id3.Album() + "|" + id3.Year(), "Caf\u00E9 \u20AC ?|1999");
  id3.SetYear("99");
  EXPECT_EQ(id3.TagBuffer().substr(93, 4), std::string("99\0\0", 4));
  id3.SetGenre(256);  // outside 0..255: ignored
  id3.SetGenre(-1);
  EXPECT_EQ(id3.Genre(), 255);
  id3.SetGenre(0);
  EXPECT_EQ(id3.TagBuffer()[127], '\0');

  // Without the loaded file (deleted, or never loaded) the setters do nothing.
  const std::string before(id3.TagBuffer());
  ASSERT_EQ(::unlink(dir_.File("s.mp3").c_str()), 0);
  id3.SetTitle("Changed");
  id3.SetGenre(9);
  EXPECT_EQ(id3.Title(), "New");
  EXPECT_EQ(std::string(id3.TagBuffer()), before);
  EXPECT_EQ(id3.Save(), "File not found");
  clsID3 fresh;
  EXPECT_FALSE(fresh.Load(Make("none.mp3", Audio(200))));
  fresh.SetTitle("X");
  EXPECT_EQ(fresh.Title(), "");
  EXPECT_EQ(fresh.Save(), "File not found");
}

TEST_F(ID3Test, SaveOverwritesOnlyAnExistingBlock) {
  const std::string audio = Audio(4000);
  const std::string path = Make("save.mp3", audio + Id3Tag("Before", "Artist", "", "", "", 12));
  clsID3 id3;
  ASSERT_TRUE(id3.Load(path));
  id3.SetTitle("After");
  id3.SetGenre(80);
  EXPECT_EQ(id3.Save(), "");
  EXPECT_EQ(ReadFileBytes(path), audio + Id3Tag("After", "Artist", "", "", "", 80));

  // The file lost its tag before the save: nothing is written, no message.
  id3.SetTitle("New title");
  ASSERT_TRUE(test::WriteFileBytes(path, Audio(700)));
  EXPECT_EQ(id3.Save(), "");
  EXPECT_EQ(ReadFileBytes(path), Audio(700));
  // A file that is exactly one block is read but not rewritten.
  const std::string exact = Make("exact.mp3", Id3Tag("Exact"));
  ASSERT_TRUE(id3.Load(exact));
  id3.SetTitle("Other");
  EXPECT_EQ(id3.Save(), "");
  EXPECT_EQ(ReadFileBytes(exact), Id3Tag("Exact"));
}

}  // namespace
}  // namespace gorvan
