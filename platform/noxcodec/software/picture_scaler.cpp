#include "platform/noxcodec/software/picture_scaler.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace zebx::noxcodec {
namespace {

constexpr int kWeightBits = 14;
constexpr int kWeightOfOne = 1 << kWeightBits;

// The weighted source pixels that make up each target pixel of one direction.
class Taps {
 public:
  Taps(int source_size, int target_size) {
    for (int target = 0; target < target_size; ++target) {
      m_starts.push_back(m_weights.size());
      if (target_size < source_size) {
        AddCovered(target, source_size, target_size);
      } else {
        AddNearest(target, source_size, target_size);
      }
    }
    m_starts.push_back(m_weights.size());
  }

  int First(int target) const { return m_firsts[static_cast<std::size_t>(target)]; }
  int Count(int target) const {
    const auto index = static_cast<std::size_t>(target);
    return static_cast<int>(m_starts[index + 1] - m_starts[index]);
  }
  const int* Weights(int target) const {
    return m_weights.data() + m_starts[static_cast<std::size_t>(target)];
  }

 private:
  // Shrinking: the area that the target pixel covers, its ends in units of 1 / target_size.
  void AddCovered(int target, int source_size, int target_size) {
    const std::int64_t begin = std::int64_t{target} * source_size;
    const std::int64_t end = begin + source_size;
    const auto first = begin / target_size;
    m_firsts.push_back(static_cast<int>(first));
    int rest = kWeightOfOne;
    for (auto pixel = first; pixel * target_size < end; ++pixel) {
      const auto covered =
          std::min(end, (pixel + 1) * target_size) - std::max(begin, pixel * target_size);
      const bool last = (pixel + 1) * target_size >= end;
      const int weight = last ? rest : static_cast<int>(covered * kWeightOfOne / source_size);
      m_weights.push_back(weight);
      rest -= weight;
    }
  }

  // Enlarging: the two source pixels whose centres lie around the target pixel's.
  void AddNearest(int target, int source_size, int target_size) {
    const std::int64_t centre = (2 * std::int64_t{target} + 1) * source_size - target_size;
    const std::int64_t unit = 2 * std::int64_t{target_size};
    const auto first = std::clamp<std::int64_t>(centre < 0 ? 0 : centre / unit, 0, source_size - 1);
    m_firsts.push_back(static_cast<int>(first));
    const bool has_second = centre > 0 && first + 1 < source_size;
    const int second =
        has_second ? static_cast<int>((centre - first * unit) * kWeightOfOne / unit) : 0;
    m_weights.push_back(kWeightOfOne - second);
    if (second > 0) m_weights.push_back(second);
  }

  std::vector<int> m_firsts;
  std::vector<std::size_t> m_starts;
  std::vector<int> m_weights;
};

BYTE Rounded(int sum) {
  return static_cast<BYTE>((sum + kWeightOfOne / 2) >> kWeightBits);
}

void ScaleRow(const BYTE* source, const Taps& taps, int width, BYTE* target) {
  for (int x = 0; x < width; ++x) {
    const BYTE* const pixels = source + taps.First(x);
    const int* const weights = taps.Weights(x);
    int sum = 0;
    for (int i = 0; i < taps.Count(x); ++i) sum += pixels[i] * weights[i];
    target[x] = Rounded(sum);
  }
}

void ScalePlane(const PlaneView& source, const MutablePlaneView& target) {
  const Taps across(source.width, target.width);
  const Taps down(source.height, target.height);
  const auto width = static_cast<std::size_t>(target.width);
  std::vector<BYTE> narrowed(width * static_cast<std::size_t>(source.height));
  for (int y = 0; y < source.height; ++y) {
    ScaleRow(source.Row(y), across, target.width,
             narrowed.data() + static_cast<std::size_t>(y) * width);
  }
  std::vector<int> sums(width);
  for (int y = 0; y < target.height; ++y) {
    std::fill(sums.begin(), sums.end(), 0);
    for (int i = 0; i < down.Count(y); ++i) {
      const BYTE* const row = narrowed.data() + static_cast<std::size_t>(down.First(y) + i) * width;
      const int weight = down.Weights(y)[i];
      for (std::size_t x = 0; x < width; ++x) sums[x] += row[x] * weight;
    }
    std::transform(sums.begin(), sums.end(), target.Row(y), Rounded);
  }
}

void CopyPlane(const PlaneView& source, const MutablePlaneView& target) {
  for (int y = 0; y < target.height; ++y) {
    std::memcpy(target.Row(y), source.Row(y), static_cast<std::size_t>(target.width));
  }
}

}  // namespace

void ScalePicture(const PictureView& source, Picture& target) {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const PlaneView& from = source.planes[static_cast<std::size_t>(plane)];
    const MutablePlaneView to = target.Plane(plane);
    if (from.width == to.width && from.height == to.height) {
      CopyPlane(from, to);
    } else {
      ScalePlane(from, to);
    }
  }
}

}  // namespace zebx::noxcodec
