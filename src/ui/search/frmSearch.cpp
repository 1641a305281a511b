// frmSearch: the form, the category chooser and the search itself.
#include "ui/search/frmSearch.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFrame>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <unordered_map>
#include <unordered_set>

#include "app/SearchRequest.h"
#include "ui/main/frmMenu.h"
#include "ui/search/SearchResultsModel.h"
#include "ui/search/SearchRun.h"
#include "ui/search/ToggleLabel.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/CatalogFont.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kWindowLayoutName = "frmSearch";
constexpr const char* kListLayoutName = "ListView1";
// Rows are taken from the search at most this often (ms): often enough to
// look live, seldom enough that a search of 100,000 hits costs the window
// little.
constexpr qint64 kTakeInterval = 40;
constexpr int kCategoryRole = Qt::UserRole + 1;  // the category's id
constexpr int kNameRole = Qt::UserRole + 2;      // its name without the indent
const QString kBusy = QStringLiteral("The catalog is busy; wait until the running job ends");

qint64 NowMs() {
  static QElapsedTimer clock = [] {
    QElapsedTimer t;
    t.start();
    return t;
  }();
  return clock.elapsed();
}

QPushButton* Button(const QString& text, const char* name, const char* icon) {
  auto* b = new QPushButton(text);
  b->setObjectName(QLatin1String(name));
  if (icon) b->setIcon(ThemeIcons::Named(icon));
  return b;
}

}  // namespace

frmSearch::frmSearch(frmMenu& menu, QWidget* parent)
    : QWidget(parent), menu_(menu), session_(menu.session()) {
  setObjectName(QStringLiteral("frmSearch"));
  setWindowIcon(ThemeIcons::Named("edit-find"));
  setWindowTitle(tr("Search"));
  model_ = new SearchResultsModel(this);
  model_->SetFont(CatalogFont::For(session_.fontText()));
  BuildForm();
  CreatePopup();
  RestoreLayout();
  LoadCategories();
  connect(&session_, &CatalogSession::changed, this, [this](CatalogChange change) {
    if (change == CatalogChange::kStructure || change == CatalogChange::kEverything)
      LoadCategories();
    // A compaction gives every record a new id: the rows would lead astray.
    if (change == CatalogChange::kEverything) Forget();
    // The catalog's display font may have changed.
    if (change == CatalogChange::kHeader || change == CatalogChange::kEverything)
      model_->SetFont(CatalogFont::For(session_.fontText()));
  });
  connect(&session_, &CatalogSession::opened, this, [this] {
    Forget();
    model_->SetFont(CatalogFont::For(session_.fontText()));
    LoadCategories();
  });
  connect(&session_, &CatalogSession::closed, this, [this] { Forget(); });
  connect(&session_, &CatalogSession::busyChanged, this, [this] { UpdateState(); });
  UpdateState();
  UpdateCount();
}

frmSearch::~frmSearch() {
  if (reportMaker_.joinable()) reportMaker_.join();
  run_.reset();
  retired_.clear();
  SaveLayout();
}

