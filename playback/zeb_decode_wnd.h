// Decodes a stream of frames that the host hands over one by one, shows them in a window and plays
// their sound.
#pragma once

#include <memory>
#include <mutex>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/os/windows/wnd.h"
#include "record/zeb_file_info.h"

class CImage;
class CShowParam;
class CVideoData;
class CWaveOut;

namespace zebx {

class StreamPictures;

}  // namespace zebx

// Closed -> (OpenDecodeWnd) open -> (first I-frame) showing pictures -> (CloseDecodeWnd) closed.
// Its hidden window is for the reports of the sound device alone: the thread that opens it takes
// messages for as long as sound is to play.
//
// Any thread may call any operation, also several at once; only opening while another thread opens
// or closes is for the host to avoid. The picture has a lock that is held while a frame is decoded
// and shown, the sound one that is held while codec and sound device are called; neither is held
// while anything of the host's runs. Closing has one, too, so that whoever closes second returns
// when all is closed; it is held while the settings' Show runs, which must not wait for another
// thread that closes.
class ZEBX_API CZebDecodeWnd : public CWnd {
 public:
  // The callback, with 0, the host's own value, and 0; its answer means nothing.
  using Notify = int (*)(DWORD, void*, DWORD);

  CZebDecodeWnd();
  // Releases everything and leaves the settings alone, which may be gone by then.
  ~CZebDecodeWnd() override;

  // Closes first what is open. `notify`, which may be null, is called in the calling thread when a
  // buffer of sound is done and fewer than two are queued; it may call every operation and destroy
  // this object. The settings are borrowed until closing; with null, no frame is shown. 1, or 0
  // with nothing open for a parent window that does not exist.
  int OpenDecodeWnd(HWND parent, Notify notify, void* user_data, CShowParam* settings,
                    tag_FRAMESIZE frame_size);
  // Ends sound and picture and has the settings show that there is none. Afterwards no callback
  // runs or will run, but for one that closing is called from.
  void CloseDecodeWnd();

  // Decodes a frame and shows it with its masks and the settings' captions and marks. 1 when it was
  // shown, whatever decoder and display answered to that; 0 for null, without settings, for an
  // unknown frame size, for all frames before the first I-frame, and when decoder or stream are
  // refused, which the next frame tries again.
  int DecodeOneFrame(CVideoData* frame);
  // Plays the frame's speech. A frame without any ends the sound, and what is queued is not heard.
  // Neither buffer nor length is used. Always 1.
  int DecodeAudio(CVideoData* frame, std::int16_t* buffer, DWORD length);
  // Sound is enabled at first. Disabling it ends it at once.
  void EnableAudio(int enable);
  // Copies the picture shown, without captions, in the show size of the frame size. 1, or 0 for
  // null and when there is no picture.
  int GetPicture(CImage* image);
  // 1 once a frame of an RT8Port board has come before a first picture was shown, else 0.
  int IsRT8Port();

 protected:
  // Opens the sound device, for the frame's encoder type, unless it is open. 1, or 0 when this is
  // closed and when the device is refused.
  int OpenAudio(CVideoData* frame);
  // Always 1.
  int CloseAudio();
  // A buffer of sound is done: the device, and its header's address.
  LRESULT OnWomDone(WPARAM device, LPARAM header);

  std::span<const os::MessageMapEntry> GetMessageMap() const override;

 private:
  std::unique_ptr<zebx::StreamPictures> TakePictures();
  void EndSound();

  std::recursive_mutex m_closing_mutex;  // guards closing as a whole

  std::mutex m_picture_mutex;                        // guards what follows
  std::unique_ptr<zebx::StreamPictures> m_pictures;  // null when closed
  int m_is_rt8port = 0;

  std::recursive_mutex m_audio_mutex;  // guards what follows
  HWND m_audio_window = nullptr;       // null when closed
  Notify m_notify = nullptr;
  void* m_user_data = nullptr;
  int m_is_audio_enabled = 1;
  std::unique_ptr<CWaveOut> m_audio;
};
