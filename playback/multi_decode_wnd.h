// Plays one recording in one of up to four panes that keep together.
#pragma once

#include <memory>

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "platform/os/windows/wnd.h"
#include "playback/play_messages.h"

class CImage;
class CShowParam;
class CZebFile;

namespace zebx {
class OpeningTurn;
}

// Plays without sound, on a thread of its own. Pane 0 is the master and plays freely. The others
// follow the time that the host tells them, usually the master's: each starts when it reaches the
// beginning of its own file, and jumps to it when its own frames are more than a second off.
//
// States: closed -> (OpenVideo) opened -> (the file is read, ZEBX_PLAY_OPENED) ready -> (a follower
// alone) waiting for its time -> playing <-> paused -> (the file's end, an error) over,
// ZEBX_PLAY_CLOSED -> closed. CloseVideo leads to closed from everywhere.
//
// Any thread may call every operation. The host's window is told on the thread that made the
// player's window, which must take its messages: they carry the pace, too. Inside a notification
// the host may call everything, and even delete the player. Window and display settings stay the
// host's, and alive until CloseDecodeWnd.
//
// Opening and closing wait for each other. They also wait for the player's thread, so that a host
// must not call them while it holds Lock(): both may then wait for ever. Called in the midst of
// themselves, by the display settings or by a message that is answered meanwhile, they do nothing,
// and opening is 0; the player must not be deleted there.
class ZEBX_API CMultiDecodeWnd : public CWnd {
 public:
  CMultiDecodeWnd();
  // Closes as CloseDecodeWnd does.
  ~CMultiDecodeWnd() override;

  // Makes the player's hidden window, a child of the host's, in the calling thread. What was open
  // is closed first. 1, or 0 with nothing open for a parent that does not exist; 0 with nothing
  // changed for a pane outside of 0 to 3.
  int OpenDecodeWnd(HWND host_window, CShowParam* settings, int pane);
  void CloseDecodeWnd();
  // Starts to play `file` at `speed`, from the beginning. What was played is closed first. 1, also
  // for a file that turns out unreadable later, which ZEBX_PLAY_CLOSED tells; or 0 without display
  // settings, for a file without a valid header or of an unknown frame size, and when the display
  // has no stream or the system no thread to give.
  int OpenVideo(const CString& file, int speed, int reserved_1, int reserved_2);
  // Always leaves the player closed; with `notify` the host is told, also when it was closed.
  void CloseVideo(int notify);

  // The control operations have no effect, or are 0, while no video is open.

  // Pauses, or goes on.
  void Pause();
  // 1 also after closing in a pause, and 0 before the first opening.
  int IsPause();
  // Goes on with the frame before this one: 0 and 1 both mean a block's first one. What is asked of
  // block 0 before the file is ready is forgotten. 1.
  int PlayFrom(int block, int frame);
  // Goes on with the last frame before `time`. 1, also when the file is not ready yet and will be
  // searched then; 0 for a time at or after the file's end or inside its last block, and when a
  // frame cannot be read.
  int PlayFrom(CTime time);
  // Shows one frame more and pauses: the next one, or the one before. StepPrev is always 0.
  int StepNext();
  int StepPrev();
  // 0: as recorded. 1: twice as fast. 2: every fourth frame, four times as fast. 3: every sixth
  // frame, each for a sixth of the time to its next one. Other n above 0: 2n times as fast; below
  // 0: 2|n| times as slow. Kept without a video, too, until one is opened or closed.
  void ChangePlaySpeed(int speed);
  int GetPlaySpeed();
  // This player never plays sound: it stays off.
  void EnableSound(int enable);
  // Normal speed, no single steps, no pause.
  void ResetPlay();
  // What a follower follows.
  void SetPlayTime(CTime time);

  // The open file, from ZEBX_PLAY_OPENED to CloseVideo; else null. Borrowed.
  CZebFile* GetZebFile();
  // Copies the picture on the screen. 1, or 0 for null and before the first picture.
  int GetPicture(CImage* image);
  // Keeps the player from reading frames and changing its state. May be nested. Always 1.
  int Lock();
  int Unlock();
  // 1 when the file's header says that it is of such a board.
  int IsRT8Port();

 protected:
  // Both 1 when there is nothing to do; creating is 0 without a thread.
  int CreateStreamThread();
  int DestroyStreamThread();
  // What the thread runs: the player's OnRun.
  static DWORD StreamThread(void* player);
  DWORD OnRun();
  LRESULT OnTimer(WPARAM timer, LPARAM);
  LRESULT OnWomDone(WPARAM device, LPARAM header);
  // `opening` is the number of the opening that the code was posted for; nothing happens when it is
  // over. The player may be gone afterwards.
  LRESULT OnVideoPlay(WPARAM code, LPARAM opening);
  std::span<const os::MessageMapEntry> GetMessageMap() const override;

 private:
  struct Fields;
  class Change;
  class Run;

  int Open(const CString& file, int speed);
  void Close();
  void CloseInTurn(zebx::OpeningTurn& turn, int notify);
  int SearchAndPlay(CTime time);

  const std::unique_ptr<Fields> m_fields;
};
