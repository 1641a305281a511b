// Reports and print preview: the page model of a long report, the catalog
// and disc reports' lines, their pages as PDF (read back with pdftotext when
// it is installed), the cover inlays' true sizes and cut marks, and the
// preview window from its commands.
#include <sys/stat.h>

#include <QAction>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <cmath>
#include <fstream>
#include <sstream>

#include "ui/UiTestSupport.h"
#include "ui/main/frmMenu.h"
#include "ui/reports/CoverInlay.h"
#include "ui/reports/PrintJob.h"
#include "ui/reports/ReportGather.h"
#include "ui/reports/ReportPages.h"
#include "ui/reports/ReportView.h"
#include "ui/reports/frmPreview.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

QPageLayout A4() {
  return QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(15, 15, 15, 15),
                     QPageLayout::Millimeter);
}

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

bool Exists(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0;
}

// The text of a PDF by pdftotext (layout kept); "" when the tool is missing.
QString PdfText(const std::string& path) {
  const QString tool = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
  if (tool.isEmpty()) return {};
  QProcess p;
  p.start(tool, {QStringLiteral("-layout"), QString::fromStdString(path), QStringLiteral("-")});
  p.waitForFinished(60000);
  return QString::fromUtf8(p.readAllStandardOutput());
}

// A page of report rendered to an image at pixelsPerMm.
QImage Render(const ui::PagedReport& report, int page, double pixelsPerMm) {
  const QSizeF mm = report.layout().fullRect(QPageLayout::Millimeter).size();
  QImage image(static_cast<int>(std::ceil(mm.width() * pixelsPerMm)),
               static_cast<int>(std::ceil(mm.height() * pixelsPerMm)), QImage::Format_RGB32);
  image.setDotsPerMeterX(static_cast<int>(std::lround(pixelsPerMm * 1000)));
  image.setDotsPerMeterY(static_cast<int>(std::lround(pixelsPerMm * 1000)));
  image.fill(Qt::white);
  QPainter p(&image);
  report.paintPage(p, page);
  return image;
}

TEST(ReportPagesTest, LongReportFillsEveryPageAndKeepsHeadingsWithTheirRows) {
  auto doc = std::make_shared<ui::ReportDocument>();
  doc->title = QStringLiteral("Title");
  doc->intro = {QStringLiteral("one"), QStringLiteral("two")};
  doc->columns = {{QStringLiteral("Name"), 3},
                  {QStringLiteral("Size"), 1, ui::ReportAlign::kRight}};
  for (int i = 0; i < 100000; ++i) {
    if (i % 37 == 0) {
      doc->Heading(QStringLiteral("folder %1").arg(i));
    } else {
      doc->Row({QStringLiteral("file %1").arg(i), QString::number(i)});
    }
  }
  const ui::ReportPages pages(doc, A4());
  // A4 less 30 mm of margins is 267 mm = 757 points of 13.05-point lines.
  EXPECT_GT(pages.pageLines(), 50);
  EXPECT_LT(pages.pageLines(), 58);
  EXPECT_LT(pages.firstPageLines(), pages.pageLines());
  ASSERT_GT(pages.pageCount(), 100000 / pages.pageLines());
  EXPECT_LT(pages.pageCount(), 100000 / (pages.pageLines() - 1) + 3);
  // Every line once, in order; no page over its room; no heading at a foot.
  size_t next = 0;
  for (int p = 0; p < pages.pageCount(); ++p) {
    ASSERT_EQ(pages.firstLine(p), next) << p;
    const size_t end = pages.endLine(p);
    ASSERT_GT(end, next);
    ASSERT_LE(static_cast<int>(end - next), p == 0 ? pages.firstPageLines() : pages.pageLines());
    if (end < doc->lines.size()) {
      EXPECT_NE(doc->lines[end - 1].kind, ui::ReportLineKind::kHeading) << "page " << p;
    }
    next = end;
  }
  EXPECT_EQ(next, doc->lines.size());

  // Landscape paper holds fewer lines a page, so more pages.
  QPageLayout wide = A4();
  wide.setOrientation(QPageLayout::Landscape);
  EXPECT_GT(ui::ReportPages(doc, wide).pageCount(), pages.pageCount());

  // A tab inside a text stays inside its cell.
  ui::ReportDocument tabs;
  tabs.Row({QStringLiteral("a\tb"), QStringLiteral("c")});
  EXPECT_EQ(tabs.lines[0].cells(), (QStringList{"a b", "c"}));
  EXPECT_EQ(tabs.lines[0].cell(1), QStringLiteral("c"));
  EXPECT_EQ(tabs.lines[0].cell(2), QString());

  // An empty report is one page (title and header); a middle page paints.
  auto empty = std::make_shared<ui::ReportDocument>();
  EXPECT_EQ(ui::ReportPages(empty, A4()).pageCount(), 1);
  const QImage middle = Render(pages, pages.pageCount() / 2, 4);
  EXPECT_NE(middle.pixel(middle.width() / 2, middle.height() / 2), 0u);
}

