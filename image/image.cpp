#include "image/image.h"

#include <utility>

#include "image/snapshot_format.h"

using namespace zebx;

CImage::CImage() = default;
CImage::CImage(const CImage&) = default;
CImage& CImage::operator=(const CImage&) = default;
CImage::~CImage() = default;

void CImage::SetBoardName(const CString& name) {
  m_board_name = name;
  m_info_flags |= kInfoBoardName;
}
void CImage::SetCameraName(const CString& name) {
  m_camera_name = name;
  m_info_flags |= kInfoCameraName;
}
void CImage::SetHostName(const CString& name) {
  m_host_name = name;
  m_info_flags |= kInfoHostNameAndGmt;
}
void CImage::SetTimeStamp(DWORD time_stamp) {
  m_time_stamp = time_stamp;
  m_info_flags |= kInfoTimeStamp;
}
void CImage::SetGmt(int gmt) {
  m_gmt = gmt;
  m_info_flags |= kInfoHostNameAndGmt;
}

CString CImage::GetBoardName() const {
  return (m_info_flags & kInfoBoardName) != 0 ? m_board_name : CString();
}
CString CImage::GetCameraName() const {
  return (m_info_flags & kInfoCameraName) != 0 ? m_camera_name : CString();
}
CString CImage::GetHostName() const {
  return (m_info_flags & kInfoHostNameAndGmt) != 0 ? m_host_name : CString();
}
DWORD CImage::GetTimeStamp() const {
  return (m_info_flags & kInfoTimeStamp) != 0 ? m_time_stamp : 0;
}
int CImage::GetGmt() const {
  return (m_info_flags & kInfoHostNameAndGmt) != 0 ? m_gmt : 0;
}

int CImage::CreateImage(BYTE* buffer, DWORD width, DWORD height) {
  if (buffer != m_raw_image.get()) {
    ReplaceRawImage(std::shared_ptr<BYTE[]>(buffer),
                    ULONGLONG{width} * height * kSnapshotPixelBytes);
  }
  m_width = width;
  m_height = height;
  return 1;
}

int CImage::FillRawImage(const tag_RGBIMAGE* image, tag_FRAMESIZE frame_size) {
  return image != nullptr ? zebxGetShowSize(frame_size, &m_width, &m_height) : 0;
}

void CImage::ReplaceRawImage(std::shared_ptr<BYTE[]> raw_image, ULONGLONG bytes) {
  m_raw_image = std::move(raw_image);
  m_raw_image_bytes = bytes;
}
