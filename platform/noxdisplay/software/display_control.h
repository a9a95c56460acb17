// What tests and tools see and do behind the display library's door. Any thread may call.
#pragma once

#include <optional>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

namespace zebx::noxdisplay {

// Takes the display's surfaces away, as a switch of the screen's mode does: noxshowIsLost answers
// non-zero until noxshowRestore. Every stream there is loses its surface, too, and is restored by
// itself afterwards. Registered pictures stay.
ZEBX_API void LoseSurfaces();

// Refuses or allows streams of a mode from now on; both are allowed to begin with.
ZEBX_API void RefuseMode(DWORD mode, bool is_refused);

// How many streams exist: what was created and not destroyed.
ZEBX_API DWORD CountStreams();

// The watermark in force: 24-bit rows padded to a multiple of 4 bytes, the bottom row first.
struct Watermark {
  DWORD m_width = 0;
  DWORD m_height = 0;
  std::vector<BYTE> m_pixels;
};

// Nothing when none was ever set.
ZEBX_API std::optional<Watermark> CurrentWatermark();

// A registered picture: pixels 0x00RRGGBB, the top row first.
struct RegisteredPicture {
  CSize m_size;
  std::vector<DWORD> m_pixels;
};

// Nothing when none is registered under the number.
ZEBX_API std::optional<RegisteredPicture> FindRegisteredPicture(DWORD number);

// The functions of the door.
enum class Function {
  kSetWatermark,
  kIsLost,
  kRestore,
  kDrawDib,
  kCreateStream,
  kDestroyStream,
  kIsSurfaceLost,
  kRestoreSurface,
  kLock,
  kUnlock,
  kDisplay,
  kGetPicture,
  kBitmap,
  kSetBitmap,
};

inline constexpr int kFunctions = 14;

// Makes the n-th call of the function from now on fail without any effect; 1 is the next one. Each
// order stands for itself, so several calls can be told to fail. The two questions whether surfaces
// are lost fail by answering that they are.
ZEBX_API void FailCall(Function function, DWORD nth);

// Starts an empty journal: from now on every call is one line of the function's name and the
// numbers that go in: sizes, modes, flags, and handles as the numbers that they are; `-` for a
// record that is null. ` failed` stands behind a call that did not answer 0.
ZEBX_API void StartJournal();
// The lines since the last call or the start. Empty without a journal.
ZEBX_API std::vector<CString> TakeJournal();

// Puts the display back to how it starts, for the next test: surfaces and modes, registered
// pictures, calls that were to fail, the journal. Streams stay.
ZEBX_API void ResetDisplay();

}  // namespace zebx::noxdisplay
