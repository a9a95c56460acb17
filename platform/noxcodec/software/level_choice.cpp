#include "platform/noxcodec/software/level_choice.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "platform/noxcodec/software/transform.h"

namespace zebx::noxcodec {
namespace {

constexpr std::int64_t kUnreachable = std::numeric_limits<std::int64_t>::max() / 2;

// The largest level worth a thought. Bits make rounding up pay off late: from 5/8 of a step on.
int NearestLevel(int magnitude, int step) {
  return std::min((8 * magnitude + 3 * step) / (8 * step), kMaxLevel);
}

// How the cheapest way to a scan position came there.
struct Choice {
  std::int16_t magnitude;
  std::int16_t from_history;
};

using Costs = std::array<std::int64_t, kHistories>;
constexpr Costs kNowhere = {kUnreachable, kUnreachable, kUnreachable};

class ShortestPath {
 public:
  ShortestPath(const Coefficients& coefficients, int quantiser, const BlockContext& context,
               const RateDistortion& rate)
      : m_coefficients(coefficients),
        m_step(QuantiserStep(quantiser)),
        m_context(context),
        m_rate(rate) {}

  // Follows the scan up to `last`, the last position with a NearestLevel above 0, and returns the
  // cost of the cheapest block that ends at a level other than 0, relative to an empty one.
  std::int64_t Run(int last) {
    Costs costs = kNowhere;
    costs[0] = 0;
    for (int scan = 0; scan <= last; ++scan) {
      costs = Advance(scan, costs);
      ConsiderEnd(scan, costs);
    }
    return m_best_cost;
  }

  void WriteLevels(Coefficients& levels) const {
    levels.fill(0);
    auto history = m_best_history;
    for (int scan = m_best_scan; scan >= 0; --scan) {
      const std::size_t index = kZigzag[static_cast<std::size_t>(scan)];
      const Choice& choice = m_choices[static_cast<std::size_t>(scan)][history];
      levels[index] = m_coefficients[index] < 0 ? static_cast<std::int16_t>(-choice.magnitude)
                                                : choice.magnitude;
      history = static_cast<std::size_t>(choice.from_history);
    }
  }

 private:
  // The costs of standing at a scan position with each history, from those at the one before.
  Costs Advance(int scan, const Costs& before) {
    const auto place = static_cast<std::size_t>(scan);
    const std::size_t band = kBandOf[place];
    const int wanted = std::abs(int{m_coefficients[kZigzag[place]]});
    const int nearest = NearestLevel(wanted, m_step);
    Costs after = kNowhere;
    const auto reach = [&](int magnitude, std::size_t from_history, std::int64_t cost) {
      const auto history = static_cast<std::size_t>(HistoryAfter(magnitude));
      if (cost >= after[history]) return;
      after[history] = cost;
      m_choices[place][history] = {static_cast<std::int16_t>(magnitude),
                                   static_cast<std::int16_t>(from_history)};
    };
    for (std::size_t history = 0; history < kHistories; ++history) {
      if (before[history] >= kUnreachable) continue;
      const Probability& nonzero = m_context.model.nonzeros[band][history];
      reach(0, history, before[history] + m_rate.OfCost(CostOf(nonzero, false)));
      for (int magnitude = nearest; magnitude > 0 && magnitude + 1 >= nearest; --magnitude) {
        const int fault = wanted - magnitude * m_step;
        const std::int64_t gain = std::int64_t{fault} * fault - std::int64_t{wanted} * wanted;
        BitCounter counter;
        counter.Bit(nonzero, true);
        CodeMagnitude(counter, m_context.model, m_context.escape, band, history, magnitude);
        counter.EvenBit(false);
        reach(magnitude, history, before[history] + m_rate.Of(gain, counter.Cost()));
      }
    }
    return after;
  }

  // The block may end after any level other than 0; going on costs something too.
  void ConsiderEnd(int scan, Costs& costs) {
    if (scan + 1 == kBlockPixels) return Compare(scan, costs, {});
    const auto& ends = m_context.model.ends[kBandOf[static_cast<std::size_t>(scan)]];
    Costs end_costs{};
    for (std::size_t history = 1; history < kHistories; ++history) {
      end_costs[history] = m_rate.OfCost(CostOf(ends[history], true));
    }
    Compare(scan, costs, end_costs);
    for (std::size_t history = 1; history < kHistories; ++history) {
      if (costs[history] < kUnreachable) {
        costs[history] += m_rate.OfCost(CostOf(ends[history], false));
      }
    }
  }

  void Compare(int scan, const Costs& costs, const Costs& end_costs) {
    for (std::size_t history = 1; history < kHistories; ++history) {
      if (costs[history] + end_costs[history] >= m_best_cost) continue;
      m_best_cost = costs[history] + end_costs[history];
      m_best_scan = scan;
      m_best_history = history;
    }
  }

  const Coefficients& m_coefficients;
  int m_step;
  const BlockContext& m_context;
  const RateDistortion& m_rate;
  std::array<std::array<Choice, kHistories>, kBlockPixels> m_choices;
  std::int64_t m_best_cost = kUnreachable;
  int m_best_scan = -1;
  std::size_t m_best_history = 0;
};

// The last scan position with a NearestLevel above 0; -1 for none.
int LastWorthwhile(const Coefficients& coefficients, int step) {
  const auto worthwhile = [step](int coefficient) { return 8 * std::abs(coefficient) >= 5 * step; };
  int largest = 0;
  for (const std::int16_t coefficient : coefficients) {
    largest = std::max(largest, std::abs(int{coefficient}));
  }
  if (!worthwhile(largest)) return -1;
  int last = kBlockPixels - 1;
  while (!worthwhile(coefficients[kZigzag[static_cast<std::size_t>(last)]])) --last;
  return last;
}

}  // namespace

LevelChoice ChooseLevels(const Coefficients& coefficients, int quantiser,
                         const BlockContext& context, const RateDistortion& rate,
                         Coefficients& levels) {
  int energy = 0;
  for (const std::int16_t coefficient : coefficients) energy += coefficient * coefficient;
  const std::int64_t empty = rate.OfCost(CostOf(context.coded, false));
  const int last = LastWorthwhile(coefficients, QuantiserStep(quantiser));
  if (last >= 0) {
    ShortestPath path(coefficients, quantiser, context, rate);
    const std::int64_t full = path.Run(last) + rate.OfCost(CostOf(context.coded, true));
    if (full < empty) {
      path.WriteLevels(levels);
      return {true, rate.Of(energy, 0) + full, energy};
    }
  }
  return {false, rate.Of(energy, 0) + empty, energy};
}

}  // namespace zebx::noxcodec