class ReportTest : public UiTest {
 protected:
  void SetUp() override {
    const std::string path = dir.File("report.cd");
    CatalogBuilder b(path);
    const int32_t music = b.Category("Music");
    const int32_t jazzCat = b.Category("Jazz", music);
    photos_ = b.Category("Photos");
    jazz_ = b.Disc({.name = "Kind of Blue",
                    .category = jazzCat,
                    .rootFiles = {{"so what.mp3", 9000000}, {"<b>bold</b> & \"quoted\"", 10}},
                    .folders = {{"bonus", {{"take 2.mp3", 4000}}}, {"bonus\\deep", {}}}});
    summer_ = b.Disc({.name = "Summer 2004",
                      .category = photos_,
                      .rootFiles = {{"beach.jpg", 700}},
                      .folders = {{"raw", {{"img1.cr2", 25000000}}}, {"edits", {}}}});
    loose_ = b.Disc({.name = "Loose, with a comma", .rootFiles = {{"x.txt", 1}}});
    audio_ = b.Disc({.name = "Kind of Blue (CD)",
                     .rootFiles = {{"So What", 0, 45000.5, 32, "", "AN1|`|AL9:22"},
                                   {"Freddie Freeloader", 0, 45000.5, 32, "", "AN2|`|AL9:46"}},
                     .mediaType = 105,
                     .extra = "AAKind of Blue|`|ARMiles Davis|`|AY1959|`|AM19:08"});
    b.Close();
    RegisterFeatures(hooks);
    Start(path);
  }

  template <typename Gather>
  Status Read(Gather gather) {
    Status s;
    std::unique_ptr<classData> reader = session().writer()->OpenReader(&s);
    EXPECT_TRUE(reader) << s.message();
    if (!reader) return s;
    return gather(*reader);
  }

  ui::frmPreview* Preview() { return Find<ui::frmPreview>("frmPreview"); }

  // Waits for the preview's report.
  bool Ready() {
    return WaitFor([this] { return Preview() && Preview()->report() && !Preview()->busy(); });
  }

  Status SavePdf(const std::string& path) {
    Status result = Status::Refused("not ended");
    QObject::connect(Preview(), &ui::frmPreview::printed, Preview(),
                     [&result](const Status& s) { result = s; });
    Preview()->SaveAsPdf(QString::fromStdString(path));
    EXPECT_TRUE(WaitFor([&] { return !result.IsRefused(); }, 60000));
    return result;
  }

  int32_t photos_ = 0, jazz_ = 0, summer_ = 0, loose_ = 0, audio_ = 0;
};

TEST_F(ReportTest, CatalogReportListsDiscsByCategoryWithTotals) {
  ui::ReportDocument doc;
  JobControl job;
  ASSERT_TRUE(
      Read([&](classData& r) { return ui::ReportGather::CatalogReport(r, job, &doc); }).ok());
  EXPECT_EQ(doc.title, QStringLiteral("Gorvan Catalog Report"));
  ASSERT_EQ(doc.columns.size(), 5u);
  QStringList seen;
  for (const ui::ReportLine& l : doc.lines) {
    const QString kind = l.kind == ui::ReportLineKind::kHeading ? QStringLiteral("H:")
                         : l.kind == ui::ReportLineKind::kTotal ? QStringLiteral("T:")
                                                                : QStringLiteral("R:");
    seen << kind + l.cell(0);
  }
  // "Music" holds no disc of its own: only its subcategory shows.
  EXPECT_EQ(seen,
            (QStringList{"H:Music / Jazz", "R:Kind of Blue", "T:Total : 1 disc(s)", "H:Photos",
                         "R:Summer 2004", "T:Total : 1 disc(s)", "H:Not in a category",
                         "R:Loose, with a comma", "R:Kind of Blue (CD) - Miles Davis",
                         "T:Total : 2 disc(s)", "T:Catalog total : 4 disc(s)"}));
  // The totals add the discs' files (a disc's files count every folder).
  const ui::ReportLine& all = doc.lines.back();
  EXPECT_EQ(all.cell(3), QStringLiteral("8"));
}

