#include "scan/ScanChecks.h"

#include <gtest/gtest.h>

#include "scan/ScanPath.h"
#include "scan/ScanTestTree.h"

namespace gorvan {
namespace {

using test::MakeDir;
using test::TempDir;
using test::TestCatalog;

TEST(ScanChecksTest, MissingPathGivesTheDialogsMessage) {
  TempDir tree;
  EXPECT_TRUE(ScanChecks::CheckPath(tree.path()).ok());
  const Status s = ScanChecks::CheckPath(tree.File("nope"));
  EXPECT_TRUE(s.IsNotFound());
  EXPECT_EQ(s.message(), "Folder or Directory Does Not Exist!!\nPlease Try Again");
  // A file is not a folder.
  test::MakeFile(tree.File("file"), "x");
  EXPECT_FALSE(ScanChecks::CheckPath(tree.File("file")).ok());
}

TEST(ScanChecksTest, DefaultDiscNameIsTheLastFolderBelowARoot) {
  TempDir tree;
  MakeDir(tree.File("Holiday Photos"));
  ScanVolume v;
  v.mountPoint = tree.path();
  EXPECT_EQ(ScanChecks::DefaultDiscName(tree.File("Holiday Photos/"), "LABEL", v), "Holiday Photos");
  EXPECT_EQ(ScanChecks::DefaultDiscName(tree.path(), "LABEL", v), "LABEL");
  v.mountPoint = "/";
  EXPECT_EQ(ScanChecks::DefaultDiscName("/", "ROOTFS", v), "ROOTFS");
}

TEST(ScanChecksTest, ScannedBeforeNeedsTheSameVolumeAndPlace) {
  TempDir tree;
  MakeDir(tree.File("A"));
  MakeDir(tree.File("B"));
  TestCatalog cat;
  ScanVolume v;
  v.mountPoint = tree.path();
  v.serial = 0x1234;
  ScanEngine engine(*cat.data);
  ScanSettings settings;
  settings.path = tree.File("A");
  settings.discName = "A";
  settings.volumeLabel = "STICK";
  engine.SetVars(settings);
  engine.SetVolume(v);
  JobControl job;
  const int32_t id = engine.ScanCd(job);
  ASSERT_NE(id, 0);
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, tree.File("A"), "STICK", v), id);
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, tree.File("B"), "STICK", v), 0);
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, tree.File("A"), "OTHER", v), 0);
  ScanVolume other = v;
  other.serial = 0x9999;
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, tree.File("A"), "STICK", other), 0);
  // The same stick mounted elsewhere: same serial, label and place inside it.
  TempDir elsewhere;
  MakeDir(elsewhere.File("A"));
  ScanVolume moved = v;
  moved.mountPoint = elsewhere.path();
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, elsewhere.File("A"), "STICK", moved), id);
  // Without a serial the scanned path must match too.
  ScanVolume noSerial = moved;
  noSerial.serial = 0;
  engine.SetVolume(noSerial);
  settings.path = elsewhere.File("A");
  engine.SetVars(settings);
  const int32_t second = engine.ScanCd(job);
  ASSERT_NE(second, 0);
  ScanVolume noSerialHere = v;
  noSerialHere.serial = 0;
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, tree.File("A"), "STICK", noSerialHere), 0);
  EXPECT_EQ(ScanChecks::FindScannedBefore(*cat.data, elsewhere.File("A"), "STICK", noSerial),
            second);
}

}  // namespace
}  // namespace gorvan
