// frmSearch: the pop-up commands on a result, export and print.
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QTableView>

#include "export/SearchResultsExport.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/explorer/Launcher.h"
#include "ui/main/frmMenu.h"
#include "ui/reports/frmPreview.h"
#include "ui/search/FieldChooser.h"
#include "ui/search/SearchReportFormat.h"
#include "ui/search/SearchResultsModel.h"
#include "ui/search/frmExport_Search.h"
#include "ui/search/frmSearch.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

struct PopupSpec {
  const char* name;
  const char* text;
  const char* icon;
};

constexpr PopupSpec kPopup[] = {
    {"popSearchSyncDefault", QT_TR_NOOP("&Show in Catalog"), "go-jump"},
    {"popSearchSyncExplorer", QT_TR_NOOP("Show in &Explorer View"), "view-dual"},
    {"popSearchSyncTraditional", QT_TR_NOOP("Show in &Traditional View"), "view-list"},
    {nullptr, nullptr, nullptr},
    {"popSearchLaunch", QT_TR_NOOP("&Launch"), "system-run"},
    {"popSearchViewZip", QT_TR_NOOP("View &Archive Contents..."), "package-x-generic"},
    {nullptr, nullptr, nullptr},
    {"popSearchFieldChooser", QT_TR_NOOP("&Columns..."), nullptr},
    {nullptr, nullptr, nullptr},
    {"popSearchProperties", QT_TR_NOOP("&Properties"), "document-properties"},
};

// The row's object as the catalog's views and dialogs name it.
CatalogItem ItemOf(const SearchResult& row) {
  CatalogItem item;
  item.discId = row.discId;
  item.name = Qs(row.fileName);
  switch (row.kind) {
    case SearchResult::Kind::kDisc:
      item.kind = NodeKind::kDisc;
      item.id = row.discId;
      break;
    case SearchResult::Kind::kFolder:
      item.kind = NodeKind::kFolder;
      item.id = row.folderId;
      break;
    case SearchResult::Kind::kFile:
      item.kind = NodeKind::kFile;
      item.id = row.fileId;
      break;
    case SearchResult::Kind::kArchiveEntry:
      item.kind = NodeKind::kArchiveMember;
      item.id = row.entryId;
      break;
  }
  return item;
}

}  // namespace

void frmSearch::CreatePopup() {
  popup_ = new QMenu(this);
  popup_->setObjectName(QStringLiteral("popSearch"));
  for (const PopupSpec& p : kPopup) {
    if (!p.name) {
      popup_->addSeparator();
      continue;
    }
    QAction* a = popup_->addAction(tr(p.text));
    a->setObjectName(QLatin1String(p.name));
    if (p.icon) a->setIcon(ThemeIcons::Named(p.icon));
    a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    list_->addAction(a);
  }
  auto on = [this](const char* name, auto slot) {
    QAction* a = popup_->findChild<QAction*>(QLatin1String(name));
    connect(a, &QAction::triggered, this, slot);
    return a;
  };
  on("popSearchSyncDefault", [this] { SyncToView(0); });
  on("popSearchSyncExplorer", [this] { SyncToView(1); });
  on("popSearchSyncTraditional", [this] { SyncToView(2); });
  on("popSearchLaunch", [this] { LaunchCurrent(); });
  on("popSearchViewZip", [this] { ViewZipOfCurrent(); });
  on("popSearchFieldChooser", [this] { ChooseFields(); });
  // No shortcut of its own: Alt+Return is the main window's properties command.
  on("popSearchProperties", [this] { PropertiesOfCurrent(); });
  connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this] { UpdatePopup(); });
  connect(model_, &QAbstractItemModel::modelReset, this, [this] { UpdatePopup(); });
}

