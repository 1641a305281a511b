// The catalog export: exact XML and comma-separated files for small catalogs in
// both encodings, the escaping, the option boxes, progress, cancel and the
// stylesheet beside the file.
#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "app/Resources.h"
#include "catalog/CatalogFixture.h"
#include "export/basExport.h"

namespace gorvan::test {
namespace {

// 14 Jan 2004 12:00:00 and 1 Mar 2005 00:00:00 as OLE dates.
constexpr double kNoon2004 = 38000.5;
constexpr double kMidnight2005 = 38412.0;

std::string Version() {
  return std::to_string(GORVAN_VERSION_MAJOR) + "." + std::to_string(GORVAN_VERSION_MINOR) + "." +
         std::to_string(GORVAN_VERSION_REVISION);
}

std::string Lines(std::initializer_list<std::string> lines) {
  std::string out;
  for (const std::string& l : lines) out += l + "\r\n";
  return out;
}

class CatalogExportTest : public CatalogTest {
 protected:
  // A catalog of a disc with one folder holding one file, and a disc without
  // folders. The records are as a scan writes them: the file has no path text
  // of its own, and the folder's size is stored negated.
  void Fill(const std::string& discName, const std::string& fileName,
            TextEncoding enc = TextEncoding::kUtf8) {
    OpenCatalog("c.cd", enc);
    classCd& cd = cur_.NewDisc();
    cd.SetCdName(discName);
    cd.SetCdNotes("line one\r\nline two");
    cd.SetCdExtra("T1first|`|AAalbum|`|T3third");
    cd.setCdLastScanned(kNoon2004);
    cd.setCdTotalSize(1.5e15);
    cd.setCdFreeSpace(2048);
    cd.setCdMediaType(5);
    cd.setCdNumOfSubdirs(1);
    cd.setCdNumOfFiles(1);
    classDir& dir = cd.GetDirAppend();
    dir.SetDirName("Docs");
    dir.SetDirPath("\\");
    dir.setDirDate(kMidnight2005);
    dir.setDirAttr(16);
    dir.setDirSize(-1234);
    dir.setDirCountOfFiles(1);
    dir.setDirCountOfFilesDirect(1);
    dir.GetFileAppendStart();
    ClassFile& f = dir.GetFileAppend();
    f.SetFileName(fileName);
    f.setFileDate(kNoon2004);
    f.setFileSize(1234);
    f.setFileAttr(33);
    f.SetFileExtra("T4fourth");
    // Archive members stay out of the export.
    f.GetZipAppendStart();
    f.GetZipAppend().SetFileName("member.txt");
    f.GetZipAppendFinish();
    dir.GetFileAppendFinish();
    cd.GetDirAppendFinish();
    ASSERT_TRUE(cur_.CommitDisc());
    first_ = cd.GetCdId();

    classCd& empty = cur_.NewDisc();
    empty.SetCdName("Empty");
    empty.setCdLastScanned(kMidnight2005);
    empty.GetDirAppendFinish();
    ASSERT_TRUE(cur_.CommitDisc());
    second_ = empty.GetCdId();
  }

  ExportResult Export(ExportType type, const std::string& name = "out") {
    options_.type = type;
    options_.extractDate = kNoon2004;
    return basExport(data_, dir_.File(name), options_, job_);
  }

