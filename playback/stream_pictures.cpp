#include "playback/stream_pictures.h"

#include <utility>

#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/video_data.h"
#include "playback/display_info.h"

namespace zebx {

StreamPictures::StreamPictures(CShowParam* settings, tag_FRAMESIZE frame_size)
    : m_settings(settings), m_frame_size(frame_size) {}

void StreamPictures::End() {
  if (CShowParam* const settings = std::exchange(m_settings, nullptr); settings != nullptr) {
    settings->SetDrawStream(nullptr);
    settings->Show(nullptr);
  }
  m_stream.reset();
}

bool StreamPictures::Show(const CVideoData& frame, bool has_sound) {
  if (m_settings == nullptr) return false;
  const bool is_begun = m_decoder != nullptr && m_stream != nullptr;
  if (!is_begun && !Begin(frame)) return false;
  RestoreLostSurface(m_stream.get());
  if (frame.IsVideoLost() == 0) {
    DecodeFrame(m_decoder.get(), frame);
    PutPicture(m_decoder.get(), m_stream.get(), RowOrder::kTopDown, 0);
  }
  RefreshRecord(frame, has_sound);
  noxshowDisplay(m_stream.get(), m_settings->GetWnd(), m_record.get());
  return true;
}

// A part that was made stays, also when a later one is refused; the stream gets the decoder's size
// whatever the frame has that goes on.
bool StreamPictures::Begin(const CVideoData& frame) {
  const BYTE encoder_type = frame.GetEncoderType();
  const bool is_rt8port = encoder_type == kEncoderTypeRT8Port;
  const CSize size = DecodedSize(m_frame_size, is_rt8port);
  if (size == CSize()) return false;
  m_is_rt8port |= is_rt8port;
  if (m_decoder == nullptr) {
    if (!frame.IsIFrame()) return false;
    m_decoder.reset(CreatePlayedDecoder(size, encoder_type, 0));
    if (m_decoder == nullptr) return false;
    m_size = size;
  }
  if (m_record == nullptr) MakeRecord(is_rt8port);
  m_stream.reset(CreatePlayedStream(m_size, m_record.get()));
  if (m_stream == nullptr) return false;
  m_settings->SetDrawStream(m_stream.get());
  return true;
}

void StreamPictures::MakeRecord(bool is_rt8port) {
  m_settings->GetCaptionTexts(&m_texts);
  m_record = std::make_unique<tag_DISPLAYINFO>();
  tag_DISPLAYINFO& record = *m_record;
  BeginRecord(record, m_texts.m_camera_name, m_texts.m_board_name);
  FitRecordToStream(record, m_size, m_frame_size);
  PutTimes();
  // Not the clock's: that keeps its first colour until the first picture.
  record.m_camera_name_color = m_texts.m_color;
  record.m_board_name_color = m_texts.m_color;

  // Masks are counted in the size that was encoded.
  const CSize encoded = PlayedSize(m_frame_size, is_rt8port);
  if (encoded == m_size) return;
  record.m_encode_width = static_cast<WORD>(encoded.cx);
  record.m_encode_height = static_cast<WORD>(encoded.cy);
}

void StreamPictures::RefreshRecord(const CVideoData& frame, bool has_sound) {
  using namespace noxdisplay;
  tag_DISPLAYINFO& record = *m_record;
  m_settings->GetCaptionTexts(&m_texts);
  SetBits(record, kShowVideoLost, frame.IsVideoLost() != 0);
  SetBits(record, kShowAudio, has_sound);
  SetBits(record, kShowActive, m_settings->IsActive() != 0);
  SetBits(record, kShowRecord, m_settings->IsRecord() != 0);
  PutMasks(frame);
  SetBits(record, kShowMasks, true);
  SetBits(record, kShowAlarm, m_settings->IsAlarm() != 0);
  SetBits(record, kShowMonitor, m_settings->IsMonitor() != 0);
  SetText(record.m_camera_name, m_texts.m_camera_name);
  SetText(record.m_board_name, m_texts.m_board_name);
  PutTimes();
  SetCaptionColors(record, m_texts.m_color);
}

// The first five of the frame's masks.
void StreamPictures::PutMasks(const CVideoData& frame) {
  tag_DISPLAYINFO& record = *m_record;
  record.m_mask_count = 0;
  const CMaskList* const masks = frame.GetMaskList();
  if (masks == nullptr) return;
  for (const CObject* entry : *masks) {
    const auto* const mask = static_cast<const CMaskInfo*>(entry);
    if (mask == nullptr) continue;
    const CRect area = mask->GetMBRect();
    const DWORD state = (mask->IsMove() != 0 ? noxdisplay::kMaskSeesMotion : DWORD{0}) |
                        (mask->IsAlarm() != 0 ? noxdisplay::kMaskIsInAlarm : DWORD{0});
    record.m_masks[record.m_mask_count] = {area.left, area.top, area.right, area.bottom, state};
    if (++record.m_mask_count == noxdisplay::kDisplayMasks) return;
  }
}

// The clock tells the time of day and not the frame's. A begin time that is hidden keeps its bytes.
void StreamPictures::PutTimes() {
  tag_DISPLAYINFO& record = *m_record;
  SetTimeOfDay(record.m_clock, CTime::GetCurrentTime());
  const bool is_shown = m_settings->IsShowCaption() != 0;
  SetBits(record, kShowCaption | noxdisplay::kShowBeginTime, is_shown);
  if (is_shown) SetText(record.m_begin_time, m_texts.m_time_begin);
}

}  // namespace zebx
