#include "platform/framework/error_report.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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

TEST_F(ErrorReportTest, HandsEveryErrorToTheSinkInForce) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  SetErrorSink([&](const std::exception& error) { first.emplace_back(error.what()); });
  ReportError(std::runtime_error("one"));
  const ErrorSink before =
      SetErrorSink([&](const std::exception& error) { second.emplace_back(error.what()); });
  ReportError(std::runtime_error("two"));
  before(std::runtime_error("three"));
  EXPECT_EQ(first, (std::vector<std::string>{"one", "three"}));
  EXPECT_EQ(second, std::vector<std::string>{"two"});
}

TEST_F(ErrorReportTest, LetsASinkReplaceItself) {
  int reports = 0;
  SetErrorSink([&](const std::exception&) {
    ++reports;
    SetErrorSink([](const std::exception&) {});
    ++reports;  // what was captured still lives
  });
  ReportError(std::bad_alloc());
  ReportError(std::bad_alloc());
  EXPECT_EQ(reports, 2);
}

TEST_F(ErrorReportTest, MayBeUsedFromAnyThread) {
  std::atomic<int> reports = 0;
  const ErrorSink count = [&](const std::exception&) { ++reports; };
  SetErrorSink(count);
  constexpr int kReports = 1000;
  std::thread reporter([] {
    for (int i = 0; i < kReports; ++i) ReportError(std::runtime_error("again"));
  });
  for (int i = 0; i < kReports; ++i) SetErrorSink(count);
  reporter.join();
  EXPECT_EQ(reports, kReports);
}

}  // namespace
