#include <gtest/gtest.h>

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
  EXPECT_NE(noxdevOpenDevice(device, 3, "d:\\dev\\"), kGood) << "a stale handle";
  EXPECT_NE(noxdevGetDeviceNum(&count), kGood);
  EXPECT_NE(noxdevCreateDevice(&other, 0), kGood);
  EXPECT_EQ(other, nullptr);
}

TEST_F(VirtualDevices, OpenInAKnownModeAndOnceAndHaveTheirPortsAndChannelsOnly) {
  zebdev::VirtualDevice planned = zebdev::MakeVirtualDevice(0x001, 4);
  planned.m_capability_when_open = zebdev::MakeVirtualDevice(0x001, 1).m_capability;
  planned.m_capability_when_open->m_tv = planned.m_capability_when_open->m_io_ports = 0;
  zebdev::SetDevicePlan({planned});
  EXPECT_EQ(noxdevInitialize(0, 0), kGood);
  NoxdevHandle device = Create(0);
  EXPECT_NE(noxdevOpenDevice(device, 4, "c:\\"), kGood);
  EXPECT_EQ(noxdevSetTVOut(device, 1, 2) | noxdevIOCtl(device, 1, 2, 3), kGood);
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_NE(noxdevSetTVOut(device, 1, 2), kGood);
  EXPECT_NE(noxdevIOCtl(device, 1, 2, 3), kGood);
  int is_valid = -1;
  EXPECT_EQ(noxdevChIsValidID(device, 1, &is_valid), kGood);
  EXPECT_EQ(is_valid, 0);
  EXPECT_EQ(noxdevCloseDevice(device), kGood);
  EXPECT_NE(noxdevCloseDevice(device), kGood);
}

}  // namespace
