// What a virtual channel sees and hears: its source.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::zebdev {

// A frame that is compressed already.
struct CompressedFrame {
  BYTE m_type = 0;          // 0 for an I-frame
  BYTE m_encoder_type = 0;  // 0 to 15
  std::vector<BYTE> m_video;
};

// Used by one thread at a time, the channel's. Time is what the channel has run so far, in ms; it
// never goes back. A source either draws pictures or gives frames.
class ZEBX_API ChannelSource {
 public:
  virtual ~ChannelSource();

  // Draws what is seen at that time into `picture`, at the size that it has. False when nothing is
  // seen: the video is lost; so it is when the picture has another size afterwards.
  virtual bool DrawPicture(ULONGLONG time_ms, noxcodec::Picture& picture) = 0;
  // True when the picture drawn last is the one drawn before it once more, as of a film that is
  // slower than its channel. What moved stays as it was then.
  virtual bool IsRepeated() const { return false; }
  // True when frames come from ReadFrame and DrawPicture is not called.
  virtual bool IsCompressed() const { return false; }
  // The frame of that time; `needs_i_frame` from when the channel was asked for one until it is
  // given. False when there is none.
  virtual bool ReadFrame(ULONGLONG /*time_ms*/, bool /*needs_i_frame*/, CompressedFrame&) {
    return false;
  }
  // Fills `samples`, 8000 a second, with the sound that goes on where the last call ended; false,
  // with nothing filled in, for a source without sound.
  virtual bool ReadSound(std::span<std::int16_t> /*samples*/) { return false; }
  // The faces in the picture drawn last: none unless the source knows.
  struct FaceArea {
    DWORD m_left = 0, m_top = 0, m_width = 0, m_height = 0;  // in pixels of that picture
  };
  virtual std::vector<FaceArea> Faces() const { return {}; }
};

// The generated street. Streets of different seeds differ in what passes when; sound is the hum of
// the traffic.
ZEBX_API std::unique_ptr<ChannelSource> MakeStreetSource(DWORD seed);

// A Y4M file, with a WAV file for sound where `sound_path` is not empty, both played over and over
// at their own pace and fitted to the channel's picture. Native paths or library paths. Null when
// the video cannot be read; `fault` then says why. A sound file that cannot be read is left out and
// said, too.
ZEBX_API std::unique_ptr<ChannelSource> OpenFileSource(const CString& video_path,
                                                       const CString& sound_path, CString* fault);

// Frames compressed already, one a frame period, over and over; a request for an I-frame moves on
// to the next one.
ZEBX_API std::unique_ptr<ChannelSource> MakeFrameSource(std::vector<CompressedFrame> frames);

}  // namespace zebx::zebdev
