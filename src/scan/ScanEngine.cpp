#include "scan/ScanEngine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

#include "catalog/ExtraData.h"
#include "catalog/IconKeys.h"
#include "catalog/OleDate.h"
#include "scan/ArchiveLister.h"
#include "scan/DirReader.h"
#include "scan/ScanChecks.h"
#include "scan/ScanPath.h"
#include "scan/VolumeInfo.h"

namespace gorvan {

namespace {

// The date a catalog record holds when none is known (an archive member
// without a time), as for any record just appended.
constexpr double kUnknownDate = 2.0;

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

void LowerInto(std::string_view in, std::string* out) {
  out->resize(in.size());
  for (size_t i = 0; i < in.size(); ++i) (*out)[i] = Lower(in[i]);
}

// The extension as the filter and the archive/MP3 tests see it: the text after
// the last ".", "" when there is none or it is the last character.
std::string_view Extension(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot + 1 == name.size()) return {};
  return name.substr(dot + 1);
}

// The filter on an already lower-cased list; *needle is scratch space.
int MatchLowered(std::string_view name, std::string_view lowerList, std::string* needle) {
  if (lowerList.find("*.*;") != std::string_view::npos) return 1;
  const std::string_view ext = Extension(name);
  needle->assign("*.");
  const size_t at = needle->size();
  needle->resize(at + ext.size());
  for (size_t i = 0; i < ext.size(); ++i) (*needle)[at + i] = Lower(ext[i]);
  needle->push_back(';');
  return lowerList.find(*needle) != std::string_view::npos ? 0 : 2;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

std::string Trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return std::string(s);
}

// The "icon" line of the autorun.inf at a disc's root as an icon key: "f_"
// followed by the icon file and its index ("f_setup.ico,0"). "" when there is
// no such file or line. The file name is matched ignoring case, as the disc's
// own system would.
std::string AutorunIconKey(const std::string& root) {
  std::string name;
  if (int fd = DirReader::OpenFolder(AT_FDCWD, root.c_str()); fd >= 0) {
    std::vector<char> buf(DirReader::kBufferSize);
    DirReader reader(fd, buf.data(), buf.size());
    DirReader::Entry e;
    while (reader.Next(&e) > 0) {
      if (EqualsIgnoreCase(e.name, "autorun.inf")) {
        name.assign(e.name);
        break;
      }
    }
    ::close(fd);
  }
  if (name.empty()) return {};
  std::string text;
  if (int fd = ::open((root + "/" + name).c_str(), O_RDONLY | O_CLOEXEC); fd >= 0) {
    char buf[4096];
    ssize_t got;
    while (text.size() < 64 * 1024 && (got = ::read(fd, buf, sizeof buf)) > 0) text.append(buf, got);
    ::close(fd);
  }
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string line = Trim(std::string_view(text).substr(start, end - start));
    start = end + 1;
    const size_t eq = line.find('=');
    if (eq == std::string::npos || !EqualsIgnoreCase(Trim(line.substr(0, eq)), "icon")) continue;
    std::string value = Trim(line.substr(eq + 1));
    if (value.empty()) continue;
    std::string file = value, index = "0";
    if (const size_t comma = value.find(','); comma != std::string::npos) {
      file = Trim(value.substr(0, comma));
      index = Trim(value.substr(comma + 1));
      if (index.empty()) index = "0";
    }
    return "f_" + file + "," + index;
  }
  return {};
}

}  // namespace

ScanVolume ScanVolume::ForPath(const std::string& path) {
  return From(VolumeInfo::ForPath(path));
}

ScanVolume ScanVolume::From(const VolumeInfo& info) {
  ScanVolume v;
  if (!info.mountPoint().empty()) v.mountPoint = info.mountPoint();
  v.serial = info.serial();
  v.freeBytes = static_cast<double>(info.freeBytes());
  v.driveType = info.driveType();
  return v;
}

ScanEngine::ScanEngine(classData& data) : data_(data) {}
ScanEngine::~ScanEngine() = default;

