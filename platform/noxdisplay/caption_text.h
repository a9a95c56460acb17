// The rule by which a text becomes a caption: it is taken as a format without arguments.
#pragma once

#include <span>
#include <string_view>

#include "platform/framework/types.h"

namespace zebx::noxdisplay {

// Puts the text, which ends at a zero byte, into `field` with a zero byte behind it and returns how
// many bytes it has there. "%%" becomes "%"; every conversion (flags, width, precision, size and
// letter) is dropped, as there is nothing to convert, and so is a "%" that begins none, with what
// follows it kept. What does not fit into the field is cut off, between two characters of UTF-8;
// other bytes are taken as they are. Bytes of the field behind the zero stay. An empty field stays.
std::size_t PutCaptionText(std::string_view text, std::span<char> field);

// The same for a text that is no format any more: only cut.
std::size_t PutPlainText(std::string_view text, std::span<char> field);

}  // namespace zebx::noxdisplay
