// With a codec of its own, whose pictures are of one grey and whose packets all have 1024 samples.
#include <atomic>
#include <cstring>
#include <functional>

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "image/image.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/sound/sound_control.h"
#include "playback/zeb_decode_wnd.h"
#include "tests/capture/settings_fixture.h"
#include "tests/support/made_recording.h"
#include "tests/support/window_fixture.h"

using namespace zebx;
using namespace zebx::noxdisplay;

namespace {

using Lines = std::vector<std::string>;

std::mutex g_mutex;
Lines g_calls;         // of codec and display, with their numbers
std::string g_record;  // the last that the display was given
DWORD g_decoder_pixels = 0;
int g_codec_result = 0;

int Call(std::string call, std::initializer_list<LONGLONG> numbers) {
  for (const LONGLONG number : numbers) call += " " + std::to_string(number);
  const std::lock_guard lock(g_mutex);
  g_calls.push_back(call);
  return g_codec_result;
}

void KeepRecord(const tag_DISPLAYINFO* info) {
  if (info != nullptr) g_record.assign(reinterpret_cast<const char*>(info), sizeof(*info));
}

}  // namespace

int nxcCreateVideoDecoder(NxcHandle* decoder, DWORD type, DWORD width, DWORD height, DWORD post) {
  g_decoder_pixels = width * height;
  *decoder = reinterpret_cast<NxcHandle>(g_codec_result == 0 ? &g_calls : nullptr);
  return Call("decoder", {type, width, height, post});
}
int nxcDecodeVideo(NxcHandle, WORD type, const BYTE* data, DWORD length) {
  return Call("decode " + std::string(data, data + length), {type});
}
int nxcGetVideo(NxcHandle, BYTE* pixels, DWORD format, int pitch, DWORD post) {
  std::memset(pixels, 77, g_decoder_pixels * std::size_t{4});
  return Call("get", {format, pitch, post});
}
int nxcCreateAudioDecoder(NxcHandle*, BYTE flag) {
  return Call("speech", {flag});
}
int nxcDecodeAudio(NxcHandle, const BYTE* data, DWORD length, std::int16_t*, DWORD* samples) {
  // Looks at every byte.
  *samples = data != nullptr && std::string(data, data + length).empty() ? 0 : 1024;
  return 0;
}
int nxcDestroyHandle(NxcHandle) {
  return 0;
}

extern "C" {
decltype(noxshowCreateStream) __real_noxshowCreateStream, __wrap_noxshowCreateStream;
decltype(noxshowDisplay) __real_noxshowDisplay, __wrap_noxshowDisplay;

int __wrap_noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD mode,
                               const tag_DISPLAYINFO* info) {
  KeepRecord(info);
  Call("stream", {size->m_width, size->m_height, mode});
  return __real_noxshowCreateStream(stream, size, mode, info);
}
int __wrap_noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  KeepRecord(info);
  return __real_noxshowDisplay(stream, window, info);
}
}

namespace {

TestFrame Frame(WORD type, int encoder_type = 0, WORD flags = 0) {
  return {type, static_cast<WORD>(encoder_type << 4 | flags), 0, "video", flags ? "speech" : ""};
}

class StreamDecoder : public WindowTest {
 protected:
  StreamDecoder() { m_settings.Create(Make(AddParameters, nullptr, {0, 0, 64, 48}), 0); }
  ~StreamDecoder() override {
    g_codec_result = 0;
    ResetDisplay();
    os::sound::ResetControl();
  }

