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

  LONG Width() const { return right - left; }
  LONG Height() const { return bottom - top; }
  bool IsEmpty() const { return Width() <= 0 || Height() <= 0; }
  bool operator==(const CRect&) const = default;
};
