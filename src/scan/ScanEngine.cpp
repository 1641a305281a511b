#include "scan/ScanEngine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "catalog/ExtraData.h"
#include "catalog/IconKeys.h"
#include "catalog/OleDate.h"
#include "catalog/TextUtil.h"
#include "scan/ArchiveLister.h"
#include "scan/AutorunIcon.h"
#include "scan/DirReader.h"
#include "scan/RescanNotes.h"
#include "scan/ScanChecks.h"
#include "scan/ScanPath.h"
#include "scan/VolumeInfo.h"

namespace gorvan {

namespace {

// The date a catalog record holds when none is known (an archive member
// without a time), as for any record just appended.
constexpr double kUnknownDate = 2.0;

}  // namespace

ScanEngine::ScanEngine(classData& data) : data_(data) {}
ScanEngine::~ScanEngine() = default;

void ScanEngine::SetVars(ScanSettings& settings) {
  settings_ = settings;
  includeList_ = settings.includeText + ";";
  excludeList_ = settings.excludeText + ";";
  rescan_ = false;
  // The caller's texts are cleaned only now: this scan keeps the lists as typed.
  CleanPatternText(&settings.includeText);
  CleanPatternText(&settings.excludeText);
}

void ScanEngine::SetVolume(const ScanVolume& volume) {
  volume_ = volume;
  volumeSet_ = true;
}

void ScanEngine::SetAudio(std::vector<AudioTrack> tracks, AudioValues values) {
  tracks_ = std::move(tracks);
  audio_ = std::move(values);
}

int32_t ScanEngine::AttributesOf(const struct stat& st, std::string_view name) {
  int32_t attr = 0;
  if (!name.empty() && name.front() == '.') attr |= kAttrHidden;
  if (S_ISLNK(st.st_mode)) return attr | kAttrReparsePoint;
  if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) attr |= kAttrReadOnly;
  if (S_ISDIR(st.st_mode)) attr |= kAttrDirectory;
  if (S_ISREG(st.st_mode)) attr |= kAttrArchive;
  return attr;
}

int32_t ScanEngine::ScanCd(JobControl& job) {
  // The catalog is this thread's for the scan's length.
  classData::ThreadHandover handover(data_);
  job_ = &job;
  status_ = Status::OK();
  totals_ = ScanTotals{};
  warnings_ = 0;
  warningTexts_.clear();
  progress_ = JobProgress{};
  newDiscId_ = 0;
  if (job.StopRequested()) {
    status_ = Status::Cancelled();
    return 0;
  }
  Progress({}, true);
  if (settings_.scanMode == kMediaAudioCd) {
    ScanAudioDisc();
  } else {
    ScanDataDisc();
  }
  // A step that failed on the catalog may have returned before noting it.
  Failed();
  notes_.reset();
  cd_.reset();
  progress_.warnings = static_cast<int64_t>(warnings_);
  job.Final(progress_);
  job_ = nullptr;
  if (job.StopRequested() && status_.ok()) status_ = Status::Cancelled();
  return status_.ok() ? newDiscId_ : 0;
}

bool ScanEngine::Failed() {
  if (!status_.ok()) return true;
  if (data_.ok()) return false;
  status_ = data_.status();
  if (status_.ok()) status_ = Status::IOError("the catalog could not be written");
  return true;
}

void ScanEngine::Warn(std::string_view path, std::string_view reason) {
  ++warnings_;
  if (warningTexts_.size() < kMaxWarningTexts) {
    std::string text(path);
    text += ": ";
    text += reason;
    warningTexts_.push_back(std::move(text));
  }
}

void ScanEngine::Progress(std::string_view name, bool now) {
  if (!now && !job_->Due()) return;
  progress_.caption = native_;
  progress_.detail = name;
  progress_.warnings = static_cast<int64_t>(warnings_);
  job_->Report(progress_);
}