  // The second runs when speech is asked for.
  int Open(DWORD frame_size, const std::function<void()>& on_notified = nullptr) {
    const CZebDecodeWnd::Notify notify = [](DWORD code, void* test, DWORD word) {
      static_cast<StreamDecoder*>(test)->m_on_notified();
      return static_cast<int>(code + word);
    };
    m_on_notified = on_notified;
    return m_decoder->OpenDecodeWnd(m_parent, on_notified ? notify : nullptr, this, &m_settings,
                                    tag_FRAMESIZE{frame_size});
  }
  // What was called, and the answer.
  Lines Decode(const TestFrame& frame) {
    g_calls.clear();
    Fill(m_frame, frame);
    Call(std::to_string(m_decoder->DecodeOneFrame(&m_frame)), {});
    return g_calls;
  }
  // Whether sound is open after so many frames with this speech.
  bool Speak(int frames, const TestFrame& frame = Frame(0, 0, kFrameVoice)) {
    CVideoData speech({}, 64, 64);
    Fill(speech, frame);
    while (frames-- > 0) EXPECT_EQ(m_decoder->DecodeAudio(&speech, nullptr, 0), 1);
    Decode(Frame(1, 0, kFrameVideoLost));
    return (DwordAt(g_record, 0) & kShowAudio) != 0;
  }
  // As the sound device does when a buffer is done.
  void Report() { os::SendMessage(m_decoder->GetSafeHwnd(), os::kMmWomDone, 0, 0); }

