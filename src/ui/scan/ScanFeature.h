#pragma once
// ScanFeature: the scan commands of the desktop program — mnuCdAdd (and
// "gorvan --scan PATH"), mnuCdAddNoScan, mnuCdRescan, mnuCdEject — and the
// listener for inserted discs that the main window keeps.
//
// A scan runs as a job of the session (CatalogSession::StartJob: the job owns
// the catalog on its worker thread) with frmAnimation as its window; when it
// ends the views reload and the explorer shows the new disc selected. An
// entry without scanning is a short edit on the GUI thread.
//
// Thread contract: the GUI thread.

#include <QString>
#include <cstdint>
#include <vector>

#include "scan/AudioDisc.h"
#include "scan/ScanSettings.h"

namespace gorvan::ui {

class CommandHooks;
class frmAnimation;
class frmMenu;
class frmScan;

inline constexpr const char* kScanCaption = "Scanning";
inline constexpr const char* kChooseDiscToRescan = "Choose the disc to rescan first.";
inline constexpr const char* kChooseDiscToEdit = "Choose the disc to edit first.";

class ScanFeature {
 public:
  // Registers the commands and the listener for inserted discs.
  static void Register(CommandHooks& hooks);

  // The scan dialog for a new disc (discId < 1, filed under category) or a
  // rescan; the dialog open already is brought forward instead. Null when
  // discId is no disc.
  static frmScan* OpenScan(frmMenu& window, int32_t discId, const QString& path = {},
                           int32_t category = 0);
  // The dialog for a disc entry without scanning (new, or discId's entry).
  static frmScan* OpenNoScan(frmMenu& window, int32_t discId);
  // The dialog open now, if any.
  static frmScan* OpenDialog();

  // Starts the scan as a job with its progress window; null when the
  // session refused the job (another runs).
  static frmAnimation* StartScan(frmMenu& window, const ScanSettings& settings,
                                 const ScanVolume& volume, const std::vector<AudioTrack>& tracks,
                                 const AudioValues& audio);
  // Makes the catalog view in use (explorer or traditional) show a disc
  // selected.
  static void ShowDisc(frmMenu& window, int32_t discId);

 private:
  static frmScan* NewDialog(frmMenu& window);
  static void DialogFinished(frmMenu& window, frmScan& dialog);
  static void WriteEntry(frmMenu& window, const frmScan& dialog);
};

}  // namespace gorvan::ui
