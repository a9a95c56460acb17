#include <gtest/gtest.h>

#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

namespace {

constexpr int kGood = 0;

// What the tests of the capture library rely on: nothing is granted out of turn.
TEST(VirtualDevices, AreHeldAndOpenedOnceWithTheirPortsOnly) {
  zebdev::VirtualDevice planned = zebdev::MakeVirtualDevice(0x001, 4);
  planned.m_capability_when_open = zebdev::MakeVirtualDevice(0x001, 1).m_capability;
  planned.m_capability_when_open->m_tv = planned.m_capability_when_open->m_io_ports = 0;
  zebdev::SetDevicePlan({planned});
  NoxdevHandle device = nullptr, other = nullptr;
  EXPECT_NE(noxdevCreateDevice(&device, 0), kGood) << "not initialized";
  EXPECT_EQ(noxdevInitialize(7, 0), kGood);
  EXPECT_EQ(noxdevCreateDevice(&device, 0), kGood);
  EXPECT_NE(noxdevCreateDevice(&other, 0), kGood);
  EXPECT_NE(noxdevCreateDevice(&other, 1), kGood);

  EXPECT_NE(noxdevOpenDevice(device, 4, "c:\\"), kGood) << "no such mode";
  EXPECT_EQ(noxdevSetTVOut(device, 1, 2) | noxdevIOCtl(device, 1, 2, 3), kGood);
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_NE(noxdevSetTVOut(device, 1, 2), kGood);
  EXPECT_NE(noxdevIOCtl(device, 1, 2, 3), kGood);
  EXPECT_EQ(noxdevCloseDevice(device), kGood);
  EXPECT_NE(noxdevCloseDevice(device), kGood);
  EXPECT_EQ(noxdevInvalidate(), kGood);
  EXPECT_NE(noxdevInvalidate(), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 3, "c:\\"), kGood) << "a stale handle";
  zebdev::SetDevicePlan({});
}

}  // namespace
