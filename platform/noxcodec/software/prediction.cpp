#include "platform/noxcodec/software/prediction.h"

#include <algorithm>
#include <cstring>

namespace zebx::noxcodec {
namespace {

template <int kSize>
void Interpolate(const BYTE* source, int stride, bool half_x, bool half_y, BYTE* target,
                 int target_stride) {
  const BYTE* const below = source + (half_y ? stride : 0);
  const int right = half_x ? 1 : 0;
  for (int y = 0; y < kSize; ++y) {
    const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(y) * stride;
    const BYTE* const a = source + offset;
    const BYTE* const b = a + right;
    const BYTE* const c = below + offset;
    const BYTE* const d = c + right;
    BYTE* const out = target + static_cast<std::ptrdiff_t>(y) * target_stride;
    if (half_x && half_y) {
      for (int x = 0; x < kSize; ++x) {
        out[x] = static_cast<BYTE>((a[x] + b[x] + c[x] + d[x] + 2) >> 2);
      }
    } else if (half_x || half_y) {
      for (int x = 0; x < kSize; ++x) out[x] = static_cast<BYTE>((a[x] + d[x] + 1) >> 1);
    } else {
      std::memcpy(out, a, kSize);
    }
  }
}

constexpr BYTE kUnknownPixel = 128;

// The decoded pixels around a block; unknown outside the picture.
struct Surroundings {
  std::array<BYTE, kBlockSize> above, left;
  BYTE corner = kUnknownPixel;
  bool has_above, has_left;

  Surroundings(const MutablePlaneView& plane, int x, int y) : has_above(y > 0), has_left(x > 0) {
    above.fill(kUnknownPixel);
    left.fill(kUnknownPixel);
    if (has_above) std::copy_n(plane.Row(y - 1) + x, kBlockSize, above.begin());
    if (has_left) {
      for (int i = 0; i < kBlockSize; ++i) {
        left[static_cast<std::size_t>(i)] = plane.Row(y + i)[x - 1];
      }
    }
    if (has_above && has_left) corner = plane.Row(y - 1)[x - 1];
  }

  BYTE Mean() const {
    int sum = 0;
    for (std::size_t i = 0; i < kBlockSize; ++i) {
      sum += (has_above || !has_left ? above[i] : left[i]) +
             (has_left || !has_above ? left[i] : above[i]);
    }
    return static_cast<BYTE>((sum + kBlockSize) / (2 * kBlockSize));
  }
};

}  // namespace

MutablePlaneView MacroblockPixels::Plane(int plane) {
  if (plane == kLuma) return {m_bytes.data(), kMacroblockSize, kMacroblockSize, kMacroblockSize};
  BYTE* const chroma = m_bytes.data() + kLumaPixels + (plane == kCr ? kBlockPixels : 0);
  return {chroma, kBlockSize, kBlockSize, kBlockSize};
}

PlaneView MacroblockPixels::Plane(int plane) const {
  return const_cast<MacroblockPixels*>(this)->Plane(plane);
}

bool IsAllowedMotion(MotionVector motion, int column, int row, int columns, int rows) {
  const auto allowed = [](int motion2, int index, int count) {
    const int place2 = 2 * index * kMacroblockSize + motion2;
    return place2 >= -2 * kMaxOvershoot &&
           place2 <= 2 * ((count - 1) * kMacroblockSize + kMaxOvershoot);
  };
  return allowed(motion.x, column, columns) && allowed(motion.y, row, rows);
}

void InterpolateBlock(const PlaneView& reference, int x2, int y2, int size, BYTE* target,
                      int target_stride) {
  const BYTE* const source = reference.Row(y2 >> 1) + (x2 >> 1);
  const bool half_x = (x2 & 1) != 0;
  const bool half_y = (y2 & 1) != 0;
  if (size == kMacroblockSize) {
    Interpolate<kMacroblockSize>(source, reference.stride, half_x, half_y, target, target_stride);
  } else {
    Interpolate<kBlockSize>(source, reference.stride, half_x, half_y, target, target_stride);
  }
}

void PredictInter(const Picture& reference, int column, int row, MotionVector motion,
                  MacroblockPixels& target) {
  const MutablePlaneView luma = target.Plane(kLuma);
  InterpolateBlock(reference.Plane(kLuma), 2 * column * kMacroblockSize + motion.x,
                   2 * row * kMacroblockSize + motion.y, kMacroblockSize, luma.pixels, luma.stride);
  // Half a luma vector has quarters; those become halves.
  const int chroma_x = (motion.x >> 1) | (motion.x & 1);
  const int chroma_y = (motion.y >> 1) | (motion.y & 1);
  for (const int plane : {kCb, kCr}) {
    const MutablePlaneView chroma = target.Plane(plane);
    InterpolateBlock(reference.Plane(plane), 2 * column * kBlockSize + chroma_x,
                     2 * row * kBlockSize + chroma_y, kBlockSize, chroma.pixels, chroma.stride);
  }
}

void PredictIntra(const MutablePlaneView& plane, int x, int y, IntraMode mode) {
  const Surroundings around(plane, x, y);
  const BYTE mean = around.Mean();
  for (int row = 0; row < kBlockSize; ++row) {
    BYTE* const out = plane.Row(y + row) + x;
    const BYTE left = around.left[static_cast<std::size_t>(row)];
    switch (mode) {
      case IntraMode::kMean:
        std::fill_n(out, kBlockSize, mean);
        break;
      case IntraMode::kDown:
        std::copy(around.above.begin(), around.above.end(), out);
        break;
      case IntraMode::kAcross:
        std::fill_n(out, kBlockSize, left);
        break;
      case IntraMode::kGradient:
        for (std::size_t i = 0; i < kBlockSize; ++i) {
          out[i] = static_cast<BYTE>(std::clamp(around.above[i] + left - around.corner, 0, 255));
        }
        break;
    }
  }
}

}  // namespace zebx::noxcodec
