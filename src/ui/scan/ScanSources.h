#pragma once
// ScanSources: what the scan dialogs ask of the machine — the places a scan
// can start from (mounted volumes and optical drives, with their labels and
// free space), the volume facts of a path, an optical drive's table of
// contents, ejecting a drive — and the lookup of an audio disc. The desktop
// program uses the system's; tests install fakes with SetCurrent, so they
// need no drive and no network.
//
// Thread contract: Places, Propose, DriveLabel, OpticalDrives and Eject run
// on the GUI thread; ReadToc and Lookup run on a worker thread and must not
// touch widgets.

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "app/ScanRequest.h"
#include "audio/DiscLookup.h"
#include "audio/DiscToc.h"
#include "audio/FreeDbParser.h"
#include "audio/cCdChanger.h"

namespace gorvan::ui {

// How one lookup runs: which FreeDB match it reads when several are found (0
// the first) and whether it may ask a server (else only the local FreeDB
// folder).
struct LookupRequest {
  size_t match = 0;
  bool online = true;
};

// One place the folder chooser lists.
struct ScanPlace {
  std::string path;       // the mount point, or the device of an optical drive
  std::string label;      // the volume label ("" for a drive without a disc)
  int driveType = 3;      // the catalog's media type codes (kMediaOptical ...)
  double freeBytes = -1;  // < 0: not known
  bool drive = false;     // an optical drive (path is its device)
};

class ScanSources {
 public:
  virtual ~ScanSources() = default;

  // The mounted volumes worth scanning and every optical drive.
  virtual std::vector<ScanPlace> Places() = 0;
  // The volume facts of path and the label and disc name they propose. For
  // the device of an optical drive: the disc's label and drive type 5.
  virtual ScanProposal Propose(const std::string& path) = 0;
  // True when path can be scanned: an existing folder, or the device of an
  // optical drive.
  virtual bool Exists(const std::string& path) = 0;
  // The optical drives' devices, and the label of the disc in one.
  virtual std::vector<std::string> OpticalDrives() = 0;
  virtual std::string DriveLabel(const std::string& device) = 0;
  virtual void Eject(const std::string& device) = 0;
  // Where the disc in device is scanned from: its mount point when it is
  // mounted, else the device itself.
  virtual std::string PathOfDrive(const std::string& device) = 0;
  // A started watcher of inserted and removed discs; null when there is none.
  virtual std::unique_ptr<cCdChanger> NewChanger(cCdChanger::CDROMChanged changed) = 0;

  // Worker thread. The table of contents of the disc in device; false when
  // there is none (no disc, a data disc without audio tracks, no drive).
  virtual bool ReadToc(const std::string& device, std::stop_token stop, DiscToc* toc) = 0;
  // Worker thread. Looks the disc up as the settings and the request say;
  // status lines are reported through status (on the worker).
  virtual DiscLookupResult Lookup(const DiscToc& toc, const LookupRequest& request,
                                  std::stop_token stop, const DiscLookup::StatusFn& status) = 0;
  // The FreeDB server the lookup contacts.
  virtual std::string LookupServer() = 0;
  // True when the settings let a lookup ask a server (FreeDB or MusicBrainz).
  virtual bool LookupGoesOnline() = 0;
  // Worker thread. The FreeDB server's list of mirror sites; on failure an
  // empty list and *error says why.
  virtual std::vector<FreeDbSite> ServerSites(std::stop_token stop, std::string* error) = 0;

  // The sources in use: the system's unless a test installed its own.
  static ScanSources& Current();
  static void SetCurrent(std::shared_ptr<ScanSources> sources);
  static std::shared_ptr<ScanSources> CurrentShared();
};

// The machine's own sources.
class SystemScanSources final : public ScanSources {
 public:
  std::vector<ScanPlace> Places() override;
  ScanProposal Propose(const std::string& path) override;
  bool Exists(const std::string& path) override;
  std::vector<std::string> OpticalDrives() override;
  std::string DriveLabel(const std::string& device) override;
  void Eject(const std::string& device) override;
  std::string PathOfDrive(const std::string& device) override;
  std::unique_ptr<cCdChanger> NewChanger(cCdChanger::CDROMChanged changed) override;
  bool ReadToc(const std::string& device, std::stop_token stop, DiscToc* toc) override;
  DiscLookupResult Lookup(const DiscToc& toc, const LookupRequest& request, std::stop_token stop,
                          const DiscLookup::StatusFn& status) override;
  std::string LookupServer() override;
  bool LookupGoesOnline() override;
  std::vector<FreeDbSite> ServerSites(std::stop_token stop, std::string* error) override;
};

}  // namespace gorvan::ui
