// How the players fill the display record. What all of them put there stands here; what only one
// does stands in that player.
#pragma once

#include <span>

#include "platform/framework/geometry.h"
#include "platform/framework/time.h"
#include "platform/noxdisplay/display_record.h"
#include "record/zeb_file_info.h"

class CShowParam;

namespace zebx {

// Colours as 0x00BBGGRR until the captions' own is known.
inline constexpr DWORD kFirstCameraNameColor = 0x0000FF;
inline constexpr DWORD kFirstBoardNameColor = 0x0080FF;
inline constexpr DWORD kFirstClockColor = 0xFF0000;

// The three bits of names and clock.
inline constexpr DWORD kShowCaption =
    noxdisplay::kShowCameraName | noxdisplay::kShowBoardName | noxdisplay::kShowClock;

void SetBits(tag_DISPLAYINFO& record, DWORD bits, bool on);
// A caption as the display's text rule takes it, cut to the field.
void SetText(std::span<char> field, const CString& text);
// "%H:%M:%S", local time.
void SetTimeOfDay(std::span<char> field, CTime time);
// Names, clock: all in one colour.
void SetCaptionColors(tag_DISPLAYINFO& record, DWORD color);

// Names, first colours, and the bits of a record that was just made: 18 set and 19 clear.
void BeginRecord(tag_DISPLAYINFO& record, const CString& camera_name, const CString& board_name);
// What depends on the stream: bit 8, the captions' rectangle, and bit 18 cleared for the two frame
// sizes of half height, 3 and 0x83.
void FitRecordToStream(tag_DISPLAYINFO& record, CSize stream, tag_FRAMESIZE frame_size);
// The record of a recording that is opened: BeginRecord with its names, the clock and the begin
// text its begin time, the end text its end time; all five texts shown when captions are.
void FillRecordOfFile(tag_DISPLAYINFO& record, const CZebFileInfo& header,
                      const CShowParam& settings);

}  // namespace zebx
