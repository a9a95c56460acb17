// Packets of faces as the channels of the device library give them.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/device_records.h"
#include "platform/zebdev/software/channel_source.h"

namespace zebx::zebdev {

// Fills `packet`, whose memory is used again, with a tag_FACEPACKET and one record per area that
// has a part inside the picture. Areas are cut off at the picture's edges, and their widths rounded
// down to a multiple of 4, as bitmaps of faces need them; an area of which nothing is left is left
// out. Records are numbered from 0, say where in the picture the face's top left corner is, and
// hold their rows bottom-up. Returns the number of faces; with 0 the packet is a head alone.
DWORD WriteFacePacket(const noxcodec::PictureView& picture,
                      std::span<const ChannelSource::FaceArea> areas, std::vector<BYTE>& packet);

inline constexpr DWORD kMaxPlacedFaces = 64;

// So many areas of a picture, at most kMaxPlacedFaces, side by side, for a source that knows no
// faces.
std::vector<ChannelSource::FaceArea> PlacedFaces(int picture_width, int picture_height,
                                                 DWORD count);

}  // namespace zebx::zebdev
