// Scaling of pictures to another size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// Which source pixels make up each target pixel of one direction, and how much of it each is. The
// table is made anew only for other sizes.
class PixelWeights {
 public:
  void Fit(int source_size, int target_size);

  bool IsIdentity() const { return m_source_size == TargetSize(); }
  int TargetSize() const { return static_cast<int>(m_firsts.size()); }
  // Every target pixel is made of so many source pixels, one after the other.
  int Count() const { return m_count; }
  int First(int target) const { return m_firsts[static_cast<std::size_t>(target)]; }
  const std::int16_t* Of(int target) const {
    return m_weights.data() + static_cast<std::ptrdiff_t>(target) * m_count;
  }

 private:
  int m_source_size = 0;
  int m_count = 0;
  std::vector<int> m_firsts;
  std::vector<std::int16_t> m_weights;
};

// Scales pictures one after the other; quickest when their sizes stay the same.
class ZEBX_API PictureScaler {
 public:
  // Fills `target` with `source` scaled to the target's size, each direction on its own: every
  // target pixel is the mean of the source area it covers when shrinking, and is interpolated
  // linearly between the two nearest source pixels when enlarging. An equal size is a plain copy.
  void Scale(const PictureView& source, Picture& target);

 private:
  struct PlaneWeights {
    PixelWeights across, down;
  };
  void ScalePlane(const PlaneView& source, PlaneWeights& weights, const MutablePlaneView& target);

  std::array<PlaneWeights, 2> m_weights;  // of luma and of chroma
  std::vector<BYTE> m_narrowed;           // the source's rows in the target's width
  std::vector<int> m_sums;
};

}  // namespace zebx::noxcodec
