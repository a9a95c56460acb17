// What a camera makes of the calls of its channel: frames, captions, faces and frames from before
// an alarm, and calls that do not fit.
#include <bit>

#include "platform/os/clock.h"
#include "record/mox_face.h"
#include "record/zeb_file.h"
#include "tests/capture/camera_fixture.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

using namespace zebx;

namespace {

constexpr DWORD kSpeech = 0x80000000;
constexpr DWORD kVideoCapacity = 640 * 240 * 2;
constexpr DWORD kSpeechCapacity = 65536;

// What the device library answers when it is asked for the state of masks.
std::function<int(tag_MASKSTATE*)> g_look_at_masks;

class ChannelCallback : public CameraLibrary {
 protected:
  ~ChannelCallback() override { g_look_at_masks = nullptr; }
};

TEST_F(ChannelCallback, LiveFramesReachTheHost) {
  OpenBoard();
  ASSERT_EQ(Open(), 1);
  BringFrame(Packet(kSpeech | 0x00A30000, 1000, "video", "speech"));
  ASSERT_EQ(m_notified, 1);
  EXPECT_EQ(*m_frame->GetCameraID(), m_id);
  EXPECT_EQ(m_frame->GetFlag(), 0xC0A3) << "voice, real-time, encoder 10, alarm, lost";
  EXPECT_EQ(m_frame->GetFrameType(), 0);
  EXPECT_EQ(m_frame->GetTimeStamp(), 1000U);
  EXPECT_EQ(std::string(m_frame->GetVideoBuf(), m_frame->GetVideoBuf() + 5), "video");
  EXPECT_EQ(std::string(m_frame->GetSpeechBuf(), m_frame->GetSpeechBuf() + 6), "speech");
  EXPECT_EQ(m_frame->GetVideoLength() * 10 + m_frame->GetSpeechLength(), 56U);

  BringFrame(Head(0x7F53FFFE, 1040, 1, 0xFFFFFFFF) + "P");
  EXPECT_EQ(m_notified, 2);
  EXPECT_EQ(m_frame->GetFlag(), 0x4053) << "no speech, whatever its length says";
  EXPECT_EQ(m_frame->GetFrameType(), 0xFE);
  EXPECT_EQ(m_frame->GetSpeechLength(), 0U);
  EXPECT_EQ(m_frame->GetFrameIndex(), 1) << "counted from the I-frame on";
}

TEST_F(ChannelCallback, IgnoresWhatDoesNotFit) {
  OpenBoard();
  ASSERT_EQ(Open(), 1);
  BringFrame(Packet(1, 1000, "video"));
  const std::uintptr_t handle = Handle();
  std::string frame = Packet(0, 2000, "x");
  EXPECT_EQ(Call(2, handle + 1, 0, frame.data()) | Call(2, handle, 2, frame.data()) |
                Call(2, handle, 0, nullptr) | Call(5, 0, 0, frame.data()) |
                Call(128, handle + 1, 0, frame.data()) | Call(128, handle, 0, nullptr) |
                Call(3, handle, 0, frame.data()) | Call(0xFFFFFFFF, handle, 0, frame.data()),
            0);
  EXPECT_EQ(Call(4, handle + 1, 0, frame.data()), -1);
  // Too large: nothing of the frame before is touched.
  BringFrame(Head(0, 2000, kVideoCapacity + 1, 0));
  BringFrame(Head(0, 2000, 0xFFFFFFFF, 0));
  BringFrame(Head(kSpeech, 2000, 1, kSpeechCapacity + 1));
  EXPECT_EQ(m_notified, 1);
  EXPECT_EQ(m_frame->GetTimeStamp(), 1000U);
  EXPECT_EQ(m_frame->GetFrameIndex(), 1);
  const std::string speech(kSpeechCapacity, 's');
  BringFrame(Packet(kSpeech, 2000, std::string(kVideoCapacity, 'v'), speech));
  EXPECT_EQ(m_frame->GetVideoLength(), kVideoCapacity) << "what just fits";
  EXPECT_EQ(m_frame->GetSpeechLength(), kSpeechCapacity);
}

TEST_F(ChannelCallback, FillsCaptionsAndLeavesTheRestAlone) {
  OpenBoard();
  ASSERT_EQ(Open(), 1);
  m_show.SetCameraName("100%% %s" + std::string(80, 'c'));
  m_show.SetBoardName("B");
  m_show.SetTimeBegin(CString("10:20:30"));
  m_show.SetCaptionColor(0x00112233);
  const std::string untouched(sizeof(tag_CAPTIONINFO), '\xEE');
  const auto caption = [&] {
    std::string record = untouched;
    EXPECT_EQ(Call(kNoxdevCaptionRequest, Handle(), 8, record.data()), 0);
    return record;
  };
  std::string expected = untouched;
  const auto expect = [&](std::size_t offset, const std::string& bytes) {
    expected.replace(offset, bytes.size(), bytes);
  };
  // 0xEEEEEEEE without bits 0 to 6, 9 and 13, and with bit 7.
  expect(0, Little(0xEEEECC80));
  expect(128, "100% " + std::string(62, 'c') + '\0' + Little(0x00112233));
  expect(200, std::string("B") + '\0');
  expect(268, Little(0x00112233));
  expect(340, Little(0x00112233));
  EXPECT_EQ(caption(), expected);
  const std::pair<void (CShowParam::*)(int), DWORD> marks[] = {
      {&CShowParam::SetMonitor, 0x01}, {&CShowParam::SetProgramming, 0x10},
      {&CShowParam::SetActive, 0x20},  {&CShowParam::SetAlarm, 0x40},
      {&CShowParam::SetRecord, 0x200}, {&CShowParam::ShowCaption, 0x0E}};
  for (const auto& [set, bits] : marks) {
    (m_show.*set)(1);
    expect(0, Little(0xEEEECC80 | bits));
    EXPECT_EQ(caption(), expected) << "and no begin time";
    (m_show.*set)(0);
  }
  m_show.ShowCaption(1);
  m_show.SetRecord(1);
  expect(0, Little(0xEEEECC8E | 0x2200));
  expect(344, std::string("10:20:30") + '\0');
  EXPECT_EQ(caption(), expected);

  EXPECT_EQ(Call(kNoxdevCaptionRequest, Handle(), 16, nullptr), -1);
  EXPECT_EQ(m_show.GetDrawStream(), std::bit_cast<NoxshowStream>(std::uintptr_t{16}));
  zebxCreateCamera(&m_id, nullptr);
  std::string record = untouched;
  EXPECT_EQ(Call(kNoxdevCaptionRequest, Handle(), 8, record.data()), -1);
  EXPECT_EQ(record, untouched);
}

TEST_F(ChannelCallback, CaptionRequestsAddWhatTheMasksSee) {
  OpenBoard();
  CMaskList masks;
  for (LONG left = 0; left < 6; ++left) AddMask(masks, left);
  ASSERT_EQ(Open(&masks), 1);
  BringFrame(Packet(0, 1000, "I"));
  TakeCalls();
  DWORD state = 0;
  g_look_at_masks = [&](tag_MASKSTATE* info) {
    info->m_count = state == 1 ? 2 : state == 2 ? 9 : 0xFFFFFFFF;
    for (auto& area : info->m_areas) area.m_state = 0xFFFFFFF0 | state;
    return 0;
  };
  const auto ask = [&](DWORD flags) {
    state = flags;
    tag_CAPTIONINFO caption = {};
    EXPECT_EQ(Call(kNoxdevCaptionRequest, Handle(), 8, &caption), 0);
    std::string seen;
    for (CObject* entry : *m_frame->GetMaskList()) {
      const auto& mask = static_cast<const CMaskInfo&>(*entry);
      seen += static_cast<char>('0' + mask.IsMove() + mask.IsAlarm());
    }
    return seen;
  };
  EXPECT_EQ(ask(0), "000000");
  EXPECT_EQ(ask(1), "110000");
  EXPECT_EQ(ask(2), "332220");
  EXPECT_EQ(ask(0), "332220") << "never cleared";
  g_look_at_masks = [](tag_MASKSTATE*) { return 1; };
  EXPECT_EQ(ask(3), "332220");
  // The host takes the settings away while the device is asked.
  g_look_at_masks = [this](tag_MASKSTATE*) { return zebxCreateCamera(&m_id, nullptr); };
  tag_CAPTIONINFO caption = {};
  EXPECT_EQ(Call(kNoxdevCaptionRequest, Handle(), 8, &caption), -1);
}

// A packet of faces: each a width, a height and their luminance.
std::string FacePacket(DWORD count, const std::vector<std::pair<WORD, WORD>>& faces) {
  std::string packet = std::string(8, '\x77') + Little(count) + '\x80' + std::string(19, '\0');
  for (const auto& [width, height] : faces) {
    packet += Little(0) + Little(width, 2) + Little(height, 2) + Little(0x00020001) + Little(7);
    packet += std::string(std::size_t{width} * height, static_cast<char>('a' + width));
  }
  return packet;
}

TEST_F(ChannelCallback, FacesBecomeTheHosts) {
  const os::SteppedClock clock(1714552200, 0);
  OpenBoard();
  ASSERT_EQ(Open(), 1);
  int seen = 0;
  m_on_notified = [&](DWORD code, std::uintptr_t count, std::uintptr_t array) {
    EXPECT_EQ(code, ZEBX_MSG_FACES);
    auto* const faces = std::bit_cast<CMoxFace**>(array);
    for (std::size_t i = 0; i < count; ++i, ++seen) {
      EXPECT_EQ(faces[i]->GetSize().cx, i == 1 ? 0 : 4 + static_cast<LONG>(i));
      EXPECT_EQ(faces[i]->GetYBuf() == nullptr ? 0 : faces[i]->GetYBuf()[3], i == 1 ? 0 : 'e' + i);
      EXPECT_EQ(faces[i]->GetDetectIndex(), 7);
      EXPECT_EQ(faces[i]->GetTime(), CTime(1714552200));
      EXPECT_EQ(faces[i]->GetCameraID(), m_id);
      delete faces[i];
    }
    delete[] faces;
  };
  const auto bring = [&](std::string packet) {
    EXPECT_EQ(Call(kNoxdevFaces, Handle(), 9, packet.data()), 0);
  };
  bring(FacePacket(3, {{4, 2}, {0, 5}, {6, 3}}));
  EXPECT_EQ(seen, 3);
  // No faces, more than a picture can have, more than it can hold.
  std::string other_kind = FacePacket(1, {{4, 2}});
  other_kind[12] = '\x81';
  for (const std::string& packet :
       {other_kind, FacePacket(0, {}), FacePacket(65, {}), FacePacket(0xFFFFFFFF, {}),
        FacePacket(2, {{4, 2}}) + Hex("00 00 00 00 ff ff ff ff 00 00 00 00 00 00 00 00")}) {
    bring(packet);
  }
  EXPECT_EQ(seen, 3);
  // Without a callback the library destroys them, as the address sanitizer sees.
  zebxCloseZebx();
  ASSERT_EQ(CaptureLibrary::Initialize() & zebxOpenBoard(0, kPalHalf, 25) & Open(), 1);
  bring(FacePacket(1, {{4, 2}}));
}

TEST_F(ChannelCallback, FramesFromBeforeTheAlarmGoIntoItsFile) {
  const MemoryFileSystem disk;
  const os::SteppedClock clock(1714552200, 9000);
  OpenBoard();
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(zebxGetAlarmData(&m_id, nullptr), 0);
  CZebFileInfo info = MakeInfo("alarm");
  CZebFile file;
  ASSERT_EQ(file.Open(&info, kZebFileWrite), 1);
  CZebFrameData scratch;
  // One that is too large is left out, and the bytes before it are not written again.
  for (std::string packet : {Packet(0x00200000 | kSpeech, 5000, "I one", "s"),
                             Head(1, 5040, 0xFFFFFFFF, 0), Packet(0x00210001, 5080, "P")}) {
    EXPECT_EQ(Call(kNoxdevPreAlarmFrame, reinterpret_cast<std::uintptr_t>(&file),
                   reinterpret_cast<std::uintptr_t>(&scratch), packet.data()),
              0);
  }
  for (int i = 0; i < 12; ++i) zebdev::StepChannel(0, 0);
  const int brought = m_notified;
  EXPECT_EQ(zebxGetAlarmData(&m_id, &file), 1);
  EXPECT_EQ(m_notified, brought);
  file.Close();
  ASSERT_EQ(file.Open(&info, kZebFileRead), 1);
  std::string frames;
  for (CZebFrameData frame; file.ReadOneFrame(&frame, -1, 0) == 1 && frames.size() < 30;) {
    frames += std::to_string(frame.GetTimeStamp()) + ' ' + std::to_string(frame.GetFlag()) + ' ' +
              std::string(frame.GetVideoBuf(), frame.GetVideoBuf() + frame.GetVideoLength()) + '\n';
  }
  EXPECT_EQ(frames.substr(0, 27), "5000 32800 I one\n5080 33 P\n");
  EXPECT_GT(file.GetTotalFrame(), 10) << "those of the channel's own buffer";
  zebdev::FailCall(zebdev::Function::kChEnumPreAlarmData, 1);
  EXPECT_EQ(zebxGetAlarmData(&m_id, &file), 0);
}

}  // namespace

// The linker puts this in the place of noxdevChGetMaskInfo.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __wrap_noxdevChGetMaskInfo(NoxdevHandle, DWORD, tag_MASKSTATE* state) {
  return g_look_at_masks ? g_look_at_masks(state) : 0;
}
