#include "scan/VolumeInfo.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "support/TempDir.h"

namespace gorvan {
namespace {

using test::TempDir;

TEST(MountInfoTest, ParsesFieldsAndDecodesEscapes) {
  const std::string text =
      "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "36 22 8:17 /sub /media/my\\040stick rw master:2 shared:3 - vfat /dev/sdb1 rw\n"
      "40 22 0:44 / /tmp/tab\\011and\\134back rw - tmpfs tmp\\040fs rw,size=10k\n"
      "41 22 0:50 / /net rw - nfs4 server:/export rw\n"
      "garbage line\n"
      "42 22 x:1 / /bad rw - ext4 /dev/x rw\n"
      "43 22 8:2 / /nodash rw shared:4 ext4 /dev/sda2 rw\n"
      "44 22 8:3 / /last rw - btrfs /dev/sda3";  // no final newline
  auto mounts = VolumeInfo::ParseMountInfo(text);
  ASSERT_EQ(mounts.size(), 5u);
  EXPECT_EQ(mounts[0].mountPoint, "/");
  EXPECT_EQ(mounts[0].fsType, "ext4");
  EXPECT_EQ(mounts[0].source, "/dev/sda1");
  EXPECT_EQ(mounts[0].major, 8u);
  EXPECT_EQ(mounts[0].minor, 1u);
  // Optional fields before "-" are skipped, however many there are.
  EXPECT_EQ(mounts[1].mountPoint, "/media/my stick");
  EXPECT_EQ(mounts[1].root, "/sub");
  EXPECT_EQ(mounts[1].fsType, "vfat");
  EXPECT_EQ(mounts[1].minor, 17u);
  EXPECT_EQ(mounts[2].mountPoint, "/tmp/tab\tand\\back");
  EXPECT_EQ(mounts[2].source, "tmp fs");
  EXPECT_EQ(mounts[3].source, "server:/export");
  EXPECT_EQ(mounts[4].mountPoint, "/last");
  EXPECT_EQ(mounts[4].fsType, "btrfs");

  EXPECT_EQ(VolumeInfo::DecodeMountEscapes("a\\012b"), "a\nb");
  // Anything that is not three octal digits stays as it is.
  EXPECT_EQ(VolumeInfo::DecodeMountEscapes("a\\04"), "a\\04");
  EXPECT_EQ(VolumeInfo::DecodeMountEscapes("a\\089"), "a\\089");
  EXPECT_EQ(VolumeInfo::DecodeMountEscapes("\\"), "\\");
}

TEST(MountInfoTest, FindMountTakesTheLongestWholeFolderPrefix) {
  auto mounts = VolumeInfo::ParseMountInfo(
      "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 8:2 / /mnt/a rw - ext4 /dev/sda2 rw\n"
      "3 1 8:3 / /mnt/a/b rw - ext4 /dev/sda3 rw\n"
      "4 1 8:4 / /mnt/c rw - ext4 /dev/sda4 rw\n"
      "5 4 8:5 / /mnt/c rw - vfat /dev/sdb1 rw\n");
  auto at = [&](std::string_view path) {
    const VolumeInfo::Mount* m = VolumeInfo::FindMount(mounts, path);
    return m ? m->source : std::string("none");
  };
  EXPECT_EQ(at("/"), "/dev/sda1");
  EXPECT_EQ(at("/home/ann"), "/dev/sda1");
  EXPECT_EQ(at("/mnt/a"), "/dev/sda2");
  EXPECT_EQ(at("/mnt/a/x/y"), "/dev/sda2");
  EXPECT_EQ(at("/mnt/ab"), "/dev/sda1");  // a prefix of the name is not a parent folder
  EXPECT_EQ(at("/mnt/a/b/c"), "/dev/sda3");
  EXPECT_EQ(at("/mnt/c/file"), "/dev/sdb1");  // the later mount on the same point is on top
  EXPECT_EQ(at("relative"), "none");
  EXPECT_EQ(VolumeInfo::FindMount({}, "/"), nullptr);
}

TEST(VolumeSerialTest, SerialFromUuid) {
  EXPECT_EQ(VolumeInfo::SerialFromUuid("vfat", "ABCD-1234"), 0xABCD1234u);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("exfat", "a1b2-c3d4"), 0xA1B2C3D4u);
  // NTFS: the low half of the 64-bit serial.
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ntfs", "0123456789ABCDEF"), 0x89ABCDEFu);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ntfs3", "0123456789ABCDEF"), 0x89ABCDEFu);
  // Everything else: the first 32 bits of the UUID.
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ext4", "0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9"),
            0x0A1B2C3Du);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("btrfs", "0a1b-2c3d-4e5f"), 0x0A1B2C3Du);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("iso9660", "2024-03-05-10-11-12-00"), 0x20240305u);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ext4", ""), 0u);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ext4", "12"), 0x12u);
  EXPECT_EQ(VolumeInfo::SerialFromUuid("ext4", "zz"), 0u);
}

