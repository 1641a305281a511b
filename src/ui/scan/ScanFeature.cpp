#include "ui/scan/ScanFeature.h"

#include <QPointer>
#include <memory>

#include "catalog/Attributes.h"
#include "catalog/CatalogEditor.h"
#include "catalog/OleDate.h"
#include "catalog/classCd.h"
#include "scan/ScanEngine.h"
#include "ui/explorer/CatalogView.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/MediaChangeListener.h"
#include "ui/scan/frmAnimation.h"
#include "ui/scan/frmEjectCd.h"
#include "ui/scan/frmScan.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

QPointer<frmScan>& Current() {
  static QPointer<frmScan> current;
  return current;
}

// The disc a command acts on: the item itself, or the disc that holds it.
int32_t DiscOf(const CatalogItem& item) {
  if (item.kind == NodeKind::kDisc) return item.id;
  if (item.kind == NodeKind::kFolder || item.kind == NodeKind::kFile ||
      item.kind == NodeKind::kArchiveMember) {
    return item.discId;
  }
  return 0;
}

// What the scan's thread hands back besides the job's outcome.
struct ScanFigures {
  int64_t folders = 0;
  int64_t files = 0;
  double bytes = 0;
  int64_t warnings = 0;
  QStringList warningTexts;
};

// A disc record made from the dialog alone: its values, a top folder without
// entries, linked into the catalog.
Status AppendEntry(classData& data, const ScanSettings& s, int32_t mediaType, int32_t* id) {
  classCd cd = data.CdCursor();
  if (!data.GetCdAppend(cd)) return data.status();
  *id = cd.GetCdId();
  JobControl none;
  int32_t written = 0;
  if (!WriteAudioTracks(cd, {}, none, &written) || !cd.GetDirAppendFinish()) {
    return data.status();
  }
  if (!s.discName.empty()) cd.SetCdName(s.discName);
  if (!s.notes.empty()) cd.SetCdNotes(s.notes);
  if (!s.volumeLabel.empty()) cd.SetCdLabel(s.volumeLabel);
  if (!s.path.empty()) cd.SetCdBasepath(s.path);
  CdRecord& r = cd.record();
  r.mediaType = mediaType;
  r.category = s.categoryId;
  r.lastScanned = OleDateNow();
  if (!cd.RecordUpdate() || !data.GetCdCommit(cd)) return data.status();
  return data.ok() ? Status::OK() : data.status();
}

// The edit of an existing disc's entry: name, notes, label, path, category.
Status UpdateEntry(classData& data, int32_t id, const ScanSettings& s) {
  CatalogEditor editor(&data);
  classCd cd = data.CdCursor();
  if (Status st = data.FindCd(id, &cd); !st.ok()) return st;
  if (cd.GetCdName() != s.discName) cd.SetCdName(s.discName);
  if (cd.GetCdNotes() != s.notes) cd.SetCdNotes(s.notes);
  if (cd.GetCdLabel() != s.volumeLabel) cd.SetCdLabel(s.volumeLabel);
  if (cd.GetCdBasepath() != s.path) cd.SetCdBasepath(s.path);
  if (cd.record().category != s.categoryId) {
    if (Status st = editor.MoveDisc(id, s.categoryId); !st.ok()) return st;
  }
  if (!data.ok()) return data.status();
  return data.Flush() ? Status::OK() : data.status();
}

// A command on the disc of the chosen item; without one, refusal is shown.
CommandHooks::Handler OnChosenDisc(const char* refusal,
                                   std::function<void(frmMenu&, int32_t)> open) {
  return [refusal, open = std::move(open)](const CommandContext& c) {
    if (!c.window) return;
    const int32_t disc = DiscOf(c.item);
    if (disc <= 0) {
      c.session->prompt().Message(refusal);
      return;
    }
    open(*c.window, disc);
  };
}

}  // namespace

void ScanFeature::Register(CommandHooks& hooks) {
  hooks.Register(QStringLiteral("mnuCdAdd"), [](const CommandContext& c) {
    // A new disc goes under the category chosen in the view, if one is.
    const int32_t category = c.item.kind == NodeKind::kCategory ? c.item.id : 0;
    if (c.window) OpenScan(*c.window, 0, c.path, category);
  });
  hooks.Register(QStringLiteral("mnuCdAddNoScan"), [](const CommandContext& c) {
    if (c.window) OpenNoScan(*c.window, 0);
  });
  hooks.Register(
      QStringLiteral("mnuCdRescan"),
      OnChosenDisc(kChooseDiscToRescan, [](frmMenu& w, int32_t disc) { OpenScan(w, disc); }));
  // The traditional view's "Edit..." opens the chosen disc's entry.
  hooks.Register(
      QStringLiteral("popCdEdit"),
      OnChosenDisc(kChooseDiscToEdit, [](frmMenu& w, int32_t disc) { OpenNoScan(w, disc); }));
  hooks.Register(QStringLiteral("mnuCdEject"), [](const CommandContext& c) {
    if (!c.window) return;
    auto* dialog = new frmEjectCd(ScanSources::CurrentShared(), c.window);
    dialog->open();
  });
  hooks.OnWindow([](frmMenu& window) { new MediaChangeListener(window); });
}

frmScan* ScanFeature::OpenDialog() { return Current().data(); }

frmScan* ScanFeature::NewDialog(frmMenu& window) {
  auto* dialog = new frmScan(window.session(), ScanSources::CurrentShared(), &window);
  Current() = dialog;
  QObject::connect(dialog, &QDialog::finished, &window, [&window, dialog] {
    // Closed: the next command opens a dialog of its own (this one is
    // deleted once the event loop comes back).
    if (Current() == dialog) Current() = nullptr;
    DialogFinished(window, *dialog);
  });
  return dialog;
}

