#include "platform/framework/error_report.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <thread>

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

TEST(ErrorReport, MayBeUsedFromAnyThread) {
  std::atomic<int> reports = 0;
  const ErrorSink count = [&](const std::exception&) { ++reports; };
  SetErrorSink(count);
  std::thread reporter([] {
    for (int i = 0; i < 1000; ++i) ReportError(std::runtime_error("again"));
  });
  for (int i = 0; i < 1000; ++i) SetErrorSink(count);
  reporter.join();
  SetErrorSink({});
  EXPECT_EQ(reports, 1000);
}

}  // namespace
