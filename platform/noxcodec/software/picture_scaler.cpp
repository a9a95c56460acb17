#include "platform/noxcodec/software/picture_scaler.h"

#include <algorithm>
#include <cstring>

#include "platform/noxcodec/software/narrowed.h"

namespace zebx::noxcodec {
namespace {

constexpr int kWeightBits = 14;
constexpr int kWeightOfOne = 1 << kWeightBits;

BYTE Rounded(int sum) {
  return static_cast<BYTE>((sum + kWeightOfOne / 2) >> kWeightBits);
}

// A count that is known when compiling makes straight code of the inner loop; 0 is any count.
template <int kCount>
void ScaleRowBy(const BYTE* source, const PixelWeights& across, BYTE* target) {
  const int width = across.TargetSize();
  const int count = kCount > 0 ? kCount : across.Count();
  const std::int16_t* weights = across.Of(0);
  for (int x = 0; x < width; ++x, weights += count) {
    const BYTE* const pixels = source + across.First(x);
    int sum = 0;
    for (int i = 0; i < count; ++i) sum += pixels[i] * weights[i];
    target[x] = Rounded(sum);
  }
}

void ScaleRow(const BYTE* source, const PixelWeights& across, BYTE* target) {
  switch (across.Count()) {
    case 2:
      return ScaleRowBy<2>(source, across, target);
    case 3:
      return ScaleRowBy<3>(source, across, target);
    default:
      return ScaleRowBy<0>(source, across, target);
  }
}

void ScaleRows(const PlaneView& source, const PixelWeights& across,
               const MutablePlaneView& target) {
  for (int y = 0; y < source.height; ++y) {
    if (across.IsIdentity()) {
      std::memcpy(target.Row(y), source.Row(y), static_cast<std::size_t>(source.width));
    } else {
      ScaleRow(source.Row(y), across, target.Row(y));
    }
  }
}

void ScaleColumns(const PlaneView& source, const PixelWeights& down, std::vector<int>& sums,
                  const MutablePlaneView& target) {
  const auto width = static_cast<std::size_t>(target.width);
  sums.resize(width);
  for (int y = 0; y < target.height; ++y) {
    std::fill(sums.begin(), sums.end(), 0);
    for (int i = 0; i < down.Count(); ++i) {
      const BYTE* const row = source.Row(down.First(y) + i);
      const std::int16_t weight = down.Of(y)[i];
      for (std::size_t x = 0; x < width; ++x) sums[x] += Narrowed(row[x]) * weight;
    }
    std::transform(sums.begin(), sums.end(), target.Row(y), Rounded);
  }
}

// The source pixels that one target pixel is made of.
struct Mixture {
  int first;
  std::vector<std::int16_t> weights;
};

// Shrinking: the area that the target pixel covers, its ends in units of 1 / target_size.
Mixture MixCovered(int target, int source_size, int target_size) {
  const std::int64_t begin = std::int64_t{target} * source_size;
  const std::int64_t end = begin + source_size;
  Mixture mixture{static_cast<int>(begin / target_size), {}};
  int rest = kWeightOfOne;
  for (std::int64_t pixel = mixture.first; pixel * target_size < end; ++pixel) {
    const auto covered =
        std::min(end, (pixel + 1) * target_size) - std::max(begin, pixel * target_size);
    const bool last = (pixel + 1) * target_size >= end;
    const int weight = last ? rest : static_cast<int>(covered * kWeightOfOne / source_size);
    mixture.weights.push_back(Narrowed(weight));
    rest -= weight;
  }
  return mixture;
}

// Enlarging: the two source pixels whose centres lie around the target pixel's.
Mixture MixNearest(int target, int source_size, int target_size) {
  const std::int64_t centre = (2 * std::int64_t{target} + 1) * source_size - target_size;
  const std::int64_t unit = 2 * std::int64_t{target_size};
  const auto first = std::clamp<std::int64_t>(centre < 0 ? 0 : centre / unit, 0, source_size - 1);
  const bool has_second = centre > 0 && first + 1 < source_size;
  const int second =
      has_second ? static_cast<int>((centre - first * unit) * kWeightOfOne / unit) : 0;
  Mixture mixture{static_cast<int>(first), {Narrowed(kWeightOfOne - second)}};
  if (second > 0) mixture.weights.push_back(Narrowed(second));
  return mixture;
}

}  // namespace

void PixelWeights::Fit(int source_size, int target_size) {
  if (source_size == m_source_size && target_size == TargetSize()) return;
  m_source_size = source_size;
  std::vector<Mixture> mixtures;
  std::size_t count = 0;
  for (int target = 0; target < target_size; ++target) {
    mixtures.push_back(target_size < source_size ? MixCovered(target, source_size, target_size)
                                                 : MixNearest(target, source_size, target_size));
    count = std::max(count, mixtures.back().weights.size());
  }
  m_count = static_cast<int>(count);
  m_firsts.clear();
  m_weights.assign(mixtures.size() * count, 0);
  auto weights = m_weights.begin();
  for (const Mixture& mixture : mixtures) {
    // The pixels that make up the count, of no weight, must not lie beyond the last one.
    m_firsts.push_back(std::min(mixture.first, source_size - m_count));
    std::copy(mixture.weights.begin(), mixture.weights.end(),
              weights + (mixture.first - m_firsts.back()));
    weights += m_count;
  }
}

void PictureScaler::ScalePlane(const PlaneView& source, PlaneWeights& weights,
                               const MutablePlaneView& target) {
  weights.across.Fit(source.width, target.width);
  weights.down.Fit(source.height, target.height);
  if (weights.down.IsIdentity()) return ScaleRows(source, weights.across, target);
  if (weights.across.IsIdentity()) return ScaleColumns(source, weights.down, m_sums, target);
  m_narrowed.resize(static_cast<std::size_t>(target.width) *
                    static_cast<std::size_t>(source.height));
  const MutablePlaneView narrowed{m_narrowed.data(), target.width, source.height, target.width};
  ScaleRows(source, weights.across, narrowed);
  ScaleColumns(narrowed, weights.down, m_sums, target);
}

void PictureScaler::Scale(const PictureView& source, Picture& target) {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    ScalePlane(source.planes[static_cast<std::size_t>(plane)], m_weights[plane == kLuma ? 0 : 1],
               target.Plane(plane));
  }
}

}  // namespace zebx::noxcodec