void frmSearch::BuildForm() {
  const int ch = fontMetrics().averageCharWidth();

  fldSearchFor_ = new QLineEdit;
  fldSearchFor_->setObjectName(QStringLiteral("fldSearchFor"));
  fldSearchFor_->setClearButtonEnabled(true);
  auto* lblSearchFor = new QLabel(tr("Search &For"));
  lblSearchFor->setObjectName(QStringLiteral("lblSearchFor"));
  lblSearchFor->setBuddy(fldSearchFor_);
  cboCategory_ = new QComboBox;
  cboCategory_->setObjectName(QStringLiteral("cboCategory"));
  cboCategory_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cboCategory_->setMinimumContentsLength(24);
  auto* lblCategory = new QLabel(tr("Search &Category"));
  lblCategory->setObjectName(QStringLiteral("lblCategory"));
  lblCategory->setBuddy(cboCategory_);

  auto box = [](const char* name) {
    auto* b = new QCheckBox;
    b->setObjectName(QLatin1String(name));
    return b;
  };
  chkFileNames_ = box("chkFileNames");
  chkPathNames_ = box("chkPathNames");
  chkCDNames_ = box("chkCDNames");
  chkComments_ = box("chkComments");
  chkExtra_ = box("chkExtra");
  chkCaseSensitive_ = box("chkCaseSensitive");
  chkZip_ = box("chkZip");
  auto* modes = new QButtonGroup(this);
  for (int i = 0; i < 3; ++i) {
    option_[i] = new QRadioButton;
    // The three options are one control array of the form, told by index.
    option_[i]->setObjectName(QStringLiteral("Option1"));
    option_[i]->setProperty("index", i);
    modes->addButton(option_[i], i);
  }
  // What a new search window offers: names anywhere, as most searches are.
  chkFileNames_->setChecked(true);
  chkCDNames_->setChecked(true);
  option_[2]->setChecked(true);

  auto* options = new QGridLayout;
  options->setHorizontalSpacing(ch);
  options->setVerticalSpacing(0);
  auto pair = [this](QAbstractButton* b, const char* text, const char* name) {
    auto* row = new QHBoxLayout;
    row->setSpacing(fontMetrics().averageCharWidth() / 2);
    row->addWidget(b);
    row->addWidget(new ToggleLabel(tr(text), b, name), 1);
    return row;
  };
  options->addLayout(pair(chkFileNames_, "Search Filenames", "lblFileNames"), 0, 0);
  options->addLayout(pair(chkPathNames_, "Search Path Names", "lblPathNames"), 1, 0);
  options->addLayout(pair(chkCDNames_, "Search CD Names", "lblCDNames"), 2, 0);
  options->addLayout(pair(chkComments_, "Search Comments", "lblComments"), 3, 0);
  options->addLayout(pair(chkExtra_, "Search Additional Attributes", "lblExtra"), 4, 0);
  options->addLayout(pair(chkCaseSensitive_, "Case Sensitive", "lblCaseSensitive"), 0, 1);
  options->addLayout(pair(chkZip_, "Search Within Zip Files", "lblZip"), 1, 1);
  options->addLayout(pair(option_[0], " Whole Word", "lblOptWholeWord"), 2, 1);
  options->addLayout(pair(option_[1], " Beginning", "lblOptBeginning"), 3, 1);
  options->addLayout(pair(option_[2], " Anywhere", "lblOptAnywhere"), 4, 1);

  auto* form = new QGridLayout;
  form->addWidget(lblSearchFor, 0, 0);
  form->addWidget(fldSearchFor_, 0, 1);
  form->addWidget(lblCategory, 1, 0);
  form->addWidget(cboCategory_, 1, 1);
  form->addLayout(options, 2, 0, 1, 2);
  form->setColumnStretch(1, 1);
  form->setRowStretch(3, 1);  // the options stay together at the top

  QStringList hint;
  for (const char* line : kSearchHint) hint << Qs(line);
  auto* lblHint = new QLabel(hint.join(QLatin1Char('\n')));
  lblHint->setObjectName(QStringLiteral("lblHint"));
  lblHint->setTextFormat(Qt::PlainText);
  lblHint->setFrameShape(QFrame::StyledPanel);
  lblHint->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  lblHint->setMargin(ch);
  lblHint->setForegroundRole(QPalette::PlaceholderText);
  // Wrapped where the window is narrow, so the buttons always show.
  lblHint->setWordWrap(true);
  lblHint->setMinimumWidth(ch * 24);
  lblHint->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  lblHint->setMinimumHeight(fontMetrics().lineSpacing() * static_cast<int>(std::size(kSearchHint)) +
                            2 * ch + 2 * lblHint->frameWidth());

  btnOK_ = Button(tr("&Search"), "btnOK", "edit-find");
  btnOK_->setDefault(true);
  btnStop_ = Button(tr("&Stop"), "btnStop", "process-stop");
  btnCancel_ = Button(tr("&Close"), "btnCancel", "window-close");
  btnExport_ = Button(tr("&Export..."), "btnExport", "document-send");
  btnPreview_ = Button(tr("Pre&view..."), "btnPreview", "document-print-preview");
  auto* buttons = new QVBoxLayout;
  for (QPushButton* b : {btnOK_, btnStop_, btnCancel_}) buttons->addWidget(b);
  buttons->addStretch(1);
  for (QPushButton* b : {btnExport_, btnPreview_}) buttons->addWidget(b);

  auto* top = new QHBoxLayout;
  top->addLayout(form, 3);
  top->addWidget(lblHint, 2);
  top->addLayout(buttons);

  // A table, not a tree: a tree lays out every row again whenever rows are
  // added, which a list of 100,000 growing hits cannot afford.
  list_ = new QTableView;
  list_->setObjectName(QStringLiteral("ListView1"));
  list_->setModel(model_);
  list_->setShowGrid(false);
  list_->setWordWrap(false);
  list_->setCornerButtonEnabled(false);
  list_->verticalHeader()->hide();
  list_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  list_->verticalHeader()->setDefaultSectionSize(
      std::max(fontMetrics().height(), style()->pixelMetric(QStyle::PM_SmallIconSize)) +
      fontMetrics().height() / 3);
  list_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setContextMenuPolicy(Qt::CustomContextMenu);
  QHeaderView* header = list_->horizontalHeader();
  header->setStretchLastSection(false);
  header->setSectionsMovable(true);
  header->setHighlightSections(false);
  header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  // The search's own order until a column is clicked.
  header->setSortIndicator(-1, Qt::AscendingOrder);
  list_->setSortingEnabled(true);

  lblCount_ = new QLabel;
  lblCount_->setObjectName(QStringLiteral("lblCount"));
  progress_ = new QProgressBar;
  progress_->setObjectName(QStringLiteral("barProgress"));
  progress_->setTextVisible(false);
  progress_->setMaximumWidth(ch * 30);
  progress_->hide();
  auto* status = new QHBoxLayout;
  status->addWidget(lblCount_, 1);
  status->addWidget(progress_);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(list_, 1);
  layout->addLayout(status);

  // A long list shown in a new order keeps its chosen row and its scroll position.
  connect(model_, &SearchResultsModel::orderChanging, this, [this] {
    keepRow_ = model_->RowIndex(list_->currentIndex().row());
    keepColumn_ = std::max(0, list_->currentIndex().column());
    keepScroll_ = list_->verticalScrollBar()->value();
  });
  connect(model_, &SearchResultsModel::orderChanged, this, [this] {
    list_->verticalScrollBar()->setValue(keepScroll_);
    const int row = keepRow_ < 0 ? -1 : model_->ViewRow(keepRow_);
    if (row >= 0) {
      list_->selectionModel()->setCurrentIndex(
          model_->index(row, keepColumn_),
          QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
  });
  list_->installEventFilter(this);
  connect(btnOK_, &QPushButton::clicked, this, &frmSearch::StartSearch);
  connect(fldSearchFor_, &QLineEdit::returnPressed, this, &frmSearch::StartSearch);
  connect(btnStop_, &QPushButton::clicked, this, &frmSearch::StopSearch);
  connect(btnCancel_, &QPushButton::clicked, this, [this] {
    // A running search ends and keeps its rows; an idle window closes.
    if (searching()) {
      StopSearch();
      return;
    }
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) {
      sub->close();
    } else {
      close();
    }
  });
  connect(btnExport_, &QPushButton::clicked, this, &frmSearch::ExportResults);
  connect(btnPreview_, &QPushButton::clicked, this, &frmSearch::PreviewList);
  connect(list_, &QWidget::customContextMenuRequested, this, &frmSearch::ShowPopup);
  connect(list_, &QTableView::activated, this, [this] { SyncToView(0); });
  auto* menuKey = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10), list_, nullptr, nullptr,
                                Qt::WidgetShortcut);
  connect(menuKey, &QShortcut::activated, this,
          [this] { ShowPopup(list_->visualRect(list_->currentIndex()).center()); });
  setFocusProxy(fldSearchFor_);
}

