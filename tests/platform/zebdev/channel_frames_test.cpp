#include <set>

#include "platform/framework/error_report.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/video_format.h"
#include "platform/zebdev/software/pre_alarm_ring.h"
#include "tests/platform/zebdev/channel_fixture.h"
#include "tests/support/temp_dir.h"

using namespace zebx;

namespace {

std::span<const BYTE> VideoOf(const ChannelCall& call) {
  return std::span(call.m_packet).subspan(sizeof(tag_DEVFRAME), call.Head().m_video_bytes);
}

noxcodec::PacketHeader CodedAs(const ChannelCall& call) {
  return noxcodec::OpenPacket(VideoOf(call)).value_or(noxcodec::PacketHeader{});
}

tag_CHANNELCONFIG Speed(DWORD speed) {
  tag_CHANNELCONFIG config = {};
  config.m_valid = zebdev::kConfigHasSpeed;
  config.m_speed = speed;
  return config;
}

TEST_F(ChannelTest, DeliversFramesInTheFormOfThePacket) {
  tag_CHANNELCONFIG config = {};
  config.m_streams = zebdev::kConfigEncodesVideo | zebdev::kConfigEncodesAudio;
  EXPECT_EQ(Configure(config), kGood);
  StartCamera();
  ChannelCall call = StepFrame();
  EXPECT_EQ(call.m_type, kNoxdevLiveFrame);
  EXPECT_EQ(call.m_first, reinterpret_cast<std::uintptr_t>(m_device));
  EXPECT_EQ(call.m_second, 0U);
  EXPECT_EQ(call.Flags(), 0U) << "streams hold with the encoder's bit only";
  EXPECT_EQ(call.Head().m_time_stamp, 0xFFFFFF00 + 40);
  EXPECT_EQ(call.Head().m_speech_bytes, 0U);

  config.m_valid = zebdev::kConfigHasEncoder;
  EXPECT_EQ(Configure(config), kGood);
  call = StepFrame();
  EXPECT_EQ(call.Flags(), zebdev::kPacketHasSpeech | 1);
  // 40 ms are 320 samples, in half as many bytes behind a head of 11.
  EXPECT_EQ(call.Head().m_speech_bytes, 171U);
  NxcHandle speech = nullptr;
  ASSERT_EQ(nxcCreateAudioDecoder(&speech, 0), 0);
  DWORD samples = 0;
  EXPECT_EQ(nxcDecodeAudio(speech, &call.m_packet.end()[-171], 171, nullptr, &samples), 0);
  EXPECT_EQ(samples, 320U);
  nxcDestroyHandle(speech);

  m_camera->m_has_sound = false;
  EXPECT_EQ(StepFrame().Flags(), 1U);
  config.m_streams = 0;
  EXPECT_EQ(Configure(config), kGood);
  EXPECT_TRUE(Step().empty()) << "no video is encoded";
  config.m_streams = zebdev::kConfigEncodesVideo;
  EXPECT_EQ(Configure(config), kGood);
  EXPECT_TRUE(StepFrame().IsIFrame());
}

TEST_F(ChannelTest, EncodesAtTheSizeOfItsMode) {
  const struct {
    DWORD type, mode, channel;
    int width, height;
  } cases[] = {
      {0x001, 0, 0, 352, 288}, {0x001, 1, 0, 320, 240}, {0x040, 1, 0, 352, 240},
      {0x100, 1, 1, 352, 240}, {0x400, 1, 0, 352, 240}, {0x001, 2, 0, 704, 288},
      {0x040, 3, 0, 640, 240}, {0x400, 3, 0, 704, 240}, {0x800, 3, 2, 320, 120},
  };
  for (const auto& [type, mode, channel, width, height] : cases) {
    Open(type, 2, mode);
    EXPECT_EQ(Start(channel), kGood);
    const auto coded = CodedAs(StepFrame(channel));
    EXPECT_EQ(std::pair(coded.width, coded.height), std::pair(width, height))
        << type << ' ' << mode;
  }
  EXPECT_EQ(Start(3), kGood);
  EXPECT_NE(Start(4), kGood);
  int is_valid = 1;
  EXPECT_EQ(noxdevChIsValidID(m_device, 2, &is_valid), kGood);
  EXPECT_EQ(is_valid, 0);
}

TEST_F(ChannelTest, KeepsToItsRateAndBeginsEachSecondWithAnIFrame) {
  EXPECT_EQ(Configure(Speed(5)), kGood);
  StartCamera();
  std::vector<int> i_frames;
  for (int frame = 0; frame < 14; ++frame) {
    if (frame == 7) noxdevChRequestIFrame(m_device, 0);
    if (StepFrame().IsIFrame()) i_frames.push_back(frame);
  }
  EXPECT_EQ(i_frames, (std::vector{0, 5, 7, 12}));
  EXPECT_EQ(m_camera->m_time_ms, 2600U);
  EXPECT_EQ(m_camera->m_sample, 14 * 1600);

  EXPECT_EQ(Configure(Speed(1000)), kGood) << "as many as the standard has";
  EXPECT_EQ(Configure(Speed(0)), kGood);
  StepFrame();
  EXPECT_EQ(m_camera->m_time_ms, 2640U);

  tag_CHANNELCONFIG config = {};
  config.m_valid = zebdev::kConfigHasQuality;
  for (const auto& [quality, quantiser_i] :
       {std::pair(0U, 12), {1U, 12}, {2U, 10}, {6U, 8}, {7U, 6}, {9U, 4}, {99U, 4}}) {
    config.m_quality = quality;
    EXPECT_EQ(Configure(config), kGood);
    EXPECT_EQ(noxdevChRequestIFrame(m_device, 0), kGood);
    EXPECT_EQ(CodedAs(StepFrame()).quantiser, quantiser_i) << quality;
  }
}

TEST_F(ChannelTest, FlagsLostVideoWhereThatIsChecked) {
  StartCamera();
  const auto lit = VideoOf(StepFrame()).size();
  zebdev::LoseVideo(0, 0, true);
  EXPECT_EQ(StepFrame().Flags() & zebdev::kPacketVideoLost, zebdev::kPacketVideoLost);
  zebdev::LoseVideo(0, 0, false);
  EXPECT_EQ(StepFrame().Flags() & zebdev::kPacketVideoLost, 0U);
  m_camera->m_sees = false;
  EXPECT_EQ(StepFrame().Flags() & zebdev::kPacketVideoLost, zebdev::kPacketVideoLost);

  tag_CHANNELCONFIG config = {};
  config.m_valid = zebdev::kConfigHasEncoder;
  config.m_streams = zebdev::kConfigEncodesVideo;
  EXPECT_EQ(Configure(config), kGood);
  EXPECT_EQ(noxdevChRequestIFrame(m_device, 0), kGood);
  const ChannelCall dark = StepFrame();
  EXPECT_EQ(dark.Flags(), 0U);
  EXPECT_LT(VideoOf(dark).size(), lit);
  m_camera->m_sees = m_camera->m_has_own_size = true;
  const ChannelCall other = StepFrame();
  EXPECT_LT(VideoOf(other).size(), lit) << "not a picture of that size";
  m_camera->m_has_own_size = false;

  // A camera that cannot go on gives no frame, and says so once, to somebody who may look.
  m_camera->m_is_broken = true;
  int reports = 0;
  SetErrorSink([&](const std::exception&) {
    ++reports;
    EXPECT_EQ(CaptureSmall(), kGood);
  });
  EXPECT_TRUE(Step().empty());
  EXPECT_TRUE(Step().empty());
  SetErrorSink({});
  EXPECT_EQ(reports, 1);
  m_camera->m_is_broken = false;
  EXPECT_TRUE(StepFrame().IsIFrame());
}

// Gives an I-frame when asked for one, but not always at once.
class NetworkCamera final : public zebdev::ChannelSource {
 public:
  bool DrawPicture(ULONGLONG, noxcodec::Picture&) override { return false; }
  bool IsCompressed() const override { return true; }
  bool ReadFrame(ULONGLONG, bool needs_i_frame, zebdev::CompressedFrame& frame) override {
    frame = {static_cast<BYTE>(needs_i_frame ? 0 : 1), 5, {1, 2, 3}};
    return m_has_frame;
  }

