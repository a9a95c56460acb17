// What a channel calls its camera for, and what becomes of the frames that it brings.
#include <algorithm>
#include <bit>
#include <cstring>

#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/live_stream.h"
#include "platform/framework/error_report.h"
#include "record/zeb_file.h"

using namespace zebx;
using namespace zebx::zebdev;

namespace {

// A frame packet: its head, and the bytes that follow it.
class FramePacket {
 public:
  explicit FramePacket(void* packet) : m_video(static_cast<BYTE*>(packet) + sizeof m_head) {
    std::memcpy(&m_head, packet, sizeof m_head);
  }

  bool Fits(const CZebFrameData& frame) const {
    return frame.HasRoomFor(m_head.m_video_bytes,
                            Has(kPacketHasSpeech) ? m_head.m_speech_bytes : 0);
  }

  // Into a frame that it fits. Encoder bits and speech length of a frame that was not reset before
  // stay where the packet has none.
  void CopyTo(CZebFrameData& frame) const {
    frame.SetFrameType(static_cast<WORD>(m_head.m_flags & kPacketTypeMask));
    frame.SetEncoderType(
        static_cast<BYTE>((m_head.m_flags & kPacketEncoderTypeMask) >> kPacketEncoderTypeShift));
    frame.SetVideoLost(Has(kPacketVideoLost));
    frame.SetVideoAlarm(Has(kPacketVideoAlarm));
    frame.SetAudio(Has(kPacketHasSpeech));
    frame.SetTimeStamp(m_head.m_time_stamp);
    frame.SetVideoLength(m_head.m_video_bytes);
    std::copy_n(m_video, m_head.m_video_bytes, frame.GetVideoBuf());
    if (Has(kPacketHasSpeech)) {
      frame.SetSpeechData(m_video + m_head.m_video_bytes, m_head.m_speech_bytes);
    }
  }

 private:
  bool Has(DWORD bit) const { return (m_head.m_flags & bit) != 0; }

  tag_DEVFRAME m_head;
  BYTE* m_video;
};

// The words are those of CCaptureCamera::GetAlarmData.
void WritePreAlarmFrame(std::uintptr_t file, std::uintptr_t scratch, void* packet) {
  if (file == 0 || scratch == 0 || packet == nullptr) return;
  const FramePacket frame(packet);
  auto& record = *std::bit_cast<CZebFrameData*>(scratch);
  // Otherwise the bytes of the frame before would be written under this one's stamp.
  if (!frame.Fits(record)) return;
  frame.CopyTo(record);
  std::bit_cast<CZebFile*>(file)->WritePreAlarmFrame(&record);
}

}  // namespace

int CCaptureCamera::ChannelCallback(void* context, DWORD type, std::uintptr_t first,
                                    std::uintptr_t second, void* packet) {
  if (context == nullptr) return 0;
  auto& camera = *static_cast<CCaptureCamera*>(context);
  // The device library cannot catch what is thrown here.
  try {
    switch (type) {
      case kNoxdevLiveFrame:
        camera.TakeLiveFrame(first, second, packet);
        return 0;
      case kNoxdevCaptionRequest:
        return camera.FillCaption(first, second, static_cast<tag_CAPTIONINFO*>(packet));
      case kNoxdevPreAlarmFrame:
        WritePreAlarmFrame(first, second, packet);
        return 0;
      case kNoxdevFaces:
        camera.TakeFaces(first, packet);
        return 0;
      default:
        return 0;
    }
  } catch (const std::exception& failure) {
    ReportError(failure);
    return type == kNoxdevCaptionRequest ? kNoxdevNotMine : 0;
  }
}

bool CCaptureCamera::IsBoundTo(std::uintptr_t device) const {
  return m_device != nullptr && device == reinterpret_cast<std::uintptr_t>(m_device);
}

void CCaptureCamera::TakeLiveFrame(std::uintptr_t device, std::uintptr_t channel, void* packet) {
  Live live;
  {
    const std::lock_guard lock(m_mutex);
    if (!IsBoundTo(device) || channel != m_device_channel) return;
    live = m_live;
  }
  if (live == nullptr || packet == nullptr) return;
  CVideoData& data = live->m_data;
  const FramePacket frame(packet);
  if (!frame.Fits(data)) return;
  if (live->m_resets_rates.exchange(false)) data.ResetCodeStatus();
  data.Reset();
  frame.CopyTo(data);
  data.SetRT(1);
  data.CalcuCodeStatus();
  // The host may close the camera, its board or the library from there: nothing of this object is
  // touched afterwards.
  GetCaptureApp().Notify(ZEBX_MSG_FRAME, 0, reinterpret_cast<std::uintptr_t>(&data));
}