void frmSearch::LoadCategories() {
  if (!session_.isOpen()) return;
  session_.loader().Load<CatalogSnapshot>(
      this, "frmSearch.categories." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& snapshot) {
        const int32_t keep = cboCategory_->count() > 0
                                 ? cboCategory_->currentData(kCategoryRole).toInt()
                                 : startupCategory_;
        cboCategory_->clear();
        cboCategory_->addItem(ThemeIcons::Catalog(), Qs(kAllCategories));
        cboCategory_->setItemData(0, 0, kCategoryRole);
        cboCategory_->setItemData(0, Qs(kAllCategories), kNameRole);
        // The category tree in chain order, each category under its parent;
        // one whose parent is no category (or whose parents loop) at the top.
        std::unordered_map<int32_t, std::vector<const CategoryRow*>> children;
        std::unordered_set<int32_t> ids;
        for (const CategoryRow& c : snapshot.categories) ids.insert(c.id);
        for (const CategoryRow& c : snapshot.categories) {
          children[ids.count(c.parent) != 0 ? c.parent : 0].push_back(&c);
        }
        std::unordered_set<int32_t> shown;
        auto add = [&](const CategoryRow* top) {
          std::vector<std::pair<const CategoryRow*, int>> stack{{top, 0}};
          while (!stack.empty()) {
            const auto [c, depth] = stack.back();
            stack.pop_back();
            if (!shown.insert(c->id).second) continue;
            cboCategory_->addItem(ThemeIcons::Category(),
                                  QString(depth * 4, QLatin1Char(' ')) + RowText(c->name));
            const int at = cboCategory_->count() - 1;
            cboCategory_->setItemData(at, c->id, kCategoryRole);
            cboCategory_->setItemData(at, Qs(c->name), kNameRole);
            const auto kids = children.find(c->id);
            if (kids == children.end()) continue;
            for (auto k = kids->second.rbegin(); k != kids->second.rend(); ++k)
              stack.emplace_back(*k, depth + 1);
          }
        };
        for (const CategoryRow* top : children[0]) add(top);
        // Categories whose parents loop are reached from no top: they go last.
        for (const CategoryRow& c : snapshot.categories) add(&c);
        const int found = cboCategory_->findData(keep, kCategoryRole);
        cboCategory_->setCurrentIndex(found >= 0 ? found : 0);
      });
}

