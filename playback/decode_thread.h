// The thread that drives all players of single files, with the hidden window that carries their
// timer, their sound reports and their notifications.
#pragma once

#include "platform/framework/types.h"
#include "platform/os/windows/wnd.h"

class CDecodeWnd;
class CVideoData;

// One for all players, made by the first and ended by the last. Players come in by an opening
// number of their own (CDecodeWnd::GetOpening), so that what was posted for one opening never
// reaches the next, nor another player at the same address.
class CDecodeThread final : public CWnd {
 public:
  CDecodeThread();
  // Ends as Destroy does.
  ~CDecodeThread() override;

  // Makes window, timer and thread. The window is a child of the host's main window and belongs to
  // the calling thread. 0, with nothing made, without that window or without a thread.
  int Create();
  // Stops the thread and releases everything; from any thread. Always 1.
  int Destroy();

  int Register(CDecodeWnd* player);
  int Unregister(CDecodeWnd* player);
  // As the letter of the class counts; may be lower than the table's entries.
  int GetCount() const;

  int SetAudioOwner(CDecodeWnd* player, CVideoData* frame);
  int ReleaseAudioOwner(CDecodeWnd* player);
  int PlayAudio(CDecodeWnd* player, CVideoData* frame);
  int IsAudioOwner(const CDecodeWnd* player) const;

  // Queues a code for the player's OnVideoPlay, which gets it in the window's thread unless that
  // opening has ended. CLOSED is never refused. Always 1.
  int PostVideoPlay(CDecodeWnd* player, DWORD code, DWORD opening);

  // Returns when no OnDecode or OnVideoPlay of the player runs on another thread, and answers what
  // is sent to the calling thread's windows meanwhile. The player is not registered any more.
  void AwaitUnused(const CDecodeWnd* player);
};
