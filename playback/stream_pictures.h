// The pictures of a stream of frames, from the first I-frame on: decoder, display stream and the
// record of captions and marks.
#pragma once

#include <memory>

#include "capture/picture_formats.h"
#include "capture/show_param.h"
#include "platform/framework/geometry.h"
#include "platform/noxdisplay/display_record.h"
#include "playback/played_stream.h"

class CVideoData;

namespace zebx {

// Used by one thread at a time. Its end leaves the settings alone.
class StreamPictures {
 public:
  // The settings are borrowed; they may be null.
  StreamPictures(CShowParam* settings, tag_FRAMESIZE frame_size);
  // As CZebDecodeWnd::DecodeOneFrame.
  bool Show(const CVideoData& frame, bool has_sound);
  // Ends decoding, before the sound ends; then End has the settings show that there is no picture
  // any more, and lets go of everything.
  void EndDecoding() { m_decoder.reset(); }
  void End();

  // Null before the first picture. Borrowed.
  NoxshowStream GetStream() const { return m_stream.get(); }
  tag_FRAMESIZE GetFrameSize() const { return m_frame_size; }
  bool IsRT8Port() const { return m_is_rt8port; }

 private:
  bool Begin(const CVideoData& frame);
  void MakeRecord(bool is_rt8port);
  void RefreshRecord(const CVideoData& frame, bool has_sound);
  void PutMasks(const CVideoData& frame);
  void PutTimes();

  CShowParam* m_settings;
  const tag_FRAMESIZE m_frame_size;
  bool m_is_rt8port = false;
  std::unique_ptr<NxcDecoder, DestroyHandle> m_decoder;
  CSize m_size;  // of the decoder, and so of the stream
  std::unique_ptr<tag_DISPLAYINFO> m_record;
  std::unique_ptr<NoxshowStreamState, DestroyHandle> m_stream;
  CaptionTexts m_texts;  // of the frame at work; keeps its memory for the next
};

}  // namespace zebx
