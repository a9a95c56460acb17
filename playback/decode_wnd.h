// Plays one recording into a display window.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "playback/play_messages.h"

class CDecodeThread;
class CImage;
class CShowParam;
class CVideoData;
class CZebFile;

class ZEBX_API CDecodeWnd {
 public:
  CDecodeWnd();
  virtual ~CDecodeWnd();
  CDecodeWnd(const CDecodeWnd&) = delete;
  CDecodeWnd& operator=(const CDecodeWnd&) = delete;

  int OpenDecodeWnd(HWND host_window, int reserved, CShowParam* settings);
  void CloseDecodeWnd();
  int OpenVideo(const CString& file, int speed, int sound, int reserved);
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

  CZebFile* GetZebFile();
  int GetPicture(CImage* image);
  int Lock();
  int Unlock();
  int IsRT8Port();

  // For the decode thread alone.

  // `now` is the tick count of the pass; `audio_flag` 1 when the sound device asks for more.
  int OnDecode(int audio_flag, DWORD now);
  // In the thread of the decode thread's window. `opening` is the number that was posted with it:
  // another one than the current is dropped. The player may be gone when it returns.
  void OnVideoPlay(UINT code, LPARAM opening);
  // Counts openings over all players, so that none has a number twice; 0 when never opened.
  DWORD GetOpening() const;

  static CDecodeThread* s_pDecodeThread;
  static DWORD s_dwObjNum;
};
