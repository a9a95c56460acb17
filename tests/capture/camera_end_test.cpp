// Cameras end while their channels call them: from other threads, from inside the host's callback,
// and without having been closed.
#include <atomic>
#include <bit>
#include <thread>

#include "capture/capture_camera.h"
#include "platform/os/windows/windows.h"
#include "record/zeb_file.h"
#include "tests/capture/camera_fixture.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

using namespace zebx;

namespace {

// What happens when a channel was started, before noxdevChStart returns. Once.
std::function<void()> g_at_start;

class CameraEnd : public CameraLibrary {};

// The live data holds until the notification returns, with its file; nothing of the camera, its
// board or the library is needed after that, which the sanitizers see.
TEST_F(CameraEnd, ComesFromInsideTheHostsCallback) {
  const MemoryFileSystem disk;
  const std::function<void()> ends[] = {[this] { zebxDestroyCamera(&m_id); },
                                        [] { zebxCloseBoard(0); }, [] { zebxCloseZebx(); },
                                        [this] { EXPECT_EQ(zebxCloseCamera(&m_id) & Open(), 1); },
                                        [this] {
                                          zebxCloseZebx();
                                          Start();
                                          EXPECT_EQ(Open(), 1);
                                        }};
  for (const auto& end : ends) {
    SCOPED_TRACE(&end - ends);
    OpenBoard();
    CMaskList masks;
    AddMask(masks, 3);
    ASSERT_EQ(Open(&masks), 1);
    CZebFileInfo info = MakeInfo("kept");
    m_on_notified = [&](DWORD, std::uintptr_t, std::uintptr_t) {
      auto file = std::make_unique<CZebFile>();
      ASSERT_EQ(file->Open(&info, kZebFileWrite), 1);
      m_frame->SetFile(file.release());
      end();
      EXPECT_EQ(m_frame->GetFile()->WriteOneFrame(m_frame), kFrameWritten);
    };
    BringFrame(Packet(0, 1000, "video"));
    m_on_notified = nullptr;
    zebxCloseZebx();
    EXPECT_EQ(CZebFile().Open(&info, kZebFileRead), 1) << "a finished file";
  }
}

// The first frame may come before the start has returned: then nothing else is started any more.
TEST_F(CameraEnd, ComesWhileTheCameraOpens) {
  OpenBoard(0x800, 2);
  g_at_start = [this] { zebxCloseCamera(&m_id); };
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(TakeCalls().back(), "noxdevChStop 0 2");
  EXPECT_EQ(Call(0, 0, 0, nullptr) & Call(0, 0, 0, nullptr, 2), -2) << "both are stopped";
  EXPECT_EQ(zebxIsWork(), 0);
}

// Closing waits for a notification that sends to the closing thread, which closes everything then.
TEST_F(CameraEnd, ComesFromAMessageWhileTheCameraCloses) {
  OpenBoard(0x800, 2);
  ASSERT_EQ(Open(), 1);
  HWND window = os::CreateWindow(nullptr, "host", {}, [](HWND, UINT message, WPARAM, LPARAM) {
    if (message == os::kWmUser) zebxCloseZebx();
    return LRESULT{0};
  });
  std::atomic<bool> is_notified = false;
  m_on_notified = [&](DWORD, std::uintptr_t, std::uintptr_t) {
    is_notified = true;
    os::SendMessage(window, os::kWmUser, 0, 0);
  };
  std::thread channel([this] { BringFrame(Packet(0, 1000, "video")); });
  while (!is_notified) std::this_thread::yield();
  EXPECT_EQ(zebxDestroyCamera(&m_id), 0);
  EXPECT_EQ(zebxIsZebxInit(), 0);
  channel.join();
  os::DestroyWindow(window);
}

TEST_F(CameraEnd, OfABoardLeavesTheChannelsOfItsOpenCamerasInPeace) {
  OpenBoard();
  ASSERT_EQ(zebxOpenBoard(1, kPalHalf, 25), 1);
  ASSERT_EQ(Open(), 1);
  BringFrame(Packet(0, 1000, "video"));
  TakeCalls();
  EXPECT_EQ(zebxCloseBoard(0), 1);
  EXPECT_EQ(TakeCalls(), Lines{}) << "its channel is not stopped";
  const auto expect_deaf = [this](std::uintptr_t handle) {
    std::string packet = Packet(0, 2000, "other");
    tag_CAPTIONINFO caption = {};
    for (const auto& [first, second] :
         {std::pair{handle, std::uintptr_t{0}}, {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}}) {
      EXPECT_EQ(Call(kNoxdevLiveFrame, first, second, packet.data()), 0);
      EXPECT_EQ(Call(kNoxdevFaces, first, second, packet.data()), 0);
      EXPECT_EQ(Call(kNoxdevCaptionRequest, first, second, &caption), -1);
    }
    EXPECT_EQ(m_notified, 1);
  };
  expect_deaf(Handle());
  EXPECT_EQ(m_frame->GetTimeStamp(), 1000U) << "alive and as it was";

  ASSERT_EQ(zebxOpenBoard(0, kPalHalf, 25), 1);
  EXPECT_EQ(zebxIsCameraOpen(&m_id), 0) << "a new camera";
  expect_deaf(Handle());
  EXPECT_EQ(Open(), 1);
  BringFrame(Packet(0, 1000, "video"));
  EXPECT_EQ(m_notified, 2);

  // A device that can neither be closed nor destroyed goes on calling.
  m_notified = 1;
  const std::uintptr_t handle = Handle();
  zebdev::FailCall(zebdev::Function::kCloseDevice, 1);
  zebdev::FailCall(zebdev::Function::kDestroyDevice, 1);
  zebxCloseZebx();
  expect_deaf(handle);
}

// Frames, captions and faces come all the time; every camera that was opened brings some, and when
// closing returns none is under way.
TEST_F(CameraEnd, ComesAThousandTimesWhileFramesFlow) {
  OpenBoard();
  std::atomic<bool> is_over = false;
  std::atomic<int> frames = 0;
  std::atomic<bool> is_open = false;
  m_on_notified = [&](DWORD code, std::uintptr_t, std::uintptr_t second) {
    EXPECT_TRUE(is_open);
    if (code != ZEBX_MSG_FRAME) return;
    const auto& data = *std::bit_cast<CVideoData*>(second);
    EXPECT_EQ(data.GetVideoBuf()[data.GetVideoLength() - 1], 'v');
    ++frames;
  };
  const std::uintptr_t handle = Handle();
  std::thread channel([&] {
    std::string frame = Packet(1, 1000, std::string(2000, 'v'));
    std::string no_faces(32, '\0');
    tag_CAPTIONINFO caption = {};
    while (!is_over) {
      Call(kNoxdevLiveFrame, handle, 0, frame.data());
      Call(kNoxdevCaptionRequest, handle, 8, &caption);
      Call(kNoxdevFaces, handle, 0, no_faces.data());
      std::this_thread::yield();
    }
  });
  CMaskList masks;
  AddMask(masks, 3);
  for (int round = 0; round < 1000; ++round) {
    CShowParam show, other;
    is_open = true;
    EXPECT_EQ(zebxOpenCamera(&m_id, 0, nullptr, &masks, nullptr, &show), 1);
    for (const int before = frames; frames < before + 2;) std::this_thread::yield();
    show.SetCameraName("Back yard");
    zebxCreateCamera(&m_id, &other);
    zebxSetSpeed(0, static_cast<DWORD>(round + 1000));
    CEncodeParam settings;
    settings.SetQuarity(static_cast<DWORD>(round % 10));
    EXPECT_EQ(zebxRequestNextFrame(&m_id, &settings, 1) & zebxDeleteAllMask(&m_id), 1);
    EXPECT_EQ(zebxCloseCamera(&m_id), 1);
    is_open = false;
    TakeCalls();
  }
  is_over = true;
  channel.join();
}

}  // namespace

// The linker puts the first of these in the place of noxdevChStart, which is the second.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __real_noxdevChStart(NoxdevHandle, DWORD, DWORD, NoxdevChannelProc, void*);
extern "C" int __wrap_noxdevChStart(NoxdevHandle device, DWORD channel, DWORD reserved,
                                    NoxdevChannelProc callback, void* context) {
  const int answer = __real_noxdevChStart(device, channel, reserved, callback, context);
  if (g_at_start) std::exchange(g_at_start, nullptr)();
  return answer;
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
