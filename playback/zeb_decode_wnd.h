// Decodes a stream of frames that the host hands over one by one, and shows them in a window.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/os/windows/wnd.h"
#include "record/zeb_file_info.h"

class CImage;
class CShowParam;
class CVideoData;

class ZEBX_API CZebDecodeWnd : public CWnd {
 public:
  CZebDecodeWnd();
  ~CZebDecodeWnd() override;

  int OpenDecodeWnd(HWND parent, int (*notify)(DWORD, void*, DWORD), void* user_data,
                    CShowParam* settings, tag_FRAMESIZE frame_size);
  void CloseDecodeWnd();
  int DecodeOneFrame(CVideoData* frame);
  int DecodeAudio(CVideoData* frame, std::int16_t* buffer, DWORD length);
  void EnableAudio(int enable);
  int GetPicture(CImage* image);
  int IsRT8Port();
};
