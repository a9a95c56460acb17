#include "platform/zebdev/software/scene_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zebx::zebdev {
namespace {

// Coverage of a pixel in 1/256.
constexpr int kFullCoverage = 256;

struct Span {
  double left, right;
};

void Blend(BYTE& pixel, BYTE colour, int coverage) {
  pixel = static_cast<BYTE>(pixel + (colour - pixel) * coverage / kFullCoverage);
}

// Blends the colour into the pixels between two places of a row, by how much of each is covered.
void PaintSpan(BYTE* row, int width, Span span, double row_coverage, BYTE colour) {
  const double left = std::clamp(span.left, 0.0, static_cast<double>(width));
  const double right = std::clamp(span.right, 0.0, static_cast<double>(width));
  for (int x = static_cast<int>(left); x < right; ++x) {
    const double covered = std::min(right, x + 1.0) - std::max(left, static_cast<double>(x));
    Blend(row[x], colour, static_cast<int>(covered * row_coverage * kFullCoverage));
  }
}

BYTE ToByte(double value) {
  return static_cast<BYTE>(std::clamp(value + 0.5, 0.0, 255.0));
}

}  // namespace

Colour Colour::Rgb(int red, int green, int blue) {
  const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
  return {ToByte(16 + luma * 219 / 255), ToByte(128 + (blue - luma) * 0.564 * 224 / 255),
          ToByte(128 + (red - luma) * 0.713 * 224 / 255)};
}

Colour Colour::Shaded(int percent) const {
  const auto scaled = [percent](int value, int origin) {
    return static_cast<BYTE>(std::clamp(origin + (value - origin) * percent / 100, 0, 255));
  };
  return {scaled(y, 16), scaled(cb, 128), scaled(cr, 128)};
}

// Paints row by row in every plane; `span_of` gives the ends of the shape at a height, both in
// scene units.
template <class SpanOf>
void SceneCanvas::FillRows(double top, double bottom, Colour colour, SpanOf span_of) {
  const std::array<BYTE, noxcodec::kPlaneCount> values = {colour.y, colour.cb, colour.cr};
  for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
    const noxcodec::MutablePlaneView plane = m_picture.Plane(index);
    const double rows_per_unit = plane.height / kHeight;
    const double pixels_per_unit = plane.width / kWidth;
    const double first = std::clamp(top * rows_per_unit, 0.0, static_cast<double>(plane.height));
    const double end = std::clamp(bottom * rows_per_unit, 0.0, static_cast<double>(plane.height));
    for (int y = static_cast<int>(first); y < end; ++y) {
      const double upper = std::max(first, static_cast<double>(y));
      const double lower = std::min(end, y + 1.0);
      const Span span = span_of((upper + lower) / 2 / rows_per_unit);
      PaintSpan(plane.Row(y), plane.width,
                {span.left * pixels_per_unit, span.right * pixels_per_unit}, lower - upper,
                values[static_cast<std::size_t>(index)]);
    }
  }
}

void SceneCanvas::FillRectangle(const Box& box, Colour colour) {
  FillRows(box.top, box.bottom, colour, [&box](double) { return Span{box.left, box.right}; });
}

void SceneCanvas::FillEllipse(const Box& box, Colour colour) {
  const double centre = (box.left + box.right) / 2, middle = (box.top + box.bottom) / 2;
  const double half_width = (box.right - box.left) / 2, half_height = (box.bottom - box.top) / 2;
  FillRows(box.top, box.bottom, colour, [=](double height) {
    const double offset = (height - middle) / half_height;
    const double reach = half_width * std::sqrt(std::max(0.0, 1 - offset * offset));
    return Span{centre - reach, centre + reach};
  });
}

void SceneCanvas::FillTrapezoid(const Box& box, double bottom_left, double bottom_right,
                                Colour colour) {
  FillRows(box.top, box.bottom, colour, [&](double height) {
    const double part = (height - box.top) / (box.bottom - box.top);
    return Span{box.left + (bottom_left - box.left) * part,
                box.right + (bottom_right - box.right) * part};
  });
}

}  // namespace zebx::zebdev
