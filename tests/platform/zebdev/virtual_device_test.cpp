#include <gtest/gtest.h>

#include <cstring>

#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

namespace {

constexpr int kGood = 0;

NoxdevHandle Create(DWORD number) {
  NoxdevHandle device = nullptr;
  EXPECT_EQ(noxdevCreateDevice(&device, number), kGood);
  return device;
}

// No function takes the handle of a device that is not there.
void ExpectNoCall(NoxdevHandle device) {
  tag_DEVICECAP capability;
  int is_valid = 0;
  for (const int result :
       {noxdevGetDeviceCap(device, &capability), noxdevOpenDevice(device, 3, "d:\\dev\\"),
        noxdevSetTVOut(device, 1, 2), noxdevIOCtl(device, 255, 3, 4), noxdevRestore(device),
        noxdevChIsValidID(device, 7, &is_valid), noxdevCloseDevice(device),
        noxdevDestroyDevice(device)}) {
    EXPECT_NE(result, kGood);
  }
}

// Two devices of four and eight channels behind a library that is ready.
class VirtualDevices : public testing::Test {
 protected:
  VirtualDevices() {
    zebdev::SetDevicePlan(
        {zebdev::MakeVirtualDevice(0x001, 4), zebdev::MakeVirtualDevice(0x080, 8)});
    EXPECT_EQ(noxdevInitialize(7, 0), kGood);
  }
  void TearDown() override { zebdev::SetDevicePlan({}); }
};

TEST_F(VirtualDevices, AreHeldOnceAtATimeBetweenInitializeAndInvalidate) {
  DWORD count = 99;
  EXPECT_EQ(noxdevGetDeviceNum(&count), kGood);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(noxdevInitialize(7, 0), kGood) << "anew, without invalidating";
  NoxdevHandle device = Create(0);
  NoxdevHandle other = nullptr;
  EXPECT_NE(noxdevCreateDevice(&other, 0), kGood);
  EXPECT_NE(noxdevCreateDevice(&other, 2), kGood);

  EXPECT_EQ(noxdevInvalidate(), kGood);
  EXPECT_NE(noxdevInvalidate(), kGood);
  ExpectNoCall(device);
  EXPECT_NE(noxdevGetDeviceNum(&count), kGood);
  EXPECT_NE(noxdevCreateDevice(&other, 0), kGood);
  EXPECT_EQ(other, nullptr);
}

TEST_F(VirtualDevices, OpenInFourModesAndOnce) {
  NoxdevHandle device = Create(0);
  EXPECT_NE(noxdevCloseDevice(device), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 4, "c:\\"), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 0, nullptr), kGood);
  for (const DWORD mode : {0U, 1U, 2U, 3U}) {
    EXPECT_EQ(noxdevOpenDevice(device, mode, "c:\\"), kGood);
    EXPECT_NE(noxdevOpenDevice(device, mode, "c:\\"), kGood);
    EXPECT_EQ(noxdevCloseDevice(device), kGood);
  }
}

TEST_F(VirtualDevices, TellTheirCapabilityByteForByteAndAnotherOneWhileOpen) {
  zebdev::VirtualDevice planned;
  planned.m_capability_when_open.emplace();
  std::memset(&planned.m_capability, 0xA5, sizeof(tag_DEVICECAP));
  std::memset(&*planned.m_capability_when_open, 0xA5, sizeof(tag_DEVICECAP));
  planned.m_capability.m_channels = 0xC4;
  planned.m_capability.m_tv = zebdev::kDeviceTvBit;
  planned.m_capability_when_open->m_channels = 0x01;
  planned.m_capability_when_open->m_tv = 0;
  planned.m_capability_when_open->m_io_ports = 0xC0;
  zebdev::SetDevicePlan({planned});
  EXPECT_EQ(noxdevInitialize(0, 0), kGood);
  NoxdevHandle device = Create(0);

  const auto expect = [&](const tag_DEVICECAP& expected, DWORD channels, bool has_tv_and_ports) {
    tag_DEVICECAP capability;
    EXPECT_EQ(noxdevGetDeviceCap(device, &capability), kGood);
    EXPECT_EQ(std::memcmp(&capability, &expected, sizeof(expected)), 0);
    for (DWORD channel = 0; channel < 8; ++channel) {
      int is_valid = -1;
      EXPECT_EQ(noxdevChIsValidID(device, channel, &is_valid), kGood);
      EXPECT_EQ(is_valid != 0, channel < channels) << channel;
    }
    EXPECT_EQ(noxdevSetTVOut(device, 1, 2) == kGood, has_tv_and_ports);
    EXPECT_EQ(noxdevIOCtl(device, 1, 2, 3) == kGood, has_tv_and_ports);
  };
  expect(planned.m_capability, 4, true);
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  expect(*planned.m_capability_when_open, 1, false);
  EXPECT_EQ(noxdevCloseDevice(device), kGood);
  expect(planned.m_capability, 4, true);
}

}  // namespace
