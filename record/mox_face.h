// One face that a board detected: a small grey picture with the place and time it was seen.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "record/zeb_file_info.h"

// Holds a face picture in two forms, or none: after a Create that failed, GetFace and GetYBuf are
// null whatever the size says. Used by one thread at a time.
class ZEBX_API CMoxFace : public CObject {
 public:
  CMoxFace();
  ~CMoxFace() override;
  CMoxFace(const CMoxFace&) = delete;
  CMoxFace& operator=(const CMoxFace&) = delete;

  // Makes the face of a device's record: 16 bytes, of which the little-endian 16-bit words at 4
  // to 13 are width, height, x and y of the face point and the detector's index, then width *
  // height luminance bytes. Records follow each other at once. `camera` may be null: the camera
  // stays as it was. 1, or 0 for null, an empty picture and, with `end`, a record that is not
  // whole.
  int Create(const tag_ZEBCAMERAID* camera, const void* record, CTime time);
  int Create(const tag_ZEBCAMERAID* camera, const BYTE* record, const BYTE* end, CTime time);
  // Cuts the face out of a luminance picture of picture_size pixels, top row first, with its rows
  // 2 * picture_size.cx bytes apart, all of which may be part of a face. The width of the face is
  // rounded down to a multiple of 4, so that the rows of the 24-bit form need no padding. `camera`
  // and `point` may be null: what they tell stays as it was. 1, or 0 for null, an empty face and a
  // rectangle that reaches outside the rows.
  int Create(const tag_ZEBCAMERAID* camera, const BYTE* picture, CSize picture_size,
             const CRect& rect, CTime time, const CPoint* point);
  // Releases the picture; every other value stays. Always 1.
  int Destroy();

  // Draws the face, scaled, onto a rectangle of a window. 1, or 0 without a picture and for a stale
  // window; what the display makes of it is not looked at.
  int Show(HWND window, const CRect& rect) const;

  CSize GetSize() const { return m_size; }  // pixels
  // 24-bit pixels, all three bytes alike, width * height * 3 bytes; and the luminance, width *
  // height bytes. Rows are in the record's order, or bottom-up when cut out. Borrowed until the
  // next Create or Destroy; null when there is no picture.
  BYTE* GetFace() const { return m_face.get(); }
  BYTE* GetYBuf() const { return m_luminance.get(); }
  tag_ZEBCAMERAID GetCameraID() const { return m_camera; }
  CTime GetTime() const { return m_time; }
  CPoint GetFacePoint() const { return m_face_point; }
  int GetDetectIndex() const { return m_detect_index; }
  void SetDetectIndex(int index) { m_detect_index = index; }

  static constexpr std::size_t kRecordHeaderBytes = 16;

 private:
  void Begin(const tag_ZEBCAMERAID* camera, CTime time);
  void Allocate();
  void PutRow(std::size_t offset, const BYTE* luminance, std::size_t count);

  tag_ZEBCAMERAID m_camera;
  std::unique_ptr<BYTE[]> m_face;
  std::unique_ptr<BYTE[]> m_luminance;
  CSize m_size;
  CTime m_time;
  CPoint m_face_point;
  int m_detect_index = 0;
};
