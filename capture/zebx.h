// The capture control functions that hosts call: the library's start and end, its boards, what they
// can do, their cameras, and the watermark.
//
// Results are 1 for success and 0 for failure unless said otherwise. Boards are numbered from 0
// over all devices; a board that no device has, and a camera on such a board, is a failure. So is a
// null pointer. A function that runs out of memory reports that, and fails with nothing changed
// but the show settings that a camera was given. The host's thread only, and the host's callback
// (see notify.h).
#pragma once

#include "capture/notify.h"
#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "record/zeb_file_info.h"

class CDibObj;
class CEncodeParam;
class CImage;
class CMaskInfo;
class CMaskList;
class CShowParam;
class CVideoColor;
class CZebFile;

extern "C" {

// Initialises the library. The callback may be null; `user_data` comes back with every call of it.
// The window is borrowed until zebxCloseZebx; the directory, without its last backslash, is copied.
// The start-up word is the device library's own. Without any device this is 1 all the same; when
// the library is initialised already it is 1 too, and the arguments are ignored.
ZEBX_API int zebxInitZebx(DWORD start_up_word, ZEBX_NOTIFY_PROC notify, std::uintptr_t user_data,
                          HWND host_window, const char* device_directory);
// Closes every board and device, whether cameras are open or not; nothing is notified afterwards,
// save what a call from inside the host's callback leaves to end. The library can be initialised
// again. The database and the watermark settings stay.
ZEBX_API void zebxCloseZebx();
ZEBX_API int zebxIsZebxInit();

ZEBX_API DWORD zebxGetBoardNum();
// Cameras of the board, of all boards; 0 for a board that is not there.
ZEBX_API DWORD zebxGetCameraNum(WORD board);
ZEBX_API DWORD zebxGetTotalCamera();
// 0 while the library is not initialised.
ZEBX_API int zebxIsValidBoardIndex(WORD board);
// The device library's own answer, not 0 when the camera's channel exists.
ZEBX_API int zebxIsValidCameraID(const tag_ZEBCAMERAID* id);

// Opens a board for pictures of the frame size at the speed (a number of the device library's own).
// The device's first board to open takes frame sizes 3, 7, 131 and 135 only. Opening an open board
// is 1 and changes nothing.
ZEBX_API int zebxOpenBoard(WORD board, DWORD frame_size, DWORD speed);
// Closes a board; a closed one is no failure. Close its cameras first: it stops no channel, and the
// frames of a camera left open are thrown away until zebxCloseZebx, or until the board is open
// again and zebxDestroyCamera stops the channel.
ZEBX_API int zebxCloseBoard(WORD board);
ZEBX_API int zebxIsBoardOpen(WORD board);

// The frame size of the last opening, 0xFF before the first.
ZEBX_API int zebxGetFrameSize(WORD board, DWORD* frame_size);
ZEBX_API int zebxGetSpeed(WORD board, DWORD* speed);
// Another speed than before goes to every camera of the open board that has show settings.
ZEBX_API int zebxSetSpeed(WORD board, DWORD speed);
// The type code of the board, with 0x80 on a device's second board; 0 for none.
ZEBX_API BYTE zebxGetBoardType(WORD board);
// 0 for a device's first board, 1 for its second, 0xFFFFFFFF for none.
ZEBX_API DWORD zebxGet8PortStreamIndex(WORD board);

// TV output, watchdog and I/O ports are on a device's first board only. The first two answer the
// capability bit itself.
ZEBX_API int zebxIsTVSupport(WORD board);
ZEBX_API int zebxIsWatchDog(WORD board);
ZEBX_API int zebxIsIOSupport(WORD board);
// The words and the control code go to the device unchanged.
ZEBX_API int zebxSetTVOut(WORD board, DWORD first, DWORD second);
ZEBX_API int zebxIOCtrl(WORD board, BYTE code, DWORD first, DWORD second);

// Whether a camera has sound.
ZEBX_API int zebxIsVoice(const tag_ZEBCAMERAID* id);
// Fixed answers about board types, of which only the low 8 bits count; the library need not be
// initialised. Second boards have no high quality.
ZEBX_API int zebxIsHQSupport(DWORD board_type);
ZEBX_API int zebxIsAudioSupport(DWORD board_type, DWORD camera_index);

// The camera functions find cameras on open boards only. A camera is closed to begin with.
//
// Gives the camera its show settings, which stay the host's, who keeps them alive until the camera
// is closed or has others. Null forgets them.
ZEBX_API int zebxCreateCamera(const tag_ZEBCAMERAID* id, CShowParam* show);
// Closes the camera, stops its channel once more and forgets its show settings. Always 0, on
// purpose.
ZEBX_API int zebxDestroyCamera(const tag_ZEBCAMERAID* id);
// Opens the camera: from now on its frames and faces reach the host's callback (see notify.h), and
// its picture the window of the show settings, which are needed. `unused` has no effect. The others
// are copied, and may be null for default settings, no masks and the colour as it is. On an open
// camera this replaces the show settings and nothing else; null takes them away and answers 0. A
// camera whose channel cannot be set up or started keeps the show settings and stays closed.
ZEBX_API int zebxOpenCamera(const tag_ZEBCAMERAID* id, DWORD unused, const CEncodeParam* settings,
                            const CMaskList* masks, const CVideoColor* color, CShowParam* show);
// Closes the camera and shows the idle picture in its window; a closed one is no failure and keeps
// its show settings. When this returns no frame of the camera is being notified and none will be,
// save one from whose notification it was called.
ZEBX_API int zebxCloseCamera(const tag_ZEBCAMERAID* id);
ZEBX_API int zebxIsCameraOpen(const tag_ZEBCAMERAID* id);
// 1 when any camera is open.
ZEBX_API int zebxIsWork();
// Gives an open camera other encoder settings; equal ones only bring the watermark up to date.
// Switches its live sound as its show settings say. Bit 0 of the request asks for an I-frame.
ZEBX_API int zebxRequestNextFrame(const tag_ZEBCAMERAID* id, const CEncodeParam* settings,
                                  DWORD request_bits);
// Takes a still picture of the show size of the board's frame size. The camera may be closed.
ZEBX_API int zebxGetPicture(const tag_ZEBCAMERAID* id, CImage* image);
// Writes the frames from before now into an alarm file open for writing, on the calling thread.
// Frames too large for a frame record are left out. 1 also when the file takes none of them.
ZEBX_API int zebxGetAlarmData(const tag_ZEBCAMERAID* id, CZebFile* file);

// How large a live picture a camera previews, on boards that have to share the room for them: 0, 1
// or 2, as docs/capture.md says. The device gets the number as it is, and its answer is not looked
// at.
ZEBX_API int zebxSetShowType(const tag_ZEBCAMERAID* id, DWORD show_type);
// Chooses the show types of all cameras anew by the sizes of their windows, given the camera that
// has the focus. Call it when a window changes its size or the focus moves. The type of the last
// board decides for all boards; 0 also when that has none. Without any board this is 1.
ZEBX_API int zebxRefreshShow(const tag_ZEBCAMERAID* focus);
// Lets an open camera look for motion in one more mask, which then belongs to the library. 0 for a
// closed camera and when the device refuses the mask, which stays the host's then. One that equals
// a mask of the camera stays the host's, too, although the answer is 1: ask
// CMaskList::IsMaskInfo first.
ZEBX_API int zebxAddMask(const tag_ZEBCAMERAID* id, CMaskInfo* mask);
// Removes and destroys all masks of an open camera; a closed one is no failure.
ZEBX_API int zebxDeleteAllMask(const tag_ZEBCAMERAID* id);
// Gives a camera's channel a colour, or asks the channel for its colour, limited as
// CVideoColor::SetValue does. The camera may be closed.
ZEBX_API int zebxSetVideoColor(const tag_ZEBCAMERAID* id, const CVideoColor* color);
ZEBX_API int zebxGetVideoColor(const tag_ZEBCAMERAID* id, CVideoColor* color);

// The watermark takes effect when a camera is opened or set up anew. These two are always 1. Of the
// transparency only the low byte counts; more than 128 is 128.
ZEBX_API int zebxEnableWaterMark(int is_enabled);
ZEBX_API int zebxSetWaterMarkTrans(DWORD transparency);
// Gives the display library the watermark's picture, of 24 bits; the pixels are copied.
ZEBX_API int zebxSetWaterMark(const CDibObj* picture);

// Restores the display's surfaces and lets every device draw again when they were lost. 1 when that
// was so, 0 when nothing was lost. Call it whenever the screen may have changed its mode.
ZEBX_API int zebxCheckDrawSurface();
}
