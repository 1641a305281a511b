#include "catalog/basBackup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "catalog/ErrorReporter.h"

namespace gorvan {
namespace {

std::string Folder(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

std::string Errno(const std::string& what) { return what + ": " + std::strerror(errno); }

// True when both names lead to one file.
bool SameFile(const std::string& a, const std::string& b) {
  struct stat sa, sb;
  if (::stat(a.c_str(), &sa) != 0 || ::stat(b.c_str(), &sb) != 0) return false;
  return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

// A rename or link reaches the disk only with its folder.
Status SyncFolder(const std::string& path) {
  const int fd = ::open(Folder(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return Status::IOError(Errno(Folder(path)));
  const int rc = ::fsync(fd);
  const int err = errno;
  ::close(fd);
  // Some file systems cannot sync a folder; the data itself is synced already.
  if (rc != 0 && err != EINVAL && err != EROFS) return Status::IOError(Errno(Folder(path)));
  return Status::OK();
}

// Copies the bytes of from into a new file to, synced: the fallback for file
// systems without hard links.
Status CopyBytes(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return Status::IOError(Errno(from));
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (out < 0) {
    const Status s = Status::IOError(Errno(to));
    ::close(in);
    return s;
  }
  std::vector<char> buf(1 << 20);
  Status s;
  for (;;) {
    const ssize_t n = ::read(in, buf.data(), buf.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      s = Status::IOError(Errno(from));
      break;
    }
    if (n == 0) break;
    for (ssize_t done = 0; done < n;) {
      const ssize_t w = ::write(out, buf.data() + done, static_cast<size_t>(n - done));
      if (w < 0 && errno == EINTR) continue;
      if (w < 0) {
        s = Status::IOError(Errno(to));
        break;
      }
      done += w;
    }
    if (!s.ok()) break;
  }
  if (s.ok() && ::fsync(out) != 0) s = Status::IOError(Errno(to));
  if (::close(out) != 0 && s.ok()) s = Status::IOError(Errno(to));
  ::close(in);
  if (!s.ok()) ::unlink(to.c_str());
  return s;
}

// Puts the synced copy at temp in place of catalog, keeping the old catalog as
// bak. Every step leaves a complete catalog under the catalog's name.
Status ReplaceWithCopy(const std::string& catalog, const std::string& temp, const std::string& bak) {
  if (::unlink(bak.c_str()) != 0 && errno != ENOENT) return Status::IOError(Errno(bak));
  if (::link(catalog.c_str(), bak.c_str()) != 0) {
    if (errno != EPERM && errno != ENOTSUP && errno != EXDEV && errno != EMLINK &&
        errno != ENOSYS) {
      return Status::IOError(Errno(bak));
    }
    Status s = CopyBytes(catalog, bak);
    if (!s.ok()) return s;
  }
  if (::rename(temp.c_str(), catalog.c_str()) != 0) return Status::IOError(Errno(catalog));
  return SyncFolder(catalog);
}

// A copy written beside target under the temporary name, synced, then renamed
// over target, so that an existing file of that name is replaced only by a
// complete copy. A cancelled or failed copy leaves no file behind.
Status CopyInPlaceOf(classData& data, const std::string& target, JobControl& job,
                     const FileOpener& open, size_t* warnings) {
  const std::string temp = TempFileName(target);
  std::string copied;
  Status s = CopyCatalogTo(data, temp, job, &copied, warnings, open);
  if (!s.ok()) {
    ::unlink(temp.c_str());
    return s;
  }
  if (temp != target) {
    if (::rename(temp.c_str(), target.c_str()) != 0) {
      s = Status::IOError(Errno(target));
      ::unlink(temp.c_str());
      return s;
    }
    s = SyncFolder(target);
  }
  return s;
}

MaintenanceResult Failed(const char* what, const Status& s) {
  ReportError(what, static_cast<int>(s.code()), s.message(), 3);
  return {s, std::string(what) + " Failed!!\n" + s.message(), 0};
}

MaintenanceResult CopyCommand(classData& data, const std::string& target, JobControl& job,
                              const FileOpener& open, const char* ontoCurrent, const char* cancelled,
                              const char* successful, const char* failed) {
  if (!data.IsOpen()) return {Status::InvalidArgument("no catalog is open"), "No catalog is open"};
  if (target.empty()) return {Status::InvalidArgument("no file name"), "No file name was given"};
  if (target == data.GetDataFileName() || SameFile(target, data.GetDataFileName())) {
    return {Status::InvalidArgument(ontoCurrent), ontoCurrent};
  }
  if (!data.Flush()) return Failed(failed, data.status());
  size_t warnings = 0;
  const Status s = CopyInPlaceOf(data, target, job, open, &warnings);
  if (s.IsCancelled()) return {s, cancelled};
  if (!s.ok()) return Failed(failed, s);
  return {s, successful, warnings};
}

}  // namespace

std::string BackupFileName(const std::string& catalog) {
  const size_t slash = catalog.rfind('/');
  const size_t dot = catalog.rfind('.');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
  return (hasExtension ? catalog.substr(0, dot) : catalog) + ".bak";
}

std::string TempFileName(const std::string& path) {
  return path.rfind('/') == std::string::npos ? std::string(kTempCatalogName)
                                               : Folder(path) + "/" + kTempCatalogName;
}

MaintenanceResult CompactDataFiles(classData& data, JobControl& job, const FileOpener& open) {
  classData::ThreadHandover handover(data);
  if (!data.IsOpen()) return {Status::InvalidArgument("no catalog is open"), "No catalog is open"};
  const std::string catalog = data.GetDataFileName();
  const std::string temp = TempFileName(catalog);
  if (!data.Flush()) return Failed("Data Compaction", data.status());

  std::string copied;
  Status s = CopyCatalogTo(data, temp, job, &copied, nullptr, open);
  if (!s.ok()) {
    // Nothing was renamed: the catalog is as it was and stays open.
    ::unlink(temp.c_str());
    if (s.IsCancelled()) return {s, kCompactCancelled};
    return Failed("Data Compaction", s);
  }
  // The compacted catalog keeps the old one's permissions (a private catalog
  // stays private).
  struct stat st;
  if (::stat(catalog.c_str(), &st) == 0) ::chmod(temp.c_str(), st.st_mode & 07777);
  s = ReplaceWithCopy(catalog, temp, BackupFileName(catalog));
  if (!s.ok()) {
    ::unlink(temp.c_str());
    return Failed("Data Compaction", s);
  }
  // Reopen under the same name: the compacted file. Its password was passed
  // when the catalog was opened.
  data.CloseFiles();
  if (!data.OpenFiles(catalog, /*askPassword=*/false, /*setDefaults=*/false)) {
    return Failed("Data Compaction", Status::IOError(data.GetErrorText()));
  }
  return {Status::OK(), kCompactSuccessful};
}

MaintenanceResult BackupDataFiles(classData& data, const std::string& target, JobControl& job,
                                  const FileOpener& open) {
  classData::ThreadHandover handover(data);
  return CopyCommand(data, target, job, open, kBackupOntoCurrent, kBackupCancelled, kBackupSuccessful,
                     "Data Backup");
}

MaintenanceResult SaveAsDataFiles(classData& data, const std::string& target, JobControl& job,
                                  const FileOpener& open) {
  classData::ThreadHandover handover(data);
  MaintenanceResult r = CopyCommand(data, target, job, open, kSaveAsOntoCurrent, kSaveAsCancelled,
                                    kSaveAsSuccessful, "Data SaveAs");
  if (!r.status.ok()) return r;
  // Save as goes on with the new file, as saving a document under a new name does.
  const std::string old = data.GetDataFileName();
  data.CloseFiles();
  if (!data.OpenFiles(target, /*askPassword=*/false, /*setDefaults=*/false)) {
    const std::string why = data.GetErrorText();
    data.OpenFiles(old, false, false);
    return Failed("Data SaveAs", Status::IOError(why));
  }
  return r;
}

MaintenanceResult MergeExistingCatalog(classData& data, const std::string& other,
                                       JobControl& job, classData::PasswordPrompt prompt) {
  classData::ThreadHandover handover(data);
  if (!data.IsOpen()) return {Status::InvalidArgument("no catalog is open"), "No catalog is open"};
  if (other == data.GetDataFileName() || SameFile(other, data.GetDataFileName())) {
    return {Status::InvalidArgument(kMergeWithCurrent), kMergeWithCurrent};
  }
  struct stat st;
  if (::stat(other.c_str(), &st) != 0) {
    return {Status::NotFound(Errno(other)), Errno(other)};
  }
  classData source;
  source.SetPasswordPrompt(std::move(prompt));
  if (!source.OpenFiles(other, /*askPassword=*/true, /*setDefaults=*/false)) {
    const int e = source.GetError();
    const Status s = (e == classData::kCannotOpen) ? Status::IOError(source.GetErrorText())
                                                   : Status::Refused(source.GetErrorText());
    return {s, source.GetErrorText()};
  }
  CatalogCopy walk(source, data, job);
  const Status s = walk.MergeAll();
  source.CloseFiles();
  if (s.IsCancelled()) return {s, kMergeCancelled};
  if (!s.ok()) return Failed("Data Merge", s);
  return {s, kMergeSuccessful, walk.warnings()};
}

}  // namespace gorvan
