// A camera answers what the caption of its live picture says, and learns on the way which of its
// masks see motion.
#include <algorithm>
#include <bit>

#include "capture/capture_camera.h"
#include "capture/live_stream.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/show_param.h"
#include "platform/noxdisplay/caption_text.h"

using namespace zebx;
using namespace zebx::zebdev;

namespace {

// Motion and alarm are added to the masks' flags, never taken away.
void FlagMasks(const CMaskList& masks, const tag_MASKSTATE& state) {
  const std::size_t count = std::min(std::size_t{state.m_count}, kMaskStates);
  std::size_t i = 0;
  for (CObject* mask : masks) {
    if (i == count) return;
    if (mask == nullptr) continue;
    static_cast<CMaskInfo*>(mask)->SetFlag(state.m_areas[i++].m_state & (kMaskMotion | kMaskAlarm));
  }
}

// The bits of the caption that the library decides; all others are the device library's.
DWORD CaptionBits(DWORD bits, DWORD flags) {
  constexpr struct {
    DWORD m_flag;
    DWORD m_bit;
  } kMarks[] = {{CShowParam::kMonitorFlag, kCaptionMonitor},
                {CShowParam::kProgrammingFlag, kCaptionProgramming},
                {CShowParam::kActiveFlag, kCaptionActive},
                {CShowParam::kAlarmFlag, kCaptionAlarm},
                {CShowParam::kRecordFlag, kCaptionRecord}};
  for (const auto& mark : kMarks) {
    bits = (flags & mark.m_flag) != 0 ? bits | mark.m_bit : bits & ~mark.m_bit;
  }
  bits &= ~(kCaptionShows | kCaptionShowsBeginTime);
  if ((flags & CShowParam::kCaptionFlag) != 0) {
    bits |= kCaptionShows;
    if ((flags & CShowParam::kRecordFlag) != 0) bits |= kCaptionShowsBeginTime;
  }
  return bits | kCaptionAlways;
}

void PutCaption(const CaptionTexts& texts, DWORD flags, tag_CAPTIONINFO& caption) {
  caption.m_bits = CaptionBits(caption.m_bits, flags);
  noxdisplay::PutCaptionText(texts.m_camera_name, caption.m_camera_name);
  caption.m_camera_name_color = texts.m_color;
  noxdisplay::PutCaptionText(texts.m_board_name, caption.m_board_name);
  caption.m_board_name_color = texts.m_color;
  caption.m_time_color = texts.m_color;
  if ((caption.m_bits & kCaptionShowsBeginTime) != 0) {
    noxdisplay::PutCaptionText(texts.m_time_begin, caption.m_begin_time);
  }
}

}  // namespace

int CCaptureCamera::FillCaption(std::uintptr_t device, std::uintptr_t draw_stream,
                                tag_CAPTIONINFO* caption) {
  Live live;  // let go of without the lock
  std::unique_lock lock(m_mutex);
  if (!IsBoundTo(device) || m_show == nullptr || m_live == nullptr) return kNoxdevNotMine;
  m_show->SetDrawStream(std::bit_cast<NoxshowStream>(draw_stream));
  if (caption == nullptr) return kNoxdevNotMine;
  live = m_live;
  if (!live->m_data.GetMaskList()->IsEmpty()) {
    NoxdevHandle const handle = m_device;
    const DWORD channel = m_device_channel;
    const CShowParam* const show = m_show;
    lock.unlock();
    tag_MASKSTATE state = {};
    noxdevChGetMaskInfo(handle, channel, &state);
    lock.lock();
    // The host may have closed camera or board, or replaced the show settings meanwhile.
    if (!IsBoundTo(device) || m_live != live || m_show != show) return kNoxdevNotMine;
    FlagMasks(*live->m_data.GetMaskList(), state);
  }
  m_show->GetCaptionTexts(&m_caption_texts);
  PutCaption(m_caption_texts, m_show->GetFlags(), *caption);
  return 0;
}
