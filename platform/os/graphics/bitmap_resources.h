// Bitmaps that a program carries in itself, by number: a registry that the host fills.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Registers a packed DIB (docs/image-formats.md) under the low 16 bits of `id`, replacing what was
// there. The bytes are copied and not looked at. Any thread may call.
ZEBX_API void RegisterBitmapResource(UINT id, std::span<const BYTE> packed_dib);

// The bytes registered under the low 16 bits of `id`; null when there are none. They stay as they
// are while held, whatever is registered later. Any thread may call.
ZEBX_API std::shared_ptr<const std::vector<BYTE>> FindBitmapResource(UINT id);

}  // namespace os
