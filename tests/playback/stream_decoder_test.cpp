// Nothing here decodes: what matters is what codec and display are asked for.
#include <atomic>
#include <functional>

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "image/image.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/sound/sound_control.h"
#include "playback/zeb_decode_wnd.h"
#include "tests/capture/settings_fixture.h"
#include "tests/support/made_recording.h"
#include "tests/support/window_fixture.h"

using namespace zebx;
using namespace zebx::noxdisplay;

namespace {

std::string g_decoder;  // what was asked for last; "none" makes it refused
std::string g_record;   // the last that the display was given

void KeepRecord(const tag_DISPLAYINFO* info) {
  if (info != nullptr) g_record.assign(reinterpret_cast<const char*>(info), sizeof(*info));
}

}  // namespace

extern "C" {
decltype(nxcCreateVideoDecoder) __real_nxcCreateVideoDecoder, __wrap_nxcCreateVideoDecoder;
decltype(noxshowCreateStream) __real_noxshowCreateStream, __wrap_noxshowCreateStream;
decltype(noxshowDisplay) __real_noxshowDisplay, __wrap_noxshowDisplay;

int __wrap_nxcCreateVideoDecoder(NxcHandle* decoder, DWORD type, DWORD width, DWORD height,
                                 DWORD post) {
  if (g_decoder == "none") return 1;
  g_decoder = std::to_string(type) + " " + std::to_string(width) + " " + std::to_string(height);
  return __real_nxcCreateVideoDecoder(decoder, type, width, height, post);
}
int __wrap_noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD mode,
                               const tag_DISPLAYINFO* info) {
  KeepRecord(info);
  return __real_noxshowCreateStream(stream, size, mode, info);
}
int __wrap_noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  KeepRecord(info);
  return __real_noxshowDisplay(stream, window, info);
}
}

namespace {

TestFrame Frame(WORD type, int encoder_type = 0, WORD flags = 0) {
  noxcodec::SpeechEncoder encoder;
  const auto speech = encoder.Encode(std::vector<std::int16_t>(1000));
  return {type, static_cast<WORD>(encoder_type << 4 | flags), 0, "video",
          std::string(speech.begin(), speech.end())};
}

class StreamDecoder : public WindowTest {
 protected:
  StreamDecoder() { m_settings.Create(Make(AddParameters, nullptr, {0, 0, 64, 48}), 0); }
  ~StreamDecoder() override {
    ResetDisplay();
    os::sound::ResetControl();
  }

  // `ask` runs when speech is asked for.
  int Open(DWORD frame_size, std::function<void()> ask = nullptr) {
    m_ask = std::move(ask);
    const CZebDecodeWnd::Notify notify = [](DWORD code, void* function, DWORD word) {
      (*static_cast<std::function<void()>*>(function))();
      return static_cast<int>(code + word);
    };
    return m_decoder->OpenDecodeWnd(m_parent, m_ask ? notify : nullptr, &m_ask, &m_settings,
                                    tag_FRAMESIZE{frame_size});
  }
  // What the display was asked for, without handles, and the answer.
  std::string Decode(const TestFrame& frame) {
    Fill(m_frame, frame);
    StartJournal();
    const int answer = m_decoder->DecodeOneFrame(&m_frame);
    std::string calls;
    for (const CString& line : TakeJournal()) {
      const bool has_handle = !line.starts_with("noxshowCreateStream");
      calls += line.substr(7, has_handle ? line.find(' ') - 7 : CString::npos) + ", ";
    }
    return calls + std::to_string(answer);
  }
  // Whether sound is open after so many frames with this speech.
  bool Speak(int frames, const TestFrame& frame = Frame(0, 0, kFrameVoice)) {
    Fill(m_frame, frame);
    while (frames-- > 0) EXPECT_EQ(m_decoder->DecodeAudio(&m_frame, nullptr, 0), 1);
    Decode(Frame(1, 0, kFrameVideoLost));
    return (DwordAt(g_record, 0) & kShowAudio) != 0;
  }
  // As the sound device does when a buffer is done.
  void Report() { os::SendMessage(m_decoder->GetSafeHwnd(), os::kMmWomDone, 0, 0); }

