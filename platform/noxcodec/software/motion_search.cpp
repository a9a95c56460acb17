#include "platform/noxcodec/software/motion_search.h"

#include <array>
#include <cstdlib>
#include <limits>

namespace zebx::noxcodec {
namespace {

constexpr std::array<MotionVector, 4> kDiamond = {{{-1, 0}, {1, 0}, {0, -1}, {0, 1}}};
constexpr std::array<MotionVector, 8> kRing = {
    {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}}};
constexpr std::array<int, 3> kStridesInPixels = {4, 2, 1};
constexpr int kMaxRounds = 16;

int AbsoluteDifference(const BYTE* a, int a_stride, const BYTE* b, int b_stride) {
  int sum = 0;
  for (int y = 0; y < kMacroblockSize; ++y) {
    for (int x = 0; x < kMacroblockSize; ++x) sum += std::abs(a[x] - b[x]);
    a += a_stride;
    b += b_stride;
  }
  return sum;
}

class Search {
 public:
  explicit Search(const MotionTask& task)
      : m_task(task),
        m_reference(task.reference.Plane(kLuma)),
        m_source(task.source.Row(task.row * kMacroblockSize) + task.column * kMacroblockSize) {}

  bool Try(MotionVector motion) {
    if (!IsAllowedMotion(motion, m_task.column, m_task.row, m_task.columns, m_task.rows)) {
      return false;
    }
    const std::int64_t cost = CostOf(motion);
    if (cost >= m_best_cost) return false;
    m_best_cost = cost;
    m_best = motion;
    return true;
  }

  // Tries the best vector's neighbours, `stride` half pixels away; whether one was better.
  bool TryAround(std::span<const MotionVector> directions, int stride) {
    const MotionVector centre = m_best;
    bool better = false;
    for (const MotionVector direction : directions) {
      better |= Try({centre.x + stride * direction.x, centre.y + stride * direction.y});
    }
    return better;
  }

  MotionVector Best() const { return m_best; }

 private:
  std::int64_t CostOf(MotionVector motion) const {
    const int x2 = 2 * m_task.column * kMacroblockSize + motion.x;
    const int y2 = 2 * m_task.row * kMacroblockSize + motion.y;
    BitCounter counter;
    CodeMotionDifference(counter, m_task.model[0], motion.x - m_task.predicted.x);
    CodeMotionDifference(counter, m_task.model[1], motion.y - m_task.predicted.y);
    int difference;
    if (((x2 | y2) & 1) == 0) {
      difference = AbsoluteDifference(m_source, m_task.source.stride,
                                      m_reference.Row(y2 / 2) + x2 / 2, m_reference.stride);
    } else {
      alignas(16) std::array<BYTE, kMacroblockSize * kMacroblockSize> between;
      InterpolateBlock(m_reference, x2, y2, kMacroblockSize, between.data(), kMacroblockSize);
      difference =
          AbsoluteDifference(m_source, m_task.source.stride, between.data(), kMacroblockSize);
    }
    return m_task.rate.OfDifference(difference, counter.Cost());
  }

  const MotionTask& m_task;
  PlaneView m_reference;
  const BYTE* m_source;
  MotionVector m_best;
  std::int64_t m_best_cost = std::numeric_limits<std::int64_t>::max();
};

}  // namespace

MotionVector SearchMotion(const MotionTask& task, std::span<const MotionVector> starts) {
  Search search(task);
  for (const MotionVector start : starts) search.Try({start.x & ~1, start.y & ~1});
  for (const int stride : kStridesInPixels) {
    for (int round = 0; round < kMaxRounds && search.TryAround(kDiamond, 2 * stride); ++round) {
    }
  }
  search.TryAround(kRing, 1);
  return search.Best();
}

}  // namespace zebx::noxcodec
