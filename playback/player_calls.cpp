#include "playback/player_calls.h"

#include <algorithm>
#include <utility>

namespace zebx {

void PlayerCalls::AwaitEnd(const CDecodeWnd* player) {
  while (const auto end = EndOfCallElsewhere(player)) end->Wait();
}

std::shared_ptr<os::Completion> PlayerCalls::EndOfCallElsewhere(const CDecodeWnd* player) {
  const std::thread::id self = std::this_thread::get_id();
  const std::lock_guard lock(m_mutex);
  for (UnderWay& call : m_calls) {
    if (call.m_player != player) continue;
    if (call.m_thread == self) {
      call.m_player = nullptr;
      continue;
    }
    if (call.m_end == nullptr) call.m_end = std::make_shared<os::Completion>();
    return call.m_end;
  }
  return nullptr;
}

void PlayerCalls::Begin(const CDecodeWnd* player) {
  const std::lock_guard lock(m_mutex);
  m_calls.push_back({player, std::this_thread::get_id(), nullptr});
}

void PlayerCalls::End() {
  std::shared_ptr<os::Completion> end;
  {
    const std::lock_guard lock(m_mutex);
    const auto last = std::find_if(m_calls.rbegin(), m_calls.rend(), [](const UnderWay& call) {
      return call.m_thread == std::this_thread::get_id();
    });
    end = std::move(last->m_end);
    m_calls.erase(std::prev(last.base()));
  }
  if (end != nullptr) end->Complete();
}

PlayerCall::PlayerCall(std::shared_ptr<PlayerCalls> calls, const CDecodeWnd* player)
    : m_calls(std::move(calls)) {
  m_calls->Begin(player);
}

PlayerCall::~PlayerCall() {
  m_calls->End();
}

}  // namespace zebx
