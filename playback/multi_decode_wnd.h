// Plays one recording in one of up to four panes that keep together.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "platform/os/windows/wnd.h"
#include "playback/play_messages.h"

class CImage;
class CShowParam;
class CZebFile;

class ZEBX_API CMultiDecodeWnd : public CWnd {
 public:
  CMultiDecodeWnd();
  ~CMultiDecodeWnd() override;

  int OpenDecodeWnd(HWND host_window, CShowParam* settings, int pane);
  void CloseDecodeWnd();
  int OpenVideo(const CString& file, int speed, int reserved_1, int reserved_2);
  void CloseVideo(int notify);

  void Pause();
  int IsPause();
  int PlayFrom(int block, int frame);
  int PlayFrom(CTime time);
  int StepNext();
  int StepPrev();
  void ChangePlaySpeed(int speed);
  int GetPlaySpeed();
  void EnableSound(int enable);
  void ResetPlay();
  void SetPlayTime(CTime time);

  CZebFile* GetZebFile();
  int GetPicture(CImage* image);
  int Lock();
  int Unlock();
  int IsRT8Port();
};
