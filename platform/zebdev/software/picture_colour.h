// The colour setting of a channel, and what it does to pictures.
#pragma once

#include <array>
#include <optional>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/device_records.h"

namespace zebx::zebdev {

// Brightness, contrast, hue and saturation are the components 0 to 3. The default of the devices of
// a type bit; nothing when it is not exactly one bit of 0x001 to 0x800.
std::optional<tag_DEVCOLOR> DefaultColour(DWORD device_type, bool is_ntsc);

// Each component cut to its limits: 0 to 255, 0 to 127, -128 to 127, 0 to 127.
tag_DEVCOLOR LimitedColour(const tag_DEVCOLOR& colour);

// Turns pictures into what a setting makes of them. Used by one thread at a time; Apply takes no
// memory.
class PictureColour {
 public:
  // Until Set, pictures stay as they are.
  PictureColour();

  // `neutral` is the setting that leaves pictures as they are: the device's default. Both are cut
  // to their limits first.
  void Set(const tag_DEVCOLOR& colour, const tag_DEVCOLOR& neutral);
  void Apply(noxcodec::Picture& picture) const;

 private:
  bool m_keeps_luma = true;
  bool m_keeps_chroma = true;
  std::array<BYTE, 256> m_luma;
  // The turned and stretched colour circle, in 1/256: what a step of each chroma value adds to
  // itself, and what a step of Cr adds to Cb (and one of Cb takes from Cr).
  int m_own_part = 256;
  int m_other_part = 0;
};

}  // namespace zebx::zebdev