  std::function<void()> m_ask;
  HWND m_parent = Make();
  const ScopedTimeZone m_zone{"UTC"};
  os::SteppedClock m_clock{kTestBeginSeconds, 0};
  CShowParam m_settings;
  CVideoData m_frame{{}, 352, 288};
  std::unique_ptr<CZebDecodeWnd> m_decoder = std::make_unique<CZebDecodeWnd>();
};

const std::string kShown = "IsSurfaceLost, Lock, Unlock, Display, 1";

TEST_F(StreamDecoder, BeginsWithAnIFrameInTheCaptureSize) {
  const struct {
    DWORD frame_size;
    int encoder_type;
    std::string size;
    DWORD encode_size;  // 0 when it is the same
  } cases[] = {{7, 0, "320 240", 0},
               {7, 2, "352 240", 0},
               {0x87, 2, "352 288", 0},
               {6, 0, "320 240", 160 | 128 << 16},
               {3, 0, "640 240", 0}};
  for (const auto& [frame_size, type, size, encode_size] : cases) {
    SCOPED_TRACE(frame_size);
    m_decoder = std::make_unique<CZebDecodeWnd>();
    ASSERT_EQ(Open(frame_size), 1);
    EXPECT_EQ(Decode(Frame(1, type)), "0");
    EXPECT_EQ(m_decoder->IsRT8Port(), type == 2 ? 1 : 0);
    EXPECT_EQ(Decode(Frame(0, type)), "CreateStream " + size + " 3, " + kShown);
    EXPECT_EQ(g_decoder, std::to_string(type) + " " + size);
    EXPECT_EQ(DwordAt(g_record, 4), encode_size);
    EXPECT_EQ(DwordAt(g_record, 0) & 0xC0000U, frame_size == 3 ? 0U : 0x40000U);
  }
}

TEST_F(StreamDecoder, FillsTheDisplayRecord) {
  const auto field = [](std::string text, std::size_t bytes = 68) {
    text.resize(bytes);
    return text;
  };
  const auto record = [&](DWORD flags, const std::string& masks, DWORD color,
                          const std::string& board, const std::string& clock, DWORD clock_color) {
    return Little(flags) + Little(0) + Little(0) + Little(0) + Little(348) + Little(284) +
           field(masks, 104) + field("Gate 100%") + Little(color) + field(board) + Little(color) +
           field(clock) + Little(clock_color) + field("since 8", 65 + 65 + 2);
  };
  m_settings.SetCameraName("Gate 100%%");
  m_settings.SetBoardName(std::string(70, 'b') + "%d");
  m_settings.SetTimeBegin(CString("since 8"));
  m_settings.ShowCaption(1);
  Open(130);
  FailCall(Function::kCreateStream, 1);
  FailCall(Function::kCreateStream, 2);
  Decode(Frame(0));
  EXPECT_EQ(g_record, record(0x4210E, "", 0xFFFF00, std::string(64, 'b'), "08:30:00", 0xFF0000));

  m_clock.Advance(61000);
  m_settings.SetBoardName("");
  m_settings.SetCaptionColor(0x123456);
  std::string masks = Little(5);
  for (DWORD mask = 0; mask < 7; ++mask) {
    m_frame.GetMaskList()->AddMaskInfo(NewMask(static_cast<LONG>(100 + 46 * mask)));
    static_cast<CMaskInfo*>(m_frame.GetMaskList()->GetTail())->SetFlag(mask);
    if (mask >= 5) continue;
    masks += Little(2 + mask) + Little(4) + Little(11) + Little(9) + Little(mask & 3);
  }
  Decode(Frame(0));
  EXPECT_EQ(g_record,
            record(0x4218E, masks, 0x123456, '\0' + std::string(63, 'b'), "08:31:01", 0x123456));

  // Hidden captions leave the begin time's bytes; a lost picture is shown and not decoded.
  m_settings.ShowCaption(0);
  m_settings.SetTimeBegin(CString("later"));
  m_frame.GetMaskList()->DeleteAllMask();
  for (const DWORD flag : {0x1, 0x20, 0x40, 0x200}) {
    m_settings.SetActive(flag == 0x20);
    m_settings.SetRecord(flag == 0x200);
    m_settings.SetAlarm(flag == 0x40);
    m_settings.SetMonitor(flag == 0x1);
    EXPECT_EQ(Decode(Frame(1, 0, kFrameVideoLost)), "IsSurfaceLost, Display, 1");
    EXPECT_EQ(DwordAt(g_record, 0), 0x40980U | flag);
  }
  EXPECT_EQ(g_record.substr(24, 4) + g_record.substr(344, 7), Little(0) + "since 8");
}

// What was made stays, and the stream has the decoder's size whatever comes next.
TEST_F(StreamDecoder, TriesAgainWhatWasRefused) {
  Open(9);
  EXPECT_EQ(Decode(Frame(0, 2)), "0") << "no such size";
  m_decoder->OpenDecodeWnd(m_parent, nullptr, nullptr, nullptr, tag_FRAMESIZE{7});
  EXPECT_EQ(Decode(Frame(0, 2)), "0") << "no settings";
  Open(7);
  EXPECT_EQ(m_decoder->DecodeOneFrame(nullptr) + m_decoder->IsRT8Port(), 0);
  g_decoder = "none";
  EXPECT_EQ(Decode(Frame(0, 2)), "0");
  g_decoder.clear();
  RefuseMode(kNoxshowOverlaySurface, true);
  FailCall(Function::kCreateStream, 2);
  const std::string tried = "CreateStream 320 240 3 failed, CreateStream 320 240 1";
  EXPECT_EQ(Decode(Frame(0)), tried + " failed, 0");
  EXPECT_EQ(m_settings.GetDrawStream(), nullptr);
  EXPECT_EQ(Decode(Frame(1, 2)), tried + ", " + kShown);
}

TEST_F(StreamDecoder, ShowsWhateverTheDisplayAnswers) {
  CImage image;
  Open(0x87);
  EXPECT_EQ(m_decoder->GetPicture(&image), 0) << "none yet";
  Decode(Frame(0));
  const std::pair<Function, std::string> cases[] = {
      {Function::kIsSurfaceLost, "IsSurfaceLost, RestoreSurface, Lock, Unlock, Display, 1"},
      {Function::kLock, "IsSurfaceLost, Lock, Display, 1"},
      {Function::kDisplay, kShown},
      {Function::kGetPicture, kShown}};
  for (const auto& [function, calls] : cases) {
    FailCall(function, 1);
    EXPECT_EQ(Decode(Frame(0)), calls);
    EXPECT_EQ(m_decoder->GetPicture(&image), function == Function::kGetPicture ? 0 : 1);
  }
  EXPECT_EQ(m_decoder->GetPicture(nullptr), 0);
  EXPECT_EQ(image.GetImageWidth() * image.GetImageHeight(), 704U * 576U);
  m_frame.SetVideoLength(1000);
  m_frame.CreateBuffer(1, 1);
  EXPECT_EQ(m_decoder->DecodeOneFrame(&m_frame), 1) << "with fewer bytes than it says";
}

TEST_F(StreamDecoder, OpensAndCloses) {
  const DWORD streams = CountStreams();
  EXPECT_EQ(m_decoder->OpenDecodeWnd(nullptr, {}, {}, &m_settings, tag_FRAMESIZE{}), 0);
  EXPECT_EQ(Decode(Frame(0)), "0") << "nothing is open";
  Open(130);
  HWND first = m_decoder->GetSafeHwnd();
  EXPECT_EQ(os::GetWindowText(first), "STREAMDECODER");
  EXPECT_EQ(Open(130), 1);
  EXPECT_EQ(os::IsWindow(first), 0) << "closed first";
  Decode(Frame(0, 2));
  StartJournal();
  std::thread([&] { m_decoder->CloseDecodeWnd(); }).join();
  m_decoder->CloseDecodeWnd();
  const std::vector<CString> calls = TakeJournal();
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_TRUE(calls[0].starts_with("noxshowBitmap ") && calls[0].ends_with(" 4096 0")) << calls[0];
  EXPECT_EQ(m_decoder->GetSafeHwnd(), nullptr);
  EXPECT_EQ(Decode(Frame(0)), "0");
  EXPECT_EQ(m_decoder->IsRT8Port(), 1);

  Open(130);
  Decode(Frame(0));
  m_decoder.reset();
  EXPECT_EQ(CountStreams(), streams);
  EXPECT_NE(m_settings.GetDrawStream(), nullptr) << "the settings may be gone before";
}

TEST_F(StreamDecoder, PlaysSpeechUntilAFrameHasNone) {
  EXPECT_FALSE(Speak(1)) << "not open";
  int asked = 0;
  Open(130, [&] { ++asked; });
  Decode(Frame(0));
  os::sound::SetDeviceCount(0);
  EXPECT_FALSE(Speak(1));
  os::sound::SetDeviceCount(1);
  EXPECT_TRUE(Speak(1));
  m_clock.Advance(200);
  os::Message done;
  os::GetMessage(&done);
  os::DispatchMessage(done);
  EXPECT_EQ(asked, 1) << "the buffer is done";
  m_decoder->EnableAudio(0);
  EXPECT_FALSE(Speak(1));
  m_decoder->EnableAudio(1);
  EXPECT_TRUE(Speak(2));
  Report();
  EXPECT_EQ(asked, 1) << "two are queued";
  EXPECT_FALSE(Speak(1, Frame(0)));
  Report();
  EXPECT_EQ(asked, 1) << "the sound has ended";
  Fill(m_frame, Frame(0, 0, kFrameVoice));
  m_frame.SetSpeechDataLen(65537);  // more than there is
  m_decoder->DecodeAudio(&m_frame, nullptr, 0);
  Report();
  EXPECT_EQ(asked + m_decoder->DecodeAudio(nullptr, nullptr, 0), 3) << "nothing is queued";
}

TEST_F(StreamDecoder, MayDoAnythingWhenItAsksForSpeech) {
  const std::function<void()> actions[] = {
      [this] { Speak(1); }, [this] { m_decoder->EnableAudio(0); },
      [this] { m_decoder->CloseDecodeWnd(); }, [this] { m_decoder.reset(); }};
  for (const auto& action : actions) {
    ASSERT_EQ(Open(130, action), 1);
    m_decoder->EnableAudio(1);
    Speak(1);
    Report();
  }
  EXPECT_EQ(m_decoder, nullptr);
}

TEST_F(StreamDecoder, ClosesBesideEverythingElse) {
  const DWORD streams = CountStreams();
  for (int round = 0; round < 10; ++round) {
    CVideoData asked_for({}, 64, 64);
    Fill(asked_for, Frame(0, 0, kFrameVoice));
    Fill(m_frame, Frame(0, 0, kFrameVoice));
    Open(130, [&] { m_decoder->DecodeAudio(&asked_for, nullptr, 0); });
    std::atomic<int> closed = 0;
    const auto until_closed = [&](const std::function<void()>& work) {
      for (; closed < 2; std::this_thread::yield()) work();
    };
    const auto close = [&] {
      m_decoder->CloseDecodeWnd();
      ++closed;
    };
    CImage image;
    const std::jthread threads[] = {
        std::jthread(until_closed, [&] { m_decoder->GetPicture(&image); }),
        std::jthread(until_closed,
                     [&] {
                       m_decoder->DecodeOneFrame(&m_frame);
                       m_decoder->DecodeAudio(&m_frame, nullptr, 0);
                     }),
        std::jthread(close), std::jthread(close)};
    until_closed([&] {
      m_clock.Advance(10);
      os::Message message;
      if (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
    });
  }
  EXPECT_EQ(CountStreams(), streams);
}

}  // namespace
