// Memory runs out in the host's calls: no exception reaches the host, and nothing is left behind.
#include "capture/video_data.h"
#include "image/image.h"
#include "tests/capture/camera_fixture.h"
#include "tests/capture/settings_fixture.h"
#include "tests/support/counted_memory.h"

using namespace zebx;

// The device library's own, in whose place another test of this program puts one.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __real_noxdevChGetMaskInfo(NoxdevHandle, DWORD, tag_MASKSTATE* state);

namespace {

class CameraMemory : public CameraLibrary {
 protected:
  // Makes the call again and again, with `step` allocations more each time, until it succeeds. What
  // failed before answered 0, was reported once and left what `look` sees.
  template <typename Call, typename Look>
  void Starve(const Call& call, const Look& look, int step = 1) {
    const auto before = look();
    for (int allocations = 0; allocations < 10000; allocations += step) {
      counted_memory::calls_left = allocations;
      const int answer = call();
      counted_memory::calls_left = -1;
      if (answer != 0) {
        EXPECT_EQ(std::exchange(m_reports.m_count, 0), (allocations + step - 1) / step);
        return;
      }
      ASSERT_EQ(look(), before) << allocations;
    }
    FAIL() << "it never succeeds";
  }

  Reports m_reports;
};

TEST_F(CameraMemory, EndsCallsAndChangesNothing) {
  zebdev::SetDevicePlan({zebdev::MakeVirtualDevice(0x040, 8)});
  zebdev::SetDrive(zebdev::Drive::kStepped);
  Starve([this] { return Initialize(); }, zebxGetBoardNum);
  EXPECT_EQ(zebxGetBoardNum(), 2U);
  Starve([] { return zebxOpenBoard(0, kPalHalf, 25); }, [] { return zebxIsBoardOpen(0); });
  CMaskList masks;
  AddMask(masks, 3);
  Starve([&] { return Open(&masks); }, [this] { return zebxIsCameraOpen(&m_id); });
  BringFrame(Packet(0, 1000, "I"));
  CMaskInfo* const mask = NewMask(100);
  Starve([&] { return zebxAddMask(&m_id, mask); },
         [this] {
           tag_MASKSTATE state = {};
           __real_noxdevChGetMaskInfo(std::bit_cast<NoxdevHandle>(Handle()), 0, &state);
           EXPECT_EQ(state.m_count, m_frame->GetMaskList()->GetCount());
           return state.m_count;
         });
  CImage image;
  const auto nothing = [] { return 0; };
  Starve([&] { return zebxGetPicture(&m_id, &image); }, nothing, 49);  // the scene takes many
  Starve([this] { return zebxRefreshShow(&m_id); }, nothing);
}

}  // namespace
