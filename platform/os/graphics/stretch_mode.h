// How a picture is made smaller.
#pragma once

namespace os {

// How the pixels that a smaller picture has no room for are dropped.
enum class StretchMode {
  kBlackOnWhite,  // they are ANDed into the pixel that stays: the default
  kHalftone,      // they are averaged
  kDropped,       // they are left out
};

}  // namespace os
