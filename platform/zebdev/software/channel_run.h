// One run of a channel, from its start to its stop.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/zebdev/software/call_gate.h"
#include "platform/zebdev/software/channel_encoder.h"
#include "platform/zebdev/software/channel_preview.h"
#include "platform/zebdev/software/channel_state.h"
#include "platform/zebdev/software/frame_schedule.h"
#include "platform/zebdev/software/live_sound.h"
#include "platform/zebdev/software/picture_colour.h"
#include "platform/zebdev/software/pre_alarm_ring.h"
#include "platform/zebdev/software/run_turn.h"
#include "platform/zebdev/software/virtual_channels.h"

namespace zebx::zebdev {

// Sees, encodes and shows what its channel's source gives, on a thread of its own or when stepped.
// Any thread may call. No lock is held while the host is called or the display, and none is kept
// over a wait. Whoever calls holds on to the run; before it ends WaitUntilOver has answered true.
class ChannelRun {
 public:
  // What it works with. Without a source it sees nothing.
  struct Parts {
    std::shared_ptr<ChannelState> m_state;
    std::shared_ptr<ChannelControls> m_controls;
    std::shared_ptr<ChannelSource> m_source;
    LiveSoundOutput* m_sound = nullptr;  // borrowed
  };

  ChannelRun(Parts parts, NoxdevChannelProc callback, void* context, Drive drive);

  // Lets the thread of a paced run go. False when there is none to be had.
  bool Begin();
  // Makes one frame of a stepped run. False when the run is paced or closed, and while another
  // frame is being made, as in its callback.
  bool Step();

  // As CallChannel; nothing when the run is closed.
  std::optional<int> Call(DWORD type, std::uintptr_t first, std::uintptr_t second, void* packet);
  // Calls back for every frame of the pre-alarm ring, on the calling thread. False when the run was
  // closed before the last one.
  bool ReplayPreAlarm(std::uintptr_t first, std::uintptr_t second);
  void RequestIFrame() { m_needs_i_frame = true; }
  // Null for no window.
  void ShowIn(HWND window) { m_window = window; }
  // Presents the last picture again, where there was one.
  void DrawAgain();
  // What the channel sees. False when it is closed, and for a source of compressed frames.
  bool CurrentPicture(noxcodec::Picture& picture);

  bool IsOpen() const { return m_gate.IsOpen(); }
  // Nobody works for it at the moment.
  bool IsDeserted() const { return m_gate.IsEmpty(); }
  // From now on no callback begins, nor another frame.
  void Close();
  // Waits for the last callback and the thread of a closed run; false at once where that would be
  // waiting for itself, as CallGate::WaitUntilEmpty.
  bool WaitUntilOver();

 private:
  // What a frame has of sound and picture before anybody is called.
  struct Frame;

  void RunPaced();
  bool WaitForNextFrame();
  void MakeFrame(const FrameSchedule::Frame& due);
  void SafelyMakeFrame(const FrameSchedule::Frame& due);
  void ReleaseTurn();
  bool NeedsIFrame();
  ChannelSettings CopySettings() const;
  DWORD FramesPerSecond(const ChannelSettings& settings) const;

  // Steps of MakeFrame, in their order; those that call the host answer false when the run was
  // closed meanwhile.
  void See(ULONGLONG time_ms, Frame& frame);
  void LookForMotion(Frame& frame);
  void FindFaces(Frame& frame);
  void Hear(std::size_t samples, Frame& frame);
  void Compress(Frame& frame);
  bool DeliverFrame(const Frame& frame);
  bool DeliverFaces(const Frame& frame);
  void Show(const Frame& frame);

  const Parts m_parts;
  const ChannelIdentity& m_identity;
  const Drive m_drive;
  CallGate m_gate;
  RunTurn m_turn;
  PreAlarmRing m_ring;
  std::atomic<bool> m_needs_i_frame = false;
  std::atomic<HWND> m_window = nullptr;

  // Used by whoever has the turn.
  noxcodec::Picture m_picture;
  PictureColour m_colour;
  std::optional<tag_DEVCOLOR> m_applied_color;
  MotionDetector m_detector;
  CompressedFrame m_compressed;
  bool m_was_compressed = false;  // the last frame was
  bool m_is_broken = false;       // an I-frame is asked for, or what follows needs one
  ChannelEncoder m_encoder;
  std::vector<std::int16_t> m_samples;
  std::vector<BYTE> m_face_packet;
  ChannelPreview m_preview;
  ULONGLONG m_time_ms = 0;  // of the last frame
  bool m_has_reported = false;

  // Used by the thread of a paced run, and by whoever has the turn of a stepped one.
  FrameSchedule m_schedule;

  std::mutex m_mutex;
  std::condition_variable m_closing;
  // Guarded by m_mutex.
  bool m_is_closing = false;
  std::thread m_thread;
};

}  // namespace zebx::zebdev
