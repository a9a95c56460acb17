#include "playback/display_info.h"

#include "capture/show_param.h"
#include "platform/noxdisplay/caption_text.h"

namespace zebx {

namespace {

// Two fields of 240 or 288 lines are shown as one picture of twice that height.
constexpr tag_FRAMESIZE kHalfHeightNtsc{3};
constexpr tag_FRAMESIZE kHalfHeightPal{0x83};

// From the stream's size to the right and lower sides of the captions' rectangle.
constexpr LONG kCaptionMargin = 4;

}  // namespace

void SetBits(tag_DISPLAYINFO& record, DWORD bits, bool on) {
  record.m_flags = on ? record.m_flags | bits : record.m_flags & ~bits;
}

void SetText(std::span<char> field, const CString& text) {
  noxdisplay::PutCaptionText(text, field);
}

void SetTimeOfDay(std::span<char> field, CTime time) {
  SetText(field, time.Format("%H:%M:%S"));
}

void SetCaptionColors(tag_DISPLAYINFO& record, DWORD color) {
  record.m_camera_name_color = color;
  record.m_board_name_color = color;
  record.m_clock_color = color;
}

void BeginRecord(tag_DISPLAYINFO& record, const CString& camera_name, const CString& board_name) {
  SetText(record.m_camera_name, camera_name);
  SetText(record.m_board_name, board_name);
  SetBits(record, noxdisplay::kShowReserved19, false);
  SetBits(record, noxdisplay::kShowSmooth, true);
  record.m_camera_name_color = kFirstCameraNameColor;
  record.m_board_name_color = kFirstBoardNameColor;
  record.m_clock_color = kFirstClockColor;
}

void FitRecordToStream(tag_DISPLAYINFO& record, CSize stream, tag_FRAMESIZE frame_size) {
  SetBits(record, noxdisplay::kShowPlayed, true);
  record.m_caption_left = 0;
  record.m_caption_top = 0;
  record.m_caption_right = stream.cx - kCaptionMargin;
  record.m_caption_bottom = stream.cy - kCaptionMargin;
  if (frame_size == kHalfHeightNtsc || frame_size == kHalfHeightPal) {
    SetBits(record, noxdisplay::kShowSmooth | noxdisplay::kShowReserved19, false);
  }
}

void FillRecordOfFile(tag_DISPLAYINFO& record, const CZebFileInfo& header,
                      const CShowParam& settings) {
  BeginRecord(record, header.GetCameraName(), header.GetBoardName());
  SetTimeOfDay(record.m_clock, header.GetBeginTime());
  SetTimeOfDay(record.m_begin_time, header.GetBeginTime());
  SetTimeOfDay(record.m_end_time, header.GetEndTime());
  if (settings.IsShowCaption() == 0) return;
  SetBits(record, kShowCaption | noxdisplay::kShowBeginTime | noxdisplay::kShowEndTime, true);
}

}  // namespace zebx