  std::function<void()> m_on_notified;
  HWND m_parent = Make();
  const ScopedTimeZone m_zone{"UTC"};
  os::SteppedClock m_clock{kTestBeginSeconds, 0};
  CShowParam m_settings;
  CVideoData m_frame{{}, 352, 288};
  std::unique_ptr<CZebDecodeWnd> m_decoder = std::make_unique<CZebDecodeWnd>();
};

TEST_F(StreamDecoder, BeginsWithAnIFrameInTheCaptureSize) {
  const struct {
    DWORD frame_size;
    int encoder_type;
    std::string size;
    DWORD encode_size;  // 0 when it is the same
    bool is_smooth;
  } cases[] = {{130, 0, "352 288", 0, true},
               {7, 0, "320 240", 0, true},
               {7, 2, "352 240", 0, true},
               {0x87, 2, "352 288", 0, true},
               {6, 0, "320 240", 160 | 128 << 16, true},
               {8, 0, "704 240", 720 | 240 << 16, true},
               {3, 0, "640 240", 0, false},
               {0x83, 0, "704 288", 0, false}};
  for (const auto& [frame_size, type, size, encode_size, is_smooth] : cases) {
    SCOPED_TRACE(frame_size);
    m_decoder = std::make_unique<CZebDecodeWnd>();
    ASSERT_EQ(Open(frame_size), 1);
    EXPECT_EQ(Decode(Frame(1, type)), Lines{"0"});
    EXPECT_EQ(m_decoder->IsRT8Port(), type == 2 ? 1 : 0);
    const std::string pitch = std::to_string(4 * std::stoi(size));
    EXPECT_EQ(Decode(Frame(0, type)),
              (Lines{"decoder " + std::to_string(type) + " " + size + " 0", "stream " + size + " 3",
                     "decode video 0", "get 2 " + pitch + " 0", "1"}));
    EXPECT_EQ(DwordAt(g_record, 4), encode_size);
    EXPECT_EQ(DwordAt(g_record, 0) & 0xC0000U, is_smooth ? 0x40000U : 0U);
  }
}

TEST_F(StreamDecoder, FillsTheDisplayRecord) {
  const auto field = [](std::string text, std::size_t bytes = 68) {
    text.resize(bytes);
    return text;
  };
  const std::string area = Little(0) + Little(0) + Little(348) + Little(284);
  const std::string camera = field("Gate 100%");
  const std::string times = field("since 8", 65) + field("", 67);
  m_settings.SetCameraName("Gate 100%%");
  m_settings.SetBoardName(std::string(70, 'b') + "%d");
  m_settings.SetTimeBegin(CString("since 8"));
  m_settings.ShowCaption(1);
  Open(130);
  RefuseMode(kNoxshowOverlaySurface, true);
  RefuseMode(kNoxshowPlainSurface, true);
  Decode(Frame(0));
  EXPECT_EQ(g_record, Little(0x4210E) + Little(0) + area + field("", 104) + camera +
                          Little(0xFFFF00) + field(std::string(64, 'b')) + Little(0xFFFF00) +
                          field("08:30:00") + Little(0xFF0000) + times);

  ResetDisplay();
  m_clock.Advance(61000);
  m_settings.SetBoardName("");
  m_settings.SetCaptionColor(0x123456);
  m_settings.SetActive(1);
  std::string masks = Little(5);
  for (DWORD mask = 0; mask < 7; ++mask) {
    m_frame.GetMaskList()->AddMaskInfo(NewMask(static_cast<LONG>(100 + 46 * mask)));
    static_cast<CMaskInfo*>(m_frame.GetMaskList()->GetTail())->SetFlag(mask);
    if (mask >= 5) continue;
    masks += Little(2 + mask) + Little(4) + Little(11) + Little(9) + Little(mask & 3);
  }
  Decode(Frame(0));
  const std::string color = Little(0x123456);
  EXPECT_EQ(g_record, Little(0x421AE) + Little(0) + area + masks + camera + color +
                          field('\0' + std::string(63, 'b')) + color + field("08:31:01") + color +
                          times);

  // Hidden captions leave the begin time's bytes; a lost picture is shown and not decoded.
  m_settings.ShowCaption(0);
  m_settings.SetTimeBegin(CString("later"));
  m_frame.GetMaskList()->DeleteAllMask();
  for (const DWORD flag : {0x1, 0x20, 0x40, 0x200}) {
    m_settings.SetActive(flag == 0x20);
    m_settings.SetRecord(flag == 0x200);
    m_settings.SetAlarm(flag == 0x40);
    m_settings.SetMonitor(flag == 0x1);
    EXPECT_EQ(Decode(Frame(1, 0, kFrameVideoLost)), Lines{"1"});
    EXPECT_EQ(DwordAt(g_record, 0), 0x40980U | flag);
  }
  EXPECT_EQ(g_record.substr(24, 4) + g_record.substr(344), Little(0) + times);
}

// What was made stays, and the stream has the decoder's size whatever comes next.
TEST_F(StreamDecoder, TriesAgainWhatWasRefused) {
  Open(9);
  EXPECT_EQ(Decode(Frame(0, 2)), Lines{"0"}) << "no such size";
  m_decoder->OpenDecodeWnd(m_parent, nullptr, nullptr, nullptr, tag_FRAMESIZE{7});
  EXPECT_EQ(Decode(Frame(0, 2)), Lines{"0"}) << "no settings";
  Open(7);
  EXPECT_EQ(m_decoder->DecodeOneFrame(nullptr) + m_decoder->IsRT8Port(), 0);
  g_codec_result = 1;
  EXPECT_EQ(Decode(Frame(0, 2)), (Lines{"decoder 2 352 240 0", "0"}));
  g_codec_result = 0;
  FailCall(Function::kCreateStream, 1);
  FailCall(Function::kCreateStream, 2);
  EXPECT_EQ(Decode(Frame(0)),
            (Lines{"decoder 0 320 240 0", "stream 320 240 3", "stream 320 240 1", "0"}));
  EXPECT_EQ(m_settings.GetDrawStream(), nullptr);
  FailCall(Function::kCreateStream, 1);
  EXPECT_EQ(Decode(Frame(1, 2)),
            (Lines{"stream 320 240 3", "stream 320 240 1", "decode video 1", "get 2 1280 0", "1"}));
}

TEST_F(StreamDecoder, ShowsWhateverDecoderAndDisplayAnswer) {
  CImage image;
  Open(0x87);
  EXPECT_EQ(m_decoder->GetPicture(&image), 0) << "none yet";
  Decode(Frame(0));
  const Function functions[] = {Function::kIsSurfaceLost, Function::kRestoreSurface,
                                Function::kLock, Function::kDisplay, Function::kGetPicture};
  for (const Function function : functions) {
    FailCall(function, 1);
    g_codec_result = 1 - g_codec_result;
    Lines calls = {"decode video 0", "get 2 1408 0", "1"};
    if (function == Function::kLock) calls.erase(calls.begin() + 1);
    EXPECT_EQ(Decode(Frame(0)), calls);
    EXPECT_EQ(m_decoder->GetPicture(&image), function == Function::kGetPicture ? 0 : 1);
  }
  LoseSurfaces();
  ResetDisplay();
  EXPECT_EQ(m_decoder->GetPicture(&image), 0);
  Decode(Frame(0));
  ASSERT_EQ(m_decoder->GetPicture(&image), 1) << "the surface is back";
  EXPECT_EQ(m_decoder->GetPicture(nullptr), 0);
  ASSERT_EQ(image.GetImageWidth() * image.GetImageHeight(), 704U * 576U);
  EXPECT_EQ(image.GetRawImage()[0] + image.GetRawImage()[704 * 576 * 3 - 1], 2 * 77);
}

TEST_F(StreamDecoder, OpensAndCloses) {
  const DWORD streams = CountStreams();
  EXPECT_EQ(m_decoder->OpenDecodeWnd(nullptr, {}, {}, &m_settings, tag_FRAMESIZE{}), 0);
  EXPECT_EQ(Decode(Frame(0)), Lines{"0"}) << "nothing is open";
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
  EXPECT_TRUE(calls[1].starts_with("noxshowDestroyStream ")) << calls[1];
  EXPECT_EQ(m_decoder->GetSafeHwnd(), nullptr);
  EXPECT_EQ(Decode(Frame(0)), Lines{"0"});
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
  EXPECT_TRUE(Speak(1));
  Report();
  EXPECT_EQ(asked, 2);
}

TEST_F(StreamDecoder, ReadsNoMoreThanAFrameHas) {
  Open(130);
  Decode(Frame(0, 0, kFrameVoice));
  m_frame.CreateBuffer(1, 1);
  EXPECT_EQ(m_decoder->DecodeOneFrame(&m_frame) & m_decoder->DecodeAudio(&m_frame, nullptr, 0) &
                m_decoder->DecodeAudio(nullptr, nullptr, 0),
            1);
}

TEST_F(StreamDecoder, MayDoAnythingWhenItAsksForSpeech) {
  const std::function<void()> actions[] = {
      [this] { Speak(1); }, [this] { m_decoder->EnableAudio(0); },
      [this] { m_decoder->CloseDecodeWnd(); }, [this] { m_decoder.reset(); }};
  for (const auto& action : actions) {
    bool is_asked = false;
    Open(130, [&] {
      if (!std::exchange(is_asked, true)) action();
    });
    m_decoder->EnableAudio(1);
    Speak(1);
    Report();
    EXPECT_TRUE(is_asked);
  }
}

TEST_F(StreamDecoder, ClosesBesideEverythingElse) {
  const DWORD streams = CountStreams();
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> closed = 0;
    CVideoData frames[] = {{{}, 64, 64}, {{}, 64, 64}};
    for (CVideoData& frame : frames) Fill(frame, Frame(0, 0, kFrameVoice));
    Open(130, [&] { m_decoder->DecodeAudio(&frames[0], nullptr, 0); });
    const std::jthread feeding([&] {
      while (closed < 2) {
        m_decoder->DecodeOneFrame(&frames[1]);
        m_decoder->DecodeAudio(&frames[1], nullptr, 0);
      }
    });
    const std::jthread copying([&] {
      CImage image;
      while (closed < 2) m_decoder->GetPicture(&image);
    });
    const auto close = [&] {
      m_decoder->CloseDecodeWnd();
      ++closed;
    };
    const std::jthread closers[] = {std::jthread(close), std::jthread(close)};
    os::Message message;
    for (; closed < 2; m_clock.Advance(10)) {
      if (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
    }
  }
  EXPECT_EQ(CountStreams(), streams);
}

}  // namespace
