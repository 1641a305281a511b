// The spreadsheet and web-page exports of a catalog with nasty names: the
// workbook read back with openpyxl (typed cells, dates, headers, frozen panes,
// filters, further sheets), the page's data block parsed and its markup
// checked, the page run in headless Chromium when it is installed, and
// cancel and unwritable targets for both.
#include <dirent.h>
#include <gmock/gmock.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <set>

#include "catalog/CatalogFixture.h"
#include "export/basExport.h"
#include "support/RunCommand.h"

namespace gorvan::test {
namespace {

using nlohmann::json;

constexpr double kNoon2004 = 38000.5;      // 14 Jan 2004 12:00:00
constexpr double kMidnight2005 = 38412.0;  // 1 Mar 2005
constexpr double kJanuary1900 = 30;        // before the spreadsheet's first safe date

// Seconds since 1970 of an OLE date, as the page holds dates.
int64_t Seconds(double ole) { return static_cast<int64_t>((ole - 25569) * 86400); }

// An interpreter that has openpyxl, or "".
std::string Python() {
  for (const char* python : {"/usr/bin/python3", "python3"}) {
    if (RunCommand(std::string(python) + " -c 'import openpyxl' 2>/dev/null").code == 0) {
      return python;
    }
  }
  return {};
}

// Every sheet as openpyxl reads it: title, frozen cell, filter range, widths,
// rows of [type, value, number format], and the raw XML of all sheets.
constexpr const char* kReadWorkbook = R"(
import json, sys, zipfile, openpyxl
wb = openpyxl.load_workbook(sys.argv[1])
def cell(c):
    v = c.value.isoformat() if hasattr(c.value, 'isoformat') else c.value
    return [c.data_type, v, c.number_format]
out = {'sheets': [{'title': ws.title, 'freeze': ws.freeze_panes, 'filter': ws.auto_filter.ref,
                   'widths': {k: d.width for k, d in ws.column_dimensions.items()},
                   'rows': [[cell(c) for c in r] for r in ws.iter_rows()]} for ws in wb]}
z = zipfile.ZipFile(sys.argv[1])
out['raw'] = ''.join(z.read(n).decode() for n in z.namelist() if n.startswith('xl/worksheets/'))
print(json.dumps(out))
)";

const std::vector<std::string> kDiscHeader = {"Disc",    "Last Scanned", "Total Size", "Free Space",
                                              "Folders", "Files",        "Media Type", "Notes",
                                              "Extra 1", "Extra 2",      "Extra 3",    "Extra 4"};
const std::vector<std::string> kFolderHeader = {
    "Disc",  "Folder",       "Name",  "Date",    "Size",    "Attributes", "Subfolders",
    "Files", "Direct Files", "Notes", "Extra 1", "Extra 2", "Extra 3",    "Extra 4"};
const std::vector<std::string> kFileHeader = {"Disc",    "Folder",     "Name",   "Date",
                                              "Size",    "Attributes", "Notes",  "Extra 1",
                                              "Extra 2", "Extra 3",    "Extra 4"};

std::vector<std::string> Texts(const json& row) {
  std::vector<std::string> out;
  for (const json& c : row) out.push_back(c[1].is_string() ? c[1].get<std::string>() : "");
  return out;
}

std::set<std::string> Listing(const std::string& folder) {
  std::set<std::string> names;
  if (DIR* d = ::opendir(folder.c_str())) {
    while (dirent* e = ::readdir(d)) names.insert(e->d_name);
    ::closedir(d);
  }
  return names;
}

class WorkbookAndPageExportTest : public CatalogTest {
 protected:
  // Two discs: the first with the top folder of a mount point (no name), a
  // folder under it and one under that, holding files whose names carry
  // markup, quotes, commas, line breaks, a control character, an "_xHHHH_"
  // escape and bytes that are not UTF-8; the second without folders.
  void Fill(TextEncoding enc = TextEncoding::kUtf8) {
    OpenCatalog("c.cd", enc);
    ASSERT_TRUE(data_.SetDataName("Catalog <x> & 'y'"));
    classCd& cd = cur_.NewDisc();
    cd.SetCdName("Disc <one> & \"two\", 3");
    cd.SetCdNotes("line one\r\nline two");
    cd.SetCdExtra("T1first");
    cd.setCdLastScanned(kNoon2004);
    cd.setCdTotalSize(1.5e15);
    cd.setCdFreeSpace(2048);
    cd.setCdMediaType(5);
    struct File {
      const char* name;
      double size, date;
      const char* notes;
    };
    const struct {
      const char *name, *path;
      double size;
      std::vector<File> files;
    } folders[] = {
        {"",
         "\\",
         -1239,
         {{"</script><img src=x onerror=alert(1)>", 0, kNoon2004, ""},
          {"a,b\r\nc.txt", 1234, 0, ""},
          {"q\"uote's.txt", 5e9, kJanuary1900, ""},
          {"bad\xFF\xFE.bin", 5, kNoon2004, ""},
          {"_x0041_ ctrl\x01.txt", 0, kNoon2004, "note <b>"}}},
        {"sub <b>", "\\", -5, {{"Caf\xC3\xA9 \xE2\x82\xAC.txt", 5, kNoon2004, ""}}},
        {"deep", "\\sub <b>", 0, {}},
    };
    for (const auto& f : folders) {
      classDir& dir = cd.GetDirAppend();
      dir.SetDirName(f.name);
      dir.SetDirPath(f.path);
      dir.setDirDate(kMidnight2005);
      dir.setDirAttr(16);
      dir.setDirSize(f.size);
      dir.GetFileAppendStart();
      for (const File& file : f.files) {
        ClassFile& r = dir.GetFileAppend();
        r.SetFileName(file.name);
        r.setFileSize(file.size);
        r.setFileDate(file.date);
        r.setFileAttr(32);
        if (*file.notes) r.SetFileNotes(file.notes);
      }
      dir.GetFileAppendFinish();
    }
    cd.GetDirAppendFinish();
    ASSERT_TRUE(cur_.CommitDisc());
    classCd& empty = cur_.NewDisc();
    empty.SetCdName("Empty");
    empty.setCdLastScanned(0);
    empty.GetDirAppendFinish();
    ASSERT_TRUE(cur_.CommitDisc());
  }

