// Plays one recording into a display window.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "playback/play_messages.h"

class CDecodeThread;
class CImage;
class CShowParam;
class CVideoData;
class CZebFile;

namespace zebx {

class OpeningGate;
struct Playing;

}  // namespace zebx

// All players share one thread, which decodes and shows their frames when they are due, and one
// hidden window, in whose thread the host is told. The window belongs to the thread that made the
// first player, which has to take messages, and stands below the host's main window; when either is
// gone, pictures go on, but notifications and the start of sound stop.
//
//   closed --OpenVideo--> opened --the thread opens the file--> playing <--> paused
//     ^                      |                                     |           |
//     +----CloseVideo--------+----------------<--------------------+-----------+
//
// The file's end, and what cannot be opened or read, post a notice in the thread; until the window
// takes it and closes, the player is "not open" and keeps its last picture. Playing in single steps
// means playing one frame and pausing.
//
// Any thread may call any operation, also inside a notification, where the player may even be
// deleted. Deleting waits for what the shared thread and the window's thread do with the player,
// and so must not be done while holding Lock(). What is not open answers 0 or does nothing.
class ZEBX_API CDecodeWnd {
 public:
  CDecodeWnd();
  // Closes without telling anybody and without a look at the settings, which may be gone. The last
  // player ends the shared thread.
  virtual ~CDecodeWnd();
  CDecodeWnd(const CDecodeWnd&) = delete;
  CDecodeWnd& operator=(const CDecodeWnd&) = delete;

  // Keeps the window that is told, and the settings with the window in which pictures are shown.
  // Both stay the host's. Always 1.
  int OpenDecodeWnd(HWND host_window, int reserved, CShowParam* settings);
  // Forgets the settings: when it returns, nobody uses them. What plays goes on unseen.
  void CloseDecodeWnd();

  // Closes what is open and opens a recording, to be played at once, with sound unless `sound` is
  // 0. Speed 0 is the recorded pace, n > 0 plays 2n times as fast, n < 0 plays -2n times slower. 1,
  // or 0, closed, without settings or a shared thread, with 16 other players, and for a recording
  // whose header cannot be read or that the display has no stream for. Frames are read later: what
  // goes wrong then closes.
  int OpenVideo(const CString& file, int speed, int sound, int reserved);
  // Closes and, with `notify`, sends ZEBX_PLAY_CLOSED when the host's window exists; also when it
  // is closed already.
  void CloseVideo(int notify);

  // Pauses, or plays on, which ends single steps.
  void Pause();
  // 1 while paused, and before the first opening.
  int IsPause();
  // Goes on playing at the frame before this one; 0 and 1 both mean a block's first frame. Before
  // the file is ready a frame of block 0 is forgotten.
  int PlayFrom(int block, int frame);
  // Goes on playing with the last frame before the time; with the first one for a time before the
  // recording begins. Before the file is ready it is kept for then. 0 with playback as it was for a
  // time after the last block's beginning, and when a frame cannot be read.
  int PlayFrom(CTime time);
  // Shows one frame, the next or the one before, and pauses. StepPrev always answers 0.
  int StepNext();
  int StepPrev();
  // Takes effect with the next frame's interval.
  void ChangePlaySpeed(int speed);
  int GetPlaySpeed();
  // Sound plays at speed 0 and neither in single steps nor paused. It begins with the next voiced
  // frame that is shown, and one player has it at a time.
  void EnableSound(int enable);
  // Speed 0, no single steps, playing.
  void ResetPlay();

  // Borrowed; null until the file is ready, valid until CloseVideo. To be used while holding
  // Lock(), since the shared thread reads on.
  CZebFile* GetZebFile();
  // Copies the picture on the screen, which the image then owns.
  int GetPicture(CImage* image);
  // The player's lock, which one thread may take several times. While it is held the player shows
  // nothing new. Whoever holds it must not open or close the decode window or open a video, which
  // another thread may be doing, and must not delete the player. Always 1.
  int Lock();
  int Unlock();
  int IsRT8Port();

  // For the decode thread alone.

  // `now` is the tick count of the pass; `audio_flag` 1 when the sound device asks for more. 0 when
  // the player is not open, or not any more.
  int OnDecode(int audio_flag, DWORD now);
  // In the thread of the decode thread's window. `opening` is the number that was posted with it:
  // another one than the current is dropped. The player may be gone when it returns.
  void OnVideoPlay(UINT code, LPARAM opening);
  // The number of the opening, counted over all players, so that none has a number twice; 0 while
  // closed. Takes no lock.
  DWORD GetOpening() const { return m_opening; }

 protected:
  // Take the sound for this player if it is to have it, or give it back. With the lock held.
  int OpenAudio(CVideoData* frame);
  int CloseAudio();

 private:
  // Opening and closing: decode_wnd.cpp.
  int Open(const CString& file, int speed, int sound);
  std::unique_ptr<zebx::Playing> MakePlaying(const CString& file);
  void Start(std::unique_ptr<zebx::Playing> playing);
  void Close();
  void TellClosed(HWND window);

  // Frames: decode_wnd_frames.cpp. All with the lock held.
  bool OpenFile();
  bool IsDue(int audio_flag, DWORD now) const;
  bool ShowFrame(DWORD now);
  void Present();
  int End();

  // Control: decode_wnd_control.cpp.
  int SeekTime(CTime time);
  void StepOne();

  // The shared thread and the number of players; both change under one mutex of decode_wnd.cpp.
  static std::atomic<CDecodeThread*> s_pDecodeThread;
  static DWORD s_dwObjNum;

  // Passed while a video is opened and while the settings change, so that they stay while they are
  // used without the lock below. Passed before that is taken. Settings of the host, when they are
  // called, may open and close videos: that belongs to the turn of their thread.
  const std::unique_ptr<zebx::OpeningGate> m_gate;

  // The player's lock. Guards what follows; held while a frame is read, decoded and presented.
  // Nobody is told anything while it is held, but for errors that are reported.
  std::recursive_mutex m_mutex;
  HWND m_host_window = nullptr;
  CShowParam* m_settings = nullptr;          // changes in a turn, under the lock
  std::unique_ptr<zebx::Playing> m_playing;  // null while closed
  tag_PLAYPOS m_told_position = {};          // changes in the window's thread only

  // Change under the lock and are read without it.
  std::atomic<DWORD> m_opening = 0;
  std::atomic<bool> m_is_opened = false;   // and neither ended nor closed
  std::atomic<bool> m_is_running = false;  // not paused
  std::atomic<bool> m_is_ready = false;    // the thread has opened the file, or failed to
};
