#include "capture/display_balance.h"

#include <algorithm>

#include "capture/capture_board.h"

namespace zebx {

namespace {

// How boards of a type are balanced: so many of the boards get smaller pictures, or every camera
// gets what its window wants.
enum class Balance { kNone, kPickTwo, kPickOne, kPerCamera };

Balance BalanceOf(BYTE board_type) {
  switch (board_type) {
    case 6:
    case 8:
      return Balance::kPickTwo;
    case 10:
      return Balance::kPickOne;
    case 7:
    case 11:
      return Balance::kPerCamera;
    default:
      return Balance::kNone;
  }
}

// The show types of a picked board and of the others; a board's load is one of them too.
struct PickedTypes {
  BYTE m_small;
  BYTE m_large;
};

PickedTypes PickedTypesOf(Balance balance) {
  return balance == Balance::kPickTwo ? PickedTypes{2, 1} : PickedTypes{1, 0};
}

// A window larger than this is a large one on boards of which some are picked. On the others a
// window is large or of middle size from these sizes on.
constexpr CSize kPickedPane = {230, 200};
constexpr CSize kLargePane = {600, 450};
constexpr CSize kMiddlePane = {270, 200};

// A window's sides, which may lie so far apart that they fit no LONG.
struct WindowSize {
  explicit WindowSize(const CRect& window)
      : m_width(std::int64_t{window.right} - window.left),
        m_height(std::int64_t{window.bottom} - window.top) {}

  bool IsLargerThan(CSize size) const { return m_width > size.cx && m_height > size.cy; }
  bool IsAtLeast(CSize size) const { return m_width >= size.cx && m_height >= size.cy; }

  std::int64_t m_width;
  std::int64_t m_height;
};

// Picks boards from the last one down, but for the focus board: first those whose cameras all do
// with small pictures, then any, until there are `count`. A picked board need not exist.
std::array<bool, kPickedBoards> Pick(std::span<const tag_BOARDSHOWSTATE> records, BYTE small_load,
                                     DWORD focus_board, int count) {
  std::array<bool, kPickedBoards> picked = {};
  for (const bool takes_any : {false, true}) {
    for (DWORD board = kPickedBoards; board-- > 0 && count > 0;) {
      if (picked[board] || board == focus_board) continue;
      if (!takes_any && records[board].m_load != small_load) continue;
      picked[board] = true;
      --count;
    }
  }
  return picked;
}

DisplayBalance SameForAll(DWORD board_count, BYTE show_type) {
  DisplayBalance result;
  result.m_show_types.resize(board_count);
  for (auto& types : result.m_show_types) types.fill(show_type);
  return result;
}

DisplayBalance ByPicks(std::span<const tag_BOARDSHOWSTATE> records, DWORD board_count,
                       Balance balance, tag_ZEBCAMERAID focus) {
  const bool is_two = balance == Balance::kPickTwo;
  const PickedTypes types = PickedTypesOf(balance);
  DisplayBalance result = SameForAll(board_count, types.m_large);
  const DWORD boards_without_picking = is_two ? 2 : 4;
  if (board_count <= boards_without_picking) return result;

  // A focus board that is not in use is none; one beyond the boards that are scanned is never met.
  const bool has_focus = focus.m_board < kPickedBoards && records[focus.m_board].m_is_in_use != 0;
  const DWORD focus_board = has_focus ? focus.m_board : kPickedBoards;
  const auto picked = Pick(records, types.m_small, focus_board, is_two ? 2 : 1);
  for (DWORD board = 0; board < std::min(board_count, kPickedBoards); ++board) {
    if (picked[board]) result.m_show_types[board].fill(types.m_small);
  }
  result.m_has_picked = true;
  return result;
}

DisplayBalance ByWishes(std::span<const tag_BOARDSHOWSTATE> records, DWORD board_count,
                        tag_ZEBCAMERAID focus) {
  DisplayBalance result;
  for (const auto& record : records.first(board_count)) {
    result.m_show_types.push_back(std::to_array(record.m_wanted));
  }
  if (focus.m_board < board_count && focus.m_camera < kBalancedCameras) {
    const BYTE is_open = records[focus.m_board].m_is_open[focus.m_camera];
    result.m_show_types[focus.m_board][focus.m_camera] = is_open != 0 ? 0 : 2;
  }
  return result;
}

}  // namespace

BYTE WantedShowType(BYTE board_type, const CameraShow& camera) {
  if (!camera.m_has_settings) return 2;
  std::optional<WindowSize> window;
  if (camera.m_window) window.emplace(*camera.m_window);
  const Balance balance = BalanceOf(board_type);
  switch (balance) {
    case Balance::kPickTwo:
    case Balance::kPickOne: {
      const PickedTypes types = PickedTypesOf(balance);
      return window && window->IsLargerThan(kPickedPane) ? types.m_large : types.m_small;
    }
    case Balance::kPerCamera:
      if (window && window->IsAtLeast(kLargePane)) return 0;
      return window && window->IsAtLeast(kMiddlePane) ? 1 : 2;
    case Balance::kNone:
      break;
  }
  return 2;
}

tag_BOARDSHOWSTATE MakeBoardShowState(BYTE board_type, std::span<const CameraShow> cameras) {
  tag_BOARDSHOWSTATE record = {};
  record.m_type = board_type & static_cast<BYTE>(~kSecondBoardBit);
  const Balance balance = BalanceOf(record.m_type);
  if (balance == Balance::kNone) return record;

  cameras = cameras.first(std::min<std::size_t>(cameras.size(), kBalancedCameras));
  const auto is_open = [](const CameraShow& camera) { return camera.m_is_open; };
  const PickedTypes types = PickedTypesOf(balance);
  const bool is_picked = balance != Balance::kPerCamera;
  if (is_picked) record.m_load = types.m_small;
  if (is_picked ? std::ranges::none_of(cameras, is_open) : cameras.empty()) return record;

  record.m_is_in_use = 1;
  for (std::size_t j = 0; j < cameras.size(); ++j) {
    record.m_wanted[j] = is_picked ? types.m_small : BYTE{2};
    if (!cameras[j].m_is_open) continue;
    record.m_is_open[j] = 1;
    record.m_wanted[j] = WantedShowType(record.m_type, cameras[j]);
    if (is_picked && record.m_wanted[j] == types.m_large) record.m_load = types.m_large;
  }
  return record;
}

DisplayBalance BalanceDisplay(std::span<const tag_BOARDSHOWSTATE> records, DWORD board_count,
                              BYTE board_type, tag_ZEBCAMERAID focus) {
  const Balance balance = BalanceOf(board_type);
  switch (balance) {
    case Balance::kPickTwo:
    case Balance::kPickOne:
      return ByPicks(records, board_count, balance, focus);
    case Balance::kPerCamera:
      return ByWishes(records, board_count, focus);
    case Balance::kNone:
      break;
  }
  return {};
}

}  // namespace zebx