  ExportResult Export(ExportType type, const std::string& name) {
    options_.type = type;
    options_.extractDate = kNoon2004;
    return basExport(data_, dir_.File(name), options_, job_);
  }

  // The workbook as openpyxl reads it; skips without python3-openpyxl.
  json ReadWorkbook(const std::string& name) {
    const std::string python = Python();
    if (python.empty()) return {};
    const std::string script = dir_.File("read.py");
    EXPECT_TRUE(WriteFileBytes(script, kReadWorkbook));
    const CommandResult r = RunCommand(python + " '" + script + "' '" + dir_.File(name) + "'");
    EXPECT_EQ(r.code, 0) << r.out;
    return json::parse(r.out, nullptr, false);
  }

  // The page's data block, parsed.
  static json PageData(const std::string& page) {
    const std::string open = "<script type=\"application/json\" id=\"gorvan-data\">";
    const size_t from = page.find(open);
    if (from == std::string::npos) return {};
    const size_t to = page.find("</script>", from);
    const std::string block = page.substr(from + open.size(), to - from - open.size());
    EXPECT_EQ(block.find('<'), std::string::npos) << "a name could close the block";
    return json::parse(block, nullptr, false);
  }

  ExportOptions options_;
  JobControl job_;
};

TEST_F(WorkbookAndPageExportTest, WorkbookHoldsTypedCellsUnderFrozenFilteredHeaders) {
  Fill();
  ASSERT_TRUE(Export(ExportType::kSpreadsheet, "out.xlsx").status.ok());
  const json book = ReadWorkbook("out.xlsx");
  if (book.is_null()) GTEST_SKIP() << "python3-openpyxl is not installed";
  ASSERT_TRUE(book.is_object());
  const json& sheets = book["sheets"];
  ASSERT_EQ(sheets.size(), 3u);
  const std::tuple<const char*, std::vector<std::string>, const char*> expected[] = {
      {"Discs", kDiscHeader, "A1:L3"},
      {"Folders", kFolderHeader, "A1:N4"},
      {"Files", kFileHeader, "A1:K7"}};
  for (size_t i = 0; i < 3; ++i) {
    const auto& [title, header, filter] = expected[i];
    EXPECT_EQ(sheets[i]["title"], title);
    EXPECT_EQ(sheets[i]["freeze"], "A2") << title;
    EXPECT_EQ(sheets[i]["filter"], filter) << title;
    EXPECT_EQ(Texts(sheets[i]["rows"][0]), header) << title;
    EXPECT_EQ(sheets[i]["rows"][0][0][0], "s");
  }
  const json& disc = sheets[0]["rows"][1];
  EXPECT_EQ(disc[0], json::array({"s", "Disc <one> & \"two\", 3", "General"}));
  EXPECT_EQ(disc[1], json::array({"d", "2004-01-14T12:00:00", "yyyy-mm-dd hh:mm:ss"}));
  EXPECT_EQ(disc[2], json::array({"n", 1.5e15, "#,##0"}));
  EXPECT_EQ(disc[6][1], 5);
  EXPECT_EQ(disc[7][1], "line one\nline two");
  EXPECT_EQ(disc[8][1], "first");
  EXPECT_TRUE(sheets[0]["rows"][2][1][1].is_null()) << "no date: an empty cell";

  // Folders: full names, sizes as bytes (a scan stores them negated).
  const json& folders = sheets[1]["rows"];
  EXPECT_EQ(Texts(folders[1]).at(1), "\\");
  EXPECT_EQ(folders[1][4], json::array({"n", 1239, "#,##0"}));
  EXPECT_EQ(folders[1][3][1], "2005-03-01T00:00:00");
  EXPECT_EQ(Texts(folders[3]).at(1), "\\sub <b>\\deep");

  const json& files = sheets[2]["rows"];
  std::vector<std::string> names, folderNames;
  for (size_t r = 1; r < files.size(); ++r) {
    names.push_back(Texts(files[r])[2]);
    folderNames.push_back(Texts(files[r])[1]);
  }
  EXPECT_THAT(names, ::testing::ElementsAre("</script><img src=x onerror=alert(1)>", "a,b\nc.txt",
                                            "q\"uote's.txt", "bad\xEF\xBF\xBD\xEF\xBF\xBD.bin",
                                            ::testing::_, "Caf\xC3\xA9 \xE2\x82\xAC.txt"));
  EXPECT_EQ(folderNames[0], "\\");
  EXPECT_EQ(folderNames[5], "\\sub <b>");
  EXPECT_EQ(files[1][3][0], "d");
  EXPECT_TRUE(files[2][3][1].is_null()) << "no date";
  EXPECT_EQ(files[3][3], json::array({"s", "1/29/1900", "General"})) << "before March 1900";
  EXPECT_EQ(files[3][4][1], 5e9);
  EXPECT_EQ(files[5][6][1], "note <b>");
  // The spreadsheet would read "_x0041_" as "A" and the control character is
  // not XML: both are written as escapes.
  EXPECT_NE(book["raw"].get<std::string>().find("_x005F_x0041_ ctrl_x0001_.txt"),
            std::string::npos);
  const double nameWidth = sheets[2]["widths"]["C"];
  EXPECT_GT(nameWidth, 38);
  EXPECT_LE(nameWidth, 62);
}

TEST_F(WorkbookAndPageExportTest, WorkbookConvertsWindows1252AndLeavesOutUntickedColumns) {
  Fill(TextEncoding::kWindows1252);
  options_.fields.dirDate = options_.fields.dirNotes = options_.fields.fileSizes = false;
  ASSERT_TRUE(Export(ExportType::kSpreadsheet, "out.xlsx").status.ok());
  json book = ReadWorkbook("out.xlsx");
  if (book.is_null()) GTEST_SKIP() << "python3-openpyxl is not installed";
  std::vector<std::string> folderHeader = kFolderHeader, fileHeader = kFileHeader;
  std::erase(folderHeader, "Date");
  std::erase(folderHeader, "Notes");
  std::erase(fileHeader, "Size");
  EXPECT_EQ(Texts(book["sheets"][1]["rows"][0]), folderHeader);
  EXPECT_EQ(Texts(book["sheets"][2]["rows"][0]), fileHeader);
  EXPECT_EQ(Texts(book["sheets"][2]["rows"][6])[2], "Caf\xC3\xA9 \xE2\x82\xAC.txt");
  EXPECT_EQ(Texts(book["sheets"][2]["rows"][4])[2], "bad\xC3\xBF\xC3\xBE.bin") << "code page";

  options_.fields = ExportFields{};
  options_.fields.dirFiles = false;
  ASSERT_TRUE(Export(ExportType::kSpreadsheet, "out.xlsx").status.ok());
  book = ReadWorkbook("out.xlsx");
  ASSERT_EQ(book["sheets"].size(), 2u) << "no Files sheet";
}

TEST_F(WorkbookAndPageExportTest, ALongTableGoesOnInFurtherSheets) {
  Fill();
  options_.sheetRows = 3;  // a header and two rows
  ASSERT_TRUE(Export(ExportType::kSpreadsheet, "out.xlsx").status.ok());
  const json book = ReadWorkbook("out.xlsx");
  if (book.is_null()) GTEST_SKIP() << "python3-openpyxl is not installed";
  std::vector<std::string> titles, names;
  for (const json& sheet : book["sheets"]) {
    const std::string title = sheet["title"];
    titles.push_back(title);
    EXPECT_EQ(sheet["freeze"], "A2") << title;
    const size_t rows = sheet["rows"].size();
    EXPECT_LE(rows, 3u) << title;
    const std::string lastCol = title.starts_with("Files")     ? "K"
                                : title.starts_with("Folders") ? "N"
                                                               : "L";
    EXPECT_EQ(sheet["filter"], "A1:" + lastCol + std::to_string(rows)) << title;
    EXPECT_EQ(Texts(sheet["rows"][0])[0], "Disc") << "every sheet has its header";
    if (title.starts_with("Files")) {
      for (size_t r = 1; r < rows; ++r) names.push_back(Texts(sheet["rows"][r])[2]);
    }
  }
  // The rows' own order: two files, a folder's worth more, then the next folder.
  EXPECT_EQ(titles, (std::vector<std::string>{"Discs", "Folders", "Files", "Files (2)", "Files (3)",
                                              "Folders (2)"}));
  ASSERT_EQ(names.size(), 6u);
  EXPECT_EQ(names[0], "</script><img src=x onerror=alert(1)>");
  EXPECT_EQ(names[5], "Caf\xC3\xA9 \xE2\x82\xAC.txt");
}

TEST_F(WorkbookAndPageExportTest, PageDataRoundTripsAndNoNameBecomesMarkup) {
  for (TextEncoding enc : {TextEncoding::kUtf8, TextEncoding::kWindows1252}) {
    Fill(enc);
    ASSERT_TRUE(Export(ExportType::kHtml, "out.html").status.ok());
    const std::string page = ReadFileBytes(dir_.File("out.html"));
    EXPECT_THAT(page, ::testing::StartsWith("<!DOCTYPE html>"));
    EXPECT_NE(
        page.find("<title>Catalog &lt;x&gt; &amp; &#39;y&#39; - 1/14/2004 12:00:00 PM</title>"),
        std::string::npos);
    // The page's own two script elements, and no markup from a name.
    size_t closings = 0;
    for (size_t at = page.find("</script"); at != std::string::npos;
         at = page.find("</script", at + 1)) {
      ++closings;
    }
    EXPECT_EQ(closings, 2u);
    EXPECT_EQ(page.find("<img"), std::string::npos);
    EXPECT_EQ(page.find("://"), std::string::npos) << "nothing loads from elsewhere";

    const json data = PageData(page);
    ASSERT_TRUE(data.is_object());
    EXPECT_EQ(data["name"], "Catalog <x> & 'y'");
    ASSERT_EQ(data["discs"].size(), 2u);
    const json& disc = data["discs"][0];
    EXPECT_EQ(disc["n"], "Disc <one> & \"two\", 3");
    EXPECT_EQ(disc["t"], Seconds(kNoon2004));
    EXPECT_EQ(disc["s"], 1.5e15);
    EXPECT_EQ(disc["o"], "line one\r\nline two");
    const json& d = disc["d"];
    ASSERT_EQ(d.size(), 3u);
    // [parent, name, date, size, notes, names, sizes, dates, file notes]
    EXPECT_EQ(d[0][0], -1);
    EXPECT_EQ(d[0][1], "\\") << "a top folder carries its full name";
    EXPECT_EQ(d[0][2], Seconds(kMidnight2005));
    EXPECT_EQ(d[0][3], 1239);
    const std::string bad =
        enc == TextEncoding::kUtf8 ? "\xEF\xBF\xBD\xEF\xBF\xBD" : "\xC3\xBF\xC3\xBE";
    EXPECT_EQ(d[0][5],
              json::array({"</script><img src=x onerror=alert(1)>", "a,b\r\nc.txt", "q\"uote's.txt",
                           "bad" + bad + ".bin", "_x0041_ ctrl\x01.txt"}));
    EXPECT_EQ(d[0][6], json::array({0, 1234, 5e9, 5, 0}));
    EXPECT_TRUE(d[0][7][1].is_null()) << "no date";
    EXPECT_EQ(d[0][7][2], Seconds(kJanuary1900));
    EXPECT_EQ(d[0][8], json::array({json::array({4, "note <b>"})}));
    EXPECT_EQ(d[1][0], 0);
    EXPECT_EQ(d[1][1], "sub <b>");
    EXPECT_EQ(d[1][5][0], "Caf\xC3\xA9 \xE2\x82\xAC.txt");
    EXPECT_EQ(d[2][0], 1);
    EXPECT_EQ(d[2][5], json::array());
    EXPECT_EQ(data["discs"][1]["d"], json::array());
    data_.CloseFiles();
    ::unlink(Path("c.cd").c_str());
  }
}

TEST_F(WorkbookAndPageExportTest, UntickedBoxesLeaveValuesOutOfThePage) {
  Fill();
  options_.fields.fileSizes = options_.fields.dirDate = options_.fields.fileNotes = false;
  ASSERT_TRUE(Export(ExportType::kHtml, "out.html").status.ok());
  json data = PageData(ReadFileBytes(dir_.File("out.html")));
  const json& folder = data["discs"][0]["d"][0];
  EXPECT_TRUE(folder[2].is_null());
  EXPECT_EQ(folder[6], json::array());
  EXPECT_EQ(folder.size(), 8u) << "no file notes";
  options_.fields.dirFiles = false;
  ASSERT_TRUE(Export(ExportType::kHtml, "out.html").status.ok());
  data = PageData(ReadFileBytes(dir_.File("out.html")));
  EXPECT_EQ(data["discs"][0]["d"][0][5], json::array());
}

// The page's script runs: the tree, the counts, the filter and its "no match"
// line, and a hit shown as text.
TEST_F(WorkbookAndPageExportTest, PageWorksInHeadlessChromium) {
  std::string chromium;
  for (const char* name : {"chromium", "chromium-browser", "google-chrome"}) {
    const CommandResult found = RunCommand(std::string("command -v ") + name + " 2>/dev/null");
    if (found.code == 0) {
      chromium = found.out;
      break;
    }
  }
  if (chromium.empty()) GTEST_SKIP() << "Chromium is not installed";
  chromium.erase(chromium.find_last_not_of('\n') + 1);
  Fill();
  ASSERT_TRUE(Export(ExportType::kHtml, "out.html").status.ok());
  std::string page = ReadFileBytes(dir_.File("out.html"));
  const std::string probe = R"(<script>
var r = {title: document.getElementById("title").textContent,
         summary: document.getElementById("summary").textContent};
gorvanExport.filter("<\/SCRIPT");
r.hits = Array.from(document.querySelectorAll("#hits .hit .name"), function (e) { return e.textContent; });
r.path = document.querySelector("#hits .path").textContent;
gorvanExport.filter("zzz");
r.none = document.getElementById("status").textContent;
gorvanExport.filter("");
gorvanExport.reveal(0, 2, -1);
r.found = document.querySelector(".found .name").firstChild.textContent;
r.images = document.getElementsByTagName("img").length;
var p = document.createElement("pre");
p.id = "probe";
p.textContent = encodeURIComponent(JSON.stringify(r));
document.body.appendChild(p);
</script></body>)";
  page.replace(page.rfind("</body>"), 7, probe);
  ASSERT_TRUE(WriteFileBytes(dir_.File("probe.html"), page));
  const std::string dom =
      RunCommand("timeout 120 '" + chromium +
                 "' --headless --no-sandbox --disable-gpu --disable-quic "
                 "--no-first-run --disable-background-networking --disable-component-update "
                 "--disable-sync --user-data-dir='" +
                 dir_.File("profile") + "' --dump-dom 'file://" + dir_.File("probe.html") +
                 "' 2>/dev/null")
          .out;
  const size_t at = dom.find("<pre id=\"probe\">");
  ASSERT_NE(at, std::string::npos) << "the page's script failed";
  std::string encoded = dom.substr(at + 16, dom.find("</pre>", at) - at - 16), text;
  for (size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] == '%' && i + 2 < encoded.size()) {
      text.push_back(static_cast<char>(std::stoi(encoded.substr(i + 1, 2), nullptr, 16)));
      i += 2;
    } else {
      text.push_back(encoded[i]);
    }
  }
  const json r = json::parse(text, nullptr, false);
  ASSERT_TRUE(r.is_object()) << text;
  EXPECT_EQ(r["title"], "Catalog <x> & 'y'");
  EXPECT_THAT(r["summary"].get<std::string>(),
              ::testing::StartsWith("2 discs, 3 folders, 6 files, "));
  EXPECT_EQ(r["hits"], json::array({"</script><img src=x onerror=alert(1)>"}));
  EXPECT_EQ(r["path"], "Disc <one> & \"two\", 3 \xE2\x80\xBA \\");
  EXPECT_EQ(r["none"], "No match for \xE2\x80\x9Czzz\xE2\x80\x9D.");
  EXPECT_EQ(r["found"], "deep");
  EXPECT_EQ(r["images"], 0);
}