void frmSearch::SetStartupCategory(int32_t categoryId) {
  startupCategory_ = categoryId;
  const int found = cboCategory_->findData(categoryId, kCategoryRole);
  if (found >= 0) cboCategory_->setCurrentIndex(found);
}

QString frmSearch::CategoryText() const {
  if (cboCategory_->currentIndex() < 0) return Qs(kAllCategories);
  return cboCategory_->currentData(kNameRole).toString();
}

SearchOptions frmSearch::Options() const {
  SearchOptions o;
  o.text = Std(fldSearchFor_->text());
  o.inFileNames = chkFileNames_->isChecked();
  o.inPathNames = chkPathNames_->isChecked();
  o.inNames = chkCDNames_->isChecked();
  o.inComments = chkComments_->isChecked();
  o.inExtra = chkExtra_->isChecked();
  o.caseSensitive = chkCaseSensitive_->isChecked();
  o.inZip = chkZip_->isChecked();
  // The first checked option gives the mode.
  o.matchMode = MatchMode::kAnywhere;
  for (int i = 2; i >= 0; --i) {
    if (option_[i]->isChecked()) o.matchMode = static_cast<MatchMode>(i);
  }
  o.categoryId = cboCategory_->currentIndex() < 0
                     ? startupCategory_
                     : cboCategory_->currentData(kCategoryRole).toInt();
  return o;
}

bool frmSearch::searching() const { return run_ && run_->running(); }

