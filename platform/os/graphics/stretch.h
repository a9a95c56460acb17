// Copying a picture onto another one, at its own size or another.
#pragma once

#include <memory>

#include "platform/framework/types.h"
#include "platform/os/graphics/pixels.h"
#include "platform/os/graphics/stretch_mode.h"

namespace os {

// A place in a picture. May reach outside it.
struct Area {
  LONG m_x = 0;
  LONG m_y = 0;
  LONG m_width = 0;
  LONG m_height = 0;
};

// Copies pictures, and keeps its tables and its memory from one copy to the next: for pictures that
// come again and again at the same sizes. Used by one thread at a time.
class Stretcher {
 public:
  Stretcher();
  ~Stretcher();
  Stretcher(const Stretcher&) = delete;
  Stretcher& operator=(const Stretcher&) = delete;

  // Copies an area of one picture onto an area of another one of its own memory, whatever their
  // sizes. What lies outside either picture is left alone. Neither area may have a negative size.
  // The memory it takes does not depend on the sizes: the target is made in strips of columns.
  void Stretch(const PixelSource& source, const Area& from, const PixelTarget& target,
               const Area& onto, StretchMode mode);

 private:
  class Strip;
  std::unique_ptr<Strip> m_strip;  // made by the first copy at another size
};

// The same for one copy.
void StretchPixels(const PixelSource& source, const Area& from, const PixelTarget& target,
                   const Area& onto, StretchMode mode);

}  // namespace os
