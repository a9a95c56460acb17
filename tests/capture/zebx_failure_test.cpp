// Every call of the device library fails once, at every place of a host's whole session.
#include <algorithm>

#include "tests/capture/library_fixture.h"

using namespace zebx;

namespace {

using zebdev::Function;
using zebdev::MakeVirtualDevice;

class ZebxFailure : public CaptureLibrary {
 protected:
  // A session from start to end, with every device function on the way. What a board's opening
  // answered is what it then says of itself.
  static Lines RunSession(Function failing_function, DWORD failing_call) {
    Plan({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x080, 8), MakeVirtualDevice(0x800, 4)});
    if (failing_call != 0) zebdev::FailCall(failing_function, failing_call);
    const int is_started = Initialize();
    EXPECT_EQ(zebxIsZebxInit(), is_started);
    for (WORD board = 0; board < 4; ++board) {
      const int is_opened = zebxOpenBoard(board, 3, 25);
      EXPECT_EQ(zebxIsBoardOpen(board), is_opened) << board;
      const tag_ZEBCAMERAID id = {board, 0};
      zebxIsValidCameraID(&id);
    }
    zebxSetTVOut(0, 1, 2);
    zebxIOCtrl(0, 1, 2, 3);
    for (WORD board = 0; board < 4; ++board) {
      EXPECT_EQ(zebxCloseBoard(board), zebxIsValidBoardIndex(board)) << board;
      EXPECT_EQ(zebxIsBoardOpen(board), 0) << board;
    }
    zebxCloseZebx();
    return zebdev::TakeJournal();
  }
};

// Devices take no call out of turn, so that every such call would show as one more failure.
TEST_F(ZebxFailure, LeavesNothingOpenAndTheNextStartWorks) {
  const Lines undisturbed = RunSession({}, 0);
  std::size_t failures = 0;
  for (int function = 0; function < zebdev::kFunctions; ++function) {
    for (DWORD nth = 1;; ++nth) {
      SCOPED_TRACE(testing::Message() << "function " << function << ", call " << nth);
      const Lines journal = RunSession(static_cast<Function>(function), nth);
      if (journal == undisturbed) break;
      const auto count = [&](const CString& name, bool has_failed) {
        return std::count_if(journal.begin(), journal.end(), [&](const CString& line) {
          return line.starts_with(name) && line.ends_with(" failed") == has_failed;
        });
      };
      const auto count_all = [&](const CString& name) {
        return count(name, false) + count(name, true);
      };
      EXPECT_EQ(count("", true), 1);
      EXPECT_EQ(count("noxdevCreateDevice", false), count_all("noxdevDestroyDevice"));
      EXPECT_EQ(count("noxdevOpenDevice", false), count_all("noxdevCloseDevice"));
      EXPECT_EQ(RunSession({}, 0), undisturbed);
      ++failures;
    }
  }
  EXPECT_EQ(failures, undisturbed.size()) << "every call of the session";
}

TEST_F(ZebxFailure, InvalidatesTheDeviceLibraryOnlyAfterAFailedCount) {
  EXPECT_EQ(RunSession(Function::kInitialize, 1), Lines{"noxdevInitialize 7 0 failed"});
  EXPECT_EQ(RunSession(Function::kGetDeviceNum, 1),
            (Lines{"noxdevInitialize 7 0", "noxdevGetDeviceNum failed", "noxdevInvalidate"}));
}

}  // namespace
