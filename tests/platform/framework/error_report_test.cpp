#include "platform/framework/error_report.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/framework/file_exception.h"

namespace {

class ErrorReportTest : public testing::Test {
 protected:
  ~ErrorReportTest() override { SetErrorSink({}); }
};

TEST_F(ErrorReportTest, PrintsOneLineUnlessASinkIsSet) {
  testing::internal::CaptureStderr();
  ReportError(CFileException(CFileException::Cause::kDiskFull, 0, "d:\\dvr\\x.zebz"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "zebx: d:\\dvr\\x.zebz: the disk is full\n");
}

TEST_F(ErrorReportTest, HandsEveryErrorToTheSinkInForceWhichMayReplaceItself) {
  std::string reports;
  SetErrorSink([&](const std::exception& error) {
    reports += error.what();
    SetErrorSink([](const std::exception&) {});
    reports += "!";  // what was captured still lives
  });
  ReportError(std::runtime_error("one"));
  ReportError(std::runtime_error("two"));
  EXPECT_EQ(reports, "one!");
}

TEST_F(ErrorReportTest, MayBeUsedFromAnyThread) {
  std::atomic<int> reports = 0;
  const ErrorSink count = [&](const std::exception&) { ++reports; };
  SetErrorSink(count);
  std::thread reporter([] {
    for (int i = 0; i < 1000; ++i) ReportError(std::runtime_error("again"));
  });
  for (int i = 0; i < 1000; ++i) SetErrorSink(count);
  reporter.join();
  EXPECT_EQ(reports, 1000);
}

}  // namespace
