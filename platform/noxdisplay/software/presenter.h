// What a window shows: the picture, and over it mask outlines, captions and status pictures.
#pragma once

#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/canvas.h"
#include "platform/noxdisplay/software/status_pictures.h"
#include "platform/os/graphics/stretch.h"

namespace zebx::noxdisplay {

// Draws into windows. Keeps its tables and memory, so that the next picture of the same sizes takes
// none. Used by one thread at a time.
class Presenter {
 public:
  // Shows a picture, none for null, as the record says; `size` is the stream's. docs/display.md
  // tells where everything goes.
  void Present(const Canvas& canvas, const os::PixelSource* picture, CSize size,
               const tag_DISPLAYINFO& info, const PictureSet& registered);
  // Shows one of the registered pictures alone: a dark area where there is none.
  void PresentStatus(const Canvas& canvas, DWORD number, bool is_active,
                     const PictureSet& registered);

 private:
  void DrawPicture(const Canvas& canvas, const os::PixelSource* picture, os::StretchMode mode);
  // Returns how many pixels of the line it took, from the right.
  LONG DrawMarks(const Canvas& canvas, LONG left, LONG right, LONG top, const TextFace& face,
                 DWORD flags, const PictureSet& registered);

  os::Stretcher m_picture_stretcher;
  os::Stretcher m_mark_stretcher;
};

}  // namespace zebx::noxdisplay
