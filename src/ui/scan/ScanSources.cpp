#include "ui/scan/ScanSources.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>

#include "app/SettingsStore.h"
#include "audio/CdDevice.h"
#include "audio/OpticalDrives.h"
#include "audio/TocReader.h"
#include "audio/basEjectCd.h"
#include "audio/uFreeDb.h"
#include "catalog/Attributes.h"
#include "scan/ScanPath.h"
#include "scan/VolumeInfo.h"

namespace gorvan::ui {
namespace {

std::mutex& CurrentLock() {
  static std::mutex m;
  return m;
}
std::shared_ptr<ScanSources>& CurrentSlot() {
  static std::shared_ptr<ScanSources> current = std::make_shared<SystemScanSources>();
  return current;
}

bool StartsWith(const std::string& s, std::string_view prefix) {
  return s.compare(0, prefix.size(), prefix) == 0;
}

// Mount points a user scans: real block devices and network shares, not the
// system's own trees (boot, snaps, /proc ...).
bool WorthListing(const VolumeInfo::Mount& m) {
  static const std::set<std::string_view> remote = {
      "nfs", "nfs4", "cifs", "smb3", "9p", "fuse.sshfs", "afs", "ceph", "davfs", "glusterfs"};
  if (m.fsType == "squashfs") return false;
  const bool block = StartsWith(m.source, "/dev/");
  if (!block && !remote.count(m.fsType)) return false;
  for (std::string_view skip : {"/boot", "/snap", "/proc", "/sys", "/dev", "/var/lib", "/etc"}) {
    if (StartsWith(m.mountPoint, skip)) return false;
  }
  if (StartsWith(m.mountPoint, "/run/") && !StartsWith(m.mountPoint, "/run/media/")) return false;
  return true;
}

}  // namespace

ScanSources& ScanSources::Current() { return *CurrentShared(); }

std::shared_ptr<ScanSources> ScanSources::CurrentShared() {
  std::lock_guard lock(CurrentLock());
  return CurrentSlot();
}

void ScanSources::SetCurrent(std::shared_ptr<ScanSources> sources) {
  std::lock_guard lock(CurrentLock());
  CurrentSlot() = sources ? std::move(sources) : std::make_shared<SystemScanSources>();
}

std::vector<ScanPlace> SystemScanSources::Places() {
  std::vector<ScanPlace> places;
  std::set<std::string> seen;
  auto add = [&](const std::string& path) {
    if (path.empty() || !seen.insert(path).second) return;
    const VolumeInfo v = VolumeInfo::ForPath(path);
    ScanPlace p;
    p.path = path;
    p.label = v.label();
    p.driveType = v.driveType();
    p.freeBytes = v.ok() ? static_cast<double>(v.freeBytes()) : -1;
    places.push_back(std::move(p));
  };
  if (const char* home = std::getenv("HOME")) add(ScanPath::Normalise(home));
  std::ifstream in("/proc/self/mountinfo");
  std::stringstream text;
  text << in.rdbuf();
  std::set<std::string> mountedDevices;
  for (const VolumeInfo::Mount& m : VolumeInfo::ParseMountInfo(text.str())) {
    mountedDevices.insert(m.source);
    if (WorthListing(m)) add(m.mountPoint);
  }
  // Optical drives without a mounted disc are listed by their device: an
  // audio CD has no file system to mount.
  for (const std::string& device : OpticalDrives::List()) {
    if (mountedDevices.count(device)) continue;
    ScanPlace p;
    p.path = device;
    p.label = OpticalDrives::Label(device);
    p.driveType = kMediaOptical;
    p.drive = true;
    places.push_back(std::move(p));
  }
  return places;
}

ScanProposal SystemScanSources::Propose(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0 && S_ISBLK(st.st_mode)) {
    ScanProposal p;
    p.label = OpticalDrives::Label(path);
    if (p.label.empty()) p.label = std::string(VolumeInfo::kNotReady);
    p.facts.mountPoint = path;
    p.facts.driveType = kMediaOptical;
    p.facts.freeBytes = 0;
    p.discName = p.label;
    return p;
  }
  return ScanRequest::Propose(path);
}

