// frmMenu: the File menu's catalog commands — new, open, close, the history
// and the password.
#include <QFileInfo>
#include <QMenu>
#include <QStatusBar>

#include "app/CatalogHistory.h"
#include "catalog/PasswordCheck.h"
#include "catalog/basBackup.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kNewTitle = "Create a new Gorvan database";
constexpr const char* kOpenTitle = "Select a Gorvan database to open";

std::string FolderOf(const std::string& path) {
  return path.empty() ? std::string() : Std(QFileInfo(Qs(path)).absolutePath());
}

}  // namespace

bool frmMenu::OpenCatalog(const std::string& path, bool mustExist) {
  OpenOptions options;
  options.mustExist = mustExist;
  // "UnicodeEnabled" off: a catalog created here holds Windows-1252 text, as
  // older programs of the format read it; on, UTF-8.
  options.newEncoding =
      UiSettings::Switch("UnicodeEnabled") ? TextEncoding::kUtf8 : TextEncoding::kWindows1252;
  const bool ok = session_.Open(path, options);
  RebuildHistory();
  return ok;
}

void frmMenu::FileNew() {
  FileRequest r;
  r.title = kNewTitle;
  r.filter = kMergeFilter;  // "Gorvan Databases (*.cd)|*.cd"
  r.defaultExtension = "cd";
  r.startPath = FolderOf(session_.path());
  r.save = true;
  const std::string path = session_.prompt().AskFile(r);
  if (path.empty()) return;
  const QFileInfo target(Qs(path));
  if (session_.isOpen() && target == QFileInfo(Qs(session_.path()))) {
    session_.prompt().Message(Std(tr("This catalog is open. Choose another name for the new one.")),
                              PromptIcon::kWarning);
    return;
  }
  // The file dialog asked before it let an existing file be chosen: the new
  // catalog replaces it.
  if (target.exists() && !QFile::remove(target.absoluteFilePath())) {
    session_.prompt().Message(Std(tr("%1 could not be replaced.").arg(target.absoluteFilePath())),
                              PromptIcon::kWarning);
    return;
  }
  OpenCatalog(path, false);
}

void frmMenu::FileOpen() {
  FileRequest r;
  r.title = kOpenTitle;
  r.filter = kMergeFilter;
  r.defaultExtension = "cd";
  r.startPath = FolderOf(session_.path());
  const std::string path = session_.prompt().AskFile(r);
  if (!path.empty()) OpenCatalog(path, true);
}

void frmMenu::FileClose() { session_.Close(); }

void frmMenu::FileHistory(int index) {
  const std::vector<std::string> entries = CatalogHistory::Entries();
  if (index < 0 || static_cast<size_t>(index) >= entries.size()) return;
  const std::string path = entries[static_cast<size_t>(index)];
  if (!QFileInfo::exists(Qs(path))) {
    const std::string question =
        Std(tr("The catalog %1 was not found.\nRemove it from the list of recent catalogs?")
                .arg(Qs(path)));
    if (session_.prompt().YesNo(question)) CatalogHistory::Remove(path);
    RebuildHistory();
    return;
  }
  OpenCatalog(path, true);
}

void frmMenu::RebuildHistory() {
  const std::vector<std::string> entries = CatalogHistory::Entries();
  for (int i = 0; i < history_.size(); ++i) {
    QAction* a = history_[i];
    const bool used = static_cast<size_t>(i) < entries.size();
    a->setVisible(used);
    if (!used) continue;
    const QString path = Qs(entries[static_cast<size_t>(i)]);
    // "&1 name" with the full path as the tip; "&" in a name is not a mnemonic.
    a->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(
        QFileInfo(path).fileName().replace(QLatin1Char('&'), QStringLiteral("&&"))));
    a->setToolTip(path);
    a->setStatusTip(path);
  }
  historySeparator_->setVisible(!entries.empty());
}

void frmMenu::FilePassword() {
  classData* data = session_.writer();
  if (!data) return;
  const std::string current = data->GetDataPassword();
  std::string fresh;
  const bool passed =
      session_.prompt().AskPassword(true, [&current, &fresh](const PasswordFields& f) {
        return std::string(PasswordCheck::Message(
            PasswordCheck::ChangePassword(f.entered, f.new1, f.new2, current, &fresh)));
      });
  if (!passed) return;
  const Status s = session_.Edit(CatalogChange::kHeader, [&fresh](classData& d) {
    return d.SetDataPassword(fresh) ? Status::OK() : d.status();
  });
  if (s.ok()) {
    statusBar()->showMessage(fresh.empty() ? tr("The catalog has no password now")
                                           : tr("The catalog's password was changed"),
                             5000);
  }
}

}  // namespace gorvan::ui
