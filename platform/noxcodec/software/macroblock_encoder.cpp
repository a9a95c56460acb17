#include "platform/noxcodec/software/macroblock_encoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

#include "platform/noxcodec/software/motion_search.h"
#include "platform/noxcodec/software/reconstruction.h"
#include "platform/noxcodec/software/transform.h"

namespace zebx::noxcodec {
namespace {

constexpr std::array kIntraModes = {IntraMode::kMean, IntraMode::kDown, IntraMode::kAcross,
                                    IntraMode::kGradient};

// Where no coefficient reaches this many quarters of a step, bits are not worth spending.
constexpr int kWorthwhileQuarters = 5;

}  // namespace

MacroblockEncoder::MacroblockEncoder(FrameKind frame, int quantiser, const Picture& source,
                                     const Picture& reference, const MacroblockMap& previous_map,
                                     const SyntaxModel& model, Picture& target, MacroblockMap& map)
    : m_frame(frame),
      m_quantiser(quantiser),
      m_rate(quantiser),
      m_source(source),
      m_reference(reference),
      m_previous_map(previous_map),
      m_model(model),
      m_target(target),
      m_map(map) {}

Macroblock& MacroblockEncoder::Encode(int column, int row) {
  const Site site{column,
                  row,
                  {m_map.At(column - 1, row), m_map.At(column, row - 1)},
                  PredictMotion(m_map, column, row)};
  m_best.cost = std::numeric_limits<std::int64_t>::max();
  if (m_frame == FrameKind::kIntra) {
    TryIntra(site);
  } else if (!TrySkipped(site)) {
    TryInter(site);
    if (IsIntraWorthTrying(site)) TryIntra(site);
  }
  if (m_best.macroblock.kind != MacroblockKind::kIntra) {
    StoreMacroblock(m_best.pixels, column, row, m_target);
  }
  m_map.At(column, row) = static_cast<const MacroblockInfo&>(m_best.macroblock);
  return m_best.macroblock;
}

// Takes the unchanged macroblock of the picture before as the best so far. True when no other can
// be much better, because what it lacks would not survive quantising.
bool MacroblockEncoder::TrySkipped(const Site& site) {
  static_cast<MacroblockInfo&>(m_best.macroblock) = {};
  PredictInter(m_reference, site.column, site.row, {}, m_best.pixels);
  m_best.squared_error = 0;
  int largest = 0;
  for (int block = 0; block < kBlocks; ++block) {
    const BlockPlace inside = PlaceOf(block, 0, 0);
    const PlaneView pixels = m_best.pixels.Plane(inside.plane);
    Coefficients coefficients;
    TransformDifference(site, block, pixels.Row(inside.y) + inside.x, pixels.stride, coefficients);
    for (const std::int16_t coefficient : coefficients) {
      m_best.squared_error += coefficient * coefficient;
      largest = std::max(largest, std::abs(int{coefficient}));
    }
  }
  m_best.cost = m_rate.Of(m_best.squared_error, 0) + CostOfKind(site, m_best.macroblock);
  return 4 * largest < kWorthwhileQuarters * QuantiserStep(m_quantiser);
}

// Whether the picture before predicts the macroblock hardly better than its own mean would.
bool MacroblockEncoder::IsIntraWorthTrying(const Site& site) const {
  int activity = 0;
  for (int block = 0; block < kBlocks; ++block) {
    const BlockPlace place = PlaceOf(block, site.column, site.row);
    const PlaneView source = m_source.Plane(place.plane);
    int sum = 0, sum_of_squares = 0;
    for (int y = 0; y < kBlockSize; ++y) {
      const BYTE* const row = source.Row(place.y + y) + place.x;
      for (int x = 0; x < kBlockSize; ++x) {
        sum += row[x];
        sum_of_squares += row[x] * row[x];
      }
    }
    activity += sum_of_squares - sum * sum / kBlockPixels;
  }
  return m_best.squared_error > activity;
}

void MacroblockEncoder::TryInter(const Site& site) {
  Macroblock& macroblock = m_trial.macroblock;
  static_cast<MacroblockInfo&>(macroblock) = {};
  macroblock.kind = MacroblockKind::kInter;
  macroblock.motion = FindMotion(site);
  PredictInter(m_reference, site.column, site.row, macroblock.motion, m_trial.pixels);
  BitCounter counter;
  CodeMotion(counter, m_model.motion, site.predicted_motion, macroblock.motion);
  m_trial.cost = CostOfKind(site, macroblock) + m_rate.OfCost(counter.Cost());
  m_trial.squared_error = 0;
  for (int block = 0; block < kBlocks; ++block) {
    const BlockPlace inside = PlaceOf(block, 0, 0);
    const MutablePlaneView plane = m_trial.pixels.Plane(inside.plane);
    BYTE* const pixels = plane.Row(inside.y) + inside.x;
    Coefficients& levels = macroblock.levels[static_cast<std::size_t>(block)];
    const LevelChoice choice = EncodeBlock(site, block, pixels, plane.stride, levels);
    m_trial.cost += choice.cost;
    m_trial.squared_error += choice.squared_error;
    if (choice.coded) {
      macroblock.MarkCoded(block);
      AddResidual(levels, m_quantiser, pixels, plane.stride);
    }
  }
  if (m_trial.cost < m_best.cost) std::swap(m_trial, m_best);
}

// Works in the target picture, because each block is predicted from those before it.
void MacroblockEncoder::TryIntra(const Site& site) {
  Macroblock& macroblock = m_trial.macroblock;
  static_cast<MacroblockInfo&>(macroblock) = {};
  macroblock.kind = MacroblockKind::kIntra;
  m_trial.cost = CostOfKind(site, macroblock);
  for (int block = 0; block < kLumaBlocks; ++block) {
    m_trial.cost += EncodeIntra(site, block, 1, m_model.luma_mode,
                                macroblock.luma_modes[static_cast<std::size_t>(block)]);
  }
  m_trial.cost += EncodeIntra(site, kLumaBlocks, kBlocks - kLumaBlocks, m_model.chroma_mode,
                              macroblock.chroma_mode);
  if (m_trial.cost < m_best.cost) std::swap(m_trial, m_best);
}

// Codes `count` blocks from `first` on, which share a mode, in the best of all modes.
std::int64_t MacroblockEncoder::EncodeIntra(const Site& site, int first, int count,
                                            const IntraModeModel& model, IntraMode& chosen) {
  Macroblock& macroblock = m_trial.macroblock;
  const BYTE coded_before = macroblock.coded_blocks;
  BYTE coded_best = coded_before;
  std::int64_t best_cost = std::numeric_limits<std::int64_t>::max();
  std::array<Coefficients, kBlocks> levels;
  for (const IntraMode mode : kIntraModes) {
    BitCounter counter;
    CodeIntraMode(counter, model, mode);
    std::int64_t cost = m_rate.OfCost(counter.Cost());
    macroblock.coded_blocks = coded_before;
    for (int block = first; block < first + count; ++block) {
      const BlockPlace place = PlaceOf(block, site.column, site.row);
      const MutablePlaneView plane = m_target.Plane(place.plane);
      PredictIntra(plane, place.x, place.y, mode);
      const LevelChoice choice = EncodeBlock(site, block, plane.Row(place.y) + place.x,
                                             plane.stride, levels[static_cast<std::size_t>(block)]);
      cost += choice.cost;
      if (choice.coded) macroblock.MarkCoded(block);
    }
    if (cost >= best_cost) continue;
    best_cost = cost;
    coded_best = macroblock.coded_blocks;
    chosen = mode;
    std::copy_n(levels.begin() + first, count, macroblock.levels.begin() + first);
  }
  macroblock.coded_blocks = coded_best;
  for (int block = first; block < first + count; ++block) {
    ReconstructIntraBlock(macroblock, block, m_quantiser, site.column, site.row, m_target);
  }
  return best_cost;
}

// Transforms what a prediction of a block lacks.
void MacroblockEncoder::TransformDifference(const Site& site, int block, const BYTE* predicted,
                                            int stride, Coefficients& coefficients) const {
  const BlockPlace place = PlaceOf(block, site.column, site.row);
  const PlaneView source = m_source.Plane(place.plane);
  Coefficients residuals;
  for (int y = 0; y < kBlockSize; ++y) {
    const BYTE* const wanted = source.Row(place.y + y) + place.x;
    const BYTE* const row = predicted + static_cast<std::ptrdiff_t>(y) * stride;
    std::int16_t* const out = residuals.data() + y * kBlockSize;
    for (int x = 0; x < kBlockSize; ++x) out[x] = static_cast<std::int16_t>(wanted[x] - row[x]);
  }
  ForwardTransform(residuals, coefficients);
}

// Chooses the levels of a block of the macroblock on trial that was predicted as `predicted`.
LevelChoice MacroblockEncoder::EncodeBlock(const Site& site, int block, const BYTE* predicted,
                                           int stride, Coefficients& levels) const {
  Coefficients coefficients;
  TransformDifference(site, block, predicted, stride, coefficients);
  const Macroblock& macroblock = m_trial.macroblock;
  const auto block_class = static_cast<std::size_t>(ClassOf(macroblock.kind, block));
  const BlockContext context{m_model.blocks[block_class], m_model.escape,
                             CodedProbability(m_model, site.neighbours, macroblock, block)};
  return ChooseLevels(coefficients, m_quantiser, context, m_rate, levels);
}

std::int64_t MacroblockEncoder::CostOfKind(const Site& site, MacroblockInfo& macroblock) const {
  BitCounter counter;
  CodeKind(counter, m_model, m_frame, site.neighbours, macroblock);
  return m_rate.OfCost(counter.Cost());
}

MotionVector MacroblockEncoder::FindMotion(const Site& site) const {
  const MotionTask task{m_reference,
                        m_source.Plane(kLuma),
                        site.column,
                        site.row,
                        m_source.Width() / kMacroblockSize,
                        m_source.Height() / kMacroblockSize,
                        site.predicted_motion,
                        m_model.motion,
                        m_rate};
  const std::array starts = {MotionVector{},
                             site.predicted_motion,
                             site.neighbours.left.motion,
                             site.neighbours.above.motion,
                             m_map.At(site.column + 1, site.row - 1).motion,
                             m_previous_map.At(site.column, site.row).motion};
  return SearchMotion(task, starts);
}

}  // namespace zebx::noxcodec
