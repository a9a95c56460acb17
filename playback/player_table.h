// Which players the decode thread drives, and which of them has the sound.
#pragma once

#include <array>
#include <cstddef>

#include "platform/framework/types.h"

class CDecodeWnd;

namespace zebx {

// A player as it was opened. The number tells one opening from the next, and from those of another
// player at the same address.
struct OpenPlayer {
  CDecodeWnd* m_player = nullptr;  // null: nobody
  DWORD m_opening = 0;

  bool operator==(const OpenPlayer&) const = default;
};

// Sixteen slots, and one place more for the audio owner, who is in no slot. A player moves from
// nowhere into a slot, from there to the owner's place and back, and from both to nowhere. Borrows
// the players, whose addresses are not null, and never calls them. One thread at a time.
class PlayerTable {
 public:
  static constexpr std::size_t kSlots = 16;
  static constexpr std::size_t kOwnerPlace = kSlots;

  // The player in a slot, from 0 on, or at kOwnerPlace; null when it is free.
  CDecodeWnd* At(std::size_t place) const { return m_places[place].m_player; }
  CDecodeWnd* Owner() const { return At(kOwnerPlace); }
  // False also for another opening of the player.
  bool Has(const OpenPlayer& player) const;
  // The opening in a slot; nobody when the player is in none.
  OpenPlayer InSlot(const CDecodeWnd* player) const;

  // Takes the first free slot. False when the player is in here already and when no slot is free.
  bool Add(const OpenPlayer& player);
  // False when the player is neither in a slot nor the owner.
  bool Remove(const CDecodeWnd* player);
  // Moves the player out of its slot. False when there is an owner, and when this opening of the
  // player is in no slot.
  bool MakeOwner(const OpenPlayer& player);
  // Moves the owner into the first free slot; false when there is none: it is nowhere then.
  bool ReleaseOwner();

  // Players in slots, less one for each owner that Remove took: this oddity is kept, and the limit
  // of open players relies on it. May be negative.
  int Count() const { return m_count; }

 private:
  // Null when the player is nowhere.
  OpenPlayer* Find(const CDecodeWnd* player);

  std::array<OpenPlayer, kSlots + 1> m_places;
  int m_count = 0;
};

}  // namespace zebx
