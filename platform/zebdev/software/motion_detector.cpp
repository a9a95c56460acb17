#include "platform/zebdev/software/motion_detector.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zebx::zebdev {
namespace {

constexpr DWORD kMacroblockSide = 16;
constexpr DWORD kCellSide = 8;
constexpr DWORD kCellsAcross = kMacroblockSide / kCellSide;

// The highest sensitivity takes a change of one level in the mean of a cell; each four steps below
// it take twice as much.
constexpr double kFinestLevel = 1.0;
constexpr double kStepsPerDoubling = 4.0;

}  // namespace

void MotionDetector::SetSensitivity(DWORD sensitivity) {
  const DWORD steps = kMaxSensitivity - std::min(sensitivity, kMaxSensitivity);
  const double level = kFinestLevel * std::exp2(steps / kStepsPerDoubling);
  m_threshold = static_cast<int>(level * kCellSide * kCellSide);
}

DWORD MotionDetector::Look(const noxcodec::PictureView& picture,
                           std::span<const tag_MASKAREA> areas) {
  const DWORD columns = static_cast<DWORD>(picture.Width()) / kMacroblockSide;
  const DWORD rows = static_cast<DWORD>(picture.Height()) / kMacroblockSide;
  if (columns != m_columns || rows != m_rows) {
    m_columns = columns;
    m_rows = rows;
    m_has_picture = false;
    const std::size_t cells = std::size_t{columns} * rows * kCellsAcross * kCellsAcross;
    m_before.resize(cells);
    m_now.resize(cells);
    m_moved.resize(cells);
    m_column_sums.resize(std::size_t{columns} * kMacroblockSide);
  }
  std::swap(m_before, m_now);
  MeasureCells(picture.planes[noxcodec::kLuma]);
  if (!m_has_picture) {
    m_has_picture = true;
    return 0;
  }
  for (std::size_t cell = 0; cell < m_now.size(); ++cell) {
    m_moved[cell] = static_cast<BYTE>(std::abs(m_now[cell] - m_before[cell]) >= m_threshold);
  }
  DWORD moved = 0;
  for (std::size_t area = 0; area < std::min(areas.size(), kMaxAreas); ++area) {
    if (HasMotion(areas[area])) moved |= DWORD{1} << area;
  }
  return moved;
}

// Rows are added up first, which a vector does many columns at a time.
void MotionDetector::MeasureCells(const noxcodec::PlaneView& luma) {
  WORD* cell = m_now.data();
  const int bottom = static_cast<int>(m_rows * kMacroblockSide);
  for (int top = 0; top < bottom; top += kCellSide) {
    std::fill(m_column_sums.begin(), m_column_sums.end(), WORD{0});
    for (int y = top; y < top + static_cast<int>(kCellSide); ++y) {
      const BYTE* const row = luma.Row(y);
      for (std::size_t x = 0; x < m_column_sums.size(); ++x) {
        m_column_sums[x] = static_cast<WORD>(m_column_sums[x] + row[x]);
      }
    }
    for (std::size_t x = 0; x < m_column_sums.size(); x += kCellSide) {
      int sum = 0;
      for (std::size_t i = 0; i < kCellSide; ++i) sum += m_column_sums[x + i];
      *cell++ = static_cast<WORD>(sum);
    }
  }
}

bool MotionDetector::HasMotion(const tag_MASKAREA& area) const {
  const std::size_t cells_across = std::size_t{m_columns} * kCellsAcross;
  const std::size_t left = std::size_t{area.m_left} * kCellsAcross;
  const std::size_t right = std::size_t{std::min(area.m_right, m_columns)} * kCellsAcross;
  const std::size_t bottom = std::size_t{std::min(area.m_bottom, m_rows)} * kCellsAcross;
  if (left >= right) return false;
  for (std::size_t y = std::size_t{area.m_top} * kCellsAcross; y < bottom; ++y) {
    const BYTE* const row = m_moved.data() + y * cells_across;
    if (std::find(row + left, row + right, 1) != row + right) return true;
  }
  return false;
}

}  // namespace zebx::zebdev
