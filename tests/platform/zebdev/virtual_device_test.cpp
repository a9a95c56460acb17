#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

namespace {

using zebdev::Function;
using Lines = std::vector<CString>;

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
  ~VirtualDevices() override { zebdev::SetDevicePlan({}); }
};

TEST_F(VirtualDevices, AnswerOnlyBetweenInitializeAndInvalidate) {
  DWORD count = 99;
  EXPECT_EQ(noxdevGetDeviceNum(&count), kGood);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(noxdevInitialize(7, 0), kGood);
  NoxdevHandle device = Create(0);

  EXPECT_EQ(noxdevInvalidate(), kGood);
  EXPECT_NE(noxdevInvalidate(), kGood);
  EXPECT_NE(noxdevRestore(device), kGood);
  EXPECT_NE(noxdevGetDeviceNum(&count), kGood);
  NoxdevHandle other = nullptr;
  EXPECT_NE(noxdevCreateDevice(&other, 0), kGood);
  EXPECT_EQ(other, nullptr);
}

TEST_F(VirtualDevices, AreHeldOnceAtATimeAndByLiveHandlesOnly) {
  NoxdevHandle device = Create(1);
  NoxdevHandle second = nullptr;
  EXPECT_NE(noxdevCreateDevice(&second, 1), kGood);
  EXPECT_NE(noxdevCreateDevice(&second, 2), kGood);
  EXPECT_EQ(noxdevDestroyDevice(device), kGood);

  const std::function<int(NoxdevHandle)> calls[] = {
      [](auto handle) { return noxdevDestroyDevice(handle); },
      [](auto handle) {
        tag_DEVICECAP capability;
        return noxdevGetDeviceCap(handle, &capability);
      },
      [](auto handle) { return noxdevOpenDevice(handle, 0, "c:\\"); },
      [](auto handle) { return noxdevCloseDevice(handle); },
      [](auto handle) { return noxdevSetTVOut(handle, 0, 0); },
      [](auto handle) { return noxdevIOCtl(handle, 0, 0, 0); },
      [](auto handle) { return noxdevRestore(handle); },
      [](auto handle) {
        int is_valid = 0;
        return noxdevChIsValidID(handle, 0, &is_valid);
      },
  };
  for (const auto& call : calls) {
    EXPECT_NE(call(device), kGood);
    EXPECT_NE(call(nullptr), kGood);
  }
  EXPECT_NE(Create(1), nullptr);
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
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_EQ(noxdevDestroyDevice(device), kGood);
  EXPECT_EQ(noxdevOpenDevice(Create(0), 0, "c:\\"), kGood);
}

TEST_F(VirtualDevices, TellTheirCapabilityByteForByteAndAnotherOneWhileOpen) {
  zebdev::VirtualDevice planned;
  planned.m_capability_when_open.emplace();
  std::memset(&planned.m_capability, 0xA5, sizeof(tag_DEVICECAP));
  std::memset(&*planned.m_capability_when_open, 0xA5, sizeof(tag_DEVICECAP));
  planned.m_capability.m_channels = 0xC4;
  planned.m_capability.m_tv = kDeviceTvBit;
  planned.m_capability_when_open->m_channels = 0x01;
  planned.m_capability_when_open->m_tv = 0;
  planned.m_capability_when_open->m_io_ports = 0xC0;
  zebdev::SetDevicePlan({planned});
  EXPECT_EQ(noxdevInitialize(0, 0), kGood);
  NoxdevHandle device = Create(0);

  const auto expect_capability = [&](const tag_DEVICECAP& expected) {
    tag_DEVICECAP capability;
    EXPECT_EQ(noxdevGetDeviceCap(device, &capability), kGood);
    EXPECT_EQ(std::memcmp(&capability, &expected, sizeof(expected)), 0);
  };
  const auto expect_channels = [&](DWORD channels) {
    for (DWORD channel = 0; channel < 8; ++channel) {
      int is_valid = -1;
      EXPECT_EQ(noxdevChIsValidID(device, channel, &is_valid), kGood);
      EXPECT_EQ(is_valid != 0, channel < channels) << channel;
    }
  };
  expect_capability(planned.m_capability);
  expect_channels(4);
  EXPECT_EQ(noxdevSetTVOut(device, 1, 2), kGood);
  EXPECT_EQ(noxdevIOCtl(device, 1, 2, 3), kGood);

  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  expect_capability(*planned.m_capability_when_open);
  expect_channels(1);
  EXPECT_NE(noxdevSetTVOut(device, 1, 2), kGood);
  EXPECT_NE(noxdevIOCtl(device, 1, 2, 3), kGood);

  EXPECT_EQ(noxdevCloseDevice(device), kGood);
  expect_capability(planned.m_capability);
}

TEST_F(VirtualDevices, JournalEveryCallWithWhatWentIn) {
  EXPECT_TRUE(zebdev::TakeJournal().empty());
  Create(0);
  zebdev::StartJournal();
  NoxdevHandle device = Create(1);
  tag_DEVICECAP capability;
  noxdevGetDeviceCap(device, &capability);
  noxdevOpenDevice(device, 3, "d:\\dev\\");
  noxdevOpenDevice(device, 3, nullptr);
  noxdevSetTVOut(device, 1, 2);
  noxdevIOCtl(device, 255, 3, 4);
  noxdevRestore(device);
  int is_valid = 0;
  noxdevChIsValidID(device, 7, &is_valid);
  noxdevCloseDevice(device);
  noxdevDestroyDevice(device);
  noxdevDestroyDevice(device);
  noxdevInvalidate();
  noxdevInitialize(9, 0);
  DWORD count = 0;
  noxdevGetDeviceNum(&count);
  const Lines expected = {
      "noxdevCreateDevice 1",
      "noxdevGetDeviceCap 1",
      "noxdevOpenDevice 1 3 d:\\dev\\",
      "noxdevOpenDevice 1 3 - failed",
      "noxdevSetTVOut 1 1 2",
      "noxdevIOCtl 1 255 3 4",
      "noxdevRestore 1",
      "noxdevChIsValidID 1 7",
      "noxdevCloseDevice 1",
      "noxdevDestroyDevice 1",
      "noxdevDestroyDevice - failed",
      "noxdevInvalidate",
      "noxdevInitialize 9 0",
      "noxdevGetDeviceNum",
  };
  EXPECT_EQ(zebdev::TakeJournal(), expected);
  EXPECT_TRUE(zebdev::TakeJournal().empty());
}

TEST_F(VirtualDevices, FailTheCallsThatAreToldToWithoutAnyEffect) {
  NoxdevHandle device = Create(0);
  zebdev::StartJournal();
  zebdev::FailCall(Function::kOpenDevice, 2);
  zebdev::FailCall(Function::kCloseDevice, 1);
  zebdev::FailCall(Function::kCloseDevice, 2);
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_NE(noxdevCloseDevice(device), kGood);
  EXPECT_NE(noxdevCloseDevice(device), kGood);
  EXPECT_EQ(noxdevCloseDevice(device), kGood);
  EXPECT_NE(noxdevOpenDevice(device, 0, "c:\\"), kGood);
  EXPECT_EQ(noxdevOpenDevice(device, 0, "c:\\"), kGood);

  zebdev::FailCall(Function::kDestroyDevice, 1);
  EXPECT_NE(noxdevDestroyDevice(device), kGood);
  EXPECT_EQ(noxdevDestroyDevice(device), kGood);
  EXPECT_EQ(zebdev::TakeJournal()[1], "noxdevCloseDevice 0 failed");
}

}  // namespace
