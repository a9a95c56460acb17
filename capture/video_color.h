// The colour of one camera's picture: four components, their limits, and a device type's defaults.
#pragma once

#include <array>
#include <cstdint>

#include "capture/picture_formats.h"
#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

// A component of a colour, 0 to 3.
enum tag_VCLR : DWORD {};

// A value without a copy constructor. Operations that take a component answer 0, or do nothing, for
// a number above 3. Used by one thread at a time.
class ZEBX_API CVideoColor : public CObject {
  DECLARE_DYNAMIC(CVideoColor)

 public:
  // The defaults of that type and standard, as the device library has them. Bit 0x80 of the board
  // type does not count.
  CVideoColor(BYTE board_type, tag_VIDEOSTANDARD standard);
  ~CVideoColor() override;
  CVideoColor(const CVideoColor&) = delete;
  // Copies the values, the board type and the standard; the defaults stay the target's own.
  CVideoColor& operator=(const CVideoColor& other);

  // Asks the device library for the defaults again, and leaves the values alone. All 0 when it
  // fails.
  void GetDefaultColor();
  // Stores the standard, asks for its defaults and makes them the values.
  void Reset(tag_VIDEOSTANDARD standard);

  // Stored limited to GetMin and GetMax of the component.
  void SetValue(std::int16_t value, tag_VCLR component);
  std::int16_t GetValue(tag_VCLR component) const;
  std::int16_t GetDefault(tag_VCLR component) const;
  // 0 to 255, 127, 127 and 127; component 2 alone goes below 0, to -128.
  static std::int16_t GetMin(tag_VCLR component);
  static std::int16_t GetMax(tag_VCLR component);

  // Byte form: the values of components 0 to 3, 16 bits each. The cursor advances; the answer is
  // the bytes moved. Write needs GetSize() bytes. Read limits nothing; the form with `end` answers
  // 0, with everything as it was, when the bytes before `end` are too few.
  static constexpr DWORD GetSize() { return kBytes; }
  DWORD Write(BYTE*& cursor) const;
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);
  // Archive form: the same. A failure of the archive is reported; values loaded before it stay.
  void Serialize(CArchive& archive) override;

  static constexpr DWORD kBytes = 8;
  static constexpr DWORD kComponents = 4;

 private:
  std::array<std::int16_t, kComponents> m_values{};
  std::array<std::int16_t, kComponents> m_defaults{};
  BYTE m_board_type;
  tag_VIDEOSTANDARD m_standard;
};
