// From a macroblock of the bit stream to pixels: what the encoder and the decoder must do alike.
#pragma once

#include "platform/noxcodec/software/macroblock.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/noxcodec/software/prediction.h"

namespace zebx::noxcodec {

// Where a block of a macroblock lies.
struct BlockPlace {
  int plane;
  int x;  // in pixels of the plane
  int y;
};

BlockPlace PlaceOf(int block, int column, int row);

// The picture that coding works on: whole macroblocks and the border that motion may point into.
Picture MakeCodedPicture(int width, int height);

// Copies a predicted macroblock into a picture.
void StoreMacroblock(const MacroblockPixels& pixels, int column, int row, Picture& target);

// Predicts a block of an intra macroblock inside `target` and adds what was coded.
void ReconstructIntraBlock(const Macroblock& macroblock, int block, int quantiser, int column,
                           int row, Picture& target);

// Writes the pixels of one macroblock into `target`. `reference` is used by all but intra ones.
void ReconstructMacroblock(const Macroblock& macroblock, int quantiser, int column, int row,
                           const Picture& reference, Picture& target);

}  // namespace zebx::noxcodec