void ScanEngine::SetVars(int32_t previousDiscId, const std::string& path,
                         const std::string& discName, const std::string& notes,
                         const std::string& volumeLabel, int32_t categoryId,
                         std::string& includeText, std::string& excludeText, bool scanZip,
                         bool scanMp3, bool directoriesOnly, int32_t scanMode) {
  previousDiscId_ = previousDiscId;
  path_ = path;
  discName_ = discName;
  notes_ = notes;
  volumeLabel_ = volumeLabel;
  categoryId_ = categoryId;
  includeList_ = includeText + ";";
  excludeList_ = excludeText + ";";
  scanZip_ = scanZip;
  scanMp3_ = scanMp3;
  directoriesOnly_ = directoriesOnly;
  scanMode_ = scanMode;
  cancel_.store(false);
  rescan_ = false;
  // The caller's texts are cleaned only now: this scan keeps the lists as typed.
  for (std::string* text : {&includeText, &excludeText}) {
    for (size_t at; (at = text->find(" ;")) != std::string::npos;) text->erase(at, 1);
  }
}

void ScanEngine::SetVolume(const ScanVolume& volume) {
  volume_ = volume;
  volumeSet_ = true;
}

void ScanEngine::SetAudio(std::vector<AudioTrack> tracks, AudioValues values) {
  tracks_ = std::move(tracks);
  audio_ = std::move(values);
}