void frmSearch::UpdatePopup() {
  if (!popup_) return;
  const SearchResult* row = model_->Row(list_->currentIndex());
  const bool file = row && (row->kind == SearchResult::Kind::kFile ||
                            row->kind == SearchResult::Kind::kArchiveEntry);
  for (QAction* a : popup_->actions()) {
    const QString name = a->objectName();
    if (name.isEmpty() || name == QLatin1String("popSearchFieldChooser")) continue;
    a->setEnabled(row && (name != QLatin1String("popSearchViewZip") || file));
  }
}

void frmSearch::ShowPopup(const QPoint& pos) {
  const QModelIndex at = list_->indexAt(pos);
  if (at.isValid()) list_->setCurrentIndex(at);
  UpdatePopup();
  popup_->popup(list_->viewport()->mapToGlobal(pos));
}

RevealTarget frmSearch::TargetOf(const SearchResult& row) const {
  RevealTarget t;
  t.discId = row.discId;
  t.folderId = row.folderId;
  t.fileId = row.fileId;
  t.memberId = row.entryId;
  switch (row.kind) {
    case SearchResult::Kind::kDisc:
      t.kind = NodeKind::kDisc;
      break;
    case SearchResult::Kind::kFolder:
      t.kind = NodeKind::kFolder;
      break;
    case SearchResult::Kind::kFile:
      t.kind = NodeKind::kFile;
      break;
    case SearchResult::Kind::kArchiveEntry:
      t.kind = NodeKind::kArchiveMember;
      break;
  }
  return t;
}

void frmSearch::SyncToView(int which) {
  const SearchResult* row = model_->Row(list_->currentIndex());
  if (!row || !session_.isOpen()) return;
  const bool explorer = which == 0 ? menu_.explorerMode() : which == 1;
  if (CatalogView* view = menu_.ShowView(explorer)) view->Reveal(TargetOf(*row));
}

void frmSearch::PropertiesOfCurrent() {
  const SearchResult* row = model_->Row(list_->currentIndex());
  if (row && session_.isOpen()) PropertiesDialog::Open(session_, ItemOf(*row), this);
}

void frmSearch::LaunchCurrent() {
  const SearchResult* row = model_->Row(list_->currentIndex());
  if (!row || !session_.isOpen()) return;
  // The disc and its tree are read on the loader's thread; the launch then
  // happens here.
  struct Target {
    Status status;
    DiscRow disc;
    std::shared_ptr<DiscTree> tree;
    int32_t folderNode = DiscTree::kNone;
    std::string file;
  };
  const SearchResult hit = *row;
  session_.loader().Load<Target>(
      this, "frmSearch.launch." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      [hit](classData& d, const std::stop_token&) {
        Target t;
        t.status = CatalogReads::Disc(d, hit.discId, &t.disc);
        if (!t.status.ok() || hit.kind == SearchResult::Kind::kDisc) return t;
        t.tree = std::make_shared<DiscTree>();
        if (Status s = t.tree->Build(d.file(), hit.discId); !s.ok()) {
          t.status = s;
          return t;
        }
        t.folderNode = t.tree->Find(hit.folderId);
        if (t.folderNode == DiscTree::kNone) {
          t.status = Status::NotFound("folder");
          return t;
        }
        if (hit.kind != SearchResult::Kind::kFolder) {
          // A file opens itself; an archive member opens its archive.
          EntryRow file;
          t.status = CatalogReads::Entry(d, NodeKind::kFile, hit.fileId, &file);
          t.file = file.name;
        }
        return t;
      },
      [this](Target& t) {
        if (!t.status.ok()) {
          session_.prompt().Message(Std(tr("This item is not in the catalog any more. Search "
                                           "again to see the catalog as it is now.")),
                                    PromptIcon::kWarning);
          return;
        }
        Launcher::Launch(session_, t.disc, t.tree.get(), t.folderNode, t.file);
      });
}

