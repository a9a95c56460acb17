// Whose turn it is to work on a run's pictures.
#pragma once

#include <condition_variable>
#include <mutex>

namespace zebx::zebdev {

// One thread at a time makes a frame, or draws for somebody. A frame calls the host back, so nobody
// waits for a whole one. Any thread may call; the lock guards the few words below it.
class RunTurn {
 public:
  // Takes the turn for a frame; false when one is being made. Waits for somebody who draws.
  bool TakeForFrame();
  // The picture of the frame is there for everybody, and calls follow.
  void FrameIsSeen();
  // Takes the turn for a first look; false when a frame is being made and its picture was seen.
  bool TakeForLook();
  // Takes the turn to draw the last picture again. False when somebody has it: whoever that is does
  // it before giving it back.
  bool TakeForRedrawing();
  // Gives the turn back. False, with the turn kept, when the last picture is to be drawn again.
  bool Release();

 private:
  enum class Holder { kNobody, kFrame, kOther };

  std::mutex m_mutex;
  std::condition_variable m_changed;
  // Guarded by m_mutex.
  Holder m_holder = Holder::kNobody;
  bool m_is_seen = false;
  bool m_wants_redrawing = false;
};

}  // namespace zebx::zebdev