  ExportOptions options_;
  JobControl job_;
  int32_t first_ = 0, second_ = 0;
};

TEST_F(CatalogExportTest, XmlOfAUtf8CatalogIsExact) {
  Fill("A & <B> 'c' \"d\" caf\xC3\xA9 &lt;", "r\xC3\xA9sum\xC3\xA9 \"1\".txt");
  ASSERT_TRUE(Export(ExportType::kXml).status.ok());
  const std::string expected = Lines({
      "<?xml-stylesheet type=\"text/xsl\" href=\"Gorvan.xsl\"?>",
      "<Gorvan ExtractDate=\"1/14/2004 12:00:00 PM\" Version=\"" + Version() + "\">",
      "<Cd>",
      "  <Name>A &amp; &lt;B&gt; &apos;c&apos; &quote;d&quote; caf\xC3\xA9 &amp;lt;</Name>",
      "  <LastScannedDate>1/14/2004 12:00:00 PM</LastScannedDate>",
      "  <TotalSize>1.5E+15</TotalSize>",
      "  <FreeSpace>2048</FreeSpace>",
      "  <CountOfDirs>1</CountOfDirs>",
      "  <CountOfFiles>1</CountOfFiles>",
      "  <MediaType>5</MediaType>",
      "  <Notes>line one\r\nline two</Notes>",
      "  <Extra1>first</Extra1>",
      "  <Extra2></Extra2>",
      "  <Extra3>third</Extra3>",
      "  <Extra4></Extra4>",
      "  <Directory>",
      "    <Name>Docs</Name>",
      "    <FullName>\\Docs</FullName>",
      "    <Date>3/1/2005</Date>",
      "    <Attr>16</Attr>",
      "    <Size>1234</Size>",
      "    <CountOfDirs>0</CountOfDirs>",
      "    <CountOfFiles>1</CountOfFiles>",
      "    <CountOfFilesDirect>1</CountOfFilesDirect>",
      "    <Notes></Notes>",
      "    <Extra1></Extra1>",
      "    <Extra2></Extra2>",
      "    <Extra3></Extra3>",
      "    <Extra4></Extra4>",
      "    <File>",
      "      <Name>r\xC3\xA9sum\xC3\xA9 &quote;1&quote;.txt</Name>",
      "      <FullName>\\Docs\\r\xC3\xA9sum\xC3\xA9 &quote;1&quote;.txt</FullName>",
      "      <Date>1/14/2004 12:00:00 PM</Date>",
      "      <Attr>33</Attr>",
      "      <Size>1234</Size>",
      "      <Notes></Notes>",
      "      <Extra1></Extra1>",
      "      <Extra2></Extra2>",
      "      <Extra3></Extra3>",
      "      <Extra4>fourth</Extra4>",
      "    </File>",
      "  </Directory>",
      "</Cd>",
      "<Cd>",
      "  <Name>Empty</Name>",
      "  <LastScannedDate>3/1/2005</LastScannedDate>",
      "  <TotalSize>0</TotalSize>",
      "  <FreeSpace>0</FreeSpace>",
      "  <CountOfDirs>0</CountOfDirs>",
      "  <CountOfFiles>0</CountOfFiles>",
      "  <MediaType>0</MediaType>",
      "  <Notes></Notes>",
      "  <Extra1></Extra1>",
      "  <Extra2></Extra2>",
      "  <Extra3></Extra3>",
      "  <Extra4></Extra4>",
      "</Cd>",
      "</Gorvan>",
  });
  EXPECT_EQ(ReadFileBytes(dir_.File("out")), expected);
}

TEST_F(CatalogExportTest, AWindows1252CatalogWritesCodesAsEntitiesInXmlAndBytesInCsv) {
  // "Café €" and "naïve": é 0xE9, € 0x80, ï 0xEF in the code page.
  Fill("Caf\xC3\xA9 \xE2\x82\xAC", "na\xC3\xAFve.txt", TextEncoding::kWindows1252);
  ASSERT_TRUE(Export(ExportType::kXml).status.ok());
  const std::string xml = ReadFileBytes(dir_.File("out"));
  EXPECT_NE(xml.find("\r\n<Cd>\r\n  <Name>Caf&#xE9; &#x80;</Name>\r\n"), std::string::npos);
  EXPECT_NE(xml.find("      <FullName>\\Docs\\na&#xEF;ve.txt</FullName>\r\n"), std::string::npos);
  for (unsigned char c : xml) ASSERT_LT(c, 128) << "all ASCII";
  ASSERT_TRUE(Export(ExportType::kDelimited).status.ok());
  EXPECT_THAT(ReadFileBytes(dir_.File("out")), ::testing::StartsWith("C, Caf\xE9 \x80, 1"));
}

TEST_F(CatalogExportTest, CsvIsExactACommaShiftsTheColumnsAndOptionBoxesEmptyFields) {
  Fill("Holiday, 2004", "a,b.txt");
  ASSERT_TRUE(Export(ExportType::kDelimited).status.ok());
  EXPECT_EQ(ReadFileBytes(dir_.File("out")),
            Lines({"C, Holiday, 2004, 1/14/2004 12:00:00 PM,1.5E+15,2048,1,1,5,line one\r\nline two",
                   "D, Docs, \\Docs, 3/1/2005,16,1234,0,1,1,",
                   "F, a,b.txt, \\Docs\\a,b.txt, 1/14/2004 12:00:00 PM,33,1234,",
                   "C, Empty, 3/1/2005,0,0,0,0,0,"}));

  // Unticked boxes empty their fields, or drop the files.
  options_.discIds = {first_};
  options_.fields.dirDate = false;
  options_.fields.fileSizes = false;
  ASSERT_TRUE(Export(ExportType::kDelimited).status.ok());
  EXPECT_EQ(ReadFileBytes(dir_.File("out")),
            Lines({"C, Holiday, 2004, 1/14/2004 12:00:00 PM,1.5E+15,2048,1,1,5,line one\r\nline two",
                   "D, Docs, \\Docs, ,16,1234,0,1,1,",
                   "F, a,b.txt, \\Docs\\a,b.txt, 1/14/2004 12:00:00 PM,33,,"}));
  options_.fields = ExportFields{};
  options_.fields.dirFiles = false;
  options_.fields.dirNotes = false;
  ASSERT_TRUE(Export(ExportType::kXml).status.ok());
  const std::string xml = ReadFileBytes(dir_.File("out"));
  EXPECT_EQ(xml.find("<File>"), std::string::npos);
  EXPECT_NE(xml.find("    <Notes></Notes>\r\n"), std::string::npos);
  EXPECT_NE(xml.find("  </Directory>\r\n</Cd>"), std::string::npos);
}

TEST_F(CatalogExportTest, DiscsFollowTheListUnknownIdsAreRefusedAndCancelLeavesNoFile) {
  Fill("First", "f.txt");
  options_.discIds = {second_, first_};
  std::vector<std::string> captions;
  std::stop_source stop;
  job_ = JobControl(stop.get_token(), [&](const JobProgress& p) {
    if (!p.caption.empty() && (captions.empty() || captions.back() != p.caption)) {
      captions.push_back(p.caption);
    }
  }, JobControl::kEveryStep);
  ASSERT_TRUE(Export(ExportType::kDelimited).status.ok());
  EXPECT_THAT(ReadFileBytes(dir_.File("out")), ::testing::StartsWith("C, Empty,"));
  EXPECT_EQ(captions, (std::vector<std::string>{"Exporting : Empty", "Exporting : First"}));

  options_.discIds = {first_, first_ + 1};  // inside a disc block, not a disc
  EXPECT_TRUE(Export(ExportType::kXml, "bad").status.IsInvalidArgument());
  EXPECT_NE(::access(dir_.File("bad").c_str(), F_OK), 0);
  EXPECT_TRUE(data_.ok()) << "a wrong id never reaches the catalog";

  options_.discIds = {};
  ASSERT_TRUE(WriteFileBytes(dir_.File("out"), "earlier export"));
  stop.request_stop();
  for (ExportType type : {ExportType::kXml, ExportType::kDelimited}) {
    EXPECT_TRUE(Export(type).status.IsCancelled());
    EXPECT_EQ(ReadFileBytes(dir_.File("out")), "earlier export");
    EXPECT_NE(::access(dir_.File("out.part").c_str(), F_OK), 0);
  }
}

TEST_F(CatalogExportTest, TheStylesheetIsReplacedBesideTheXml) {
  Fill("First", "f.txt");
  const std::string installed = options_.stylesheet = Resources::File(kStylesheetName);
  ASSERT_FALSE(installed.empty()) << "Gorvan.xsl is found in the build tree's share/gorvan";
  ASSERT_TRUE(WriteFileBytes(dir_.File("Gorvan.xsl"), "stale"));
  const ExportResult r = Export(ExportType::kXml, "out.xml");
  ASSERT_TRUE(r.status.ok());
  EXPECT_EQ(r.stylesheetProblem, "");
  const std::string xsl = ReadFileBytes(dir_.File("Gorvan.xsl"));
  EXPECT_EQ(xsl, ReadFileBytes(installed));
  EXPECT_NE(xsl.find("xsl:stylesheet"), std::string::npos);

  options_.stylesheet = dir_.File("missing.xsl");
  EXPECT_NE(Export(ExportType::kXml, "out.xml").stylesheetProblem, "");
  if (std::system("command -v xmllint >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "xmllint is not installed";
  }
  // Both the stylesheet and an export without double quotes are well-formed XML.
  const std::string files = "'" + installed + "' '" + dir_.File("out.xml") + "'";
  EXPECT_EQ(std::system(("xmllint --noout " + files).c_str()), 0);
}

TEST(XmlEscapeTest, EscapesInOrderWithoutDoubleEscaping) {
  const std::tuple<const char*, bool, const char*> cases[] = {
      {"a&b<c>d'e\"f&amp;", false, "a&amp;b&lt;c&gt;d&apos;e&quote;f&amp;amp;"},
      {"\x80\xE9\xFF\x7F", true, "&#x80;&#xE9;&#xFF;\x7F"},
      {"\xC3\xA9", false, "\xC3\xA9"},  // UTF-8 text is written as it is
      // What XML cannot hold: bytes that are not UTF-8 and control characters.
      {"a\xFF\x01\tb\r\n", false, "a\xEF\xBF\xBD\xEF\xBF\xBD\tb\r\n"},
      {"a\x01\x1F\t", true, "a??\t"}};
  for (const auto& [in, legacy, expected] : cases) {
    std::string out;
    AppendXmlEscaped(in, legacy, &out);
    EXPECT_EQ(out, expected) << in;
  }
}

}  // namespace
}  // namespace gorvan::test