bool ScanEngine::BeginDisc() {
  if (settings_.previousDiscId > 0) {
    notes_ = std::make_unique<RescanNotes>(data_.file());
    if (!notes_->Start(settings_.previousDiscId)) {
      if (!Failed()) {
        status_ = Status::InvalidArgument("There is no disc " +
                                          std::to_string(settings_.previousDiscId));
      }
      return false;
    }
  }
  cd_ = std::make_unique<classCd>(data_.file());
  if (!data_.GetCdAppend(*cd_) || Failed()) {
    if (status_.ok()) status_ = Status::IOError("the catalog could not be written");
    return false;
  }
  classCd& cd = *cd_;
  newDiscId_ = cd.GetCdId();
  if (!notes_) {
    cd.setCdLastScanned(OleDateNow());
    return !Failed();
  }
  // A rescan starts from the previous disc's values; its folders are read
  // forward from the first while the new tree is written.
  const classCd& old = notes_->disc();
  CopyDiscValues(old.record(), &cd.record());
  cd.SetCdName(old.GetCdName());
  cd.SetCdNotes(old.GetCdNotes());
  cd.SetCdLabel(old.GetCdLabel());
  cd.SetCdBasepath(old.GetCdBasepath());
  cd.SetCdExtra(old.GetCdExtra());
  cd.setCdIconKey(old.GetCdStoredIconKey());
  cd.RecordUpdate();
  rescan_ = true;
  return !Failed();
}

void ScanEngine::EndDisc(bool audio, const std::string& basePath, const std::string& iconKey,
                         int32_t mediaType, const std::string& extra) {
  classCd& cd = *cd_;
  if (!cd.GetDirAppendFinish() || Failed()) return;
  if (job_->StopRequested()) {
    // A cancelled scan keeps its disc as it was appended: linked, without totals.
    if (!data_.GetCdCommit(cd)) Failed();
    return;
  }
  // Texts are written only when they change, so a fresh scan leaves no garbage.
  auto text = [](const std::string& now, const std::string& value, auto set) {
    if (now != value) set(value);
  };
  text(cd.GetCdName(), audio ? audio_.album : settings_.discName,
       [&](auto& v) { cd.SetCdName(v); });
  text(cd.GetCdNotes(), settings_.notes, [&](auto& v) { cd.SetCdNotes(v); });
  text(cd.GetCdLabel(), settings_.volumeLabel, [&](auto& v) { cd.SetCdLabel(v); });
  text(cd.GetCdBasepath(), basePath, [&](auto& v) { cd.SetCdBasepath(v); });
  text(cd.GetCdExtra(), extra, [&](auto& v) { cd.SetCdExtra(v); });
  text(cd.GetCdStoredIconKey(), iconKey, [&](auto& v) { cd.setCdIconKey(v); });
  CdRecord& r = cd.record();
  r.totalSize = totals_.bytes;
  r.freeSpace = volume_.freeBytes;
  r.diskId = static_cast<int32_t>(volume_.serial);
  r.numOfSubdirs = totals_.dirs;
  r.numOfFiles = totals_.files;
  r.lastScanned = OleDateNow();
  r.mediaType = mediaType;
  r.category = settings_.categoryId;
  if (!cd.RecordUpdate() || Failed()) return;
  if (!data_.GetCdCommit(cd) || Failed()) return;
  if (rescan_ && !data_.GetCdDelete(settings_.previousDiscId)) Failed();
}

std::string ScanEngine::DiscIconKey(const std::string& root, int32_t* mediaType) const {
  *mediaType = volume_.driveType;
  if (volume_.driveType == kMediaOptical) {
    if (EqualsIgnoreCase(settings_.volumeLabel, "audio cd")) {
      *mediaType += 100;
      return kAudioIconKey;
    }
    std::string key = AutorunIconKey(root);
    if (!key.empty()) return key;
  }
  return std::string(IconKeys::ForMediaType(classCd::TypeExt(volume_.driveType)));
}

void ScanEngine::ScanDataDisc() {
  const std::string root = ScanPath::Normalise(settings_.path);
  if (root.empty() || !ScanPath::FolderExists(root)) {
    status_ = Status::NotFound(ScanChecks::kPathMissing);
    return;
  }
  if (!volumeSet_) volume_ = ScanVolume::ForPath(root);
  filter_.SetLists(includeList_, excludeList_);
  if (!BeginDisc()) return;

  int32_t mediaType = 0;
  const std::string iconKey = DiscIconKey(root, &mediaType);

  std::string parent, name;
  ScanPath::FolderTexts(volume_.mountPoint, root, &parent, &name);
  struct stat st;
  int32_t attr = kAttrDirectory;
  double date = 0;
  if (::stat(root.c_str(), &st) == 0) {
    attr = AttributesOf(st, name);
    date = dates_.DateOf(st.st_mtime);
    rootDevice_ = st.st_dev;
  }
  rel_ = parent == "\\" ? std::string() : parent;
  native_.clear();
  dirBuffer_.resize(DirReader::kBufferSize);
  pending_.clear();
  pendingNames_.clear();
  // The root's children get their parent path from the root's own path below.
  totals_ = ScanFolder(AT_FDCWD, root.c_str(), name, attr, date, false);
  if (Failed()) return;
  EndDisc(false, root, iconKey, mediaType, std::string());
}

