// The zebx functions that answer what kinds of devices and boards can do.
#include "capture/capture_app.h"
#include "capture/capture_device.h"
#include "capture/zebx.h"

using namespace zebx;

namespace {

constexpr DWORD kBoardTypeMask = 0xFF;

}  // namespace

int zebxIsVoice(const tag_ZEBCAMERAID* id) {
  constexpr WORD kVoicesOfHalfTypes = 2;
  constexpr WORD kVoicesOfFirstBoardTypes = 3;
  const CCaptureDevice* device = id == nullptr ? nullptr : GetCaptureApp().FindDevice(id->m_board);
  if (device == nullptr) return 0;
  switch (device->GetCapability().m_device_type) {
    case 0x002:
    case 0x040:
    case 0x080:
    case 0x100:
      return 1;
    case 0x008:
    case 0x010:
      return id->m_camera < kVoicesOfHalfTypes ? 1 : 0;
    case 0x020:
    case 0x200:
      return device->IsFirstBoard(id->m_board) && id->m_camera < kVoicesOfFirstBoardTypes ? 1 : 0;
    default:
      return 0;
  }
}

int zebxIsHQSupport(DWORD board_type) {
  switch (board_type & kBoardTypeMask) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
    case 7:
    case 10:
    case 11:
      return 1;
    default:
      return 0;
  }
}

// Of the types whose cameras all have sound, 6, 8 and 10 have it on their second boards too; 1, 7
// and 11, and the half types, have it on their first alone. On purpose.
int zebxIsAudioSupport(DWORD board_type, DWORD camera_index) {
  constexpr DWORD kSoundsOfHalfTypes = 2;
  switch (board_type & kBoardTypeMask) {
    case 1:
    case 6:
    case 7:
    case 8:
    case 10:
    case 11:
    case 6 | 0x80:
    case 8 | 0x80:
    case 10 | 0x80:
      return 1;
    case 3:
    case 4:
    case 5:
    case 9:
      return camera_index < kSoundsOfHalfTypes ? 1 : 0;
    default:
      return 0;
  }
}
