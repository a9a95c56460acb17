// Channels on threads of their own, and calls from several threads. A paced channel makes its first
// frame at once, so nothing here waits for a clock unless it is stepped.
#include <future>
#include <thread>

#include "platform/framework/error_report.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/zebdev/software/frame_schedule.h"
#include "tests/platform/zebdev/channel_fixture.h"

using namespace zebx;

namespace {

class PacedChannels : public ChannelTest {
 protected:
  void SetUp() override {
    Open(0x040, 2, 0);
    zebdev::SetDrive(zebdev::Drive::kPaced);
    zebdev::SetSource(0, 0, m_camera);
    zebdev::SetSource(0, 1, std::make_shared<TestCamera>());
  }
};

TEST_F(PacedChannels, KeepToTheClockInForce) {
  std::promise<void> second;
  std::atomic<int> frames = 0;
  m_host.m_answer = [&](DWORD, void*) {
    if (++frames == 2) second.set_value();
    return 0;
  };
  ASSERT_EQ(Start(0), kGood);
  while (frames < 1) std::this_thread::yield();
  EXPECT_NE(zebdev::StepChannel(0, 0), 1) << "it has a thread";
  m_clock.Advance(200);
  second.get_future().wait();
  EXPECT_EQ(noxdevChStop(m_device, 0), kGood);
  const auto calls = m_host.Take();
  ASSERT_EQ(calls.size(), 2U) << "frames that nobody had time for are left out";
  EXPECT_EQ(calls[1].Head().m_time_stamp - calls[0].Head().m_time_stamp, 200U);
  EXPECT_EQ(m_camera->m_time_ms, 200U);
}

TEST(FrameSchedule, AddsNothingUp) {
  zebdev::FrameSchedule schedule(0xFFFFFFF0, 30);
  std::size_t samples = 0;
  ULONGLONG time_ms = 0;
  for (int frame = 0; frame <= 3000; ++frame) {
    const auto taken = schedule.Take();
    samples += frame == 0 ? 0 : taken.m_samples;
    time_ms = taken.m_time_ms;
  }
  EXPECT_EQ(time_ms, 100'000U);
  EXPECT_EQ(samples, 800'000U);
  EXPECT_EQ(schedule.MsToNext(0xFFFFFFF0 + 100'000), 34U);
  EXPECT_EQ(schedule.MsToNext(0xFFFFFFF0 + 90'000), 34U) << "a clock set back stands still";
  EXPECT_EQ(schedule.MsToNext(0xFFFFFFF0 + 90'033), 1U);
  const auto late = schedule.TakeLatest(0xFFFFFFF0 + 3'600'000);
  EXPECT_EQ(late.m_samples, 8000U) << "a second at most";
  schedule.SetRate(10);
  EXPECT_EQ(schedule.Take().m_time_ms, late.m_time_ms + 100);
}

TEST_F(PacedChannels, MayCallTheDoorAndBeEndedFromInsideTheirCallback) {
  tag_MASKSTATE masks = {};
  const tag_CHANNELCONFIG config = {};
  const std::function<void()> cases[] = {
      [&] {
        EXPECT_EQ(noxdevChGetMaskInfo(m_device, 0, &masks) | noxdevChRequestIFrame(m_device, 0) |
                      Configure(config) | noxdevChEnumPreAlarmData(m_device, 0, 0, 0) |
                      noxdevRestore(m_device) | Start(1) | CaptureSmall() |
                      noxdevChStop(m_device, 1),
                  kGood);
      },
      [&] { EXPECT_EQ(noxdevChStop(m_device, 0), kGood); },
      [&] { EXPECT_EQ(Start(0) | noxdevChStop(m_device, 0), kGood); },
      [&] { EXPECT_EQ(noxdevCloseDevice(m_device), kGood); },
      [&] { EXPECT_EQ(noxdevDestroyDevice(m_device), kGood); },
      [&] { EXPECT_EQ(noxdevInvalidate(), kGood); },
      [&] { zebdev::SetDevicePlan({}); },
  };
  for (const auto& end : cases) {
    SetUp();
    std::promise<void> ended;
    std::atomic<int> calls = 0;
    m_host.m_answer = [&](DWORD, void*) {
      if (++calls > 1) return 0;
      end();
      ended.set_value();
      return 0;
    };
    ASSERT_EQ(Start(0), kGood);
    ended.get_future().wait();
    zebdev::SetDevicePlan({});
    EXPECT_LE(calls, 2) << "what was started inside alone may have called";
  }
}

// A window's procedure that answers a channel's callback stops the channel.
TEST_F(PacedChannels, MaySendToTheThreadThatStopsThem) {
  HWND window =
      Make([&](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return noxdevChStop(m_device, 0) + 43; });
  std::atomic<LRESULT> answer = -1;
  m_host.m_answer = [&](DWORD, void*) {
    answer = os::SendMessage(window, os::kWmUser, 0, 0);
    return 0;
  };
  ASSERT_EQ(Start(0), kGood);
  for (os::Message message; answer < 0; std::this_thread::yield()) os::PeekMessage(&message);
  EXPECT_EQ(answer, 0) << "answered early";
  EXPECT_EQ(zebdev::CallChannel(0, 0, 2, 0, 0, nullptr), std::nullopt) << "it is stopped";
}

// Two callbacks that stop each other's channel, and two threads inside the same one.
TEST_F(PacedChannels, DoNotWaitForEachOtherInACircle) {
  std::promise<void> both;
  std::atomic<int> inside = 0, over = 0;
  // Once two callbacks run, stops that channel.
  const auto stop = [&](DWORD channel) {
    return [&, channel](DWORD, void*) {
      if (++inside == 2) both.set_value();
      while (inside < 2) std::this_thread::yield();
      noxdevChStop(m_device, channel);
      ++over;
      return 0;
    };
  };
  ChannelHost other;
  m_host.m_answer = stop(1);
  other.m_answer = stop(0);
  ASSERT_EQ(Start(0), kGood);
  ASSERT_EQ(noxdevChStart(m_device, 1, 0, ChannelHost::Call, &other), kGood);
  both.get_future().wait();
  while (over < 2) std::this_thread::yield();
  EXPECT_EQ(m_host.Count() + other.Count(), 2U);

  inside = over = 0;
  both = {};
  zebdev::SetDrive(zebdev::Drive::kStepped);
  m_host.m_answer = stop(0);
  ASSERT_EQ(Start(0), kGood);
  const auto call = [&] { zebdev::CallChannel(0, 0, 99, 0, 0, nullptr); };
  std::thread first(call), second(call);
  first.join();
  second.join();
  EXPECT_EQ(over, 2);
}

TEST_F(PacedChannels, EndWithTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto exit_while_running = [&] {
    std::promise<void> is_inside;
    m_host.m_answer = [&](DWORD, void*) {
      is_inside.set_value();
      // While all is being ended: nothing new is granted, and errors are still reported.
      while (noxdevChRequestIFrame(m_device, 0) == kGood) std::this_thread::yield();
      if (noxdevCreateDevice(&m_device, 0) != kGood) ReportError(std::runtime_error("refused"));
      return 0;
    };
    SetErrorSink([](const std::exception& error) { std::fputs(error.what(), stderr); });
    ASSERT_EQ(Start(0), kGood);
    is_inside.get_future().wait();
    std::exit(0);
  };
  EXPECT_EXIT(exit_while_running(), testing::ExitedWithCode(0), "^refused$");
}

// Host calls of all kinds from two threads while frames flow.
TEST_F(PacedChannels, TakeCallsFromSeveralThreads) {
  HWND window = Make(AddParameters, nullptr, {0, 0, 32, 32});
  const auto work = [&](DWORD channel) {
    const tag_MASKAREA area = {0, 0, 4, 4};
    for (int round = 0; round < 20; ++round) {
      Start(channel);
      noxdevChStartPreviewVideo(m_device, channel, window, 0);
      noxdevChAddMaskArea(m_device, channel, &area);
      CaptureSmall();
      noxdevChEnumPreAlarmData(m_device, channel, 0, 0);
      noxdevChChangeShow(m_device, channel, static_cast<DWORD>(round) % 3);
      noxdevRestore(m_device);
      zebdev::ShowFaces(0, channel, 1);
      m_clock.Advance(40);
      if (round % 2 == 0) noxdevChClearMaskArea(m_device, channel);
      if (round % 4 == 0) noxdevChStop(m_device, channel);
      // Only one thread has channel 1: what it stopped stays so.
      if (channel == 1 && round % 4 == 0) {
        EXPECT_EQ(zebdev::CallChannel(0, 1, 2, 0, 0, nullptr), std::nullopt);
      }
    }
  };
  std::thread other(work, 1), same(work, 0);
  work(0);
  other.join();
  same.join();
  EXPECT_EQ(noxdevCloseDevice(m_device), kGood);
  EXPECT_EQ(noxdisplay::CountStreams(), 0U);
}

TEST_F(ChannelTest, RefusesCallsWithoutAnOpenDeviceARunOrARecord) {
  const tag_MASKAREA area = {1, 2, 3, 4};
  tag_MASKSTATE masks = {};
  tag_DEVCOLOR color = {1, 2, 3, 4};
  const tag_CHANNELCONFIG config = {};
  const std::function<int()> of_a_run[] = {
      [&] { return noxdevChRequestIFrame(m_device, 0); },
      [&] { return noxdevChEnumPreAlarmData(m_device, 0, 1, 2); },
      [&] { return noxdevChStartPreviewVideo(m_device, 0, nullptr, 0); },
  };
  const std::function<int()> of_a_channel[] = {
      [&] { return noxdevChSetChannelName(m_device, 0, "door"); },
      [&] { return Configure(config); },
      [&] { return noxdevChStartPreviewAudio(m_device, 0); },
      [&] { return noxdevChStopPreviewAudio(m_device, 0); },
      [&] { return noxdevChChangeShow(m_device, 0, 2); },
      [&] { return CaptureSmall(); },
      [&] { return noxdevChSetVideoColor(m_device, 0, &color); },
      [&] { return noxdevChGetVideoColor(m_device, 0, &color); },
      [&] { return noxdevChAddMaskArea(m_device, 0, &area); },
      [&] { return noxdevChGetMaskInfo(m_device, 0, &masks); },
      [&] { return noxdevChClearMaskArea(m_device, 0); },
      [&] { return Start(0); },
      [&] { return noxdevChStop(m_device, 0); },
  };
  for (const auto& call : of_a_channel) EXPECT_EQ(call(), kGood);
  for (const auto& call : of_a_run) EXPECT_NE(call(), kGood);
  zebdev::FailCall(zebdev::Function::kChStart, 1);
  EXPECT_NE(Start(0), kGood);
  EXPECT_EQ(zebdev::StepChannel(0, 0), 0);
  EXPECT_EQ(Start(0), kGood);
  for (const auto& call : of_a_run) EXPECT_EQ(call(), kGood);
  EXPECT_EQ(noxdevChSetChannelName(m_device, 0, nullptr) * noxdevChSetConfig(m_device, 0, nullptr) *
                noxdevChStart(m_device, 0, 0, nullptr, nullptr) *
                noxdevChSetVideoColor(m_device, 0, nullptr) *
                noxdevChGetVideoColor(m_device, 0, nullptr) *
                noxdevChAddMaskArea(m_device, 0, nullptr) *
                noxdevChGetMaskInfo(m_device, 0, nullptr) * noxdevGetDefaultColor(1, nullptr, 0) *
                noxdevChSetChannelName(m_device, 9, "none"),
            1)
      << "each has failed";
  EXPECT_EQ(noxdevCloseDevice(m_device), kGood);
  for (const auto& call : of_a_channel) EXPECT_NE(call(), kGood);
}

}  // namespace
