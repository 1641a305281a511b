// The error log's line format and its append-only use.
#include <gtest/gtest.h>

#include <regex>

#include "app/AppFolder.h"
#include "app/ErrorLog.h"
#include "catalog/ErrorReporter.h"
#include "support/TempDir.h"

namespace gorvan {
namespace {

TEST(ErrorLogTest, AppendsOneLineAndAnEmptyLineExceptInMode3) {
  test::TempDir dir;
  ErrorLog log(dir.File("Gorvan.err"));
  ASSERT_TRUE(log.Append("classData.OpenFiles", 1001, "bad\nfile", 1));
  ASSERT_TRUE(log.Append("basSearch.Run", 5, "quiet", 3));
  const std::string text = test::ReadFileBytes(log.path());
  const std::regex pattern(
      "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d " + std::string("1\\.0\\.1\\.Std") +
      " \\| classData\\.OpenFiles \\| 1001 \\| bad file\n\n"
      "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d 1\\.0\\.1\\.Std \\| basSearch\\.Run \\| 5 \\| quiet\n");
  EXPECT_TRUE(std::regex_match(text, pattern)) << text;
}

TEST(ErrorLogTest, CoreErrorsReachTheLogOfTheApplicationFolder) {
  test::TempDir dir;
  setenv("GORVAN_HOME", dir.path().c_str(), 1);
  EXPECT_EQ(AppFolder::Path(), dir.path());
  ErrorLog::InstallAsErrorSink();
  ReportError("classCd.recordGet", 1001, "a link points outside the file");
  SetErrorSink(nullptr);
  const std::string text = test::ReadFileBytes(dir.File("Gorvan.err"));
  EXPECT_NE(text.find("| classCd.recordGet | 1001 | a link points outside the file\n\n"),
            std::string::npos);
  EXPECT_EQ(VersionString(), VersionNumber() + ".Std");
}

}  // namespace
}  // namespace gorvan
