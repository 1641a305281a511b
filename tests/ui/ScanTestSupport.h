#pragma once
// Helpers of the scan feature's tests: sources of places, drives, tables of
// contents and lookups that answer from the test's own values (no drive, no
// network), and a fixture that starts the main window with the scan commands
// registered.

#include <QDialog>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "catalog/Attributes.h"
#include "catalog/classData.h"
#include "ui/UiTestSupport.h"
#include "ui/scan/ScanFeature.h"
#include "ui/scan/ScanSources.h"

namespace gorvan::test {

class FakeScanSources final : public ui::ScanSources {
 public:
  // A folder's proposal: the label given, on a volume mounted at mount.
  void Volume(const std::string& path, const std::string& label, const std::string& mount,
              int driveType = kMediaFixed, uint32_t serial = 0x1234ABCD) {
    ScanProposal p;
    p.label = label;
    p.facts.mountPoint = mount;
    p.facts.driveType = driveType;
    p.facts.serial = serial;
    p.facts.freeBytes = 1e9;
    proposals[path] = p;
  }
  // An optical drive at device with a disc of label and table toc.
  void Drive(const std::string& device, const std::string& label, const DiscToc& toc) {
    drives.push_back({device, label});
    ScanProposal p;
    p.label = label;
    p.facts.mountPoint = device;
    p.facts.driveType = kMediaOptical;
    proposals[device] = p;
    tocs[device] = toc;
    places.push_back({device, label, kMediaOptical, -1, true});
  }

  std::vector<ui::ScanPlace> Places() override { return places; }
  ScanProposal Propose(const std::string& path) override {
    auto it = proposals.find(path);
    if (it != proposals.end()) return it->second;
    ScanProposal p;
    p.label = "(no label)";
    p.facts.mountPoint = "/";
    p.facts.serial = 0x1234ABCD;
    p.discName = path;
    return p;
  }
  bool Exists(const std::string& path) override {
    return tocs.count(path) > 0 || ScanRequest::CheckPath(path).ok();
  }
  std::vector<std::string> OpticalDrives() override {
    std::vector<std::string> out;
    for (const auto& d : drives) out.push_back(d.first);
    return out;
  }
  std::string DriveLabel(const std::string& device) override {
    for (const auto& d : drives) {
      if (d.first == device) return d.second;
    }
    return {};
  }
  void Eject(const std::string& device) override { ejected.push_back(device); }
  std::string PathOfDrive(const std::string& device) override {
    auto it = driveFolders.find(device);
    return it == driveFolders.end() ? device : it->second;
  }
  std::unique_ptr<cCdChanger> NewChanger(cCdChanger::CDROMChanged) override { return nullptr; }
  bool ReadToc(const std::string& device, std::stop_token, DiscToc* toc) override {
    auto it = tocs.find(device);
    if (it == tocs.end()) return false;
    *toc = it->second;
    return toc->AudioTrackCount() > 0;
  }
  DiscLookupResult Lookup(const DiscToc& toc, const ui::LookupRequest& request,
                          std::stop_token stop, const DiscLookup::StatusFn& status) override {
    const size_t match = request.match;
    matchesAsked.push_back(match);
    onlineAsked.push_back(request.online);
    // The server refused by the user: only the local folder is asked, which
    // knows nothing. (With `online` off, the fake stands for a local folder
    // that knows the disc.)
    if (online && !request.online) return DiscLookupResult{};
    if (offline) {
      DiscLookupResult r;
      r.errors.emplace_back(8882, "Could not resolve host: freedb.example");
      return r;
    }
    if (status) {
      status("Querying Local FreeDb Database");
      status("Contacting " + LookupServer() + " Server");
    }
    if (hang) {
      // A server that never answers: only the stop ends the wait.
      std::mutex m;
      std::condition_variable_any cv;
      std::unique_lock lock(m);
      cv.wait(lock, stop, [] { return false; });
      DiscLookupResult r;
      r.cancelled = true;
      return r;
    }
    DiscLookupResult r;
    r.found = found.has_value();
    if (found) r.info = *found;
    if (found && !others.empty()) {
      // Several matches: the first is found, the others are read by number.
      r.matches.push_back({found->category, found->discId, found->artist + " / " + found->album});
      for (const DiscInfo& o : others) {
        r.matches.push_back({o.category, o.discId, o.artist + " / " + o.album});
      }
      if (match > 0) r.info = others[std::min(match, others.size()) - 1];
    }
    r.info.albumSeconds = toc.AlbumSeconds();
    return r;
  }
  std::string LookupServer() override { return "freedb.example"; }
  bool LookupGoesOnline() override { return online; }
  std::vector<FreeDbSite> ServerSites(std::stop_token, std::string* error) override {
    if (sites.empty()) *error = "500 Command unimplemented";
    return sites;
  }

  std::vector<ui::ScanPlace> places;
  std::map<std::string, ScanProposal> proposals;
  std::vector<std::pair<std::string, std::string>> drives;
  std::map<std::string, DiscToc> tocs;
  std::map<std::string, std::string> driveFolders;
  std::vector<std::string> ejected;
  std::optional<DiscInfo> found;
  std::vector<FreeDbSite> sites;
  std::vector<DiscInfo> others;      // further FreeDB matches after `found`
  std::vector<size_t> matchesAsked;  // the match number of each lookup
  std::vector<bool> onlineAsked;     // whether each lookup could ask a server
  bool online = false;               // the settings let a lookup ask a server
  std::atomic<bool> offline{false};  // the server cannot be reached
  std::atomic<bool> hang{false};
};

// What a disc holds: its folders ("parent\\name") with their notes, and its
// files by name with their notes, in chain order.
struct DiscContents {
  std::vector<std::pair<std::string, std::string>> folders;
  std::vector<std::pair<std::string, std::string>> files;
};
inline DiscContents ContentsOf(classData& data, int32_t discId) {
  DiscContents out;
  classCd cd = data.CdCursor();
  if (!data.FindCd(discId, &cd).ok()) return out;
  for (classDir* dir = &cd.GetDirFirst(); !cd.GetDirEof(); dir = &cd.GetDirNext()) {
    out.folders.push_back({dir->GetDirPath() + "\\" + dir->GetDirName(), dir->GetDirNotes()});
    for (ClassFile* f = &dir->GetFileFirst(); !dir->GetFileEof(); f = &dir->GetFileNext()) {
      out.files.push_back({f->GetFileName(), f->GetFileNotes()});
    }
  }
  return out;
}

// The main window with the scan commands and fake sources.
class ScanTest : public UiTest {
 protected:
  ScanTest() : sources(std::make_shared<FakeScanSources>()) {
    ui::ScanSources::SetCurrent(sources);
    ui::ScanFeature::Register(hooks);
  }
  ~ScanTest() override {
    for (QWidget* w : QApplication::topLevelWidgets()) {
      if (auto* d = qobject_cast<QDialog*>(w)) d->close();
    }
    ui::ScanSources::SetCurrent(nullptr);
  }

  std::shared_ptr<FakeScanSources> sources;
};

}  // namespace gorvan::test
