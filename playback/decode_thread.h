// The thread that drives all players of single files, with the hidden window that carries their
// timer, their sound reports and their notifications.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>

#include "platform/framework/types.h"
#include "platform/os/threads/event.h"
#include "platform/os/threads/thread.h"
#include "platform/os/windows/wnd.h"
#include "playback/player_calls.h"
#include "playback/player_table.h"

class CDecodeWnd;
class CVideoData;
class CWaveOut;

// One for all players, made by the first and ended by the last. Players come in by an opening
// number of their own (CDecodeWnd::GetOpening), so that what was posted for one opening never
// reaches the next, nor another player at the same address.
//
// The thread calls OnDecode of the players, the window's thread OnVideoPlay, both without a lock
// of this class. All operations may be called on any thread, also inside these calls and with a
// player's lock held, which is taken before the one of this class; the exceptions are said below.
// Create, Destroy and the destructor are called by one thread, while nobody calls anything else.
class CDecodeThread final : public CWnd {
 public:
  CDecodeThread();
  // Ends as Destroy does.
  ~CDecodeThread() override;

  // Makes window, timer and thread. The window is a child of the host's main window and belongs to
  // the calling thread. 0, with nothing made, without that window or without a thread.
  //
  // When the main window or the calling thread ends first, players are still driven, by time-out;
  // their notifications and what follows from these (the start of sound) end.
  int Create();
  // Stops the thread and releases everything; from any thread, also inside an OnVideoPlay, after
  // which the window's procedure touches nothing of this object. Waits for the thread, so neither
  // from there nor with the lock of a player that it may be waiting for. Always 1.
  int Destroy();

  // Puts an open player into the first free slot. 0 when it is in here already or no slot is free.
  int Register(CDecodeWnd* player);
  // Forgets a player; the audio owner's sound ends. It may still be inside of an OnDecode or an
  // OnVideoPlay: see AwaitUnused. 0 when it is not in here.
  int Unregister(CDecodeWnd* player);
  // Players in slots, less one for every audio owner that was unregistered; may be negative.
  int GetCount() const;

  // Gives the sound to a player that is in a slot, which it leaves; `frame` tells the kind of
  // sound. 1 also when it has the sound already. 0 when another one has it, when no device opens,
  // and when the player was unregistered meanwhile.
  int SetAudioOwner(CDecodeWnd* player, CVideoData* frame);
  // Ends the sound and puts the player into a slot again. 1, also for any other player; 0 when no
  // slot is free: the player is in here no more then, and not driven until it is opened again.
  int ReleaseAudioOwner(CDecodeWnd* player);
  // Queues the frame's speech if the player is the audio owner, who is asked for another frame at
  // once when little is queued. 1, or 0 without a voiced frame.
  int PlayAudio(CDecodeWnd* player, CVideoData* frame);
  int IsAudioOwner(const CDecodeWnd* player) const;

  // Queues a code for the player's OnVideoPlay, which gets it in the window's thread unless that
  // opening has ended. Only FRAME is lost when the thread's queue is full. Always 1.
  int PostVideoPlay(CDecodeWnd* player, DWORD code, DWORD opening);

  // Returns when no OnDecode or OnVideoPlay of the player runs on another thread, and answers what
  // is sent to the calling thread's windows meanwhile. For the end of a player, which is not
  // registered any more, and without its lock; the calls of the calling thread itself, inside of
  // which the player ends, must not touch it afterwards.
  void AwaitUnused(const CDecodeWnd* player);

 private:
  std::span<const os::MessageMapEntry> GetMessageMap() const override;
  LRESULT OnTimer(WPARAM timer, LPARAM);
  LRESULT OnWomDone(WPARAM device, LPARAM header);
  // May end this object.
  LRESULT OnVideoPlay(WPARAM code_and_opening, LPARAM player);

  // The thread's body.
  void Run();
  // False when the thread has to end.
  bool RunPass();
  bool DecodeSlots(DWORD now);
  // Calls OnDecode of the player at a place of the table, if there is one.
  void Decode(std::size_t place, int audio_flag, DWORD now);
  // True when the audio owner should deliver another frame. With m_mutex held and an output.
  bool IsSoundShort() const;

  os::Event m_stop;
  os::Event m_tick;
  os::Event m_audio;  // the audio owner must deliver more sound
  const std::shared_ptr<zebx::PlayerCalls> m_calls;

  mutable std::mutex m_mutex;
  // Guarded by m_mutex, which is also held while a call into a player of the table begins, and
  // while the sound of a frame is decoded and queued; not while a device is opened or closed.
  bool m_is_running = false;
  zebx::PlayerTable m_players;
  std::unique_ptr<CWaveOut> m_output;  // exactly while there is an audio owner

  os::Thread m_thread;  // ends before everything above
};
