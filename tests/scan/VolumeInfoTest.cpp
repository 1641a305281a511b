#include "scan/VolumeInfo.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "support/TempDir.h"

namespace gorvan {
namespace {

using test::TempDir;

TEST(MountInfoTest, ParsesFieldsDecodesEscapesAndFindsTheMount) {
  const std::string text =
      "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "36 22 8:17 /sub /media/my\\040stick rw master:2 shared:3 - vfat /dev/sdb1 rw\n"
      "40 22 0:44 / /tmp/tab\\011and\\134back rw - tmpfs tmp\\040fs rw,size=10k\n"
      "41 22 0:50 / /net rw - nfs4 server:/export rw\n"
      "garbage line\n"
      "42 22 x:1 / /bad rw - ext4 /dev/x rw\n"
      "43 22 8:2 / /nodash rw shared:4 ext4 /dev/sda2 rw\n"
      "44 22 8:3 / /media/my rw - ext4 /dev/sda3 rw\n"
      "46 44 8:5 / /media/my/deep rw - ext4 /dev/sda5 rw\n"
      "45 36 8:4 / /media/my\\040stick rw - btrfs /dev/sdc1";  // on top; no final newline
  const auto mounts = VolumeInfo::ParseMountInfo(text);
  std::vector<std::string> got;
  for (const VolumeInfo::Mount& m : mounts) {
    got.push_back(m.mountPoint + "|" + m.root + "|" + m.fsType + "|" + m.source + "|" +
                  std::to_string(m.major) + ":" + std::to_string(m.minor));
  }
  // Optional fields before "-" are skipped, however many there are.
  EXPECT_EQ(got, (std::vector<std::string>{
                     "/|/|ext4|/dev/sda1|8:1", "/media/my stick|/sub|vfat|/dev/sdb1|8:17",
                     "/tmp/tab\tand\\back|/|tmpfs|tmp fs|0:44", "/net|/|nfs4|server:/export|0:50",
                     "/media/my|/|ext4|/dev/sda3|8:3", "/media/my/deep|/|ext4|/dev/sda5|8:5",
                     "/media/my stick|/|btrfs|/dev/sdc1|8:4"}));
  // The longest whole-folder prefix wins; of two mounts on one point, the later.
  const std::pair<const char*, const char*> at[] = {
      {"/", "/dev/sda1"},         {"/home/ann", "/dev/sda1"},
      {"/media/my", "/dev/sda3"}, {"/media/my/x", "/dev/sda3"}, {"/media/my/deep/y", "/dev/sda5"},
      {"/media/myx", "/dev/sda1"}, {"/media/my stick/f", "/dev/sdc1"},
      {"relative", "none"}};
  for (const auto& [path, source] : at) {
    const VolumeInfo::Mount* m = VolumeInfo::FindMount(mounts, path);
    EXPECT_EQ(m ? m->source : std::string("none"), source) << path;
  }
  EXPECT_EQ(VolumeInfo::FindMount({}, "/"), nullptr);
  // Anything that is not three octal digits stays as it is.
  for (const auto& [raw, decoded] : std::vector<std::pair<std::string, std::string>>{
           {"a\\012b", "a\nb"}, {"a\\04", "a\\04"}, {"a\\089", "a\\089"}, {"\\", "\\"}}) {
    EXPECT_EQ(VolumeInfo::DecodeMountEscapes(raw), decoded);
  }
}

TEST(VolumeSerialTest, SerialsAndDriveTypes) {
  const std::tuple<const char*, const char*, uint32_t> serials[] = {
      {"vfat", "ABCD-1234", 0xABCD1234u},
      {"exfat", "a1b2-c3d4", 0xA1B2C3D4u},
      {"ntfs", "0123456789ABCDEF", 0x89ABCDEFu},  // the low half of the 64-bit serial
      {"ntfs3", "0123456789ABCDEF", 0x89ABCDEFu},
      {"ext4", "0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9", 0x0A1B2C3Du},  // else the first 32 bits
      {"btrfs", "0a1b-2c3d-4e5f", 0x0A1B2C3Du},
      {"iso9660", "2024-03-05-10-11-12-00", 0x20240305u},
      {"ext4", "", 0u},
      {"ext4", "12", 0x12u},
      {"ext4", "zz", 0u},
  };
  for (const auto& [fs, uuid, serial] : serials) {
    EXPECT_EQ(VolumeInfo::SerialFromUuid(fs, uuid), serial) << fs << " " << uuid;
  }
  const std::tuple<const char*, const char*, bool, int> types[] = {
      {"iso9660", "sr0", false, kMediaOptical},
      {"udf", "sr12", true, kMediaOptical},
      {"ext4", "srx", false, kMediaFixed},
      {"vfat", "sdb", true, kMediaRemovable},
      {"ext4", "sda", false, kMediaFixed},
      {"tmpfs", "", false, kMediaRam},
      {"ramfs", "", false, kMediaRam},
      {"overlay", "", false, kMediaFixed},
      {"fuse", "", false, kMediaFixed},
  };
  for (const auto& [fs, dev, removable, type] : types) {
    EXPECT_EQ(VolumeInfo::DriveTypeFor(fs, dev, removable), type) << fs << " " << dev;
  }
  for (const char* remote : {"nfs", "nfs4", "cifs", "smb3", "fuse.sshfs", "9p", "afs", "ceph",
                             "glusterfs", "davfs"}) {
    EXPECT_EQ(VolumeInfo::DriveTypeFor(remote, "", false), kMediaRemote) << remote;
  }
}

TEST(VolumeInfoTest, ExistingAndMissingPaths) {
  TempDir dir;
  const VolumeInfo v = VolumeInfo::ForPath(dir.path());
  ASSERT_TRUE(v.ok()) << v.status().message();
  EXPECT_FALSE(v.label().empty());
  EXPECT_EQ(dir.path().rfind(v.mountPoint() == "/" ? "/" : v.mountPoint() + "/", 0), 0u);
  EXPECT_GE(v.totalBytes(), v.freeBytes());
  EXPECT_GT(v.totalBytes(), 0u);
  const VolumeInfo missing = VolumeInfo::ForPath(dir.File("missing/deeper"));
  EXPECT_TRUE(missing.status().IsNotFound());
  EXPECT_EQ(missing.label(), "..Disk Not Ready..");
  EXPECT_EQ(missing.driveType(), VolumeInfo::kDriveNoRoot);
  EXPECT_EQ(missing.totalBytes(), 0u);
}

// Runs a shell command quietly; true when it exits with 0.
bool Shell(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

// Unmounts on scope exit so that a failing test never leaves a mount behind
// (and never lets TempDir's clean-up walk into one).
class MountGuard {
 public:
  explicit MountGuard(std::string point) : point_(std::move(point)) {}
  ~MountGuard() {
    if (!point_.empty()) ::umount2(point_.c_str(), MNT_DETACH);
  }
  MountGuard(const MountGuard&) = delete;
  MountGuard& operator=(const MountGuard&) = delete;

 private:
  std::string point_;
};

TEST(VolumeInfoTest, LoopMountedExt4WithLabel) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to loop-mount an image";
  if (!Shell("command -v mkfs.ext4")) GTEST_SKIP() << "mkfs.ext4 (e2fsprogs) is not installed";
  TempDir dir;
  const std::string image = dir.File("disk.img");
  // A mount point with a blank checks the mountinfo escapes end to end.
  const std::string point = dir.File("mount point");
  ASSERT_EQ(::mkdir(point.c_str(), 0755), 0);
  ASSERT_TRUE(Shell("truncate -s 8M '" + image + "'"));
  ASSERT_TRUE(Shell("mkfs.ext4 -q -F -L 'Gorvan Vol' -U 0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9 '" +
                  image + "'"));
  if (!Shell("mount -o loop '" + image + "' '" + point + "'")) {
    GTEST_SKIP() << "loop mount is not possible here";
  }
  MountGuard guard(point);
  ASSERT_EQ(::mkdir((point + "/sub").c_str(), 0755), 0);

  VolumeInfo v = VolumeInfo::ForPath(point + "/sub");
  ASSERT_TRUE(v.ok()) << v.status().message();
  EXPECT_EQ(v.mountPoint(), point);
  EXPECT_EQ(v.fsType(), "ext4");
  EXPECT_EQ(v.device().rfind("/dev/loop", 0), 0u) << v.device();
  EXPECT_EQ(v.label(), "Gorvan Vol");
  EXPECT_EQ(v.uuid(), "0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9");
  EXPECT_EQ(v.serial(), 0x0A1B2C3Du);
  EXPECT_EQ(v.driveType(), kMediaFixed);
  EXPECT_GT(v.totalBytes(), 4u * 1024 * 1024);
  EXPECT_LE(v.totalBytes(), 8u * 1024 * 1024);
  EXPECT_GT(v.freeBytes(), 0u);
  EXPECT_LE(v.freeBytes(), v.totalBytes());
  // Without a label the volume says so. Relabel through the loop device, whose cache is what the probe reads.
  ASSERT_TRUE(Shell("e2label '" + v.device() + "' ''"));
  VolumeInfo unlabeled = VolumeInfo::ForPath(point);
  ASSERT_TRUE(unlabeled.ok());
  EXPECT_EQ(unlabeled.label(), "(no label)");
}

TEST(VolumeInfoTest, TmpfsIsARamDisk) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to mount a tmpfs";
  TempDir dir;
  const std::string point = dir.File("ram");
  ASSERT_EQ(::mkdir(point.c_str(), 0755), 0);
  if (::mount("gorvan-test", point.c_str(), "tmpfs", 0, "size=1m") != 0) {
    GTEST_SKIP() << "mounting a tmpfs is not permitted here";
  }
  MountGuard guard(point);
  VolumeInfo v = VolumeInfo::ForPath(point);
  ASSERT_TRUE(v.ok()) << v.status().message();
  EXPECT_EQ(v.mountPoint(), point);
  EXPECT_EQ(v.fsType(), "tmpfs");
  EXPECT_EQ(v.device(), "gorvan-test");
  EXPECT_EQ(v.driveType(), kMediaRam);
  EXPECT_EQ(v.label(), "(no label)");
  EXPECT_EQ(v.serial(), 0u);
  EXPECT_EQ(v.totalBytes(), 1024u * 1024);
}

}  // namespace
}  // namespace gorvan