int ScanEngine::MatchExtList(std::string_view name, std::string_view list) {
  std::string lower, needle;
  LowerInto(list, &lower);
  return MatchLowered(name, lower, &needle);
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

int32_t ScanEngine::ScanCd() {
  running_ = true;
  status_ = Status::OK();
  totals_ = ScanTotals{};
  warnings_ = 0;
  warningTexts_.clear();
  progressState_ = ScanProgress{};
  newDiscId_ = 0;
  RefreshProgress({});
  if (scanMode_ == kAudioScanMode) {
    ScanAudioDisc();
  } else {
    ScanDataDisc();
  }
  // A step that failed on the catalog may have returned before noting it.
  Failed();
  old_.reset();
  cd_ = nullptr;
  running_ = false;
  RefreshProgress({});
  if (CancelRequested() && status_.ok()) status_ = Status::Cancelled();
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

void ScanEngine::RefreshProgress(std::string_view name) {
  if (!progress_) return;
  progressState_.folder = native_;
  progressState_.name = name;
  progressState_.warnings = warnings_;
  progress_(progressState_);
}

double ScanEngine::DateOf(int64_t seconds) {
  // localtime_r for every entry would dominate a scan's time. The offset from
  // UTC is constant within a quarter of an hour whenever it is the same at the
  // quarter's first and last second (zones change offset at most once there),
  // so it is looked up once per quarter and reused.
  if (seconds == dateCacheSecond_) return dateCacheValue_;
  const int64_t bucket = seconds >= 0 ? seconds / 900 : (seconds - 899) / 900;
  if (bucket != dateCacheBucket_) {
    std::tm a{}, b{};
    const std::time_t first = static_cast<std::time_t>(bucket * 900);
    const std::time_t last = first + 899;
    if (!localtime_r(&first, &a) || !localtime_r(&last, &b) || a.tm_gmtoff != b.tm_gmtoff) {
      return OleDateFromTime(static_cast<std::time_t>(seconds));
    }
    dateCacheBucket_ = bucket;
    dateCacheOffset_ = a.tm_gmtoff;
  }
  const int64_t local = seconds + dateCacheOffset_;
  const int64_t days = local >= 0 ? local / 86400 : (local - 86399) / 86400;
  const int64_t secs = local - days * 86400;
  dateCacheSecond_ = seconds;
  // 25569 is the OLE date of 1 January 1970.
  dateCacheValue_ = static_cast<double>(days + 25569) + static_cast<double>(secs) / 86400.0;
  return dateCacheValue_;
}

bool ScanEngine::BeginDisc() {
  std::unique_ptr<classCd> old;
  if (previousDiscId_ > 0) {
    old = std::make_unique<classCd>(data_.file());
    if (!old->recordGet(previousDiscId_)) {
      if (!Failed()) {
        status_ = Status::InvalidArgument("There is no disc " + std::to_string(previousDiscId_));
      }
      return false;
    }
  }
  classCd& cd = data_.GetCdAppend();
  if (Failed()) return false;
  if (cd.GetCdId() == 0) {
    status_ = Status::IOError("the catalog could not be written");
    return false;
  }
  cd_ = &cd;
  newDiscId_ = cd.GetCdId();
  if (!old) {
    cd.setCdLastScanned(OleDateNow());
    return !Failed();
  }
  // A rescan starts from the previous disc's values; its folders are read
  // forward from the first while the new tree is written.
  CopyDiscValues(old->record(), &cd.record());
  cd.SetCdName(old->GetCdName());
  cd.SetCdNotes(old->GetCdNotes());
  cd.SetCdLabel(old->GetCdLabel());
  cd.SetCdBasepath(old->GetCdBasepath());
  cd.SetCdExtra(old->GetCdExtra());
  cd.setCdIconKey(old->GetCdStoredIconKey());
  cd.RecordUpdate();
  old_ = std::move(old);
  old_->GetDirFirst();
  oldFilesValid_ = false;
  rescan_ = true;
  return !Failed();
}

void ScanEngine::EndDisc(bool audio, const std::string& basePath, const std::string& iconKey,
                         int32_t mediaType, const std::string& extra) {
  classCd& cd = *cd_;
  if (!cd.GetDirAppendFinish() || Failed()) return;
  if (CancelRequested()) {
    // A cancelled scan keeps its disc as it was appended: linked, without totals.
    if (!data_.GetCdCommit()) Failed();
    return;
  }
  // Texts are written only when they change, so a fresh scan leaves no garbage.
  auto text = [](const std::string& now, const std::string& value, auto set) {
    if (now != value) set(value);
  };
  text(cd.GetCdName(), audio ? audio_.album : discName_, [&](auto& v) { cd.SetCdName(v); });
  text(cd.GetCdNotes(), notes_, [&](auto& v) { cd.SetCdNotes(v); });
  text(cd.GetCdLabel(), volumeLabel_, [&](auto& v) { cd.SetCdLabel(v); });
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
  r.category = categoryId_;
  if (!cd.RecordUpdate() || Failed()) return;
  if (!data_.GetCdCommit() || Failed()) return;
  if (rescan_ && !data_.GetCdDelete(previousDiscId_)) Failed();
}

std::string ScanEngine::DiscIconKey(const std::string& root, int32_t* mediaType) const {
  *mediaType = volume_.driveType;
  if (volume_.driveType == VolumeInfo::kDriveOptical) {
    if (EqualsIgnoreCase(volumeLabel_, "audio cd")) {
      *mediaType += 100;
      return kAudioIconKey;
    }
    std::string key = AutorunIconKey(root);
    if (!key.empty()) return key;
  }
  return std::string(IconKeys::ForMediaType(classCd::TypeExt(volume_.driveType)));
}

void ScanEngine::ScanDataDisc() {
  const std::string root = ScanPath::Normalise(path_);
  if (root.empty() || !ScanPath::FolderExists(root)) {
    status_ = Status::NotFound(ScanChecks::kPathMissing);
    return;
  }
  if (!volumeSet_) volume_ = ScanVolume::ForPath(root);
  LowerInto(includeList_, &includeLower_);
  LowerInto(excludeList_, &excludeLower_);
  includeAll_ = includeLower_.find("*.*;") != std::string::npos;
  excludeAll_ = excludeLower_.find("*.*;") != std::string::npos;
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
    date = DateOf(st.st_mtime);
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
  if (!volumeSet_ && ScanPath::FolderExists(path_)) volume_ = ScanVolume::ForPath(path_);
  if (!BeginDisc()) return;
  const double now = OleDateNow();
  classDir& root = cd_->GetDirAppend();
  if (Failed()) return;
  root.record().date = now;
  root.record().size = -1.0;
  root.SetDirPath("\\");
  const int32_t rootId = root.GetDirId();
  root.GetFileAppendStart();
  int32_t n = 0;
  for (const AudioTrack& track : tracks_) {
    if (Stop()) break;
    ++n;
    std::string extra = SetExtraValue("", kExtraTrackLength, track.length);
    extra = SetExtraValue(extra, kExtraTrackNumber, std::to_string(n));
    ClassFile& f = root.GetFileAppend();
    if (Failed()) return;
    f.record().size = 0;
    f.record().date = now;
    f.SetFileName(track.title);
    f.SetFileExtra(extra);
    progressState_.files = n;
    RefreshProgress(track.title);
  }
  if (!root.GetFileAppendFinish() || Failed()) return;
  DirRecord r;
  if (!data_.file()->Read(rootId, &r)) return void(Failed());
  r.size = -0.0;
  r.countOfFiles = n;
  r.countOfDirs = 0;
  r.countOfFilesDirect = n;
  if (!data_.file()->Write(r) || Failed()) return;
  totals_ = ScanTotals{0, n, 0.0};

  std::string extra = SetExtraValue("", kExtraAudioAlbum, audio_.album);
  extra = SetExtraValue(extra, kExtraAudioArtist, audio_.artist);
  extra = SetExtraValue(extra, kExtraAudioCategory, audio_.category);
  extra = SetExtraValue(extra, kExtraAudioTime, audio_.time);
  extra = SetExtraValue(extra, kExtraAudioYear, audio_.year);
  EndDisc(true, path_, kAudioIconKey, volume_.driveType + 100, extra);
}

ScanTotals ScanEngine::ScanFolder(int parentFd, const char* openName, std::string_view name,
                                  int32_t attr, double date, bool otherVolume) {
  ScanTotals t;
  const size_t relMark = rel_.size();
  const size_t nativeMark = native_.size();
  const std::string parentPath = rel_.empty() ? std::string("\\") : rel_;
  std::string notes;
  if (rescan_) notes = FindOldDirNotes(parentPath, name);

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
  ++progressState_.folders;

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
  RefreshProgress({});

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
    ++progressState_.entries;
    if (Stop()) break;
    const std::string_view name = e.name;
    if (name.empty()) continue;
    if (name.front() == '.' &&
        (!includeHidden_ || name == "." || name == "..")) {
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
                                 DateOf(st.st_mtime),
                                 static_cast<unsigned long long>(st.st_dev) != rootDevice_});
      pendingNames_.append(name);
      continue;
    }
    ScanFile(dir, fd, name, st, &t);
    if (!status_.ok()) break;
    RefreshProgress(name);
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
  ++progressState_.files;
  progressState_.bytes += size;
  const std::string& notes = rescan_ ? FindOldFileNotes(name) : oldNotes_;
  if (directoriesOnly_ || !Kept(name)) return;

  FileRecord r;
  r.size = size;
  r.date = DateOf(st.st_mtime);
  r.attr = AttributesOf(st, name);
  const bool regular = S_ISREG(st.st_mode);
  const std::string_view ext = regular ? Extension(name) : std::string_view();
  const bool archive =
      regular && scanZip_ && (EqualsIgnoreCase(ext, "zip") || ArchiveLister::IsArchiveName(name));
  std::string_view extra;
  if (regular && !archive && scanMp3_ && EqualsIgnoreCase(ext, "mp3")) {
    extra = ReadMp3Tags(EntryPath(fd, name));
  }
  // One write of the record with all its texts.
  ClassFile& f = dir.files();
  if (f.AppendFile(r, {.name = name, .notes = notes, .extra = extra}) == 0) return void(Failed());
  if (archive) ReadZipMembers(EntryPath(fd, name), f);
}

