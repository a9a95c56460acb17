#include "platform/zebdev/software/live_caption.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "platform/framework/time.h"
#include "platform/noxdisplay/caption_text.h"

namespace zebx::zebdev {
namespace {

using noxdisplay::PutPlainText;

// Captions have the display record's bits for the same things.
static_assert(kCaptionMonitor == DWORD{noxdisplay::kShowMonitor} &&
              kCaptionShows == DWORD{noxdisplay::kShowCameraName | noxdisplay::kShowBoardName |
                                     noxdisplay::kShowClock} &&
              kCaptionProgramming == DWORD{noxdisplay::kShowProgramming} &&
              kCaptionActive == DWORD{noxdisplay::kShowActive} &&
              kCaptionAlarm == DWORD{noxdisplay::kShowAlarm} &&
              kCaptionAlways == DWORD{noxdisplay::kShowMasks} &&
              kCaptionRecord == DWORD{noxdisplay::kShowRecord} &&
              kCaptionShowsBeginTime == DWORD{noxdisplay::kShowBeginTime});
constexpr DWORD kCaptionBits = kCaptionMonitor | kCaptionShows | kCaptionProgramming |
                               kCaptionActive | kCaptionAlarm | kCaptionAlways | kCaptionRecord |
                               kCaptionShowsBeginTime;

static_assert(kMaskMotion == DWORD{noxdisplay::kMaskSeesMotion} &&
              kMaskAlarm == DWORD{noxdisplay::kMaskIsInAlarm});

// A field of the caption, which may lack its zero byte.
std::string_view TextOf(std::span<const char> field) {
  return {field.data(), field.size()};
}

void CopyCaption(const tag_CAPTIONINFO& caption, tag_DISPLAYINFO& record) {
  record.m_flags = caption.m_bits & kCaptionBits;
  PutPlainText(TextOf(caption.m_camera_name), record.m_camera_name);
  record.m_camera_name_color = caption.m_camera_name_color;
  PutPlainText(TextOf(caption.m_board_name), record.m_board_name);
  record.m_board_name_color = caption.m_board_name_color;
  record.m_clock_color = caption.m_time_color;
  PutPlainText(TextOf(caption.m_begin_time), record.m_begin_time);
}

}  // namespace

tag_DISPLAYINFO LiveDisplayRecord(const tag_CAPTIONINFO* caption, const MaskAreas& masks,
                                  const LiveMarks& marks) {
  tag_DISPLAYINFO record = {};
  if (caption != nullptr) CopyCaption(*caption, record);
  const CString clock = CTime::GetCurrentTime().Format("%H:%M:%S");
  PutPlainText(clock, record.m_clock);
  if (marks.m_is_lost) record.m_flags |= noxdisplay::kShowVideoLost;
  if (marks.m_has_sound) record.m_flags |= noxdisplay::kShowAudio;

  // Fields that are stretched to a window would mix with what is not theirs.
  const bool is_field = marks.m_encode_width > 2 * marks.m_encode_height;
  if (!is_field) record.m_flags |= noxdisplay::kShowSmooth;

  record.m_encode_width = static_cast<WORD>(marks.m_encode_width);
  record.m_encode_height = static_cast<WORD>(marks.m_encode_height);
  const auto areas = masks.Areas();
  const std::size_t count = std::min(areas.size(), noxdisplay::kDisplayMasks);
  record.m_mask_count = static_cast<DWORD>(count);
  for (std::size_t index = 0; index < count; ++index) {
    const tag_MASKAREA& area = areas[index];
    record.m_masks[index] = {static_cast<LONG>(area.m_left), static_cast<LONG>(area.m_top),
                             static_cast<LONG>(area.m_right), static_cast<LONG>(area.m_bottom),
                             masks.StateOf(index)};
  }
  return record;
}

}  // namespace zebx::zebdev
