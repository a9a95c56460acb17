// Smoothing of the steps that coarse quantising leaves at the borders of 8x8 blocks: inside the
// coding loop, where it also betters the prediction of the next picture, and, stronger, on pictures
// that are about to be shown.
#pragma once

#include "platform/noxcodec/software/macroblock.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// Filters the borders of all blocks that were just coded or moved.
void DeblockCodedBlocks(const MacroblockMap& map, int quantiser, Picture& picture);

// Filters all block borders that lie across (`horizontal`: between left and right neighbours) or
// down (`vertical`: between upper and lower ones) the picture.
void DeblockForDisplay(int quantiser, bool horizontal, bool vertical, Picture& picture);

}  // namespace zebx::noxcodec