  bool m_has_frame = true;
};

TEST_F(ChannelTest, PassesFramesOnThatAreCompressedAlready) {
  const auto camera = std::make_shared<NetworkCamera>();
  zebdev::SetSource(0, 0, camera);
  EXPECT_EQ(Start(0), kGood);
  ChannelCall call = StepFrame();
  EXPECT_EQ(call.Flags(), 0x00500000U);
  EXPECT_EQ(std::vector<BYTE>(VideoOf(call).begin(), VideoOf(call).end()),
            (std::vector<BYTE>{1, 2, 3}));
  EXPECT_FALSE(StepFrame().IsIFrame());
  EXPECT_EQ(noxdevChRequestIFrame(m_device, 0), kGood);
  camera->m_has_frame = false;
  EXPECT_TRUE(Step().empty());
  camera->m_has_frame = true;
  EXPECT_TRUE(StepFrame().IsIFrame()) << "the request holds until there is one";
  zebdev::LoseVideo(0, 0, true);
  call = StepFrame();
  EXPECT_EQ(call.Flags(), zebdev::kPacketVideoLost) << "a dark I-frame of its own";
  zebdev::LoseVideo(0, 0, false);
  EXPECT_EQ(noxdevChRequestIFrame(m_device, 0), kGood);
  EXPECT_TRUE(StepFrame().IsIFrame());
  EXPECT_FALSE(StepFrame().IsIFrame()) << "once for both reasons";
  EXPECT_NE(CaptureSmall(), kGood) << "there is no picture any more";
}

TEST_F(ChannelTest, FindsMotionAndAlarmsInItsAreas) {
  StartCamera();
  const auto add = [&](const tag_MASKAREA& area) {
    return noxdevChAddMaskArea(m_device, 0, &area);
  };
  constexpr tag_MASKAREA kBad[] = {
      {0, 0, 23, 4}, {0, 0, 4, 19}, {4, 0, 4, 4}, {0, 5, 4, 4}, {0xFFFFFFFF, 0, 4, 4}};
  for (const tag_MASKAREA& area : kBad) EXPECT_NE(add(area), kGood) << &area - kBad;
  EXPECT_EQ(add({0, 0, 10, 6}), kGood);
  EXPECT_EQ(add({12, 8, 22, 18}), kGood);
  tag_CHANNELCONFIG config = {};
  config.m_valid = zebdev::kConfigHasAlarmFrames | zebdev::kConfigHasMotionSensitivity;
  config.m_alarm_frames = 2;
  config.m_motion_sensitivity = 16;
  EXPECT_EQ(Configure(config), kGood);

  using States = std::vector<DWORD>;
  const auto states = [&] {
    tag_MASKSTATE state = {};
    EXPECT_EQ(noxdevChGetMaskInfo(m_device, 0, &state), kGood);
    return States{state.m_count, state.m_areas[0].m_state, state.m_areas[1].m_state};
  };
  const auto is_alarm = [&] { return (StepFrame().Flags() & zebdev::kPacketVideoAlarm) != 0; };
  EXPECT_FALSE(is_alarm());
  EXPECT_EQ(states(), (States{2, 0, 0}));
  m_camera->m_square_at = 64;
  EXPECT_FALSE(is_alarm());
  EXPECT_EQ(states(), (States{2, zebdev::kMaskMotion, 0}));
  m_camera->m_square_at = 0;
  EXPECT_TRUE(is_alarm());
  m_camera->m_is_repeated = true;
  EXPECT_TRUE(is_alarm()) << "the same picture once more";
  EXPECT_EQ(states(), (States{2, zebdev::kMaskMotion | zebdev::kMaskAlarm, 0}));
  m_camera->m_is_repeated = false;
  EXPECT_FALSE(is_alarm());
  EXPECT_EQ(states(), (States{2, 0, 0}));
  m_camera->m_sees = false;
  EXPECT_FALSE(is_alarm()) << "lost video does not move";

  for (int more = 2; more < 32; ++more) EXPECT_EQ(add({0, 0, 2, 2}), kGood);
  EXPECT_NE(add({0, 0, 2, 2}), kGood);
  EXPECT_EQ(states()[0], 32U);
  EXPECT_EQ(noxdevChClearMaskArea(m_device, 0), kGood);
  EXPECT_EQ(states(), (States{0, 0, 0}));
}

TEST_F(ChannelTest, ReplaysTheLastSecondsFromAnIFrameOn) {
  StartCamera();
  std::vector<ChannelCall> live;
  for (int frame = 0; frame < 25 * 12; ++frame) live.push_back(StepFrame());
  ASSERT_EQ(noxdevChEnumPreAlarmData(m_device, 0, 77, 88), kGood);
  auto replayed = m_host.Take();
  ASSERT_GE(replayed.size(), 125U);
  EXPECT_LE(replayed.size(), 150U);
  EXPECT_TRUE(replayed.front().IsIFrame());
  for (std::size_t back = 1; back <= replayed.size(); ++back) {
    const ChannelCall& call = *(replayed.end() - static_cast<std::ptrdiff_t>(back));
    EXPECT_EQ(call.m_packet, (live.end() - static_cast<std::ptrdiff_t>(back))->m_packet);
    EXPECT_EQ(call.m_type, kNoxdevPreAlarmFrame);
    EXPECT_EQ(std::pair(call.m_first, call.m_second),
              std::pair(std::uintptr_t{77}, std::uintptr_t{88}));
  }

  // Asked for inside a live frame, that frame is not among them; and a stop ends it.
  std::size_t steps = 0;
  m_host.m_answer = [&](DWORD type, void*) {
    if (type == kNoxdevLiveFrame) return noxdevChEnumPreAlarmData(m_device, 0, 0, 0);
    if (++steps == 10) noxdevChStop(m_device, 0);
    return 0;
  };
  const auto calls = Step();
  EXPECT_EQ(calls.size(), 1U + 10);
  EXPECT_NE(calls[1].m_packet, calls[0].m_packet);
  m_host.m_answer = nullptr;
  EXPECT_EQ(Start(0), kGood);
  EXPECT_EQ(noxdevChEnumPreAlarmData(m_device, 0, 0, 0), kGood);
  EXPECT_TRUE(m_host.Take().empty()) << "a new run has no past";
  EXPECT_TRUE(StepFrame().IsIFrame());
}

// Packets are used again, and each keeps the room of the largest frame that was in it.
TEST(PreAlarmRing, KeepsLittleMoreMemoryThanItsFramesTake) {
  zebdev::PreAlarmRing ring;
  for (DWORD frame = 0; frame <= 5000; ++frame) {
    auto packet = ring.NewPacket(frame % 25 == 0);
    packet->m_bytes.resize(frame % 97 == 0 ? 1'000'000 : 1000);
    packet->m_time_stamp = frame < 5000 ? 40 * frame : 1'000'000;  // the last one frees all others
    ring.Push(std::move(packet));
  }
  std::vector<std::shared_ptr<zebdev::FramePacket>> kept;
  std::size_t bytes = 0;
  while (kept.size() < 200) {
    kept.push_back(ring.NewPacket(false));
    bytes += kept.back()->m_bytes.capacity();
  }
  EXPECT_GT(bytes, 0U);
  EXPECT_LE(bytes, 2 * zebdev::PreAlarmRing::kMaxBytes);
}

TEST_F(ChannelTest, GivesStillPicturesAndColours) {
  constexpr LONG kWidth = 176, kHeight = 144;
  std::vector<BYTE> pixels(std::size_t{3} * kWidth * kHeight);
  const CRect rectangle = {0, 0, kWidth, kHeight};
  const auto capture = [&](const CRect& area, LONG step, DWORD format = 1) {
    return noxdevChCapturePicture(m_device, 0, pixels.data(), &area, step, format);
  };
  zebdev::SetSource(0, 0, m_camera);
  // The square is in the top left corner: the last rows of a picture that is stored bottom-up.
  const auto bottom_up = [&] {
    return pixels[pixels.size() - 3 * kWidth] > 200 && pixels[0] < 160;
  };
  EXPECT_EQ(capture(rectangle, -3 * kWidth), kGood) << "without being started";
  EXPECT_TRUE(bottom_up());
  EXPECT_EQ(capture(rectangle, 3 * kWidth), kGood);
  EXPECT_FALSE(bottom_up());
  EXPECT_NE(capture({1, 0, kWidth, kHeight}, -3 * kWidth), kGood);
  EXPECT_NE(capture(rectangle, -2 * kWidth) * capture(rectangle, -3 * kWidth, 2), kGood);
  EXPECT_NE(noxdevChCapturePicture(m_device, 0, pixels.data(), nullptr, -3 * kWidth, 1), kGood);

  tag_DEVCOLOR color = {}, neutral = {};
  EXPECT_EQ(noxdevGetDefaultColor(0x040, &neutral, 0), kGood);
  EXPECT_NE(noxdevGetDefaultColor(0x041, &neutral, 0), kGood);
  EXPECT_EQ(noxdevChGetVideoColor(m_device, 0, &color), kGood);
  EXPECT_EQ(std::memcmp(&color, &neutral, sizeof(color)), 0);
  const BYTE grey = pixels.back();
  color.m_component_0 = 4000;
  EXPECT_EQ(noxdevChSetVideoColor(m_device, 0, &color), kGood);
  EXPECT_EQ(noxdevChGetVideoColor(m_device, 0, &color), kGood);
  EXPECT_EQ(color.m_component_0, 255);
  ASSERT_EQ(Start(0), kGood);
  EXPECT_EQ(capture(rectangle, 3 * kWidth), kGood) << "before the first frame";
  EXPECT_GT(pixels.back(), grey + 20);
  StepFrame();
  EXPECT_EQ(capture(rectangle, -3 * kWidth), kGood);
  EXPECT_GT(pixels.front(), grey + 20);
}

TEST_F(ChannelTest, FindsFacesAndPlaysLiveSound) {
  StartCamera();
  m_camera->m_faces = {{8, 8, 32, 40}};
  const auto faces_of = [](const std::vector<ChannelCall>& calls) {
    tag_FACEPACKET head = {};
    if (calls.size() != 2 || calls[1].m_type != kNoxdevFaces) return std::pair(BYTE{0}, DWORD{0});
    std::memcpy(&head, calls[1].m_packet.data(), sizeof(head));
    return std::pair(head.m_kind, head.m_count);
  };
  for (const auto& [asked, faces] : {std::pair(1U, 1U), {3U, 3U}, {0xFFFFFFFFU, 64U}}) {
    zebdev::ShowFaces(0, 0, asked);
    EXPECT_EQ(faces_of(Step()), std::pair(zebdev::kFacePacket, faces));
    EXPECT_EQ(Step().size(), 1U) << "once";
  }

  std::vector<std::size_t> heard;
  zebdev::SetLiveSound(
      [](void* user, DWORD device, DWORD channel, std::span<const std::int16_t> samples) {
        if (device + channel != 0) return;
        static_cast<std::vector<std::size_t>*>(user)->push_back(samples.size());
      },
      &heard);
  Step();
  EXPECT_EQ(noxdevChStartPreviewAudio(m_device, 0), kGood);
  Step();
  EXPECT_EQ(noxdevChStopPreviewAudio(m_device, 0), kGood);
  Step();
  EXPECT_EQ(heard, std::vector<std::size_t>{320});
}

// The channels of all devices count: channel 1 of the second device is the camera 3.
TEST_F(ChannelTest, PlaysTheFilmOfItsNumber) {
  const TempDir films;
  WriteWholeFile(films.File("camera3.y4m"),
                 "YUV4MPEG2 W32 H32 F25:1 C420\nFRAME\n" + std::string(32 * 32 + 32 * 16, '\x80'));
  auto first = zebdev::MakeVirtualDevice(0x001, 2), second = first;
  zebdev::SetDevicePlan({first, second});
  NoxdevHandle device = nullptr;
  const auto shade = [&](const CString& directory) {
    EXPECT_EQ(noxdevInitialize(0, 0) | noxdevCreateDevice(&device, 1), kGood);
    EXPECT_EQ(noxdevOpenDevice(device, 0, directory.c_str()), kGood);
    std::vector<BYTE> pixels(std::size_t{3} * 16 * 16);
    const CRect rectangle = {0, 0, 16, 16};
    EXPECT_EQ(noxdevChCapturePicture(device, 1, pixels.data(), &rectangle, -48, 1), kGood);
    return std::set<BYTE>(pixels.begin(), pixels.end());
  };
  EXPECT_EQ(shade(films.Path().string() + "\\").size(), 1U) << "one grey";
  second.m_directory = films.Path().string();
  zebdev::SetDevicePlan({first, second});
  EXPECT_EQ(shade("/nowhere\\").size(), 1U);

  // A film that is none is reported, and nothing is seen.
  WriteWholeFile(films.File("camera3.y4m"), "no film");
  CString report;
  SetErrorSink([&](const std::exception& error) { report = error.what(); });
  zebdev::SetDevicePlan({first, second});
  EXPECT_EQ(*shade("/nowhere\\").begin(), 0) << "dark";
  SetErrorSink({});
  EXPECT_NE(report.find("camera3.y4m"), CString::npos) << report;
}

}  // namespace
