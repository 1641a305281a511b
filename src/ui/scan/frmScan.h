#pragma once
// frmScan: the scan dialog. The user chooses the drive or folder to scan
// (uFolderBrowser1), names the disc, files it under a category, sets the
// scan's options, and for an audio CD sees (and may correct) the album and
// tracks that the lookup found. The dialog only collects: on OK it checks the
// path and asks whether a disc scanned before is to be scanned again, then
// closes with its choices in settings(); the caller runs the scan.
//
// Three uses: a new disc (ScanCd with an id below 1), a rescan (ScanCd with
// the disc's id: its name, notes and category filled in, the label read
// again), and an entry without scanning (ScanCdNoScan: a new disc entry made
// from the dialog alone, or the edit of an existing disc's entry); the last
// reads no drive.
//
// Reading an optical drive's table of contents and the audio lookup run on
// worker threads (WorkerTask); the dialog stays usable and the lookup can be
// stopped. Questions go through the session's Prompt.
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <memory>
#include <optional>
#include <vector>

#include "audio/AudioScanValues.h"
#include "audio/DiscLookup.h"
#include "scan/AudioDisc.h"
#include "scan/ScanSettings.h"
#include "ui/scan/ScanSources.h"
#include "ui/scan/WorkerTask.h"
#include "ui/session/CatalogRows.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTreeWidget;

namespace gorvan::ui {

class CatalogSession;
class uFolderBrowser;

inline constexpr const char* kEnhancedQuestion =
    "The CD to be scanned has multi-sessions and might be an Enhanced Audio CD!!\n"
    "Do you want to treat the new CD as an enhanced audio CD";
inline constexpr const char* kEnhancedOffTitle =
    "Do you want to turn off detection of Enhanced CDs permanently?";
inline constexpr const char* kEnhancedOffText =
    "You can later change the setting from the Options panel!!";
inline constexpr const char* kGettingTracks = "Getting Audio CD Track Information";
inline constexpr const char* kAudioTabCaption = "Audio CD Information";
inline constexpr const char* kNoInternet =
    "Internet Connection To Server Failed!!\nPlease verify you internet connection!!";

class frmScan : public QDialog {
  Q_OBJECT

 public:
  // How the dialog closed: a scan to run, an entry to write, the disc
  // already in the catalog to show, or nothing.
  enum class Outcome { kNone, kScan, kEntry, kShowDisc };

  frmScan(CatalogSession& session, std::shared_ptr<ScanSources> sources, QWidget* parent = nullptr);
  ~frmScan() override;

  // Opens the dialog for a new disc (discId < 1; filed under category when
  // given) or a rescan of discId, on path when given (else as
  // "StartupDriveSelect" says, or the disc's path). False (and nothing
  // opens) when discId is no disc of the catalog.
  bool ScanCd(int32_t discId, const QString& path = {}, int32_t category = 0);
  // Opens the dialog for a disc entry without scanning: a new one (discId <
  // 1) or the edit of discId's entry.
  bool ScanCdNoScan(int32_t discId);

  Outcome outcome() const { return outcome_; }
  // The choices, once the dialog closed with kScan or kEntry.
  const ScanSettings& settings() const { return settings_; }
  const ScanVolume& volume() const { return volume_; }
  // An audio CD's tracks and album values (scan mode kMediaAudioCd).
  const std::vector<AudioTrack>& tracks() const { return tracks_; }
  const AudioValues& audio() const { return audio_; }
  // The disc already in the catalog, for kShowDisc.
  int32_t discToShow() const { return discToShow_; }
  bool noScan() const { return noScan_; }
  int32_t discId() const { return discId_; }
  // The optical drive's media type of a place chosen for an entry.
  int32_t entryMediaType() const;

  uFolderBrowser* folderBrowser() const { return browser_; }
  bool lookupRunning() const { return lookup_.running(); }
  bool inspecting() const { return inspect_.running(); }
  // The status line of the audio lookup.
  QString lookupStatus() const;

 Q_SIGNALS:
  // The lookup ended (found or not, stopped or failed).
  void lookupFinished();
  // The path's facts are in (for an optical drive: its table was read).
  void pathInspected();

 public Q_SLOTS:
  void accept() override;
  void done(int result) override;

 public:
  void SetStatus(const QString& line);

 private:
  void BuildLayout();
  void LoadCategories(int32_t select);
  void RestoreRemembered();
  void SaveRemembered();
  void Preselect();
  void PathChanged(const QString& path);
  void TocRead(bool found, const DiscToc& toc);
  void AskEnhanced();
  void StartLookup(const DiscToc& toc, size_t match = 0);
  void StopLookup();
  // Whether this dialog's lookups may ask a server: the settings, then the
  // user ("lNotifyConnectFreedb", the remembered answer
  // "lNotifyConnectFreedbAction").
  bool MayGoOnline();
  void LookupDone(const DiscLookupResult& result);
  void ShowAudio(const AudioScanValues& values);
  void FillDefaultName();
  bool FillFromDisc(int32_t discId);
  void CollectSettings();
  int32_t CategoryId() const;

  CatalogSession& session_;
  std::shared_ptr<ScanSources> sources_;
  Outcome outcome_ = Outcome::kNone;
  bool noScan_ = false;
  int32_t discId_ = 0;  // the disc rescanned or edited; 0 for a new one
  int32_t categoryToSelect_ = 0;
  bool nameTyped_ = false;  // the user typed a disc name: the path leaves it alone
  bool filling_ = false;
  ScanProposal proposal_;
  DiscToc toc_;
  int32_t scanMode_ = 0;
  std::optional<bool> goOnline_;
  ScanSettings settings_;
  ScanVolume volume_;
  std::vector<AudioTrack> tracks_;
  AudioValues audio_;
  int32_t discToShow_ = 0;
  QString basePath_;  // the rescanned or edited disc's scanned path
  float restoredWidth_ = 0;
  float restoredHeight_ = 0;
  WorkerTask inspect_;
  WorkerTask lookup_;

  QTabWidget* tabs_;
  uFolderBrowser* browser_;
  QLineEdit* txtLabelInternal_;
  QLineEdit* fldDataLabel_;
  QPlainTextEdit* fldDataNotes_;
  QComboBox* uComboCategory1_;
  QCheckBox* chkEnhancedCd_;
  QLabel* lblEnhancedCd_;
  QLabel* lblStatus_;
  QPushButton* btnStopLookup_;
  QLabel* lblFreeDbMatch_;
  QComboBox* cboFreeDbMatch_;
  QLineEdit* fldFilesInclude_;
  QLineEdit* fldFilesExclude_;
  QCheckBox* chkScanZip_;
  QCheckBox* chkScanMp3_;
  QCheckBox* chkScanDirectoriesOnly_;
  QLineEdit* fldAudioAlbum_;
  QLineEdit* fldAudioArtist_;
  QLineEdit* fldAudioCategory_;
  QLineEdit* fldAudioTime_;
  QLineEdit* fldAudioYear_;
  QTreeWidget* lstAudioTracks_;
  QPushButton* btnOK_;
  QPushButton* btnCancel_;
};

}  // namespace gorvan::ui