void ScanEngine::ScanAudioDisc() {
  if (!volumeSet_ && ScanPath::FolderExists(settings_.path)) {
    volume_ = ScanVolume::ForPath(settings_.path);
  }
  if (!BeginDisc()) return;
  int32_t n = 0;
  if (!WriteAudioTracks(*cd_, tracks_, *job_, &n) || Failed()) return;
  totals_ = ScanTotals{0, n, 0.0};
  progress_.files = n;
  EndDisc(true, settings_.path, kAudioIconKey, volume_.driveType + 100, AudioDiscExtra(audio_));
}

ScanTotals ScanEngine::ScanFolder(int parentFd, const char* openName, std::string_view name,
                                  int32_t attr, double date, bool otherVolume) {
  ScanTotals t;
  const size_t relMark = rel_.size();
  const size_t nativeMark = native_.size();
  const std::string parentPath = rel_.empty() ? std::string("\\") : rel_;
  std::string notes;
  if (rescan_) notes = notes_->FolderNotes(parentPath, name);

  classDir& dir = cd_->GetDirAppend();
  if (Failed()) return t;
  const int32_t dirId = dir.GetDirId();
  dir.record().attr = attr;
  dir.record().date = date;
  dir.record().size = -1.0;
  if (!name.empty()) dir.SetDirName(std::string(name));
  dir.SetDirPath(parentPath);
  if (!notes.empty()) dir.SetDirNotes(notes);
  if (Failed()) return t;
  ++progress_.folders;

  if (!name.empty()) {
    if (!rel_.empty()) rel_.push_back('\\');
    rel_.append(name);
  }
  if (parentFd == AT_FDCWD) {
    native_ = openName;
  } else {
    if (native_ != "/") native_.push_back('/');
    native_.append(name);
  }
  Progress({});

  int32_t direct = 0;
  if (!otherVolume) {
    const int fd = DirReader::OpenFolder(parentFd, openName);
    if (fd < 0) {
      Warn(native_, fd == -EMFILE ? "too many folders open at once (raise the open-file limit)"
                                  : std::strerror(-fd));
    } else {
      const size_t pendingMark = pending_.size();
      const size_t namesMark = pendingNames_.size();
      t = ScanFiles(dir, fd);
      direct = t.files;
      std::string child;
      for (size_t i = pendingMark; i < pending_.size() && !Stop(); ++i) {
        const Pending p = pending_[i];
        child.assign(pendingNames_, p.nameAt, p.nameLen);
        const ScanTotals c = ScanFolder(fd, child.c_str(), child, p.attr, p.date, p.otherVolume);
        t.dirs += c.dirs + 1;
        t.files += c.files;
        t.bytes += c.bytes;
      }
      pending_.resize(pendingMark);
      pendingNames_.resize(namesMark);
      ::close(fd);
    }
  }
  rel_.resize(relMark);
  native_.resize(nativeMark);
  if (Failed()) return t;

  DirRecord r;
  if (!data_.file()->Read(dirId, &r)) return Failed(), t;
  r.size = -t.bytes;
  r.countOfFiles = t.files;
  r.countOfDirs = t.dirs;
  r.countOfFilesDirect = direct;
  if (!data_.file()->Write(r)) Failed();
  // The folder cursor may still hold this record; keep it in step.
  if (dir.GetDirId() == dirId) dir.record() = r;
  return t;
}

