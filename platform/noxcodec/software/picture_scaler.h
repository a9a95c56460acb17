// Scaling of pictures to another size.
#pragma once

#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// Fills `target` with `source` scaled to the target's size, each direction on its own: every
// target pixel is the mean of the source area it covers when shrinking, and is interpolated
// linearly between the two nearest source pixels when enlarging. An equal size is a plain copy.
ZEBX_API void ScalePicture(const PictureView& source, Picture& target);

}  // namespace zebx::noxcodec
