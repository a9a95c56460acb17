// A capture library with an open board, a host that listens, and packets as channels bring them.
#pragma once

#include <bit>
#include <functional>
#include <string>

#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/capture_device.h"
#include "capture/encode_param.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/video_color.h"
#include "capture/video_data.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/zebdev/software/virtual_channels.h"
#include "tests/capture/library_fixture.h"
#include "tests/support/bytes.h"

class CameraLibrary : public CaptureLibrary {
 protected:
  static constexpr DWORD kPalHalf = 135;  // shown as 704 x 576, coded as 352 x 288

  // Device 0 is of the type, and its first board open. Channels bring what they are told to.
  void OpenBoard(DWORD device_type = 0x040, BYTE channels = 8) {
    zebx::zebdev::VirtualDevice device = zebx::zebdev::MakeVirtualDevice(device_type, channels);
    device.m_capability.m_channels = channels;
    Plan({device});
    zebx::zebdev::SetDrive(zebx::zebdev::Drive::kStepped);
    Start();
  }
  int Initialize() {
    const auto user_data = reinterpret_cast<std::uintptr_t>(this);
    return zebxInitZebx(7, Listen, user_data, nullptr, "d:\\dev");
  }
  void Start() {
    ASSERT_EQ(Initialize(), 1);
    ASSERT_EQ(zebxOpenBoard(0, kPalHalf, 25), 1);
    TakeCalls();
  }
  int Open(const CMaskList* masks = nullptr) {
    return zebxOpenCamera(&m_id, 0, nullptr, masks, nullptr, &m_show);
  }
  static void AddMask(CMaskList& masks, LONG left) {
    auto mask = std::make_unique<CMaskInfo>();
    const CRect blocks{left, 1, left + 2, 3};
    EXPECT_EQ(mask->SetMBRect(&blocks, tag_FRAMESIZE{kPalHalf}), 1);
    masks.AddMaskInfo(mask.release());
  }

  // What reached the device library since the last look.
  static Lines TakeCalls() { return zebx::zebdev::TakeJournal(); }
  static std::uintptr_t Handle() {
    return reinterpret_cast<std::uintptr_t>(zebx::GetCaptureApp().FindDevice(0)->GetHandle());
  }
  // Calls back as a channel of the device does; -2 when it does not run.
  static int Call(DWORD type, std::uintptr_t first, std::uintptr_t second, void* packet,
                  DWORD channel = 0) {
    return zebx::zebdev::CallChannel(0, channel, type, first, second, packet).value_or(-2);
  }
  static int BringFrame(std::string packet) {
    return Call(kNoxdevLiveFrame, Handle(), 0, packet.data());
  }
  // A frame packet, and the head of one that says so many bytes.
  static std::string Packet(DWORD flags, DWORD stamp, const std::string& video,
                            const std::string& speech = {}) {
    return Head(flags, stamp, video.size(), speech.size()) + video + speech;
  }
  static std::string Head(DWORD flags, DWORD stamp, std::size_t video_bytes,
                          std::size_t speech_bytes) {
    return std::string(12, '\x77') + Little(flags) + Little(stamp) + Little(video_bytes) +
           Little(speech_bytes) + std::string(4, '\x77');
  }

  tag_ZEBCAMERAID m_id;
  CShowParam m_show;
  // What the host does when it is notified, and the live data of the frame notified last.
  std::function<void(DWORD code, std::uintptr_t first, std::uintptr_t second)> m_on_notified;
  int m_notified = 0;
  CVideoData* m_frame = nullptr;

 private:
  static DWORD Listen(DWORD code, std::uintptr_t user_data, std::uintptr_t first,
                      std::uintptr_t second) {
    auto& host = *std::bit_cast<CameraLibrary*>(user_data);
    ++host.m_notified;
    if (code == ZEBX_MSG_FRAME) host.m_frame = std::bit_cast<CVideoData*>(second);
    if (host.m_on_notified) host.m_on_notified(code, first, second);
    return 0;
  }
};