ScanTotals ScanEngine::ScanFiles(classDir& dir, int fd) {
  ScanTotals t;
  dir.GetFileAppendStart();
  DirReader reader(fd, dirBuffer_.data(), dirBuffer_.size());
  DirReader::Entry e;
  int got;
  struct stat st;
  while ((got = reader.Next(&e)) > 0) {
    ++progress_.value;
    if (Stop()) break;
    const std::string_view name = e.name;
    if (name.empty()) continue;
    if (name.front() == '.' &&
        (!settings_.includeHidden || name == "." || name == "..")) {
      continue;
    }
    if (::fstatat(fd, name.data(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
      const int err = errno;
      std::string path = native_ + "/";
      path.append(name);
      Warn(path, err == ENOENT ? "vanished during the scan" : std::strerror(err));
      continue;
    }
    if (S_ISDIR(st.st_mode)) {
      // Read to the end first: each folder is read once, files before subfolders.
      pending_.push_back(Pending{pendingNames_.size(), name.size(), AttributesOf(st, name),
                                 dates_.DateOf(st.st_mtime),
                                 static_cast<unsigned long long>(st.st_dev) != rootDevice_});
      pendingNames_.append(name);
      continue;
    }
    ScanFile(dir, fd, name, st, &t);
    if (!status_.ok()) break;
    Progress(name);
  }
  if (got < 0) Warn(native_, std::strerror(-got));
  dir.GetFileAppendFinish();
  return t;
}

void ScanEngine::ScanFile(classDir& dir, int fd, std::string_view name, const struct stat& st,
                          ScanTotals* t) {
  const double size = static_cast<double>(st.st_size);
  t->files += 1;
  t->bytes += size;
  ++progress_.files;
  progress_.bytes += size;
  const std::string& notes = rescan_ ? notes_->FileNotes(name) : noNotes_;
  if (settings_.directoriesOnly || !filter_.Keep(name)) return;

  FileRecord r;
  r.size = size;
  r.date = dates_.DateOf(st.st_mtime);
  r.attr = AttributesOf(st, name);
  const bool regular = S_ISREG(st.st_mode);
  const std::string_view ext = regular ? ExtensionFilter::Extension(name) : std::string_view();
  const bool archive = regular && settings_.scanZip &&
                       (EqualsIgnoreCase(ext, "zip") || ArchiveLister::IsArchiveName(name));
  std::string_view extra;
  if (regular && !archive && settings_.scanMp3 && EqualsIgnoreCase(ext, "mp3")) {
    extra = ReadMp3Tags(EntryPath(fd, name));
  }
  // One write of the record with all its texts.
  ClassFile& f = dir.files();
  if (f.AppendFile(r, {.name = name, .notes = notes, .extra = extra}) == 0) return void(Failed());
  if (archive) ReadZipMembers(EntryPath(fd, name), f);
}

std::string ScanEngine::EntryPath(int fd, std::string_view name) const {
  // A path too long for the system calls is reached through the folder's
  // descriptor instead.
  if (native_.size() + 1 + name.size() < PATH_MAX) {
    std::string path = native_;
    if (path != "/") path.push_back('/');
    path.append(name);
    return path;
  }
  std::string path = "/proc/self/fd/" + std::to_string(fd) + "/";
  path.append(name);
  return path;
}

std::string_view ScanEngine::ReadMp3Tags(const std::string& path) {
  mp3Extra_.clear();
  if (!id3_.Load(path)) return {};
  if (!id3_.Album().empty()) mp3Extra_ = SetExtraValue(mp3Extra_, kExtraMp3Album, id3_.Album());
  if (!id3_.Artist().empty()) mp3Extra_ = SetExtraValue(mp3Extra_, kExtraMp3Artist, id3_.Artist());
  if (!id3_.Title().empty()) mp3Extra_ = SetExtraValue(mp3Extra_, kExtraMp3Title, id3_.Title());
  if (!id3_.Year().empty()) mp3Extra_ = SetExtraValue(mp3Extra_, kExtraMp3Year, id3_.Year());
  if (!id3_.Comment().empty()) {
    mp3Extra_ = SetExtraValue(mp3Extra_, kExtraMp3Comment, id3_.Comment());
  }
  return mp3Extra_;
}

void ScanEngine::ReadZipMembers(const std::string& path, ClassFile& file) {
  file.GetZipAppendStart();
  bool encrypted = false;
  std::string packed;
  const Status s = ArchiveLister::List(path, [&](const ArchiveMember& m) {
    ClassFile& members = file.GetZipMembers();
    FileRecord r;
    r.size = m.size >= 0 ? static_cast<double>(m.size) : 0.0;
    r.date = m.hasTime ? dates_.DateOf(m.mtime) : kUnknownDate;
    r.attr = static_cast<int32_t>(m.attributes) | (m.encrypted ? kAttrEncrypted : 0);
    encrypted = encrypted || m.encrypted;
    packed.clear();
    if (m.packedSize >= 0) packed = std::string(kPackedSizeKey) + std::to_string(m.packedSize);
    if (members.AppendFile(r, {.name = m.name, .path = m.path, .extra = packed}) == 0) {
      Failed();
      return false;
    }
    return !Stop();
  });
  if (!file.GetZipAppendFinish() || Failed()) return;
  if (!s.ok() && !s.IsCancelled()) {
    Warn(path, "archive not fully listed: " + s.message());
  } else if (encrypted) {
    Warn(path, "archive holds encrypted members");
  }
}

}  // namespace gorvan