TEST_F(ReportTest, DiscReportListsEachFolderWithItsFiles) {
  ui::ReportDocument doc;
  JobControl job;
  ASSERT_TRUE(
      Read([&](classData& r) { return ui::ReportGather::DiscReport(r, jazz_, job, &doc); }).ok());
  EXPECT_EQ(doc.title, QStringLiteral("Gorvan Disc Report"));
  EXPECT_TRUE(doc.intro.contains(QStringLiteral("Disc : Kind of Blue")));
  EXPECT_TRUE(doc.intro.contains(QStringLiteral("Category : Music / Jazz")));
  QStringList headings, rows;
  for (const ui::ReportLine& l : doc.lines) {
    (l.kind == ui::ReportLineKind::kHeading ? headings : rows) << l.cell(0);
  }
  ASSERT_EQ(headings.size(), 3);
  EXPECT_TRUE(headings[1].startsWith(QStringLiteral("/bonus  (1 file(s), ")))
      << headings[1].toStdString();
  EXPECT_TRUE(headings[2].startsWith(QStringLiteral("/bonus/deep  (0 file(s)")))
      << headings[2].toStdString();
  EXPECT_EQ(rows, (QStringList{"so what.mp3", "<b>bold</b> & \"quoted\"", "take 2.mp3"}));

  // A disc that is not there is refused; a stop asked ends the read.
  EXPECT_TRUE(Read([&](classData& r) {
                return ui::ReportGather::DiscReport(r, 99999, job, &doc);
              }).IsNotFound());
  std::stop_source stop;
  stop.request_stop();
  JobControl stopped(stop.get_token());
  ui::ReportDocument none;
  EXPECT_TRUE(Read([&](classData& r) {
                return ui::ReportGather::DiscReport(r, jazz_, stopped, &none);
              }).IsCancelled());
}

TEST_F(ReportTest, PreviewFromTheMenuShowsTheCatalogReportAndSavesItAsPdf) {
  Trigger("mnuFilePreview");
  ASSERT_TRUE(Ready());
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kCatalog);
  Screenshot(Preview(), "frmPreview-catalog");
  const std::string pdf = dir.File("catalog.pdf");
  ASSERT_TRUE(SavePdf(pdf).ok());
  EXPECT_EQ(Slurp(pdf).substr(0, 5), "%PDF-");
  EXPECT_FALSE(Exists(pdf + ".part"));
  const QString text = PdfText(pdf);
  if (text.isEmpty()) GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
  for (const char* s : {"Gorvan Catalog Report", "Music / Jazz", "Kind of Blue", "Summer 2004",
                        "Loose, with a comma", "Catalog total : 4 disc(s)", "Page 1 of 1"}) {
    EXPECT_TRUE(text.contains(QLatin1String(s))) << s << "\n" << text.toStdString();
  }
}

TEST_F(ReportTest, PreviewOfADiscFromItsPopupShowsItsFilesAndAllPages) {
  ui::frmMenu& menu = *window;
  ui::CommandContext c = menu.context();
  c.item.kind = NodeKind::kDisc;
  c.item.id = c.item.discId = jazz_;
  ASSERT_TRUE(hooks.Run(QStringLiteral("mnuFilePreview"), c));
  ASSERT_TRUE(Ready());
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kDisc);
  EXPECT_EQ(Preview()->disc(), jazz_);
  const std::string pdf = dir.File("disc.pdf");
  ASSERT_TRUE(SavePdf(pdf).ok());
  const QString text = PdfText(pdf);
  if (text.isEmpty()) GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
  // Every column keeps its gap, right-aligned numbers too.
  EXPECT_FALSE(text.contains(QStringLiteral("SizeAttributes"))) << text.toStdString();
  for (const char* s : {"Gorvan Disc Report", "Disc : Kind of Blue", "/bonus/deep", "take 2.mp3",
                        "<b>bold</b> & \"quoted\""}) {
    EXPECT_TRUE(text.contains(QLatin1String(s))) << s << "\n" << text.toStdString();
  }
}

