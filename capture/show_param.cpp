#include "capture/show_param.h"

#include <utility>

#include "image/image.h"

using namespace zebx;

namespace {

CString TimeOfDay(CTime time) {
  return time.Format("%H:%M:%S");
}

}  // namespace

CShowParam::CShowParam() = default;

CShowParam::CShowParam(const CShowParam& other) {
  *this = other;
}

CShowParam& CShowParam::operator=(const CShowParam& other) {
  if (this == &other) return *this;
  // One lock after the other: two objects copied into each other on two threads must not wait for
  // ever. The texts come first, since they may take memory.
  CaptionTexts texts;
  CTime current_time;
  {
    const std::lock_guard lock(other.m_mutex);
    texts = other.m_texts;
    current_time = other.m_current_time;
  }
  m_draw_stream = other.m_draw_stream.load();
  m_flags = other.m_flags.load();
  m_scale = other.m_scale.load();
  m_window = other.m_window.load();
  m_create_word = other.m_create_word.load();
  const std::lock_guard lock(m_mutex);
  std::swap(m_texts, texts);
  m_current_time = current_time;
  return *this;
}

CShowParam::~CShowParam() = default;

void CShowParam::SetHostName(const CString& name) {
  StoreText(&CaptionTexts::m_host_name, name);
}

void CShowParam::SetBoardName(const CString& name) {
  StoreText(&CaptionTexts::m_board_name, name);
}

void CShowParam::SetCameraName(const CString& name) {
  StoreText(&CaptionTexts::m_camera_name, name);
}

CString CShowParam::GetHostName() const {
  return LoadText(&CaptionTexts::m_host_name);
}

CString CShowParam::GetBoardName() const {
  return LoadText(&CaptionTexts::m_board_name);
}

CString CShowParam::GetCameraName() const {
  return LoadText(&CaptionTexts::m_camera_name);
}

void CShowParam::SetTimeBegin(CTime time) {
  StoreText(&CaptionTexts::m_time_begin, TimeOfDay(time));
}

void CShowParam::SetTimeBegin(const CString& text) {
  StoreText(&CaptionTexts::m_time_begin, text);
}

void CShowParam::SetTimeEnd(CTime time) {
  StoreText(&CaptionTexts::m_time_end, TimeOfDay(time));
}

void CShowParam::SetTimeEnd(const CString& text) {
  StoreText(&CaptionTexts::m_time_end, text);
}

void CShowParam::SetTimeCur(CTime time) {
  CString text = TimeOfDay(time);
  const std::lock_guard lock(m_mutex);
  std::swap(m_texts.m_time_cur, text);
  m_current_time = time;
}

void CShowParam::SetTimeCur(const CString& text) {
  StoreText(&CaptionTexts::m_time_cur, text);
}

CString CShowParam::GetTimeBegin() const {
  return LoadText(&CaptionTexts::m_time_begin);
}

CString CShowParam::GetTimeEnd() const {
  return LoadText(&CaptionTexts::m_time_end);
}

CString CShowParam::GetTimeCur() const {
  return LoadText(&CaptionTexts::m_time_cur);
}

void CShowParam::SetCaptionColor(DWORD color) {
  const std::lock_guard lock(m_mutex);
  m_texts.m_color = color;
}

DWORD CShowParam::GetCaptionColor() const {
  const std::lock_guard lock(m_mutex);
  return m_texts.m_color;
}

void CShowParam::GetCaptionTexts(CaptionTexts* texts) const {
  const std::lock_guard lock(m_mutex);
  *texts = m_texts;
}

CString CShowParam::GetScaleName() const {
  return std::to_string(static_cast<LONG>(GetScale())) + "%";
}

void CShowParam::SetAlarm(int is_set) {
  SetFlag(kAlarmFlag, is_set);
}

void CShowParam::SetProgramming(int is_set) {
  SetFlag(kProgrammingFlag, is_set);
}

int CShowParam::Create(HWND window, int create_word) {
  m_window = window;
  m_create_word = create_word;
  return 1;
}

int CShowParam::Show(CVideoData* /*frame*/) {
  NoxshowStream stream = GetDrawStream();
  if (stream == nullptr) {
    noxshowBitmap(GetWnd(), kNoxshowIdlePicture, GetFlags() & kActiveFlag);
  } else {
    noxshowDisplay(stream, GetWnd(), nullptr);
  }
  return 1;
}

int CShowParam::GetImage(CImage* image) {
  if (image == nullptr || GetDrawStream() == nullptr) return 0;
  CaptionTexts texts;
  CTime current_time;
  {
    const std::lock_guard lock(m_mutex);
    texts = m_texts;
    current_time = m_current_time;
  }
  image->SetHostName(texts.m_host_name);
  image->SetBoardName(texts.m_board_name);
  image->SetCameraName(texts.m_camera_name);
  image->SetTimeStamp(current_time.GetTime());
  return 0;
}

int CShowParam::IsDrawStreamOpen() {
  return 1;
}

int CShowParam::CreateDrawStream(DWORD /*width*/, DWORD /*height*/) {
  return 1;
}

int CShowParam::CreateIMEDrawStream(DWORD /*width*/, DWORD /*height*/) {
  return 1;
}

int CShowParam::DestroyDrawStream() {
  return 1;
}

void CShowParam::SetFlag(Flag flag, int is_set) {
  if (is_set != 0) {
    m_flags |= flag;
  } else {
    m_flags &= ~DWORD{flag};
  }
}

void CShowParam::StoreText(CString CaptionTexts::*field, CString text) {
  const std::lock_guard lock(m_mutex);
  std::swap(m_texts.*field, text);
}

CString CShowParam::LoadText(CString CaptionTexts::*field) const {
  const std::lock_guard lock(m_mutex);
  return m_texts.*field;
}
