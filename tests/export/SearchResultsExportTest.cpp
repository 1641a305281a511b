// The search-results exports byte for byte, and the output writer under them.
#include "export/SearchResultsExport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include "export/OutputWriter.h"
#include "search/CatalogSearch.h"
#include "support/TempDir.h"

namespace gorvan::test {
namespace {

// 5 March 2004 13:47:09 as an OLE date.
constexpr double kDate = 38051 + (13 * 3600 + 47 * 60 + 9) / 86400.0;

std::vector<SearchResult> Rows() {
  std::vector<SearchResult> rows(2);
  rows[0].kind = SearchResult::Kind::kDisc;
  rows[0].fileName = rows[0].cdName = rows[1].cdName = "Holiday, 2004";
  rows[0].path = "/media/cdrom";
  rows[0].date = "3/5/2004 1:47:09 PM";
  rows[0].size = "650000000";
  rows[1].fileName = "a<b>&c.txt";
  rows[1].path = "Photos/Beach";
  rows[1].date = "3/5/2004";
  rows[1].size = "1.5E+15";
  rows[1].attributes = "33";
  rows[1].notes = "a, b\r\nline two";
  return rows;
}

// The XML test sees these options come through; SummaryTakesTheOtherOptions the rest.
SearchResultsSummary Summary() {
  SearchOptions o;
  o.text = "beach* and \"sun\"";
  o.inNames = o.inComments = true;
  return SearchResultsSummary::From(o, kDate);
}

class SearchResultsExportTest : public ::testing::Test {
 protected:
  std::string Export(SearchResultsFormat format, const std::vector<SearchResult>& rows) {
    const std::string path = dir_.File("out");
    const Status s = SearchResultsExport::WriteFile(path, format, Summary(), rows);
    EXPECT_TRUE(s.ok()) << s.message();
    return ReadFileBytes(path);
  }
  TempDir dir_;
};

TEST_F(SearchResultsExportTest, CommaSeparatedTextReplacesCommasAndNothingElse) {
  EXPECT_EQ(Export(SearchResultsFormat::kCsv, Rows()),
            "Text,Cd,Path,Time,Size,Attr,Notes\r\n"
            "Holiday  2004,Holiday  2004,/media/cdrom,3/5/2004 1:47:09 PM,650000000,,\r\n"
            "a<b>&c.txt,Holiday  2004,Photos/Beach,3/5/2004,1.5E+15,33,a  b\r\nline two\r\n");
  EXPECT_EQ(Export(SearchResultsFormat::kCsvWithoutCd, Rows()),
            "Text,Path,Time,Size,Attr,Notes\r\n"
            "Holiday  2004,/media/cdrom,3/5/2004 1:47:09 PM,650000000,,\r\n"
            "a<b>&c.txt,Photos/Beach,3/5/2004,1.5E+15,33,a  b\r\nline two\r\n");
  EXPECT_EQ(Export(SearchResultsFormat::kCsv, {}), "Text,Cd,Path,Time,Size,Attr,Notes\r\n");
}

TEST_F(SearchResultsExportTest, XmlHoldsTheCriteriaAndOneUnescapedLinePerRow) {
  EXPECT_EQ(Export(SearchResultsFormat::kXml, Rows()),
            "<SearchResults>\r\n"
            "<SearchString>beach* and \"sun\"</SearchString>\r\n"
            "<CaseSensitive>False</CaseSensitive>\r\n"
            "<SearchComments>True</SearchComments>\r\n"
            "<SearchExtra>False</SearchExtra>\r\n"
            "<SearchCdName>True</SearchCdName>\r\n"
            "<SearchPath>False</SearchPath>\r\n"
            "<time>3/5/2004 1:47:09 PM</time>\r\n"
            "<ResultsList>\r\n"
            "<Result><item>Holiday, 2004</item><Cd>Holiday, 2004</Cd><path>/media/cdrom</path>"
            "<date>3/5/2004 1:47:09 PM</date><size>650000000</size><attribute></attribute>"
            "<notes></notes></Result>\r\n"
            "<Result><item>a<b>&c.txt</item><Cd>Holiday, 2004</Cd><path>Photos/Beach</path>"
            "<date>3/5/2004</date><size>1.5E+15</size><attribute>33</attribute>"
            "<notes>a, b\r\nline two</notes></Result>\r\n"
            "</ResultsList>\r\n"
            "</SearchResults>\r\n");
}

TEST_F(SearchResultsExportTest, SummaryTakesTheOtherOptions) {
  SearchOptions o;
  o.caseSensitive = o.inExtra = o.inPathNames = true;
  const SearchResultsSummary s = SearchResultsSummary::From(o, 2.5);
  EXPECT_TRUE(s.caseSensitive && s.inExtra && s.inPathNames);
  EXPECT_FALSE(s.inNames || s.inComments);
}

TEST_F(SearchResultsExportTest, WriterReplacesTheTargetOnlyWhenClosed) {
  const std::string path = dir_.File("results.csv");
  ASSERT_TRUE(WriteFileBytes(path, "old"));
  for (bool abandon : {true, false}) {
    {
      OutputWriter out;
      ASSERT_TRUE(out.Open(path).ok());
      EXPECT_TRUE(out.WriteLine("new"));
      EXPECT_TRUE(out.Flush());
      EXPECT_EQ(ReadFileBytes(path), "old") << "the target is untouched while writing";
      if (abandon) out.Abandon();  // else going away without Close() abandons
    }
    EXPECT_EQ(ReadFileBytes(path), "old");
    EXPECT_EQ(::access((path + ".part").c_str(), F_OK), -1) << "no leftover";
  }
  // Closed, it replaces the target; in the legacy code page it counts what it cannot hold.
  OutputWriter out;
  ASSERT_TRUE(out.Open(path, TextEncoding::kWindows1252).ok());
  out.WriteLine("Caf\xC3\xA9 \xE2\x82\xAC \xE2\x98\x83");  // "Café € ☃"
  out.SetLineEnd("\n");
  out.WriteLine("two");
  ASSERT_TRUE(out.Close().ok());
  EXPECT_EQ(ReadFileBytes(path), "Caf\xE9 \x80 ?\r\ntwo\n");
  EXPECT_EQ(out.replacements(), 1u);
}

TEST_F(SearchResultsExportTest, WriterFailuresAreReportedAndLeaveNoFile) {
  OutputWriter out;
  EXPECT_TRUE(out.Open(dir_.File("no/such/folder/x.csv")).IsIOError());
  EXPECT_FALSE(out.WriteLine("x")) << "nothing is open";

  // A full disk: /dev/full refuses every write.
  const int fd = ::open("/dev/full", O_WRONLY);
  if (fd < 0) GTEST_SKIP() << "no /dev/full";
  OutputWriter full;
  ASSERT_TRUE(full.OpenDescriptor(fd).ok());
  full.WriteLine(std::string(OutputWriter::kBufferSize, 'x'));
  EXPECT_FALSE(full.ok());
  EXPECT_FALSE(full.WriteLine("more")) << "errors stick";
  EXPECT_TRUE(full.Close().IsIOError());
  ::close(fd);

  EXPECT_TRUE(SearchResultsExport::WriteFile(dir_.File("no/such/x.xml"), SearchResultsFormat::kXml,
                                             Summary(), Rows())
                  .IsIOError());
}

}  // namespace
}  // namespace gorvan::test
