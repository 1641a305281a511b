#include "scan/AudioDisc.h"

#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"

namespace gorvan {

std::string AudioDiscExtra(const AudioValues& v) {
  std::string extra = SetExtraValue("", kExtraAudioAlbum, v.album);
  extra = SetExtraValue(extra, kExtraAudioArtist, v.artist);
  extra = SetExtraValue(extra, kExtraAudioCategory, v.category);
  extra = SetExtraValue(extra, kExtraAudioTime, v.time);
  return SetExtraValue(extra, kExtraAudioYear, v.year);
}

bool WriteAudioTracks(classCd& cd, const std::vector<AudioTrack>& tracks, JobControl& job,
                      int32_t* written) {
  *written = 0;
  CatalogFile& file = *cd.dirs().file();
  const double now = OleDateNow();
  classDir& root = cd.GetDirAppend();
  if (!file.ok()) return false;
  root.record().date = now;
  root.record().size = -1.0;
  root.SetDirPath("\\");
  const int32_t rootId = root.GetDirId();
  root.GetFileAppendStart();
  JobProgress progress;
  int32_t n = 0;
  for (const AudioTrack& track : tracks) {
    if (job.StopRequested()) break;
    ++n;
    std::string extra = SetExtraValue("", kExtraTrackLength, track.length);
    extra = SetExtraValue(extra, kExtraTrackNumber, std::to_string(n));
    ClassFile& f = root.GetFileAppend();
    if (!file.ok()) return false;
    f.record().size = 0;
    f.record().date = now;
    f.SetFileName(track.title);
    f.SetFileExtra(extra);
    progress.files = n;
    if (job.Due()) {
      progress.detail = track.title;
      job.Report(progress);
    }
  }
  if (!root.GetFileAppendFinish() || !file.ok()) return false;
  DirRecord r;
  if (!file.Read(rootId, &r)) return false;
  r.size = -0.0;
  r.countOfFiles = n;
  r.countOfDirs = 0;
  r.countOfFilesDirect = n;
  if (!file.Write(r)) return false;
  *written = n;
  return true;
}

}  // namespace gorvan
