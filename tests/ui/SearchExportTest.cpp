// The search results leave the program: the export window (text and XML,
// against gorvan-cli's files for the same search) and the search report in
// the print preview.
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <QLabel>
#include <QRadioButton>
#include <QRegularExpression>

#include "app/SettingsStore.h"
#include "ui/SearchFixture.h"
#include "ui/reports/ReportPages.h"
#include "ui/reports/frmPreview.h"
#include "ui/search/SearchReportFormat.h"
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
  EXPECT_EQ(Find<ui::frmPreview>("frmPreview"), nullptr);

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

// The search report in the main window's print preview: the list's rows in
// the order it shows them, under the search's text and category.
TEST_F(SearchExportTest, TheReportIsTheListInItsOrderInThePrintPreview) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);
  Search(form, "*.*");
  // Sorted by name, last first: the report follows the list, not the search.
  form->list()->sortByColumn(Model::kFileName, Qt::DescendingOrder);
  ASSERT_TRUE(WaitFor([form] { return form->model()->sorted(); }));

  // Each btnPreview: the list's rows in its order, in the main window's preview.
  ui::frmPreview* preview = nullptr;
  auto report = [&]() -> const ui::ReportPages* {
    bool shown = false;
    const auto c = QObject::connect(form, &ui::frmSearch::reportShown, [&] { shown = true; });
    Control<QPushButton>(form, "btnPreview")->click();
    EXPECT_EQ(Control<QLabel>(form, "lblCount")->text(),
              QStringLiteral("Creating Search Results Report"));
    EXPECT_TRUE(WaitFor([&] { return shown; }));
    EXPECT_NE(Control<QLabel>(form, "lblCount")->text(),
              QStringLiteral("Creating Search Results Report"));
    QObject::disconnect(c);
    preview = Find<ui::frmPreview>("frmPreview");
    EXPECT_TRUE(preview && preview->isVisible() && preview->parentWidget() == window.get());
    auto* pages = preview ? dynamic_cast<const ui::ReportPages*>(preview->report().get()) : nullptr;
    if (!pages) return nullptr;
    QStringList listed, lines;
    for (int r = 0; r < form->model()->rowCount(); ++r) {
      const SearchResult& h = form->model()->RowAt(r);
      listed << QString::fromStdString(h.fileName + '\t' + h.cdName + '\t' + h.path);
    }
    for (const ui::ReportLine& l : pages->document().lines) lines << l.text;
    EXPECT_EQ(lines, listed);
    return pages;
  };
  const ui::ReportPages* pages = report();
  ASSERT_TRUE(pages);
  const ui::ReportDocument& doc = pages->document();
  EXPECT_EQ(doc.title, QStringLiteral("Gorvan Search Report"));
  EXPECT_EQ(doc.intro, (QStringList{"Search For : *.*", "Search Within : All"}));
  QStringList columns;  // as the format's "^" (centred), share and title
  for (const ui::ReportColumn& c : doc.columns) {
    columns << (c.align == ui::ReportAlign::kCentre ? "^" : "?") + QString::number(c.weight) + ' ' +
                   c.title;
  }
  EXPECT_EQ(columns.join('|'), QStringLiteral("^3000 Item|^2000 Cd or Folder|^7900 Path"));
  // The format's other marks: ">" right, "<" or none left; no number, 1000.
  const auto other = ui::ReportColumns(QStringLiteral("A|B"), QStringLiteral(">10|<x"));
  EXPECT_TRUE(other[0].align == ui::ReportAlign::kRight && other[0].weight == 10 &&
              other[1].align == ui::ReportAlign::kLeft && other[1].weight == 1000);
  Screenshot(preview, "frmPreview-search");

  // Rows merged into the sorted list: a report of some pages, saved as a PDF
  // of as many pages.
  std::vector<SearchResult> more(200);
  for (size_t i = 0; i < more.size(); ++i) more[i].fileName = "hit " + std::to_string(i);
  form->model()->Append(more);
  pages = report();
  ASSERT_TRUE(pages);
  ASSERT_GE(pages->pageCount(), 4);
  Status saved = Status::Refused("not ended");
  QObject::connect(preview, &ui::frmPreview::printed, preview,
                   [&saved](const Status& s) { saved = s; });
  preview->SaveAsPdf(QString::fromStdString(dir.File("report.pdf")));
  ASSERT_TRUE(WaitFor([&] { return !saved.IsRefused(); }, 60000));
  ASSERT_TRUE(saved.ok()) << saved.message();
  const QString pdf = QString::fromStdString(ReadFileBytes(dir.File("report.pdf")));
  const auto count =
      QRegularExpression(QStringLiteral("/Type\\s*/Pages\\b[^>]*/Count\\s+(\\d+)")).match(pdf);
  ASSERT_TRUE(count.hasMatch());
  EXPECT_EQ(count.captured(1).toInt(), pages->pageCount());

  // 100,000 rows: every page full, as a search report has no headings; the
  // list's last row on the last page.
  more.resize(100000 - static_cast<size_t>(form->model()->rowCount()), more[0]);
  form->model()->Append(more);
  ASSERT_TRUE(WaitFor([form] { return form->model()->sorted(); }));
  pages = report();
  ASSERT_TRUE(pages);
  const int rest = 100000 - pages->firstPageLines();
  EXPECT_EQ(pages->pageCount(), 1 + (rest + pages->pageLines() - 1) / pages->pageLines());
  EXPECT_EQ(pages->endLine(pages->pageCount() - 1), 100000u);
  preview->close();
  Idle();
}

}  // namespace
}  // namespace gorvan::test