// A cancel in the middle and a target that cannot be written leave no file,
// no ".part" and no temporary file, and keep what was there.
TEST_F(WorkbookAndPageExportTest, CancelAndUnwritableTargetsLeaveNothing) {
  Fill();
  for (ExportType type : {ExportType::kSpreadsheet, ExportType::kHtml}) {
    SCOPED_TRACE(static_cast<int>(type));
    options_.type = type;
    EXPECT_TRUE(basExport(data_, dir_.File("no/such/out"), options_, job_).status.IsIOError());

    ASSERT_TRUE(WriteFileBytes(dir_.File("out"), "earlier export"));
    const std::set<std::string> before = Listing(dir_.path());
    const size_t descriptors = Listing("/proc/self/fd").size();
    std::stop_source stop;
    int reports = 0;
    // Stops after the first folder, when every sheet has rows.
    job_ = JobControl(
        stop.get_token(),
        [&](const JobProgress&) {
          if (++reports == 3) stop.request_stop();
        },
        JobControl::kEveryStep);
    EXPECT_TRUE(Export(type, "out").status.IsCancelled());
    EXPECT_EQ(reports, 3);
    EXPECT_EQ(ReadFileBytes(dir_.File("out")), "earlier export");
    EXPECT_EQ(Listing(dir_.path()), before);
    EXPECT_EQ(Listing("/proc/self/fd").size(), descriptors) << "temporary files are closed";
    job_ = JobControl();
  }
  options_.type = static_cast<ExportType>(kExportTypeCount);  // a damaged setting
  EXPECT_TRUE(basExport(data_, dir_.File("out"), options_, job_).status.IsInvalidArgument());
  EXPECT_EQ(ReadFileBytes(dir_.File("out")), "earlier export");
}

TEST(ExportTypeTest, TheDialogsConstantsMatchTheTypes) {
  std::string filter;
  for (const ExportTypeInfo& t : kExportTypes) {
    filter += (filter.empty() ? "" : "|") + std::string(t.filter);
    EXPECT_THAT(t.filter, ::testing::EndsWith(std::string("|*.") + t.extension));
  }
  EXPECT_EQ(filter, kExportFileFilter);
  EXPECT_STREQ(ExportTypeInfoOf(ExportType::kSpreadsheet).filter, "Excel Sheet (*.xlsx)|*.xlsx");
  const std::pair<const char*, std::optional<ExportType>> paths[] = {
      {"a.CSV", ExportType::kDelimited},
      {"/x.y/a.xml", ExportType::kXml},
      {"a.Xlsx", ExportType::kSpreadsheet},
      {"a.htm", ExportType::kHtml},
      {"a.html", ExportType::kHtml},
      {"a.xls", std::nullopt},
      {"a.d/b", std::nullopt},
      {"html", std::nullopt}};
  for (const auto& [path, type] : paths) EXPECT_EQ(ExportTypeForPath(path), type) << path;
}

}  // namespace
}  // namespace gorvan::test
