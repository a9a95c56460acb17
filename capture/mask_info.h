// A mask: a rectangle of a camera's picture in which the device looks for motion.
#pragma once

#include "capture/picture_formats.h"
#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

// Keeps the rectangle in thousandths of the picture's width and height, and derives from it the one
// in macroblocks of 16 pixels of the encode size of a frame size, which is what the device takes.
// A mask with frame size 0xFF has none, and IsValid answers 0. A value without a copy constructor.
// Used by one thread at a time.
class ZEBX_API CMaskInfo : public CObject {
  DECLARE_DYNAMIC(CMaskInfo)

 public:
  CMaskInfo();
  ~CMaskInfo() override;
  CMaskInfo(const CMaskInfo&) = delete;
  // Copies everything but motion and alarm, which start anew as after Reset.
  CMaskInfo& operator=(const CMaskInfo& other);
  // Compare the rectangles in thousandths and nothing else.
  int operator==(const CMaskInfo& other) const;
  int operator!=(const CMaskInfo& other) const;

  // Takes a mask drawn in a window, for pictures of that frame size on a board of that type, whose
  // bits are added to the status; none is taken away. The window is expected to start at (0, 0):
  // its origin is not subtracted. A frame size of 0xFF keeps the macroblock rectangle as it was. 1,
  // or 0 with nothing changed when mask or window have no width or no height.
  int SetMaskRect(const CRect& window, const CRect& mask, tag_FRAMESIZE frame_size,
                  BYTE board_type);
  // In thousandths. Borrowed; valid as long as the mask, and changes with it.
  const CRect* GetMaskRect() const { return &m_relative; }
  // The mask in a window, whose origin counts here. Always 1.
  int GetMaskRect(const CRect& window, CRect& mask) const;

  // Takes a mask in macroblocks of the frame size. 1, or 0 with nothing changed for null, an
  // unknown frame size and a rectangle that is empty or reaches into the last whole column or row
  // of macroblocks. Sides below 0 are not refused.
  int SetMBRect(const CRect* macroblocks, tag_FRAMESIZE frame_size);
  CRect GetMBRect() const { return m_macroblocks; }
  // The low bytes of left, top, right and bottom. 1, or 0 for null.
  int GetMBRect(BYTE* out) const;
  // Derives the macroblock rectangle anew when the frame size is another than before; that of an
  // unknown frame size is empty. Always 1.
  int SetFrameSize(tag_FRAMESIZE frame_size);
  // 1 with a frame size and at least 2 x 2 macroblocks, else 0.
  int IsValid() const;

  // Counts reports of motion in a row: every report sets motion, and every `alarm_count`-th sets
  // alarm until the next one. A report without motion resets.
  void SetMove(int has_moved, DWORD alarm_count);
  // Answer the masked bit: 1 or 0, and 2 or 0.
  int IsMove() const { return static_cast<int>(m_status & kMotion); }
  int IsAlarm() const { return static_cast<int>(m_status & kAlarm); }
  // Clears motion, alarm and the count of reports.
  void Reset();

  // Adds motion (1) and alarm (2) as the device tells them; clears neither.
  void SetFlag(DWORD flags) { m_status |= flags & (kMotion | kAlarm); }
  void SetStatus(DWORD bits) { m_status |= bits; }
  // Keeps the named bits and clears all others, whatever the name suggests: on purpose.
  void ClrStatus(DWORD bits) { m_status &= bits; }
  // Of the status: version 1 in masks made here, and the board's type code.
  DWORD GetVer() const { return m_status >> kVersionShift; }
  BYTE GetType() const { return static_cast<BYTE>(m_status >> kTypeShift); }

  // Byte form, kBytes long: rectangle in thousandths, status, frame size. The cursor advances; the
  // answer is the bytes moved. Write needs GetSize() bytes. Read derives the macroblock rectangle,
  // unless the bytes name no frame size, and leaves the count of reports; the form with `end`
  // answers 0, with everything as it was, when the bytes before `end` are too few.
  static constexpr DWORD GetSize() { return kBytes; }
  DWORD Write(BYTE*& cursor) const;
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);
  // Archive form: without motion, alarm and the other low 16 bits of the status, and with the low
  // 16 bits of the left side alone. Loading derives the macroblock rectangle only when the frame
  // size is another than before. A failure of the archive is reported; loading leaves the mask as
  // it was then.
  void Serialize(CArchive& archive) override;
  // The same two with the archive's failures thrown to the caller.
  void Store(CArchive& archive) const;
  void Load(CArchive& archive);

  static constexpr DWORD kBytes = 24;

 private:
  static constexpr tag_FRAMESIZE kNoFrameSize{0xFF};
  static constexpr int kTypeShift = 16;
  static constexpr int kVersionShift = 28;
  enum : DWORD { kMotion = 0x1, kAlarm = 0x2, kVersion = 1U << kVersionShift };

  CSize GetEncodeSize(tag_FRAMESIZE frame_size) const;

  DWORD m_motion_reports = 0;
  CRect m_macroblocks;
  CRect m_relative;
  tag_FRAMESIZE m_frame_size = kNoFrameSize;
  DWORD m_status = kVersion;
};
