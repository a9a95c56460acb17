#include "platform/framework/error_report.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "platform/framework/file_exception.h"

using namespace zebx;

namespace {

TEST(ErrorReport, PrintsOneLineUnlessASinkIsSetWhichMayReplaceItself) {
  const CFileException error(CFileException::Cause::kAccessDenied, EACCES, "d:\\x");
  std::string reports;
  SetErrorSink([&](const std::exception& reported) {
    reports += reported.what();
    SetErrorSink({});
    reports += "!";  // what was captured still lives
  });
  testing::internal::CaptureStderr();
  ReportError(std::runtime_error("one"));
  ReportError(error);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zebx: d:\\x: access is denied (Permission denied)\n");
  EXPECT_EQ(reports, "one!");
}

}  // namespace
