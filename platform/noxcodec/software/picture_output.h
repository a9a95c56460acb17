// The forms in which decoded pictures leave the codec.
#pragma once

#include <cstddef>

#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// Writes the luma rows, then the Cb and the Cr rows: `pitch_bytes` from one luma row to the next,
// (pitch_bytes + 1) / 2 between chroma rows.
void WriteI420(const PictureView& picture, BYTE* destination, int pitch_bytes);

inline constexpr int kBgrxPixelBytes = 4;

// Writes 32-bit BGRX rows (X is 255), `pitch_bytes` from one row to the next: negative to go
// backwards from `first_row`. Colours by BT.601, limited range.
void WriteBgrx(const PictureView& picture, BYTE* first_row, std::ptrdiff_t pitch_bytes);

}  // namespace zebx::noxcodec
