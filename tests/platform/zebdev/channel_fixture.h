// Channels of virtual devices whose calls a test collects, and a camera whose picture it makes.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/os/clock.h"
#include "platform/zebdev/channels.h"
#include "platform/zebdev/software/virtual_channels.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "tests/support/window_fixture.h"

namespace zebdev = zebx::zebdev;

constexpr int kGood = 0;

// Grey, with a white square of 64 pixels where it is told; a tone; faces.
class TestCamera final : public zebdev::ChannelSource {
 public:
  bool DrawPicture(ULONGLONG time_ms, zebx::noxcodec::Picture& picture) override {
    if (m_is_broken) throw std::bad_alloc();
    if (m_has_own_size) picture = zebx::noxcodec::Picture(80, 64);
    m_time_ms = time_ms;
    for (int index = 0; index < zebx::noxcodec::kPlaneCount; ++index) {
      const auto plane = picture.Plane(index);
      for (int y = 0; y < plane.height; ++y) std::fill_n(plane.Row(y), plane.width, BYTE{128});
    }
    const auto luma = picture.Plane(zebx::noxcodec::kLuma);
    for (int y = 0; y < 64; ++y) std::fill_n(luma.Row(y) + m_square_at, 64, BYTE{235});
    return m_sees;
  }
  bool ReadSound(std::span<std::int16_t> samples) override {
    for (std::int16_t& sample : samples) sample = static_cast<std::int16_t>(m_sample++ % 64 * 100);
    return m_has_sound;
  }
  bool IsRepeated() const override { return m_is_repeated; }
  std::vector<FaceArea> Faces() const override { return m_faces; }

  int m_square_at = 0;
  bool m_is_repeated = false;
  bool m_sees = true;
  bool m_is_broken = false;
  bool m_has_own_size = false;
  bool m_has_sound = true;
  int m_sample = 0;
  ULONGLONG m_time_ms = 0;
  std::vector<FaceArea> m_faces;
};

struct ChannelCall {
  DWORD m_type;
  std::uintptr_t m_first, m_second;
  std::vector<BYTE> m_packet;

  tag_DEVFRAME Head() const {
    tag_DEVFRAME head = {};
    std::memcpy(&head, m_packet.data(), sizeof(head));
    return head;
  }
  DWORD Flags() const { return Head().m_flags; }
  bool IsIFrame() const { return (Flags() & zebdev::kPacketTypeMask) == 0; }
};

// What a channel is started with. It may be called by several threads.
class ChannelHost {
 public:
  // Called for each call, after it was written down, whose answer it gives.
  std::function<int(DWORD type, void* packet)> m_answer;

  static int Call(void* context, DWORD type, std::uintptr_t first, std::uintptr_t second,
                  void* packet) {
    auto& host = *static_cast<ChannelHost*>(context);
    const auto* bytes = static_cast<const BYTE*>(packet);
    std::size_t length = 0;
    if (type == kNoxdevLiveFrame || type == kNoxdevPreAlarmFrame) {
      tag_DEVFRAME head = {};
      std::memcpy(&head, packet, sizeof(head));
      length = sizeof(head) + head.m_video_bytes + head.m_speech_bytes;
    } else if (type == kNoxdevFaces) {
      length = sizeof(tag_FACEPACKET);
    }
    {
      const std::lock_guard lock(host.m_mutex);
      host.m_calls.push_back({type, first, second, {bytes, bytes + length}});
    }
    return host.m_answer ? host.m_answer(type, packet) : 0;
  }

  std::vector<ChannelCall> Take() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
  }
  std::size_t Count() {
    const std::lock_guard lock(m_mutex);
    return m_calls.size();
  }

 private:
  std::mutex m_mutex;
  std::vector<ChannelCall> m_calls;  // guarded by m_mutex
};

// One device, open, with channels that are stepped on a clock that is.
class ChannelTest : public WindowTest {
 protected:
  void SetUp() override { Open(0x040, 2, 0); }
  void TearDown() override {
    zebdev::SetDevicePlan({});
    WindowTest::TearDown();
  }

  void Open(DWORD device_type, BYTE channels, DWORD mode, const char* directory = "/nowhere\\") {
    zebdev::SetDevicePlan({zebdev::MakeVirtualDevice(device_type, channels)});
    zebdev::SetDrive(zebdev::Drive::kStepped);
    ASSERT_EQ(noxdevInitialize(0, 0) | noxdevCreateDevice(&m_device, 0), kGood);
    ASSERT_EQ(noxdevOpenDevice(m_device, mode, directory), kGood);
  }
  // Starts channel 0 with the test's own camera.
  void StartCamera() {
    zebdev::SetSource(0, 0, m_camera);
    ASSERT_EQ(Start(0), kGood);
  }
  int Start(DWORD channel) {
    return noxdevChStart(m_device, channel, 0, ChannelHost::Call, &m_host);
  }
  // The calls of one more frame, a frame period later.
  std::vector<ChannelCall> Step(DWORD channel = 0) {
    m_clock.Advance(40);
    EXPECT_EQ(zebdev::StepChannel(0, channel), 1);
    return m_host.Take();
  }
  // The live frame among them.
  ChannelCall StepFrame(DWORD channel = 0) {
    const auto calls = Step(channel);
    EXPECT_FALSE(calls.empty());
    return calls.empty() ? ChannelCall{0, 0, 0, std::vector<BYTE>(sizeof(tag_DEVFRAME))} : calls[0];
  }
  // A small still picture of channel 0.
  int CaptureSmall() {
    std::vector<BYTE> pixels(std::size_t{3} * 16 * 16);
    const CRect rectangle = {0, 0, 16, 16};
    return noxdevChCapturePicture(m_device, 0, pixels.data(), &rectangle, -48, 1);
  }
  int Configure(const tag_CHANNELCONFIG& config, DWORD channel = 0) {
    return noxdevChSetConfig(m_device, channel, &config);
  }

  os::SteppedClock m_clock{1'000'000, 0xFFFFFF00};
  NoxdevHandle m_device = nullptr;
  ChannelHost m_host;
  std::shared_ptr<TestCamera> m_camera = std::make_shared<TestCamera>();
};