TEST_F(ReportTest, LinesMadeElsewhereShowAndPrintThroughThePrintDialog) {
  Trigger("mnuFilePreview");
  ASSERT_TRUE(Ready());
  auto doc = std::make_shared<ui::ReportDocument>();
  doc->title = QStringLiteral("Gorvan Search Report");
  doc->columns = {{QStringLiteral("Item"), 3000},
                  {QStringLiteral("Cd or Folder"), 2000},
                  {QStringLiteral("Path"), 7900}};
  for (int i = 0; i < 200; ++i) {
    doc->Row({QStringLiteral("hit %1").arg(i), QStringLiteral("Disc"), QStringLiteral("/a/b")});
  }
  Preview()->ShowDocument(doc);
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kDocument);
  auto* box = Preview()->findChild<QComboBox*>(QStringLiteral("cboReport"));
  ASSERT_EQ(box->count(), 4);
  EXPECT_EQ(box->itemText(3), QStringLiteral("Gorvan Search Report"));
  ASSERT_TRUE(Preview()->report());
  EXPECT_GE(Preview()->report()->pageCount(), 4);
  // Away to the catalog report and back: the lines are kept.
  Preview()->ShowReport(ui::frmPreview::Kind::kCatalog);
  ASSERT_TRUE(Ready());
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kCatalog);
  Preview()->ShowReport(ui::frmPreview::Kind::kDocument);
  ASSERT_TRUE(Ready());
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kDocument);

  // Print: the print dialog's printer here writes a PDF file.
  Status result = Status::Refused("not ended");
  QObject::connect(Preview(), &ui::frmPreview::printed, Preview(),
                   [&result](const Status& s) { result = s; });
  Preview()->findChild<QAction*>(QStringLiteral("btnPrint"))->trigger();
  auto* dialog = Find<QPrintDialog>("dlgPrint");
  ASSERT_TRUE(dialog);
  const std::string pdf = dir.File("printed.pdf");
  if (auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("filename"))) {
    name->setText(QString::fromStdString(pdf));
  }
  dialog->printer()->setOutputFormat(QPrinter::PdfFormat);
  dialog->printer()->setOutputFileName(QString::fromStdString(pdf));
  dialog->accept();
  ASSERT_TRUE(WaitFor([&] { return !result.IsRefused(); }, 60000));
  ASSERT_TRUE(result.ok()) << result.message();
  EXPECT_EQ(Slurp(pdf).substr(0, 5), "%PDF-");
  const QString text = PdfText(pdf);
  if (text.isEmpty()) GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
  EXPECT_TRUE(text.contains(QStringLiteral("Gorvan Search Report")));
  EXPECT_TRUE(text.contains(QStringLiteral("hit 199")));
}

