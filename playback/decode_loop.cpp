// What the decode thread does: it calls the players, each when its time may have come.
#include <array>
#include <exception>

#include "platform/framework/error_report.h"
#include "platform/os/clock.h"
#include "playback/decode_thread.h"
#include "playback/decode_wnd.h"

using namespace zebx;

namespace {

// The timer's ticks come sooner, as long as the window's thread takes its messages.
constexpr DWORD kTimeOutMs = 10;

enum : DWORD { kStopped = 0, kAudioAsked = 1 };

}  // namespace

void CDecodeThread::Run() {
  bool goes_on = true;
  while (goes_on) {
    try {
      goes_on = RunPass();
    } catch (const std::exception& failure) {
      // All players go on with the next pass.
      ReportError(failure);
    }
  }
}

bool CDecodeThread::RunPass() {
  // The order decides: a player that the sound waits for goes before the tick.
  const std::array<os::Event*, 3> events = {&m_stop, &m_audio, &m_tick};
  const DWORD ended_by = os::WaitForMultipleObjects(events, kTimeOutMs);
  if (ended_by == kStopped) return false;
  const DWORD now = os::GetTickCount();
  m_audio.Reset();
  Decode(PlayerTable::kOwnerPlace, ended_by == kAudioAsked ? 1 : 0, now);
  if (ended_by == kAudioAsked) return true;
  m_tick.Reset();
  return DecodeSlots(now);
}

bool CDecodeThread::DecodeSlots(DWORD now) {
  for (std::size_t slot = 0; slot < PlayerTable::kSlots; ++slot) {
    if (m_stop.IsSet()) return false;
    if (m_audio.IsSet()) {
      m_audio.Reset();
      Decode(PlayerTable::kOwnerPlace, 1, now);
    }
    Decode(slot, 0, now);
  }
  return true;
}

void CDecodeThread::Decode(std::size_t place, int audio_flag, DWORD now) {
  std::unique_lock lock(m_mutex);
  CDecodeWnd* const player = m_players.At(place);
  if (player == nullptr) return;
  const PlayerCall call(m_calls, player);
  lock.unlock();
  player->OnDecode(audio_flag, now);
}
