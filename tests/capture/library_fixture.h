// A capture library over planned virtual devices, closed again after the test.
#pragma once

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "capture/zebx.h"
#include "platform/zebdev/software/virtual_device_plan.h"

class CaptureLibrary : public testing::Test {
 protected:
  using Lines = std::vector<CString>;

  void TearDown() override {
    zebxCloseZebx();
    zebx::zebdev::SetDevicePlan({});
  }

  // Plugs the devices in and keeps a journal; whoever wants calls to fail says so before
  // Initialize.
  static void Plan(std::vector<zebx::zebdev::VirtualDevice> devices) {
    zebx::zebdev::SetDevicePlan(std::move(devices));
    zebx::zebdev::StartJournal();
  }

  static int Initialize() { return zebxInitZebx(7, nullptr, 0, nullptr, "d:\\dev"); }

  // Both in one, with an empty journal afterwards.
  static void InitializeWith(std::vector<zebx::zebdev::VirtualDevice> devices) {
    Plan(std::move(devices));
    ASSERT_EQ(Initialize(), 1);
    zebx::zebdev::TakeJournal();
  }

  // What reached the device library since the last look.
  static void ExpectCalls(const Lines& expected, int line = __builtin_LINE()) {
    EXPECT_EQ(zebx::zebdev::TakeJournal(), expected) << "line " << line;
  }
};
