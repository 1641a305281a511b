// The search results leave the program: the export window (text and XML,
// against gorvan-cli's files for the same search) and the printed report.
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QRadioButton>

#include "app/SettingsStore.h"
#include "ui/SearchFixture.h"
#include "ui/search/SearchReport.h"
#include "ui/search/frmExport_Search.h"

namespace gorvan::test {
namespace {

using Model = ui::SearchResultsModel;

class SearchExportTest : public SearchTest {
 protected:
  // A catalog whose texts hold commas: "Disc, One" with "a,b.txt" noted "x, y".
  std::string BuildCommas() {
    CatalogBuilder b(dir.File("c.cd"));
    b.Disc({.name = "Disc, One",
            .folders = {{"f", {{"a,b.txt", 5, 45000.5, 32, "x, y"}, {"plain.txt", 7}}}}});
    b.Close();
    return dir.File("c.cd");
  }
  // Opens the export window from btnExport.
  ui::frmExport_Search* ExportWindow(ui::frmSearch* form) {
    Control<QPushButton>(form, "btnExport")->click();
    return Find<ui::frmExport_Search>("frmExport_Search");
  }
  // Writes through the window and waits for the end.
  Status Write(ui::frmExport_Search* w) {
    Status result = Status::Cancelled("not written");
    bool done = false;
    QObject::connect(w, &ui::frmExport_Search::exported, [&](const Status& s) {
      result = s;
      done = true;
    });
    w->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
    EXPECT_TRUE(WaitFor([&] { return done; }));
    Idle();
    return result;
  }
  std::string CliFile(const std::string& catalog, const QStringList& args, const std::string& out) {
    Cli(catalog, args + QStringList{QStringLiteral("--output"), QString::fromStdString(out)});
    return ReadFileBytes(out);
  }
  static std::string WithoutTime(std::string xml) {
    const size_t at = xml.find("<time>");
    if (at == std::string::npos) return xml;
    return xml.erase(at, xml.find("\r\n", at) - at);
  }
};

TEST_F(SearchExportTest, TextAndXmlAreTheCommandLinesFiles) {
  const std::string catalog = BuildCommas();
  const std::string cliCsv =
      CliFile(catalog, {"txt", "--names", "--format", "csv"}, dir.File("cli.csv"));
  const std::string cliXml =
      CliFile(catalog, {"txt", "--names", "--format", "xml"}, dir.File("cli.xml"));
  ASSERT_FALSE(cliCsv.empty());
  StartOn(catalog);
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Search(form, "txt");
  ASSERT_EQ(form->model()->rowCount(), 2);

  ui::frmExport_Search* w = ExportWindow(form);
  ASSERT_TRUE(w);
  Screenshot(w, "frmExport_Search");
  const std::string csv = dir.File("hits.csv");
  w->SetType(0);
  w->SetFileName(QString::fromStdString(csv));
  ASSERT_TRUE(Write(w).ok());
  EXPECT_EQ(prompt.LastText(), "The search results were exported to " + csv);
  EXPECT_EQ(prompt.asked.back().notifyKey, "lNotifyExport_Search");
  const std::string text = ReadFileBytes(csv);
  EXPECT_EQ(text, cliCsv);
  // Commas inside values became blanks; nothing else changed.
  const SearchResult& hit = form->model()->RowAt(0);
  EXPECT_EQ(text,
            "Text,Cd,Path,Time,Size,Attr,Notes\r\n"
            "a b.txt,Disc  One," +
                hit.path + "," + hit.date +
                ",5,32,x  y\r\n"
                "plain.txt,Disc  One," +
                hit.path + "," + hit.date + ",7,32,\r\n");
  EXPECT_EQ(SettingsStore::GetText("Export", "export_search_last", ""), csv);
  EXPECT_EQ(SettingsStore::GetText("Export", "export_search_type", ""), "0");

  // The file dialog: the two forms; a name ending in .xml chooses XML.
  const std::string xml = dir.File("hits.xml");
  w = ExportWindow(form);
  ASSERT_TRUE(w);
  EXPECT_EQ(w->fileName(), QString::fromStdString(csv));  // the last file, remembered
  w->SetFileName({});
  prompt.files.push_back(xml);
  ASSERT_TRUE(Write(w).ok());
  ASSERT_FALSE(prompt.fileRequests.empty());
  EXPECT_EQ(prompt.fileRequests.back().title, "Select the name of the file to export");
  EXPECT_EQ(prompt.fileRequests.back().filter,
            "Comma Delimited (*.csv)|*.csv|XML File (*.xml)|*.xml");
  EXPECT_EQ(SettingsStore::GetText("Export", "export_search_type", ""), "1");
  const std::string doc = ReadFileBytes(xml);
  EXPECT_EQ(doc.rfind("<SearchResults>\r\n<SearchString>txt</SearchString>\r\n", 0), 0u);
  EXPECT_NE(doc.find("<Result><item>a,b.txt</item><Cd>Disc, One</Cd>"), std::string::npos);
  EXPECT_EQ(WithoutTime(doc), WithoutTime(cliXml));

  // The list without its "CD Name" column gives the short text.
  form->list()->horizontalHeader()->hideSection(Model::kCdName);
  w = ExportWindow(form);
  ASSERT_TRUE(w);
  w->SetType(0);
  EXPECT_EQ(w->fileName(), QString::fromStdString(dir.File("hits.csv")));  // follows the type
  ASSERT_TRUE(Write(w).ok());
  EXPECT_EQ(ReadFileBytes(csv),
            "Text,Path,Time,Size,Attr,Notes\r\n"
            "a b.txt," +
                hit.path + "," + hit.date +
                ",5,32,x  y\r\n"
                "plain.txt," +
                hit.path + "," + hit.date + ",7,32,\r\n");
}

TEST_F(SearchExportTest, AFileThatCannotBeWrittenIsToldAndLeavesNothing) {
  const std::string catalog = BuildCommas();
  StartOn(catalog);
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Search(form, "nothing like this");
  Control<QPushButton>(form, "btnExport")->click();
  EXPECT_EQ(prompt.LastText(), "Nothing to Export!!");
  Control<QPushButton>(form, "btnPreview")->click();
  EXPECT_EQ(prompt.LastText(), "Nothing to Print!!");
  EXPECT_EQ(Find<ui::frmExport_Search>("frmExport_Search"), nullptr);

  Search(form, "txt");
  // A folder that is there but cannot be written into, and one that is not there.
  const std::string locked = dir.File("locked");
  ASSERT_EQ(mkdir(locked.c_str(), 0555), 0);
  const bool root = access(locked.c_str(), W_OK) == 0;
  for (const std::string& target : {dir.File("missing/hits.csv"), locked + "/hits.csv"}) {
    if (root && target.rfind(locked, 0) == 0) continue;  // root writes anywhere
    ui::frmExport_Search* w = ExportWindow(form);
    ASSERT_TRUE(w);
    w->SetFileName(QString::fromStdString(target));
    EXPECT_FALSE(Write(w).ok());
    EXPECT_EQ(prompt.LastText().rfind("The search results could not be written to " + target, 0),
              0u);
    EXPECT_TRUE(w->isVisible());  // the user may choose another file
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(target)));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(target + ".part")));
    w->reject();
    Idle();
  }
}

