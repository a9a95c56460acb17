#include "capture/display_balance.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

using namespace zebx;

namespace {

constexpr LONG kFar = std::numeric_limits<LONG>::max();

// An open camera with a window of that size, or with none.
CameraShow Open(LONG width, LONG height) {
  return {true, true, CRect{-10, -10, width - 10, height - 10}};
}
constexpr CameraShow kClosed = {false, true, CRect{0, 0, 640, 480}};
constexpr CameraShow kOpenWithoutWindow = {true, true, std::nullopt};
constexpr CameraShow kOpenWithoutSettings = {true, false, CRect{0, 0, 640, 480}};

TEST(DisplayBalance, WantsAPictureThatFitsTheWindow) {
  const std::pair<CameraShow, const char*> rows[] = {
      // On boards of types 6, 8, 10, 7, 11 and 9.
      {kOpenWithoutWindow, "221222"},
      {Open(230, 201), "221222"},
      {Open(231, 200), "221222"},
      {Open(231, 201), "110222"},
      {Open(270, 200), "221112"},
      {Open(600, 450), "110002"},
      {Open(599, 450), "110112"},
      {Open(600, 449), "110112"},
      {{true, true, CRect{300, 300, 0, 0}}, "221222"},
      {{true, true, CRect{-kFar, -kFar, kFar, kFar}}, "110002"}};
  for (const auto& [camera, expected] : rows) {
    CString wanted;
    for (const BYTE type : std::initializer_list<BYTE>{6, 8, 10, 7, 11, 9}) {
      wanted += static_cast<char>('0' + WantedShowType(type, camera));
    }
    EXPECT_EQ(wanted, expected);
  }
}

TEST(DisplayBalance, TellsOfABoardWhatItsFirstFourCamerasNeed) {
  const CameraShow large = Open(640, 480), small = Open(200, 150);
  using Bytes = std::array<BYTE, 12>;
  const struct {
    BYTE m_type;
    std::vector<CameraShow> m_cameras;
    Bytes m_expected;
  } rows[] = {
      {6, {kClosed, kClosed}, {6, 2}},
      {0x86, {small, kClosed}, {6, 2, 1, 0, 2, 2, 0, 0, 1}},
      {8, {small, large, kClosed, small}, {8, 1, 1, 0, 2, 1, 2, 2, 1, 1, 0, 1}},
      {10, {small, kOpenWithoutSettings, kClosed}, {10, 1, 1, 0, 1, 2, 1, 0, 1, 1}},
      {0x8A, {small, small, small, small, large}, {10, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1}},
      {0x8B, {large, kClosed, small}, {11, 0, 1, 0, 0, 2, 2, 0, 1, 0, 1}},
      {9, {large}, {9}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(std::bit_cast<Bytes>(MakeBoardShowState(row.m_type, row.m_cameras)), row.m_expected)
        << "row " << &row - rows;
  }
}

// A board in use with that load.
tag_BOARDSHOWSTATE Used(BYTE load) {
  return {0, load, 1, {}, {}};
}

TEST(DisplayBalance, PicksBoardsForSmallPicturesFromTheLastOfFourDown) {
  const tag_BOARDSHOWSTATE closed6 = {6, 2, 0, {}, {}};
  const struct {
    const char* m_what;
    BYTE m_type;
    std::vector<tag_BOARDSHOWSTATE> m_boards;
    WORD m_focus;
    CString m_expected;  // the show type of each board's cameras
    bool m_has_picked = true;
  } rows[] = {
      {"two boards share nothing", 6, {Used(2), Used(2)}, 0, "11", false},
      {"the focus board is spared", 6, {Used(2), Used(2), Used(2)}, 0, "122"},
      {"a focus board that is closed is not", 8, {Used(2), Used(2), closed6}, 2, "122"},
      {"nor one that does not exist", 6, {Used(1), Used(1), Used(1)}, 3, "112"},
      {"one that does not exist is picked", 6, {Used(2), Used(1), Used(2)}, 0, "112"},
      {"idle ones first", 6, {Used(2), Used(1), Used(2), Used(1)}, 3, "2121"},
      {"boards from 4 on keep theirs", 6, {5, Used(2)}, 4, "11221"},
      {"loads of another type", 6, {Used(0), Used(2), Used(0), Used(0)}, 0, "1212"},
      {"four boards of one picture each", 10, {4, Used(1)}, 0, "0000", false},
      {"an idle one first", 10, {Used(0), Used(1), Used(0), Used(0), Used(0)}, 3, "01000"},
      {"none idle", 10, {6, Used(0)}, 3, "001000"},
      {"a focus beyond", 10, {5, Used(0)}, 0xFFFF, "00010"},
      {"types that share nothing", 5, {5, Used(2)}, 0, "", false},
  };
  for (auto row : rows) {
    const auto board_count = static_cast<DWORD>(row.m_boards.size());
    row.m_boards.resize(std::max<std::size_t>(board_count, kPickedBoards));
    const auto balance = BalanceDisplay(row.m_boards, board_count, row.m_type, {row.m_focus, 0});
    CString got;
    for (const auto& types : balance.m_show_types) {
      EXPECT_EQ(types, (std::array{types[0], types[0], types[0], types[0]})) << row.m_what;
      got += static_cast<char>('0' + types[0]);
    }
    EXPECT_EQ(got, row.m_expected) << row.m_what;
    EXPECT_EQ(balance.m_has_picked, row.m_has_picked) << row.m_what;
  }
}

}  // namespace
