#include "platform/noxcodec/software/reconstruction.h"

#include <cstring>

#include "platform/noxcodec/software/transform.h"

namespace zebx::noxcodec {

BlockPlace PlaceOf(int block, int column, int row) {
  if (block < kLumaBlocks) {
    return {kLuma, column * kMacroblockSize + (block % 2) * kBlockSize,
            row * kMacroblockSize + (block / 2) * kBlockSize};
  }
  return {block == kLumaBlocks ? kCb : kCr, column * kBlockSize, row * kBlockSize};
}

Picture MakeCodedPicture(int width, int height) {
  return {MacroblocksOf(width) * kMacroblockSize, MacroblocksOf(height) * kMacroblockSize,
          kReferenceBorder};
}

void StoreMacroblock(const MacroblockPixels& pixels, int column, int row, Picture& target) {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const PlaneView source = pixels.Plane(plane);
    const MutablePlaneView view = target.Plane(plane);
    for (int y = 0; y < source.height; ++y) {
      std::memcpy(view.Row(row * source.height + y) + column * source.width, source.Row(y),
                  static_cast<std::size_t>(source.width));
    }
  }
}

void ReconstructIntraBlock(const Macroblock& macroblock, int block, int quantiser, int column,
                           int row, Picture& target) {
  const BlockPlace place = PlaceOf(block, column, row);
  const MutablePlaneView plane = target.Plane(place.plane);
  PredictIntra(plane, place.x, place.y, macroblock.IntraModeOf(block));
  if (macroblock.IsCoded(block)) {
    AddResidual(macroblock.levels[static_cast<std::size_t>(block)], quantiser,
                plane.Row(place.y) + place.x, plane.stride);
  }
}

void ReconstructMacroblock(const Macroblock& macroblock, int quantiser, int column, int row,
                           const Picture& reference, Picture& target) {
  if (macroblock.kind == MacroblockKind::kIntra) {
    for (int block = 0; block < kBlocks; ++block) {
      ReconstructIntraBlock(macroblock, block, quantiser, column, row, target);
    }
    return;
  }
  MacroblockPixels pixels;
  PredictInter(reference, column, row, macroblock.motion, pixels);
  for (int block = 0; block < kBlocks; ++block) {
    if (!macroblock.IsCoded(block)) continue;
    const BlockPlace inside = PlaceOf(block, 0, 0);
    const MutablePlaneView plane = pixels.Plane(inside.plane);
    AddResidual(macroblock.levels[static_cast<std::size_t>(block)], quantiser,
                plane.Row(inside.y) + inside.x, plane.stride);
  }
  StoreMacroblock(pixels, column, row, target);
}

}  // namespace zebx::noxcodec
