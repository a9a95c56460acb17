// A recording that is open for playing.
#pragma once

#include <memory>

#include "capture/video_data.h"
#include "playback/play_messages.h"

namespace zebx {

// As the block to read from: the next frame in the file.
inline constexpr int kNextFrame = -1;

// A frame to read recordings into: of any size, up to what a picture of 352 x 288 may take.
std::unique_ptr<CVideoData> MakePlayedFrame(tag_ZEBCAMERAID camera);

// Opens a recording and reads its first frame; the answer holds both. Null when either fails.
std::unique_ptr<CVideoData> OpenPlayedFile(const CString& path);

// Where a frame that was read stands in its file, and its moment.
tag_PLAYPOS PositionOf(const CVideoData& frame);

}  // namespace zebx