TEST(VolumeSerialTest, DriveTypeCodes) {
  EXPECT_EQ(VolumeInfo::DriveTypeFor("iso9660", "sr0", false), VolumeInfo::kDriveOptical);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("udf", "sr12", true), VolumeInfo::kDriveOptical);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("ext4", "srx", false), VolumeInfo::kDriveFixed);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("vfat", "sdb", true), VolumeInfo::kDriveRemovable);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("ext4", "sda", false), VolumeInfo::kDriveFixed);
  for (const char* remote : {"nfs", "nfs4", "cifs", "smb3", "fuse.sshfs", "9p", "afs", "ceph",
                             "glusterfs", "davfs"}) {
    EXPECT_EQ(VolumeInfo::DriveTypeFor(remote, "", false), VolumeInfo::kDriveRemote) << remote;
  }
  EXPECT_EQ(VolumeInfo::DriveTypeFor("tmpfs", "", false), VolumeInfo::kDriveRam);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("ramfs", "", false), VolumeInfo::kDriveRam);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("overlay", "", false), VolumeInfo::kDriveFixed);
  EXPECT_EQ(VolumeInfo::DriveTypeFor("fuse", "", false), VolumeInfo::kDriveFixed);
}

TEST(VolumeInfoTest, MissingOrUnreadablePathIsNotReady) {
  TempDir dir;
  VolumeInfo v = VolumeInfo::ForPath(dir.File("missing/deeper"));
  EXPECT_FALSE(v.ok());
  EXPECT_TRUE(v.status().IsNotFound());
  EXPECT_EQ(v.label(), "..Disk Not Ready..");
  EXPECT_EQ(v.driveType(), VolumeInfo::kDriveNoRoot);
  EXPECT_EQ(v.totalBytes(), 0u);
}

TEST(VolumeInfoTest, ExistingFolderHasAVolume) {
  TempDir dir;
  VolumeInfo v = VolumeInfo::ForPath(dir.path());
  ASSERT_TRUE(v.ok()) << v.status().message();
  EXPECT_FALSE(v.label().empty());
  EXPECT_FALSE(v.mountPoint().empty());
  EXPECT_EQ(dir.path().rfind(v.mountPoint() == "/" ? "/" : v.mountPoint() + "/", 0), 0u);
  EXPECT_GE(v.totalBytes(), v.freeBytes());
  EXPECT_GT(v.totalBytes(), 0u);
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
  EXPECT_EQ(v.driveType(), VolumeInfo::kDriveFixed);
  EXPECT_GT(v.totalBytes(), 4u * 1024 * 1024);
  EXPECT_LE(v.totalBytes(), 8u * 1024 * 1024);
  EXPECT_GT(v.freeBytes(), 0u);
  EXPECT_LE(v.freeBytes(), v.totalBytes());

  // Without a label the volume says so.
  // Relabel through the loop device, whose cache is what the probe reads.
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
  EXPECT_EQ(v.driveType(), VolumeInfo::kDriveRam);
  EXPECT_EQ(v.label(), "(no label)");
  EXPECT_EQ(v.serial(), 0u);
  EXPECT_EQ(v.totalBytes(), 1024u * 1024);
}

}  // namespace
}  // namespace gorvan
