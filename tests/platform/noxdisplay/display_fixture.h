// Streams and windows whose pictures a test looks at.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/noxdisplay/streams.h"
#include "tests/support/canvas.h"
#include "tests/support/window_fixture.h"

using Picture = std::vector<DWORD>;  // 0x00RRGGBB, the top row first

class DisplayTest : public WindowTest {
 protected:
  void TearDown() override {
    for (NoxshowStream stream : m_streams) noxshowDestroyStream(stream);
    zebx::noxdisplay::ResetDisplay();
    WindowTest::TearDown();
  }

  NoxshowStream MakeStream(DWORD width, DWORD height) {
    const NoxshowSize size = {width, height};
    EXPECT_EQ(noxshowCreateStream(&m_streams.emplace_back(), &size, kNoxshowOverlaySurface, {}), 0);
    return m_streams.back();
  }
  HWND MakeWindow(LONG width, LONG height) {
    return Make(AddParameters, nullptr, {10, 10, 10 + width, 10 + height});
  }

 private:
  std::vector<NoxshowStream> m_streams;
};

// Writes a picture whose pixels are all alike, or each what `pixel` answers for its number.
inline bool Write(NoxshowStream stream, std::size_t pixels,
                  const std::function<DWORD(std::size_t)>& pixel) {
  tag_SURFACELOCK lock = {};
  if (noxshowLock(stream, &lock) != 0) return false;
  auto* const words = reinterpret_cast<DWORD*>(lock.m_pixels);
  for (std::size_t i = 0; i < pixels; ++i) words[i] = pixel(i);
  return noxshowUnlock(stream) == 0;
}

inline Picture PictureOf(HWND window) {
  Picture pixels;
  os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
    const auto* const words = reinterpret_cast<const DWORD*>(picture.m_pixels.data());
    pixels.assign(words, words + picture.m_pixels.size() / sizeof(DWORD));
    for (DWORD& pixel : pixels) pixel &= 0xFFFFFF;
  });
  return pixels;
}

inline DWORD PixelOf(HWND window, LONG x, LONG y) {
  CRect rectangle;
  os::GetWindowRect(window, &rectangle);
  return PictureOf(window).at(static_cast<std::size_t>(y * rectangle.Width() + x));
}

inline void SetText(char (&field)[zebx::noxdisplay::kDisplayTextBytes], const std::string& text) {
  std::ranges::copy(text.substr(0, sizeof(field)), field);
}