void frmSearch::ViewZipOfCurrent() {
  const SearchResult* row = model_->Row(list_->currentIndex());
  if (!row || !session_.isOpen()) return;
  if (row->kind != SearchResult::Kind::kFile && row->kind != SearchResult::Kind::kArchiveEntry)
    return;
  const int32_t archiveId = row->fileId;
  const int32_t discId = row->discId;
  session_.loader().Load<EntryRow>(
      this, "frmSearch.zip." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      [archiveId](classData& d, const std::stop_token&) {
        EntryRow file;
        if (!CatalogReads::Entry(d, NodeKind::kFile, archiveId, &file).ok()) file.id = 0;
        return file;
      },
      [this, discId](EntryRow& file) {
        if (file.id == 0) {
          session_.prompt().Message(Std(tr("This item is not in the catalog any more. Search "
                                           "again to see the catalog as it is now.")),
                                    PromptIcon::kWarning);
          return;
        }
        if (!file.archive) {
          session_.prompt().Message(
              Std(tr("\"%1\" holds no catalogued archive members.").arg(RowText(file.name))),
              PromptIcon::kInformation);
          return;
        }
        // The archive's properties list its members.
        CatalogItem item;
        item.kind = NodeKind::kFile;
        item.id = file.id;
        item.discId = discId;
        item.name = Qs(file.name);
        PropertiesDialog::Open(session_, item, this);
      });
}

void frmSearch::ChooseFields() { FieldChooser::Open(list_->horizontalHeader(), this); }

void frmSearch::ExportResults() {
  if (searching()) return;
  if (model_->rowCount() == 0) {
    session_.prompt().Message(kNothingToExport, PromptIcon::kInformation);
    return;
  }
  const bool cdNameShown = !list_->horizontalHeader()->isSectionHidden(SearchResultsModel::kCdName);
  frmExport_Search::Open(session_.prompt(), model_->RowsInOrder(), cdNameShown, last_, this);
}

void frmSearch::PreviewList() {
  if (searching() || makingReport_) return;
  if (model_->rowCount() == 0) {
    session_.prompt().Message(kNothingToPrint, PromptIcon::kInformation);
    return;
  }
  auto doc = std::make_shared<ReportDocument>();
  doc->title = tr(kSearchReportTitle);
  doc->intro = {QStringLiteral("Search For : ") + RowText(last_.text),
                QStringLiteral("Search Within : ") + RowText(Std(lastCategory_))};
  doc->columns = ReportColumns(tr(kSearchReportHeader), QLatin1String(kSearchReportColumns));
  // The rows' texts are copied on a thread of their own: 100,000 rows take
  // a few hundred milliseconds. The rows it reads stay as they are meanwhile
  // (kept alive by keep, should the list be emptied).
  std::shared_ptr<const void> keep;
  std::vector<const SearchResult*> rows = model_->RowsInOrder(&keep);
  if (reportMaker_.joinable()) reportMaker_.join();
  makingReport_ = true;
  lblCount_->setText(tr(kSearchReportProgress));
  reportMaker_ = std::thread([this, doc, rows = std::move(rows), keep = std::move(keep)] {
    doc->lines.reserve(rows.size());
    for (const SearchResult* row : rows) {
      // The cells joined in place: RowText leaves no tab in a text.
      QString text = RowText(row->fileName);
      text += QLatin1Char('\t') + RowText(row->cdName) + QLatin1Char('\t') + RowText(row->path);
      text.squeeze();
      doc->lines.push_back({ReportLineKind::kRow, std::move(text)});
    }
    // Dropped if this window is gone by then.
    QMetaObject::invokeMethod(
        this,
        [this, doc] {
          makingReport_ = false;
          UpdateCount();
          if (!session_.isOpen()) return;
          // The preview belongs to the main window, as its other reports do:
          // this window may close while the report is shown or printed.
          frmPreview::Of(session_, &menu_)->ShowDocument(doc);
          Q_EMIT reportShown();
        },
        Qt::QueuedConnection);
  });
}

}  // namespace gorvan::ui