bool ScanEngine::Kept(std::string_view name) {
  // Same results as KeepFile(MatchExtList(include), MatchExtList(exclude)),
  // with the lists' "*.*;" searched once per scan rather than per file.
  const int include = includeAll_ ? 1 : MatchExt(name, includeLower_);
  if (include != 1) return include == 0;
  return excludeAll_ || MatchExt(name, excludeLower_) != 0;
}

int ScanEngine::MatchExt(std::string_view name, std::string_view lowerList) {
  if (lowerList.size() < 3) return 2;  // ";" alone, the usual exclude list
  const std::string_view ext = Extension(name);
  extBuffer_.assign("*.");
  for (const char c : ext) extBuffer_.push_back(Lower(c));
  extBuffer_.push_back(';');
  return lowerList.find(extBuffer_) != std::string_view::npos ? 0 : 2;
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

std::string ScanEngine::FindOldDirNotes(const std::string& parentPath, std::string_view name) {
  oldFilesValid_ = false;
  classDir& d = old_->dirs();
  while (!d.isEof()) {
    const std::string stored = d.GetDirPath();
    if (stored == parentPath && d.GetDirName() == name) {
      std::string notes = d.GetDirNotes();
      d.GetFileFirst();
      oldFilesValid_ = true;
      d.MoveNext();
      return notes;
    }
    // The search goes forward only: it gives up at the first folder whose path
    // sorts after the one sought. Folders at the volume's top level ("\") are
    // passed over.
    if (stored != "\\" && stored > parentPath) return {};
    d.MoveNext();
  }
  return {};
}

const std::string& ScanEngine::FindOldFileNotes(std::string_view name) {
  oldNotes_.clear();
  if (!oldFilesValid_) return oldNotes_;
  ClassFile& f = old_->dirs().files();
  while (!f.isEof()) {
    f.GetFileName(&oldName_);
    if (oldName_ == name) {
      oldNotes_ = f.GetFileNotes();
      f.MoveNext();
      return oldNotes_;
    }
    if (std::string_view(oldName_) > name) return oldNotes_;
    f.MoveNext();
  }
  return oldNotes_;
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
    r.date = m.hasTime ? DateOf(m.mtime) : kUnknownDate;
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