frmScan* ScanFeature::OpenScan(frmMenu& window, int32_t discId, const QString& path,
                               int32_t category) {
  if (frmScan* open = Current()) {
    open->raise();
    open->activateWindow();
    return open;
  }
  CatalogSession& session = window.session();
  if (!session.isOpen() || session.busy()) return nullptr;
  frmScan* dialog = NewDialog(window);
  if (!dialog->ScanCd(discId, path, category)) {
    delete dialog;
    session.prompt().Message(kChooseDiscToRescan);
    return nullptr;
  }
  return dialog;
}

frmScan* ScanFeature::OpenNoScan(frmMenu& window, int32_t discId) {
  if (frmScan* open = Current()) {
    open->raise();
    open->activateWindow();
    return open;
  }
  CatalogSession& session = window.session();
  if (!session.isOpen() || session.busy()) return nullptr;
  frmScan* dialog = NewDialog(window);
  if (!dialog->ScanCdNoScan(discId)) {
    delete dialog;
    return nullptr;
  }
  return dialog;
}

void ScanFeature::DialogFinished(frmMenu& window, frmScan& dialog) {
  switch (dialog.outcome()) {
    case frmScan::Outcome::kScan:
      StartScan(window, dialog.settings(), dialog.volume(), dialog.tracks(), dialog.audio());
      break;
    case frmScan::Outcome::kEntry:
      WriteEntry(window, dialog);
      break;
    case frmScan::Outcome::kShowDisc:
      ShowDisc(window, dialog.discToShow());
      break;
    case frmScan::Outcome::kNone:
      break;
  }
}

void ScanFeature::WriteEntry(frmMenu& window, const frmScan& dialog) {
  const ScanSettings s = dialog.settings();
  const int32_t existing = dialog.discId();
  const int32_t mediaType = dialog.entryMediaType();
  int32_t id = existing;
  const CatalogChange change = CatalogChange::kStructure;
  const Status st = window.session().Edit(change, [&](classData& data) {
    return existing > 0 ? UpdateEntry(data, existing, s) : AppendEntry(data, s, mediaType, &id);
  });
  if (!st.ok()) {
    if (st.IsInvalidArgument() || st.IsNotFound()) {
      window.session().prompt().Message(st.message(), PromptIcon::kWarning);
    }
    return;
  }
  ShowDisc(window, id);
}

frmAnimation* ScanFeature::StartScan(frmMenu& window, const ScanSettings& settings,
                                     const ScanVolume& volume,
                                     const std::vector<AudioTrack>& tracks,
                                     const AudioValues& audio) {
  CatalogSession& session = window.session();
  auto figures = std::make_shared<ScanFigures>();
  QPointer<frmAnimation> animation;
  const QString title = settings.previousDiscId > 0
                            ? QObject::tr("Rescanning %1").arg(Qs(settings.discName))
                            : QObject::tr("Scanning %1").arg(Qs(settings.path));

  JobSpec spec;
  spec.caption = Qs(kScanCaption);
  spec.ownWindow = true;
  spec.changes = CatalogChange::kStructure;
  spec.work = [settings, volume, tracks, audio, figures](classData& data, JobControl& job) {
    ScanEngine engine(data);
    ScanSettings s = settings;
    engine.SetVars(s);
    engine.SetVolume(volume);
    if (s.scanMode == kMediaAudioCd) engine.SetAudio(tracks, audio);
    engine.ScanCd(job);
    JobOutcome o;
    o.status = engine.status();
    o.id = engine.NewDiscId();
    o.warnings = engine.warnings();
    figures->folders = engine.foldersWritten();
    figures->files = engine.totals().files;
    figures->bytes = engine.totals().bytes;
    figures->warnings = static_cast<int64_t>(engine.warnings());
    for (const std::string& w : engine.warningTexts()) figures->warningTexts.append(Qs(w));
    return o;
  };
  auto* window_ = &window;
  auto holder = std::make_shared<QPointer<frmAnimation>>();
  spec.done = [window_, holder, figures](const JobOutcome& o) {
    ScanSummary s;
    s.cancelled = o.status.IsCancelled();
    s.failed = !o.status.ok() && !s.cancelled;
    s.message = Qs(o.status.message());
    s.discId = s.failed ? 0 : o.id;
    s.folders = figures->folders;
    s.files = figures->files;
    s.bytes = figures->bytes;
    s.warnings = figures->warnings;
    s.warningTexts = figures->warningTexts;
    if (s.failed && !o.status.IsNotFound() && !o.status.IsInvalidArgument()) {
      window_->session().ReportFailure(o.status, "ScanCd");
    }
    if (*holder) (*holder)->Finish(s);
    if (s.discId > 0) ShowDisc(*window_, s.discId);
  };
  if (!session.StartJob(std::move(spec))) return nullptr;
  auto* dialog = new frmAnimation(session, title, &window);
  *holder = dialog;
  CatalogJob* job = session.job();
  QObject::connect(job, &CatalogJob::progress, dialog, &frmAnimation::Report);
  QObject::connect(dialog, &frmAnimation::cancelRequested, job, &CatalogJob::Cancel);
  dialog->show();
  return dialog;
}

void ScanFeature::ShowDisc(frmMenu& window, int32_t discId) {
  RevealTarget target;
  target.kind = NodeKind::kDisc;
  target.discId = discId;
  if (CatalogView* view = window.activeView()) view->Reveal(target);
}

}  // namespace gorvan::ui