void frmSearch::StartSearch() {
  if (searching() || !session_.isOpen()) return;
  const SearchOptions options = Options();
  classData* writer = session_.writer();
  if (!writer) {
    // A job holds the catalog (a compaction may change every id).
    session_.prompt().Message(Std(kBusy), PromptIcon::kInformation);
    return;
  }
  if (Status s = SearchRequest::Check(*writer, options); !s.ok()) {
    session_.prompt().Message(s.message(), PromptIcon::kWarning);
    return;
  }
  Status opened;
  std::unique_ptr<classData> reader = writer->OpenReader(&opened);
  if (!reader) {
    session_.ReportFailure(opened, "frmSearch.btnOK_Click");
    return;
  }
  run_.reset();
  // Runs whose threads have ended go; one still freeing its rows stays.
  std::erase_if(retired_, [](const std::unique_ptr<SearchRun>& r) { return r->ended(); });
  std::shared_ptr<void> previous = model_->Clear();
  last_ = options;
  lastCategory_ = CategoryText();
  follow_ = UiSettings::Switch("lInteractiveSearch");
  stopped_ = false;
  takePending_ = false;
  lastTake_ = 0;
  progress_->setRange(0, 0);
  if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
    sub->setWindowTitle(tr("Search: %1").arg(RowText(options.text).left(40)));

  run_ = std::make_unique<SearchRun>(std::move(reader), options, std::move(previous));
  connect(run_.get(), &SearchRun::rowsReady, this, [this] {
    const qint64 wait = lastTake_ + kTakeInterval - NowMs();
    if (wait <= 0) {
      TakeRows();
    } else if (!takePending_) {
      takePending_ = true;
      QTimer::singleShot(static_cast<int>(wait), this, [this] {
        takePending_ = false;
        TakeRows();
      });
    }
  });
  connect(run_.get(), &SearchRun::progress, this, [this](const JobProgress& p) {
    if (p.maximum > 0) {
      // A bar of at most a few thousand steps: the counts may pass an int.
      progress_->setRange(0, 1000);
      progress_->setValue(static_cast<int>(1000.0 * std::min(p.value, p.maximum) / p.maximum));
    }
  });
  connect(run_.get(), &SearchRun::finished, this, &frmSearch::Finished);
  run_->Start();
  UpdateState();
  UpdateCount();
}

void frmSearch::Forget() {
  const bool had = searching() || model_->rowCount() > 0;
  run_.reset();
  model_->Clear();
  stopped_ = false;
  UpdateState();
  UpdateCount();
  if (had) lblCount_->setText(tr("The catalog changed: search again"));
}

void frmSearch::StopSearch() {
  if (!searching()) return;
  stopped_ = true;
  run_->Stop();
}

void frmSearch::TakeRows() {
  if (!run_) return;
  lastTake_ = NowMs();
  std::vector<std::vector<SearchResult>> rows = run_->TakeRows();
  if (rows.empty()) return;
  model_->Append(std::move(rows));
  if (follow_) {
    const QModelIndex at = model_->index(model_->LastAddedRow(), 0);
    list_->setCurrentIndex(at);
    list_->scrollTo(at);
  }
  UpdateCount();
}

void frmSearch::Finished(const Status& status, qint64 hits) {
  (void)hits;
  TakeRows();
  // The run is over. Its thread may still be freeing the rows of the search
  // before; it is joined when the next search starts, not now.
  retired_.push_back(std::move(run_));
  if (status.IsCancelled()) stopped_ = true;
  if (!status.ok() && !status.IsCancelled()) {
    if (status.IsCorruption() || status.IsIOError()) {
      session_.ReportFailure(status, "frmSearch.btnOK_Click");
    } else {
      session_.prompt().Message(status.message(), PromptIcon::kWarning);
    }
  }
  UpdateState();
  UpdateCount();
  Q_EMIT searchFinished();
}

void frmSearch::UpdateState() {
  const bool running = searching();
  btnOK_->setEnabled(!running && session_.isOpen());
  btnStop_->setEnabled(running);
  btnExport_->setEnabled(!running);
  btnPreview_->setEnabled(!running);
  progress_->setVisible(running);
  UpdatePopup();
}

