// The watermark that was set last.
#include <mutex>
#include <utility>

#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_library.h"
#include "platform/os/graphics/pixels.h"

using namespace zebx;

namespace {

constexpr WORD kBitCount = 24;

struct WatermarkInForce {
  std::mutex m_mutex;
  std::optional<noxdisplay::Watermark> m_watermark;  // guarded by m_mutex

  static WatermarkInForce& Get() {
    // Never destroyed: a host's threads may end after main has.
    static WatermarkInForce& in_force = *new WatermarkInForce;
    return in_force;
  }
};

}  // namespace

namespace zebx::noxdisplay {

std::optional<Watermark> CurrentWatermark() {
  WatermarkInForce& in_force = WatermarkInForce::Get();
  const std::lock_guard lock(in_force.m_mutex);
  return in_force.m_watermark;
}

}  // namespace zebx::noxdisplay

int noxshowSetWatermark(const BYTE* pixels, DWORD bytes, DWORD width, DWORD height) {
  const auto set = [=] {
    os::BitmapInfoHeader header;
    header.m_width = static_cast<LONG>(width);
    header.m_height = static_cast<LONG>(height);
    header.m_bit_count = kBitCount;
    const auto layout = os::PixelLayout::Of(header);
    if (pixels == nullptr || !layout || layout->m_top_down || layout->TotalBytes() != bytes) {
      return false;
    }
    noxdisplay::Watermark watermark = {width, height, {pixels, pixels + bytes}};
    WatermarkInForce& in_force = WatermarkInForce::Get();
    const std::lock_guard lock(in_force.m_mutex);
    in_force.m_watermark = std::move(watermark);
    return true;
  };
  return noxdisplay::DisplayLibrary::Get().Call(noxdisplay::Function::kSetWatermark, set, bytes,
                                                width, height);
}
