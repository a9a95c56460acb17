// Every call of the device library fails once, at every place of a host's whole session.
#include <algorithm>
#include <set>

#include "tests/capture/library_fixture.h"

namespace {

class ZebxFailure : public CaptureLibrary {
 protected:
  static constexpr WORD kBoards = 4;

  static void PlanDevices() {
    Plan({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x080, 8), MakeVirtualDevice(0x800, 4)});
  }

  // From start to end, with every device function on the way. What a board's opening answered is
  // what it then says of itself.
  static void RunSession() {
    if (Initialize() == 0) {
      EXPECT_EQ(zebxIsZebxInit(), 0);
      EXPECT_EQ(zebxGetBoardNum(), 0U);
    }
    for (WORD board = 0; board < kBoards; ++board) {
      const int is_opened = zebxOpenBoard(board, 3, 25);
      EXPECT_EQ(is_opened, zebxIsBoardOpen(board)) << board;
      zebxSetTVOut(board, 1, 2);
      zebxIOCtrl(board, 1, 2, 3);
      const tag_ZEBCAMERAID id = {board, 0};
      zebxIsValidCameraID(&id);
    }
    for (WORD board = 0; board < kBoards; ++board) {
      EXPECT_EQ(zebxCloseBoard(board), zebxIsValidBoardIndex(board)) << board;
      EXPECT_EQ(zebxIsBoardOpen(board), 0) << board;
    }
    zebxCloseZebx();
    EXPECT_EQ(zebxIsZebxInit(), 0);
  }

  // Whoever was created was destroyed, whoever was opened was closed before, and nobody else was.
  static void ExpectBalanced(const Lines& journal) {
    std::set<CString> created;
    std::set<CString> open;
    for (const CString& line : journal) {
      const CString name = line.substr(0, line.find(' '));
      const bool has_failed = line.ends_with(" failed");
      const CString device =
          line.size() > name.size() ? line.substr(name.size() + 1, 1) : CString();
      if (name == "noxdevCreateDevice" && !has_failed) {
        EXPECT_TRUE(created.insert(device).second) << line;
      } else if (name == "noxdevOpenDevice" && !has_failed) {
        EXPECT_TRUE(open.insert(device).second) << line;
      } else if (name == "noxdevCloseDevice") {
        EXPECT_EQ(open.erase(device), 1U) << line;
      } else if (name == "noxdevDestroyDevice") {
        EXPECT_FALSE(open.contains(device)) << line;
        EXPECT_EQ(created.erase(device), 1U) << line;
      }
    }
    EXPECT_TRUE(created.empty());
    EXPECT_TRUE(open.empty());
  }
};

TEST_F(ZebxFailure, LeavesNothingOpenAndTheNextStartWorks) {
  PlanDevices();
  RunSession();
  const Lines undisturbed = zebdev::TakeJournal();
  ExpectBalanced(undisturbed);

  int failures = 0;
  for (int function = 0; function < zebdev::kFunctions; ++function) {
    for (DWORD nth = 1;; ++nth) {
      PlanDevices();
      zebdev::FailCall(static_cast<zebdev::Function>(function), nth);
      RunSession();
      const Lines journal = zebdev::TakeJournal();
      const bool has_failed = std::any_of(journal.begin(), journal.end(), [](const auto& line) {
        return line.ends_with(" failed");
      });
      if (!has_failed) {
        EXPECT_EQ(journal, undisturbed);
        break;
      }
      ++failures;
      SCOPED_TRACE(journal.front() + " ... " + std::to_string(function) + ", call " +
                   std::to_string(nth));
      ExpectBalanced(journal);

      PlanDevices();
      RunSession();
      EXPECT_EQ(zebdev::TakeJournal(), undisturbed);
    }
  }
  EXPECT_GT(failures, 20);
}

TEST_F(ZebxFailure, InvalidatesTheDeviceLibraryOnlyAfterAFailedCount) {
  PlanDevices();
  zebdev::FailCall(zebdev::Function::kInitialize, 1);
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(zebdev::TakeJournal(), Lines{"noxdevInitialize 7 0 failed"});

  zebdev::FailCall(zebdev::Function::kGetDeviceNum, 1);
  EXPECT_EQ(Initialize(), 0);
  const Lines expected = {"noxdevInitialize 7 0", "noxdevGetDeviceNum failed", "noxdevInvalidate"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
  EXPECT_EQ(Initialize(), 1);
}

}  // namespace