// The number of pages of a PDF written by Qt.
int PdfPages(const std::string& pdf) {
  int pages = 0;
  for (size_t at = pdf.find("/Type /Page"); at != std::string::npos;
       at = pdf.find("/Type /Page", at + 1)) {
    if (pdf.compare(at, 12, "/Type /Pages") != 0) ++pages;
  }
  return pages;
}

TEST_F(SearchExportTest, TheReportListsTheRowsOnNumberedPages) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);
  Search(form, "*.*");
  const int n = form->model()->rowCount();
  ASSERT_GE(n, 8);
  ui::SearchReport::Content c =
      ui::SearchReport::Lines(*form->model(), QStringLiteral("*.*"), form->CategoryText());
  EXPECT_EQ(c.title, QStringLiteral("Gorvan Search Report"));
  EXPECT_EQ(c.searchFor, QStringLiteral("Search For : *.*"));
  EXPECT_EQ(c.searchWithin, QStringLiteral("Search Within : All"));
  EXPECT_EQ(c.header, (QStringList{"Item", "Cd or Folder", "Path"}));
  EXPECT_EQ(c.widths, (std::vector<int>{3000, 2000, 7900}));
  EXPECT_EQ(c.alignments, (std::vector<Qt::Alignment>(3, Qt::AlignHCenter)));
  ASSERT_EQ(c.rows.size(), static_cast<size_t>(n));
  for (int r = 0; r < n; ++r) {
    const SearchResult& row = form->model()->RowAt(r);
    EXPECT_EQ(c.rows[static_cast<size_t>(r)][0], QString::fromStdString(row.fileName));
    EXPECT_EQ(c.rows[static_cast<size_t>(r)][1], QString::fromStdString(row.cdName));
    EXPECT_EQ(c.rows[static_cast<size_t>(r)][2], QString::fromStdString(row.path));
  }

  // A PDF of the small report: one page with every row.
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(dir.File("report.pdf")));
  ASSERT_TRUE(ui::SearchReport::Print(&printer, c));
  const std::string pdf = ReadFileBytes(dir.File("report.pdf"));
  EXPECT_EQ(pdf.rfind("%PDF", 0), 0u);
  EXPECT_EQ(PdfPages(pdf), 1);
  const QRectF page(0, 0, printer.width(), printer.height());
  ui::SearchReport::Layout layout = ui::SearchReport::Paginate(c, page, &printer);
  const QStringList texts = ui::SearchReport::PageTexts(c, layout, 0);
  ASSERT_EQ(texts.size(), 3 + 3 + 3 * n + 1);
  EXPECT_EQ(texts.mid(0, 6), (QStringList{"Gorvan Search Report", "Search For : *.*",
                                          "Search Within : All", "Item", "Cd or Folder", "Path"}));
  EXPECT_EQ(texts.back(), QStringLiteral("Page 1 of 1"));

  // 100,000 rows: every row on exactly one page, in order; the PDF has them all.
  c.rows.resize(100000, {QStringLiteral("item"), QStringLiteral("disc"), QStringLiteral("path")});
  layout = ui::SearchReport::Paginate(c, page, &printer);
  ASSERT_GT(layout.rowsPerPage, 20);
  int next = 0;
  for (int p = 0; p < layout.pages; ++p) {
    auto [first, last] = ui::SearchReport::PageRows(layout, p);
    EXPECT_EQ(first, next);
    next = std::min(last, 100000);
  }
  EXPECT_EQ(next, 100000);
  EXPECT_LT(ui::SearchReport::PageRows(layout, layout.pages - 1).first, 100000);
  EXPECT_EQ(ui::SearchReport::PageTexts(c, layout, layout.pages - 1).back(),
            QStringLiteral("Page %1 of %1").arg(layout.pages));
  printer.setOutputFileName(QString::fromStdString(dir.File("large.pdf")));
  int turns = 0;
  ASSERT_TRUE(ui::SearchReport::Print(&printer, c, [&](int page, int pages) {
    EXPECT_EQ(pages, layout.pages);
    EXPECT_GT(page, 0);
    ++turns;
    return true;
  }));
  EXPECT_GT(turns, 0);  // the event loop had its turns
  EXPECT_EQ(PdfPages(ReadFileBytes(dir.File("large.pdf"))), layout.pages);
  // Stopped at its first turn, printing gives up.
  printer.setOutputFileName(QString::fromStdString(dir.File("stopped.pdf")));
  EXPECT_FALSE(ui::SearchReport::Print(&printer, c, [](int, int) { return false; }));

  // The preview window of btnPreview.
  Control<QPushButton>(form, "btnPreview")->click();
  auto* preview = Find<QPrintPreviewDialog>("frmPreview");
  ASSERT_TRUE(preview);
  ASSERT_TRUE(WaitFor([preview] { return preview->isVisible() && preview->isEnabled(); }));
  EXPECT_EQ(preview->windowTitle(), QStringLiteral("Gorvan Search Report"));
  Screenshot(preview, "frmPreview");
  preview->close();
  Idle();
}

}  // namespace
}  // namespace gorvan::test
