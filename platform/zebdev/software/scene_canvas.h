// Painting of simple shapes into 4:2:0 pictures, for generated scenes.
#pragma once

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::zebdev {

// A colour as pictures store it.
struct Colour {
  BYTE y, cb, cr;

  // From red, green and blue of 0..255.
  static Colour Rgb(int red, int green, int blue);
  // The same hue, `percent` as bright.
  Colour Shaded(int percent) const;
};

// An area in scene units, the right and bottom ends excluded.
struct Box {
  double left, top, right, bottom;
};

// Paints into a borrowed picture. Places are in scene units, of which every picture has kWidth *
// kHeight whatever its pixels; what lies outside is cut off. Edges are smooth, so that a shape may
// move by less than a pixel.
class SceneCanvas {
 public:
  static constexpr double kWidth = 352;
  static constexpr double kHeight = 288;

  explicit SceneCanvas(noxcodec::Picture& picture) : m_picture(picture) {}

  void FillRectangle(const Box& box, Colour colour);
  void FillEllipse(const Box& box, Colour colour);
  // A shape with level top and bottom edges; `box` gives the top edge, and the bottom edge goes
  // from `bottom_left` to `bottom_right`.
  void FillTrapezoid(const Box& box, double bottom_left, double bottom_right, Colour colour);

 private:
  template <class SpanOf>
  void FillRows(double top, double bottom, Colour colour, SpanOf span_of);

  noxcodec::Picture& m_picture;
};

}  // namespace zebx::zebdev
