#include "playback/player_table.h"

#include <algorithm>
#include <utility>

namespace zebx {

bool PlayerTable::Has(const OpenPlayer& player) const {
  return std::find(m_places.begin(), m_places.end(), player) != m_places.end();
}

OpenPlayer PlayerTable::InSlot(const CDecodeWnd* player) const {
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    if (At(slot) == player) return m_places[slot];
  }
  return {};
}

bool PlayerTable::Add(const OpenPlayer& player) {
  if (Find(player.m_player) != nullptr) return false;
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    if (At(slot) != nullptr) continue;
    m_places[slot] = player;
    ++m_count;
    return true;
  }
  return false;
}

bool PlayerTable::Remove(const CDecodeWnd* player) {
  OpenPlayer* const found = Find(player);
  if (found == nullptr) return false;
  *found = {};
  --m_count;
  return true;
}

bool PlayerTable::MakeOwner(const OpenPlayer& player) {
  if (Owner() != nullptr || !Has(player)) return false;
  Remove(player.m_player);
  m_places[kOwnerPlace] = player;
  return true;
}

bool PlayerTable::ReleaseOwner() {
  return Add(std::exchange(m_places[kOwnerPlace], {}));
}

OpenPlayer* PlayerTable::Find(const CDecodeWnd* player) {
  const auto found = std::find_if(m_places.begin(), m_places.end(), [&](const OpenPlayer& place) {
    return place.m_player == player;
  });
  return found != m_places.end() ? &*found : nullptr;
}

}  // namespace zebx