void frmSearch::UpdateCount() {
  const int n = model_->rowCount();
  QString text = n == 1 ? tr("1 item found") : tr("%L1 items found").arg(n);
  if (searching()) {
    text = tr("Searching... %1").arg(text);
  } else if (stopped_) {
    text = tr("Search stopped: %1").arg(text);
  }
  lblCount_->setText(text);
}

std::vector<ColumnLayout> frmSearch::Columns() const {
  std::vector<ColumnLayout> out;
  const QHeaderView* header = list_->horizontalHeader();
  for (int i = 0; i < header->count(); ++i) {
    // A hidden column is kept as width 0.
    out.push_back(
        {header->isSectionHidden(i) ? 0 : header->sectionSize(i), header->visualIndex(i)});
  }
  return out;
}

void frmSearch::RestoreLayout() {
  const int ch = fontMetrics().averageCharWidth();
  // Typical widths; "Internal Date" is the sort key of "Date", hidden until
  // the user shows it.
  const int widths[SearchResultsModel::kColumnCount] = {ch * 32, ch * 20, ch * 40, ch * 25,
                                                        ch * 12, ch * 12, ch * 30, 0};
  std::vector<ColumnLayout> defaults;
  for (int c = 0; c < SearchResultsModel::kColumnCount; ++c) defaults.push_back({widths[c], c});
  restoredColumns_ = WindowLayout::RestoreColumns(kListLayoutName, defaults);
  QHeaderView* header = list_->horizontalHeader();
  for (int c = 0; c < SearchResultsModel::kColumnCount; ++c) {
    const int w = restoredColumns_[static_cast<size_t>(c)].width;
    if (w <= 0) {
      header->resizeSection(c, ch * 14);
      header->hideSection(c);
    } else {
      header->resizeSection(c, w);
    }
  }
  for (int c = 0; c < SearchResultsModel::kColumnCount; ++c) {
    const int to = restoredColumns_[static_cast<size_t>(c)].order;
    if (to >= 0 && to < header->count() && header->visualIndex(c) != to)
      header->moveSection(header->visualIndex(c), to);
  }
  restoredColumns_ = Columns();
  restoredSize_ = WindowLayout::RestoreSize(
      kWindowLayoutName, {static_cast<float>(ch * 120), static_cast<float>(ch * 60)});
  resize(static_cast<int>(restoredSize_.width), static_cast<int>(restoredSize_.height));
}

void frmSearch::SaveLayout() {
  WindowLayout::SaveColumns(kListLayoutName, Columns(), restoredColumns_);
  restoredColumns_ = Columns();
  const WindowSize now{static_cast<float>(width()), static_cast<float>(height())};
  WindowLayout::SaveSize(kWindowLayoutName, now, restoredSize_);
  restoredSize_ = now;
}

void frmSearch::closeEvent(QCloseEvent* event) {
  run_.reset();
  SaveLayout();
  QWidget::closeEvent(event);
}

bool frmSearch::eventFilter(QObject* watched, QEvent* event) {
  // The main window's commands on "the chosen item" (Alt+Return properties,
  // Delete, F2) act on a catalog view; in the results list they would reach
  // a view the user does not see. The list answers Alt+Return itself and
  // keeps the others from acting.
  if (watched == list_ &&
      (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress)) {
    auto* key = static_cast<QKeyEvent*>(event);
    const bool properties = (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
                            key->modifiers() == Qt::AltModifier;
    const bool other = (key->key() == Qt::Key_Delete || key->key() == Qt::Key_F2) &&
                       key->modifiers() == Qt::NoModifier;
    if (properties || other) {
      event->accept();
      if (event->type() == QEvent::KeyPress && properties) PropertiesOfCurrent();
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

void frmSearch::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && searching()) {
    StopSearch();
    return;
  }
  QWidget::keyPressEvent(event);
}

}  // namespace gorvan::ui
