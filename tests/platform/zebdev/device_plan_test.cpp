#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

namespace {

TEST(DevicePlan, NamesDevicesAndADirectory) {
  const auto plan = zebdev::ParseDevicePlan("6:8,10:4,11:2,0:63@/srv/c@m,1:1", nullptr);
  ASSERT_TRUE(plan);
  ASSERT_EQ(plan->size(), 4U);
  EXPECT_EQ(plan->at(0).m_capability.m_device_type, 0x040U);
  EXPECT_EQ(plan->at(2).m_capability.m_device_type, 0x800U);
  EXPECT_EQ(plan->at(3).m_capability.m_device_type, 0x001U);
  EXPECT_EQ(plan->at(3).m_capability.m_channels, 63);
  for (const auto& device : *plan) EXPECT_EQ(device.m_directory, "/srv/c@m,1:1");
}

TEST(DevicePlan, SaysWhatIsWrong) {
  const CString many = "0:1,0:1,0:1,0:1,0:1,0:1,0:1,0:1,";
  const std::pair<CString, CString> cases[] = {{"", "as in 6:8"},
                                               {"6:8,", "as in 6:8"},
                                               {"6:-1", "\"6:-1\""},
                                               {"6:8 ", "as in 6:8"},
                                               {"4294967302:8", "as in 6:8"},
                                               {"12:4", "0 to 11"},
                                               {"1:4,6:0", "\"6:0\": a dev"},
                                               {"6:64", "1 to 63 channels"},
                                               {"11:3", "1 or 2 channels"},
                                               {"6:8@", "no directory"},
                                               {many + many + "0:1", "17 devices"}};
  for (const auto& [text, expected] : cases) {
    CString fault;
    EXPECT_FALSE(zebdev::ParseDevicePlan(text, &fault)) << text;
    EXPECT_NE(fault.find(expected), CString::npos) << text << fault;
  }
}

// The number of devices present, ended with: only the first use of a process looks.
void CountDevicesOf(const char* plan) {
  setenv("ZEBX_DEVICES", plan, 1);
  DWORD count = 99;
  if ((noxdevInitialize(0, 0) | noxdevGetDeviceNum(&count)) != 0) std::exit(99);
  zebdev::SetDevicePlan({});
  DWORD later = 0;
  if ((noxdevInitialize(0, 0) | noxdevGetDeviceNum(&later)) != 0 || later != 0) std::exit(98);
  std::exit(static_cast<int>(count));
}

TEST(DevicePlan, ComesFromTheEnvironmentOnce) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(CountDevicesOf("6:8,3:2"), testing::ExitedWithCode(2), "");
  EXPECT_EXIT(CountDevicesOf("6"), testing::ExitedWithCode(0), "ZEBX_DEVICES: \"6\": a device is");
}

}  // namespace
