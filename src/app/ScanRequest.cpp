#include "app/ScanRequest.h"

#include "scan/ScanChecks.h"

namespace gorvan {

Status ScanRequest::CheckPath(const std::string& path) { return ScanChecks::CheckPath(path); }

ScanProposal ScanRequest::Propose(const std::string& path) {
  ScanProposal p;
  p.volume = VolumeInfo::ForPath(path);
  p.facts = ScanVolume::From(p.volume);
  p.label = p.volume.label();
  p.discName = ScanChecks::DefaultDiscName(path, p.label, p.facts);
  return p;
}

Status ScanRequest::RescanDefaults(classData& data, bool keepName, bool keepNotes,
                                   bool keepCategory, ScanSettings* settings) {
  classCd old = data.CdCursor();
  if (Status s = data.FindCd(settings->previousDiscId, &old); !s.ok()) return s;
  if (!keepName) settings->discName = old.GetCdName();
  if (!keepNotes) settings->notes = old.GetCdNotes();
  if (!keepCategory) settings->categoryId = old.GetCdCategory();
  return data.ok() ? Status::OK() : data.status();
}

int32_t ScanRequest::ScannedBefore(classData& data, const ScanSettings& settings,
                                   const ScanVolume& facts) {
  return ScanChecks::FindScannedBefore(data, settings.path, settings.volumeLabel, facts);
}

}  // namespace gorvan