// A disc of 20,000 files: a report of hundreds of pages, laid out and printed
// while the window goes on answering.
TEST_F(UiTest, LongDiscReportPaginatesAndPrintsEveryPage) {
  const std::string path = dir.File("long.cd");
  CatalogBuilder b(path);
  DiscSpec spec{.name = "Long"};
  for (int f = 0; f < 200; ++f) {
    FolderSpec folder{"folder" + std::to_string(f), {}};
    for (int i = 0; i < 100; ++i) folder.files.push_back({"file" + std::to_string(i), 1.0 * i});
    spec.folders.push_back(std::move(folder));
  }
  const int32_t disc = b.Disc(spec);
  b.Close();
  RegisterFeatures(hooks);
  Start(path);
  ui::CommandContext c = window->context();
  c.item.kind = NodeKind::kFile;  // a file of the disc asks for its disc's report
  c.item.discId = disc;
  ASSERT_TRUE(hooks.Run(QStringLiteral("mnuFilePreview"), c));
  auto* preview = Find<ui::frmPreview>("frmPreview");
  ASSERT_TRUE(preview);
  ASSERT_TRUE(WaitFor([preview] { return preview->report() && !preview->busy(); }, 60000));
  const int pages = preview->report()->pageCount();
  EXPECT_GT(pages, 20201 / 60);
  // The view scrolls to the last page and paints it.
  preview->view()->ShowPage(pages - 1);
  QTest::qWait(20);
  EXPECT_EQ(preview->view()->currentPage(), pages - 1);

  Status result = Status::Refused("not ended");
  QObject::connect(preview, &ui::frmPreview::printed, preview,
                   [&result](const Status& s) { result = s; });
  const std::string pdf = dir.File("long.pdf");
  preview->SaveAsPdf(QString::fromStdString(pdf));
  ASSERT_TRUE(WaitFor([&] { return !result.IsRefused(); }, 120000));
  ASSERT_TRUE(result.ok()) << result.message();
  // Every page went out: the PDF's page count is the report's.
  const std::string bytes = Slurp(pdf);
  const QRegularExpression count(QStringLiteral("/Type\\s*/Pages\\b[^>]*/Count\\s+(\\d+)"));
  const auto m =
      count.match(QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size())));
  ASSERT_TRUE(m.hasMatch());
  EXPECT_EQ(m.captured(1).toInt(), pages);

  // A range of pages chosen in the print dialog prints those pages only.
  {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(dir.File("range.pdf")));
    printer.setPrintRange(QPrinter::PageRange);
    printer.setFromTo(2, 4);
    ui::PrintJob job(preview->report(), &printer);
    Status ended = Status::Refused("not ended");
    QObject::connect(&job, &ui::PrintJob::finished, [&ended](const Status& s) { ended = s; });
    job.Start();
    ASSERT_TRUE(WaitFor([&] { return !ended.IsRefused(); }, 60000));
    ASSERT_TRUE(ended.ok()) << ended.message();
  }
  const std::string range = Slurp(dir.File("range.pdf"));
  const auto r =
      count.match(QString::fromLatin1(range.data(), static_cast<qsizetype>(range.size())));
  ASSERT_TRUE(r.hasMatch());
  EXPECT_EQ(r.captured(1).toInt(), 3);
  const QString rangeText = PdfText(dir.File("range.pdf"));
  if (!rangeText.isEmpty()) {
    EXPECT_TRUE(rangeText.contains(QStringLiteral("Page 2 of %1").arg(pages)));
    EXPECT_FALSE(rangeText.contains(QStringLiteral("Page 1 of %1").arg(pages)));
  }

  // Stopped, a PDF leaves no file.
  result = Status::Refused("not ended");
  preview->SaveAsPdf(QString::fromStdString(dir.File("stopped.pdf")));
  preview->findChild<QPushButton*>(QStringLiteral("btnStop"))->click();
  ASSERT_TRUE(WaitFor([&] { return !result.IsRefused(); }, 60000));
  EXPECT_TRUE(result.IsCancelled());
  EXPECT_FALSE(Exists(dir.File("stopped.pdf")));
  EXPECT_FALSE(Exists(dir.File("stopped.pdf.part")));
}

TEST_F(ReportTest, CoverPrintsBothInsertsAtTrueSizeWithCutMarks) {
  ui::CoverContent content;
  ASSERT_TRUE(
      Read([&](classData& r) { return ui::ReportGather::Cover(r, summer_, &content); }).ok());
  EXPECT_EQ(content.name, QStringLiteral("Summer 2004"));
  EXPECT_EQ(content.category, QStringLiteral("Photos"));
  EXPECT_FALSE(content.audio);
  // The top folders with their sizes, then the top files.
  ASSERT_EQ(content.entries.size(), 3u);
  EXPECT_EQ(content.entries[0].text, QStringLiteral("raw/"));
  EXPECT_EQ(content.entries[1].text, QStringLiteral("edits/"));
  EXPECT_EQ(content.entries[2].text, QStringLiteral("beach.jpg"));

  const ui::CoverInlay cover(content, A4());
  EXPECT_EQ(cover.pageCount(), 1);
  EXPECT_DOUBLE_EQ(cover.frontRect().width(), 120);
  EXPECT_DOUBLE_EQ(cover.frontRect().height(), 120);
  EXPECT_DOUBLE_EQ(cover.backRect().width(), 151);
  EXPECT_DOUBLE_EQ(cover.backRect().height(), 118);
  EXPECT_GE(cover.backRect().top(), cover.frontRect().bottom());

  // Measured on the printed page at 10 pixels a millimetre: the marks above
  // each insert stand at its upright edges (and the back's spine folds).
  constexpr double k = 10;
  const QImage page = Render(cover, 0, k);
  auto darkColumns = [&](double yMm) {
    std::vector<int> xs;
    const int y = static_cast<int>(std::lround(yMm * k));
    for (int x = 0; x < page.width(); ++x) {
      if (qGray(page.pixel(x, y)) < 160 && (xs.empty() || x > xs.back() + 3)) xs.push_back(x);
    }
    return xs;
  };
  const auto front = darkColumns(cover.frontRect().top() - 4);
  ASSERT_EQ(front.size(), 2u);
  EXPECT_NEAR((front[1] - front[0]) / k, 120, 0.3);
  EXPECT_NEAR(front[0] / k, cover.frontRect().left(), 0.3);
  const auto back = darkColumns(cover.backRect().bottom() + 4);
  ASSERT_EQ(back.size(), 4u);
  EXPECT_NEAR((back[3] - back[0]) / k, 151, 0.3);
  EXPECT_NEAR((back[1] - back[0]) / k, 6.5, 0.3);
  EXPECT_NEAR((back[3] - back[2]) / k, 6.5, 0.3);

  // Paper too short for both puts each on a page of its own.
  const QPageLayout small(QPageSize(QPageSize::A5), QPageLayout::Portrait, QMarginsF());
  const ui::CoverInlay two(content, small);
  EXPECT_EQ(two.pageCount(), 2);
  EXPECT_EQ(two.backPage(), 1);
}

