// One camera of a board: one video channel of a device, with what the host gave it and, while it is
// open, its live data.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

#include "capture/show_param.h"
#include "platform/zebdev/channels.h"
#include "record/zeb_file_info.h"

class CCaptureBoard;
class CEncodeParam;
class CImage;
class CMaskInfo;
class CMaskList;
class CVideoColor;
class CVideoData;
class CZebFile;

namespace zebx {

// An identity as one word: the board in the low half. Identities are compared in this form.
constexpr DWORD CameraIdWord(tag_ZEBCAMERAID id) {
  return DWORD{id.m_board} | (DWORD{id.m_camera} << 16);
}

constexpr tag_ZEBCAMERAID ToCameraId(DWORD id_word) {
  return {static_cast<WORD>(id_word), static_cast<WORD>(id_word >> 16)};
}

// The type of boards with a second stream for each camera.
inline constexpr BYTE kTwoStreamBoardType = 11;

// The live data of an open camera, and what belongs to it. Shared by the camera and by the channel
// calls that are under way.
struct LiveStream;

}  // namespace zebx

// Created and owned by its board, which binds it as it opens. A camera whose channel may still call
// it when the board closes is kept by the device, unbound, until the device is destroyed.
//
//   unbound --Bind--> closed --Open--> open --Close--> closed
//      ^                 |               |
//      +--ResetBinding---+---------------+   (unbound, with its live data)
//
// Open, Close and whatever else the host asks for are called by one thread at a time, also from
// inside the host's callback, and inside one another: while the device library starts or stops the
// channel, frames and messages come in for which the host may close camera, board and library. The
// channel calls on threads of the device library meanwhile; every such call works on a camera that
// is bound and open or leaves it alone. Results are those of zebx.h.
class CCaptureCamera {
 public:
  CCaptureCamera();
  virtual ~CCaptureCamera();
  CCaptureCamera(const CCaptureCamera&) = delete;
  CCaptureCamera& operator=(const CCaptureCamera&) = delete;

  // Makes this the camera with that identity on a channel of the board's device. The board is
  // borrowed. 0, with nothing changed, without a board or while the board's device has no handle.
  int Bind(const CCaptureBoard* board, DWORD device_channel, tag_ZEBCAMERAID id);
  // From now on every call of the channel is ignored. Live data of an open camera stays.
  void ResetBinding();
  // True until the device library has stopped every stream that it started for this camera.
  bool MayBeCalled() const { return m_runs[0] || m_runs[1]; }

  // The identity as a word; kUnbound until bound.
  DWORD GetIdWord() const { return m_id; }
  DWORD GetDeviceChannel() const { return m_device_channel; }
  NoxdevHandle GetDeviceHandle() const { return m_device; }
  const CCaptureBoard* GetBoard() const { return m_board; }

  // Keeps the show settings, which stay the host's, or forgets them for null. When this returns no
  // call of the channel looks at those before. 0 when unbound.
  int SetShowParam(CShowParam* show);
  // Null without any.
  CShowParam* GetShowParam() const { return m_show; }

  // The open step. Every argument but `show` may be null; settings, masks and colour are copied.
  int Open(const CEncodeParam* settings, const CMaskList* masks, const CVideoColor* color,
           CShowParam* show);
  // Always 1. Does nothing for a camera that is not open. From inside the camera's own notification
  // the live data lives on until that notification returns.
  int Close();
  // Close, then stop the channel once more and forget the show settings. Always 0, on purpose.
  int Destroy();
  bool IsOpen() const;

  // Takes other encoder settings over, while open, and obeys the request bits.
  int RequestNextFrame(const CEncodeParam& settings, DWORD request_bits);
  // Gives the channel a speed. 0 without show settings or when the device refuses it. The rates of
  // an open camera start anew with its next frame.
  int SetSpeed(DWORD speed);
  // Gives the channel a show type; always 1.
  int SetShowType(DWORD show_type);

  // Lets the channel look for motion in one more mask and appends it to the list of the live data,
  // which then owns it, unless one that is equal is there. 0 while closed, for null and when the
  // device refuses it; the mask stays the caller's then.
  int AddMask(CMaskInfo* mask);
  // Removes all masks of an open camera; always 1.
  int DeleteAllMasks();

  // Give the channel a colour, and take what the channel has. Open or not.
  int SetColor(const CVideoColor& color) const;
  int GetColor(CVideoColor& color) const;
  // A still picture of the board's show size. Open or not.
  int GetPicture(CImage* image) const;
  // Writes the frames of the channel's pre-alarm buffer into the file. Open or not.
  int GetAlarmData(CZebFile* file) const;

  // What noxdevChStart is given, with the camera as the context.
  static int ChannelCallback(void* context, DWORD type, std::uintptr_t first, std::uintptr_t second,
                             void* packet);

  static constexpr DWORD kUnbound = 0xFFFFFFFF;

 private:
  using Live = std::shared_ptr<zebx::LiveStream>;

  Live GetLive() const;

  // Opening and closing: camera_opening.cpp.
  Live MakeLive(const CEncodeParam* settings, const CMaskList* masks) const;
  bool SetUp(zebx::LiveStream& live, const CVideoColor* color);
  bool StartStreams(const Live& live);
  bool StartStream(DWORD stream);
  void StopStream(DWORD stream);
  bool HasSecondStream() const;

  // What the channel calls for. Live frames stand in channel_callback.cpp; captions and faces have
  // sources of their own.
  void TakeLiveFrame(std::uintptr_t device, std::uintptr_t channel, void* packet);
  int FillCaption(std::uintptr_t device, std::uintptr_t draw_stream, tag_CAPTIONINFO* caption);
  void TakeFaces(std::uintptr_t device, const void* packet) const;
  // With m_mutex held.
  bool IsBoundTo(std::uintptr_t device) const;

  // Guards the members below while a call of the channel reads them, and the list of masks. Only
  // the host's calls change them, so these read them without it. Never held while the device
  // library or the host is called; a CShowParam's own lock may be taken while it is held.
  mutable std::mutex m_mutex;
  DWORD m_id = kUnbound;
  DWORD m_device_channel = kUnbound;
  NoxdevHandle m_device = nullptr;         // borrowed from the board's device
  const CCaptureBoard* m_board = nullptr;  // borrowed
  CShowParam* m_show = nullptr;            // the host's
  Live m_live;                             // null while closed
  bool m_is_closing = false;
  zebx::CaptionTexts m_caption_texts;  // memory that every caption uses again

  // Whether the device library may call for the channel and for the second stream.
  std::array<std::atomic<bool>, 2> m_runs = {};
};
