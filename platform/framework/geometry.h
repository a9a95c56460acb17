// Points, sizes and rectangles in pixels. Values without invariants.
#pragma once

#include "platform/framework/types.h"

struct CPoint {
  LONG x = 0;
  LONG y = 0;
  bool operator==(const CPoint&) const = default;
};

struct CSize {
  LONG cx = 0;
  LONG cy = 0;
  bool operator==(const CSize&) const = default;
};

// Right and bottom are the first column and row outside. May be empty or turned inside out.
struct CRect {
  LONG left = 0;
  LONG top = 0;
  LONG right = 0;
  LONG bottom = 0;

  // Modulo 2^32: sides may be farther apart than a LONG tells.
  constexpr LONG Width() const { return Distance(left, right); }
  constexpr LONG Height() const { return Distance(top, bottom); }
  constexpr bool IsEmpty() const { return right <= left || bottom <= top; }
  bool operator==(const CRect&) const = default;

 private:
  static constexpr LONG Distance(LONG from, LONG to) {
    return static_cast<LONG>(static_cast<DWORD>(to) - static_cast<DWORD>(from));
  }
};