bool SystemScanSources::Exists(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0 && S_ISBLK(st.st_mode)) return OpticalDrives::Exists(path);
  return ScanRequest::CheckPath(path).ok();
}

std::vector<std::string> SystemScanSources::OpticalDrives() {
  return gorvan::OpticalDrives::List();
}

std::string SystemScanSources::DriveLabel(const std::string& device) {
  return gorvan::OpticalDrives::Label(device);
}

void SystemScanSources::Eject(const std::string& device) { basEjectCd(device); }

std::string SystemScanSources::PathOfDrive(const std::string& device) {
  std::ifstream in("/proc/self/mountinfo");
  std::stringstream text;
  text << in.rdbuf();
  for (const VolumeInfo::Mount& m : VolumeInfo::ParseMountInfo(text.str())) {
    if (m.source == device) return m.mountPoint;
  }
  return device;
}

std::unique_ptr<cCdChanger> SystemScanSources::NewChanger(cCdChanger::CDROMChanged changed) {
  auto changer = std::make_unique<cCdChanger>(std::move(changed));
  if (!changer->Start()) return nullptr;
  return changer;
}

bool SystemScanSources::ReadToc(const std::string& device, std::stop_token stop, DiscToc* toc) {
  if (stop.stop_requested()) return false;
  std::string error;
  if (!TocReader::ReadWithMode(TocReader::kAutomatic, device, &CdDevice::Open, toc, &error)) {
    return false;
  }
  return toc->AudioTrackCount() > 0;
}

namespace {

FreeDbSettings StoredFreeDbSettings() {
  using S = FreeDbSettings;
  const std::string sw(S::kSection);
  FreeDbSettings s;
  s.enabled = SettingsStore::GetBool(sw, std::string(S::kKeyEnabled), false);
  s.useDatabase = SettingsStore::GetBool(sw, std::string(S::kKeyUseDatabase), false);
  s.useUrl = SettingsStore::GetBool(sw, std::string(S::kKeyUseUrl), false);
  s.databasePath = SettingsStore::GetText(sw, std::string(S::kKeyDatabasePath));
  s.url = SettingsStore::GetText(sw, std::string(S::kKeyUrl));
  s.artistAfterIf = SettingsStore::GetText(sw, std::string(S::kKeyArtistAfterIf));
  s.artistBeforeIf = SettingsStore::GetText(sw, std::string(S::kKeyArtistBeforeIf));
  s.email = SettingsStore::GetText(std::string(S::kEmailSection), std::string(S::kKeyEmail));
  const std::string level = SettingsStore::GetText(sw, std::string(S::kKeyProtocolLevel));
  if (!level.empty()) {
    const int v = std::atoi(level.c_str());
    if (v >= 1 && v <= 6) s.protocolLevel = v;
  }
  s.musicBrainz = SettingsStore::GetBool(sw, std::string(S::kKeyMusicBrainz), false);
  return s;
}

}  // namespace

DiscLookupResult SystemScanSources::Lookup(const DiscToc& toc, const LookupRequest& request,
                                           std::stop_token stop,
                                           const DiscLookup::StatusFn& status) {
  FreeDbSettings settings = StoredFreeDbSettings();
  settings.match = request.match;
  if (!request.online) {
    settings.useUrl = false;
    settings.musicBrainz = false;
  }
  return DiscLookup::Run(settings, toc, DefaultHttpFetch(), std::move(stop), status);
}

std::vector<FreeDbSite> SystemScanSources::ServerSites(std::stop_token stop, std::string* error) {
  uFreeDb freeDb;
  freeDb.Configure(StoredFreeDbSettings());
  freeDb.SetHttpFetch(DefaultHttpFetch());
  if (!freeDb.GetServerSites(std::move(stop))) {
    *error = freeDb.errDesc();
    return {};
  }
  return freeDb.Sites();
}

bool SystemScanSources::LookupGoesOnline() {
  const FreeDbSettings s = StoredFreeDbSettings();
  return s.enabled && (s.useUrl || s.musicBrainz);
}

std::string SystemScanSources::LookupServer() {
  const FreeDbSettings s = StoredFreeDbSettings();
  return s.url.empty() ? std::string(FreeDbSettings::kDefaultServer) : s.url;
}

}  // namespace gorvan::ui