TEST_F(ReportTest, CoverOfAnAudioCdListsItsTracksWithArtistAndYear) {
  ui::CoverContent content;
  ASSERT_TRUE(
      Read([&](classData& r) { return ui::ReportGather::Cover(r, audio_, &content); }).ok());
  EXPECT_TRUE(content.audio);
  EXPECT_EQ(content.artist, QStringLiteral("Miles Davis"));
  EXPECT_EQ(content.date, QStringLiteral("1959"));
  ASSERT_EQ(content.entries.size(), 2u);
  EXPECT_EQ(content.entries[0].text, QStringLiteral("01. So What"));
  EXPECT_EQ(content.entries[0].value, QStringLiteral("9:22"));
  EXPECT_EQ(content.entries[1].value, QStringLiteral("9:46"));
  EXPECT_EQ(content.totals, QStringLiteral("2 track(s), 19:08"));

  // A list longer than the back holds ends with the count of the rest.
  for (int i = 0; i < 300; ++i) content.entries.push_back({QStringLiteral("Track"), {}});
  const ui::CoverInlay cover(content, A4());
  const QString pdf = QString::fromStdString(dir.File("audio.pdf"));
  {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdf);
    printer.setPageLayout(A4());
    printer.setFullPage(true);
    QPainter p(&printer);
    cover.paintPage(p, 0);
  }
  const QString text = PdfText(pdf.toStdString());
  if (text.isEmpty()) GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
  for (const char* s : {"Kind of Blue (CD)", "Miles Davis", "1959", "01. So What", "9:22", "more",
                        "2 track(s), 19:08"}) {
    EXPECT_TRUE(text.contains(QLatin1String(s))) << s << "\n" << text.toStdString();
  }
}

TEST_F(ReportTest, CoverFromThePreviewGoesToAnA4PdfOfItsSize) {
  ui::CommandContext c = window->context();
  c.item.kind = NodeKind::kDisc;
  c.item.id = c.item.discId = summer_;
  ASSERT_TRUE(hooks.Run(QStringLiteral("mnuFilePreview"), c));
  ASSERT_TRUE(Ready());
  auto* box = Preview()->findChild<QComboBox*>(QStringLiteral("cboReport"));
  ASSERT_TRUE(box);
  box->setCurrentIndex(2);
  Q_EMIT box->activated(2);
  ASSERT_TRUE(Ready());
  EXPECT_EQ(Preview()->kind(), ui::frmPreview::Kind::kCover);
  ASSERT_TRUE(dynamic_cast<const ui::CoverInlay*>(Preview()->report().get()));
  Screenshot(Preview(), "frmPreview-cover");
  const std::string pdf = dir.File("cover.pdf");
  ASSERT_TRUE(SavePdf(pdf).ok());
  // The sheet is A4: 595 x 842 points.
  const std::string bytes = Slurp(pdf);
  const QRegularExpression box4(
      QStringLiteral("/MediaBox\\s*\\[\\s*0\\s+0\\s+([0-9.]+)\\s+([0-9.]+)\\s*\\]"));
  const auto m =
      box4.match(QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size())));
  ASSERT_TRUE(m.hasMatch());
  EXPECT_NEAR(m.captured(1).toDouble(), 595.3, 1);
  EXPECT_NEAR(m.captured(2).toDouble(), 841.9, 1);
  const QString text = PdfText(pdf);
  if (text.isEmpty()) GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
  EXPECT_TRUE(text.contains(QStringLiteral("Summer 2004")));
  EXPECT_TRUE(text.contains(QStringLiteral("raw/")));
}

}  // namespace
}  // namespace gorvan::test
