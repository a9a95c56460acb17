// The pictures of a stream of frames, from the first I-frame on: decoder, display stream and the
// record of captions and marks.
#pragma once

#include <memory>

#include "capture/picture_formats.h"
#include "capture/show_param.h"
#include "platform/framework/geometry.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/streams.h"

class CVideoData;

namespace zebx {

// Used by one thread at a time.
class StreamPictures {
 public:
  // The settings are borrowed; they may be null.
  StreamPictures(CShowParam* settings, tag_FRAMESIZE frame_size);
  // Leaves the settings alone.
  ~StreamPictures();
  StreamPictures(const StreamPictures&) = delete;
  StreamPictures& operator=(const StreamPictures&) = delete;

  // As CZebDecodeWnd::DecodeOneFrame.
  bool Show(const CVideoData& frame, bool has_sound);
  // Has the settings show that there is no picture any more, and lets go of everything.
  void End();

  // Null before the first picture. Borrowed.
  NoxshowStream GetStream() const { return m_stream; }
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
  NxcHandle m_decoder = nullptr;
  CSize m_size;  // of the decoder, and so of the stream
  std::unique_ptr<tag_DISPLAYINFO> m_record;
  NoxshowStream m_stream = nullptr;
  CaptionTexts m_texts;  // of the frame at work; keeps its memory for the next
};

}  // namespace zebx
