#include "platform/noxcodec/software/level_choice.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "platform/noxcodec/software/transform.h"

namespace noxcodec {
namespace {

constexpr std::int64_t kUnreachable = std::numeric_limits<std::int64_t>::max() / 2;

// The cheapest way to stand at a scan position with a history.
struct Step {
  std::int64_t cost = kUnreachable;
  int magnitude = 0;
  int from_history = 0;
};

using Column = std::array<Step, kHistories>;

class ShortestPath {
 public:
  ShortestPath(const Coefficients& coefficients, int quantiser, const BlockContext& context,
               const RateDistortion& rate)
      : m_coefficients(coefficients), m_quantiser(quantiser), m_context(context), m_rate(rate) {}

  // Follows the scan up to `last`, the last position whose nearest level is not 0, and returns the
  // cost of the cheapest block that ends at a level other than 0, relative to an empty one.
  std::int64_t Run(int last) {
    Column before{};
    before[0].cost = 0;
    for (int scan = 0; scan <= last; ++scan) {
      Column& after = m_columns[static_cast<std::size_t>(scan)];
      after = Column{};
      Advance(scan, before, after);
      ConsiderEnd(scan, after);
      before = after;
      ContinueAfterLevels(scan, before);
    }
    return m_best_cost;
  }

  void WriteLevels(Coefficients& levels) const {
    levels.fill(0);
    int history = m_best_history;
    for (int scan = m_best_scan; scan >= 0; --scan) {
      const std::size_t index = kZigzag[static_cast<std::size_t>(scan)];
      const Step& step =
          m_columns[static_cast<std::size_t>(scan)][static_cast<std::size_t>(history)];
      levels[index] =
          static_cast<std::int16_t>(m_coefficients[index] < 0 ? -step.magnitude : step.magnitude);
      history = step.from_history;
    }
  }

 private:
  int MagnitudeAt(int scan) const {
    return std::abs(int{m_coefficients[kZigzag[static_cast<std::size_t>(scan)]]});
  }

  void Advance(int scan, const Column& before, Column& after) const {
    const std::size_t band = kBandOf[static_cast<std::size_t>(scan)];
    const int wanted = MagnitudeAt(scan);
    const int step = QuantiserStep(m_quantiser);
    const int nearest = std::min((wanted + step / 2) / step, kMaxLevel);
    for (int history = 0; history < kHistories; ++history) {
      const Step& start = before[static_cast<std::size_t>(history)];
      if (start.cost >= kUnreachable) continue;
      const auto h = static_cast<std::size_t>(history);
      const Probability& zero = m_context.model.zeros[band][h];
      Reach(after[0], {start.cost + m_rate.OfCost(CostOf(zero, false)), 0, history});
      for (int magnitude = nearest; magnitude > 0 && magnitude + 1 >= nearest; --magnitude) {
        BitCounter counter;
        counter.Bit(zero, true);
        CodeMagnitude(counter, m_context.model, m_context.escape, band, h, magnitude);
        counter.EvenBit(false);
        const int fault = wanted - magnitude * step;
        const std::int64_t gain = std::int64_t{fault} * fault - std::int64_t{wanted} * wanted;
        Reach(after[static_cast<std::size_t>(HistoryAfter(magnitude))],
              {start.cost + m_rate.Of(gain, counter.Cost()), magnitude, history});
      }
    }
  }

  static void Reach(Step& step, const Step& candidate) {
    if (candidate.cost < step.cost) step = candidate;
  }

  const Probability& EndOf(int scan, int history) const {
    return m_context.model
        .ends[kBandOf[static_cast<std::size_t>(scan)]][static_cast<std::size_t>(history)];
  }

  int CostOfEnd(int scan, int history, bool ends) const {
    return scan + 1 < kBlockPixels ? CostOf(EndOf(scan, history), ends) : 0;
  }

  void ConsiderEnd(int scan, const Column& column) {
    for (int history = 1; history < kHistories; ++history) {
      const std::int64_t cost = column[static_cast<std::size_t>(history)].cost +
                                m_rate.OfCost(CostOfEnd(scan, history, true));
      if (cost < m_best_cost) {
        m_best_cost = cost;
        m_best_scan = scan;
        m_best_history = history;
      }
    }
  }

  void ContinueAfterLevels(int scan, Column& column) const {
    for (int history = 1; history < kHistories; ++history) {
      Step& step = column[static_cast<std::size_t>(history)];
      if (step.cost < kUnreachable) {
        step.cost += m_rate.OfCost(CostOfEnd(scan, history, false));
      }
    }
  }

  const Coefficients& m_coefficients;
  int m_quantiser;
  const BlockContext& m_context;
  const RateDistortion& m_rate;
  std::array<Column, kBlockPixels> m_columns;
  std::int64_t m_best_cost = kUnreachable;
  int m_best_scan = -1;
  int m_best_history = 0;
};

}  // namespace

LevelChoice ChooseLevels(const Coefficients& coefficients, int quantiser,
                         const BlockContext& context, const RateDistortion& rate,
                         Coefficients& levels) {
  std::int64_t energy = 0;
  int last = -1;
  for (int scan = 0; scan < kBlockPixels; ++scan) {
    const int coefficient = coefficients[kZigzag[static_cast<std::size_t>(scan)]];
    energy += std::int64_t{coefficient} * coefficient;
    if (2 * std::abs(coefficient) >= QuantiserStep(quantiser)) last = scan;
  }
  const std::int64_t empty = rate.OfCost(CostOf(context.coded, false));
  if (last >= 0) {
    ShortestPath path(coefficients, quantiser, context, rate);
    const std::int64_t full = path.Run(last) + rate.OfCost(CostOf(context.coded, true));
    if (full < empty) {
      path.WriteLevels(levels);
      return {true, rate.Of(energy, 0) + full};
    }
  }
  return {false, rate.Of(energy, 0) + empty};
}

}  // namespace noxcodec
