// What a host has asked of a player of recordings.
#pragma once

#include "platform/framework/types.h"
#include "playback/seeking.h"

namespace zebx {

// How a recording is to be played.
struct PlayState {
  enum Flag : DWORD {
    kOpen = 0x1,
    kSingleStep = 0x2,
    kSilent = 0x4,  // a mode that a host may have; nothing here sets it
    kSound = 0x8,
  };

  DWORD m_flags = 0;
  int m_speed = 0;
  FramePosition m_seek;

  bool Has(DWORD flags) const { return (m_flags & flags) != 0; }
  void Set(DWORD flags) { m_flags |= flags; }
  void Clear(DWORD flags) { m_flags &= ~flags; }
};

}  // namespace zebx
