#include "ui/scan/MediaChangeListener.h"

#include <QCoreApplication>
#include <QPointer>

#include "audio/cCdChanger.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/ScanFeature.h"
#include "ui/scan/ScanSources.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

MediaChangeListener::MediaChangeListener(frmMenu& window) : QObject(&window), window_(window) {
  setObjectName(QStringLiteral("oCdChanger"));
  QPointer<MediaChangeListener> self(this);
  changer_ = ScanSources::Current().NewChanger([self](int kind, const std::string& device) {
    const QString d = Qs(device);
    QMetaObject::invokeMethod(
        qApp,
        [self, kind, d] {
          if (self) self->oCdChanger_CDROMChanged(kind, d);
        },
        Qt::QueuedConnection);
  });
}

MediaChangeListener::~MediaChangeListener() = default;

void MediaChangeListener::oCdChanger_CDROMChanged(int kind, const QString& device) {
  if (!UiSettings::Switch("lEnableAutoInsert")) return;
  CatalogSession& session = window_.session();
  // A scan running, or being prepared, is left alone.
  if (!session.isOpen() || session.busy() || ScanFeature::OpenDialog()) return;
  if (kind == cCdChanger::kRemoved) {
    PromptRequest r;
    r.text = kCdRemoved;
    r.notifyKey = "lNotifyCdChange";
    NotifyPrompt::Ask(session.prompt(), r, PromptAnswer::kOk);
    return;
  }
  if (kind != cCdChanger::kArrived) return;
  PromptRequest r;
  r.text = std::string(kCdInserted) + "\n" +
           Std(tr("Do you want to add the disc in %1 to the catalog?").arg(device));
  r.buttons = PromptButtons::kYesNo;
  r.icon = PromptIcon::kQuestion;
  r.notifyKey = "lNotifyCdChange";
  if (NotifyPrompt::Ask(session.prompt(), r, PromptAnswer::kYes).answer != PromptAnswer::kYes) {
    return;
  }
  // The question may have waited: the scan is offered only if still possible.
  if (session.busy() || ScanFeature::OpenDialog()) return;
  const std::string path = ScanSources::Current().PathOfDrive(Std(device));
  ScanFeature::OpenScan(window_, 0, Qs(path));
}

}  // namespace gorvan::ui
