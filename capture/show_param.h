// How one camera's picture is shown: its window, captions and marks; and the pictures that stand
// for the states of all cameras.
#pragma once

#include <atomic>
#include <mutex>

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "platform/noxdisplay/streams.h"

class CBitmap;
class CDibObj;
class CImage;
class CVideoData;

namespace zebx {

// What the captions of a picture say, as of one moment.
struct CaptionTexts {
  CString m_host_name;
  CString m_board_name;
  CString m_camera_name;
  CString m_time_begin;
  CString m_time_end;
  CString m_time_cur;
  DWORD m_color = 0x00FFFF00;
};

}  // namespace zebx

// Plain data until Create gives it a window. The host owns it and keeps it alive for as long as a
// camera or player has it; window and draw stream are borrowed. A copy has every value of the
// original, window and draw stream included. What takes a text throws std::bad_alloc, with nothing
// changed.
//
// Any thread may use it at any time except to destroy it: devices read captions while the host
// changes them. One lock of each object guards its texts, its colour and the current time; the
// other values are single words that need none. Another lock guards the pictures that all objects
// share. Neither is held while the display is called or a picture destroyed.
class ZEBX_API CShowParam {
 public:
  // Status flags, in one word.
  enum Flag : DWORD {
    kCaptionFlag = 0x001,
    kDecoderFlag = 0x002,
    kActiveFlag = 0x004,
    kAlarmFlag = 0x008,
    kProgrammingFlag = 0x010,
    kIdleFlag = 0x020,
    kMonitorFlag = 0x040,
    kPreviewAudioFlag = 0x080,
    kRecordFlag = 0x100,
  };

  // No window, no stream, no flags, no texts, a scale of 100.
  CShowParam();
  CShowParam(const CShowParam& other);
  CShowParam& operator=(const CShowParam& other);

  // The virtual operations stand in the order in which derived classes of a host find them.
  virtual void SetCameraName(const CString& name);
  // These store a time of day: local time as "%H:%M:%S".
  virtual void SetTimeBegin(CTime time);
  virtual void SetTimeEnd(CTime time);
  virtual void SetAlarm(int is_set);
  virtual void SetProgramming(int is_set);
  // 0x00BBGGRR.
  virtual void SetCaptionColor(DWORD color);
  // Gives it a window; the word is only kept. Always 1.
  virtual int Create(HWND window, int create_word);
  // Draws the stream's picture into the window, or the idle picture without a stream; the argument
  // is not used. Always 1.
  virtual int Show(CVideoData* frame);
  // Puts the names and the current time, but no picture, into the image; nothing for null and
  // without a stream. Always 0.
  virtual int GetImage(CImage* image);
  // These are for derived classes that have a stream of their own; here they do nothing and are 1.
  virtual int IsDrawStreamOpen();
  virtual int CreateDrawStream(DWORD width, DWORD height);
  virtual int CreateIMEDrawStream(DWORD width, DWORD height);
  virtual int DestroyDrawStream();
  virtual ~CShowParam();

  void SetHostName(const CString& name);
  void SetBoardName(const CString& name);
  CString GetHostName() const;
  CString GetBoardName() const;
  CString GetCameraName() const;

  // These store a text as it is.
  void SetTimeBegin(const CString& text);
  void SetTimeEnd(const CString& text);
  // Stores the time and its text; the second one the text only, and the time stays.
  void SetTimeCur(CTime time);
  void SetTimeCur(const CString& text);
  CString GetTimeBegin() const;
  CString GetTimeEnd() const;
  CString GetTimeCur() const;

  DWORD GetCaptionColor() const;
  // All texts and the colour of one moment. Texts that fit into what `texts` has reserved already
  // need no memory; those that do may be half copied when std::bad_alloc is thrown.
  void GetCaptionTexts(zebx::CaptionTexts* texts) const;

  // In percent.
  void SetScale(DWORD percent) { m_scale = percent; }
  DWORD GetScale() const { return m_scale; }
  // As text, "100%".
  CString GetScaleName() const;

  // Each setter sets its flag for any value but 0, and each query answers the flag's bit itself or
  // 0.
  void ShowCaption(int is_set) { SetFlag(kCaptionFlag, is_set); }
  void SetDecoder(int is_set) { SetFlag(kDecoderFlag, is_set); }
  void SetActive(int is_set) { SetFlag(kActiveFlag, is_set); }
  void SetIdle(int is_set) { SetFlag(kIdleFlag, is_set); }
  void SetMonitor(int is_set) { SetFlag(kMonitorFlag, is_set); }
  void SetPreviewAudio(int is_set) { SetFlag(kPreviewAudioFlag, is_set); }
  void SetRecord(int is_set) { SetFlag(kRecordFlag, is_set); }
  int IsShowCaption() const { return TestFlag(kCaptionFlag); }
  int IsDecoder() const { return TestFlag(kDecoderFlag); }
  int IsActive() const { return TestFlag(kActiveFlag); }
  int IsAlarm() const { return TestFlag(kAlarmFlag); }
  int IsProgramming() const { return TestFlag(kProgrammingFlag); }
  int IsIdle() const { return TestFlag(kIdleFlag); }
  int IsMonitor() const { return TestFlag(kMonitorFlag); }
  int IsPreviewAudio() const { return TestFlag(kPreviewAudioFlag); }
  int IsRecord() const { return TestFlag(kRecordFlag); }
  // All flags of one moment.
  DWORD GetFlags() const { return m_flags; }

  void SetDrawStream(NoxshowStream stream) { m_draw_stream = stream; }
  NoxshowStream GetDrawStream() const { return m_draw_stream; }
  HWND GetWnd() const { return m_window; }

  // The pictures for a lost, a working and an idle camera. Both arguments may be null, and both
  // become the class's: it destroys what it replaces, with the operating system's bitmap, and keeps
  // what is given again or for another state too. The last ones stay to the end of the process. The
  // display gets the DIB's picture, or that of the bitmap when there is no DIB.
  static void SetVideoLostImage(CDibObj* dib, CBitmap* bitmap);
  static void SetWorkingImage(CDibObj* dib, CBitmap* bitmap);
  static void SetIdleImage(CDibObj* dib, CBitmap* bitmap);
  // Borrowed; valid until they are replaced. A null argument is left out.
  static void GetVideoLostImage(CDibObj** dib, CBitmap** bitmap);
  static void GetWorkingImage(CDibObj** dib, CBitmap** bitmap);
  static void GetIdleImage(CDibObj** dib, CBitmap** bitmap);
  // The marks of a picture, owned and shown likewise.
  static void SetActiveBmp(CBitmap* bitmap);
  static void SetRecordBmp(CBitmap* bitmap);
  static void SetAudioBmp(CBitmap* bitmap);
  static void SetAlarmBmp(CBitmap* bitmap);
  static void SetProgramBmp(CBitmap* bitmap);
  // Gives the display the bitmaps anew after its surfaces were lost: those that were set, neither
  // the DIBs nor the program mark. A host sets these again itself.
  static void Restore();

 private:
  // One of the pictures below with its number.
  struct StatusPicture;

  static CDibObj* m_pDibVideoLost;
  static CDibObj* m_pDibWorking;
  static CDibObj* m_pDibIdle;
  static CBitmap* m_pBmpVideoLost;
  static CBitmap* m_pBmpWorking;
  static CBitmap* m_pBmpIdle;
  static CBitmap* m_pBmpActive;
  static CBitmap* m_pBmpRecord;
  static CBitmap* m_pBmpAudio;
  static CBitmap* m_pBmpAlarm;
  static CBitmap* m_pBmpProgram;

  void SetFlag(Flag flag, int is_set);
  int TestFlag(Flag flag) const { return static_cast<int>(m_flags & flag); }
  void StoreText(CString zebx::CaptionTexts::*field, CString text);
  CString LoadText(CString zebx::CaptionTexts::*field) const;

  std::atomic<NoxshowStream> m_draw_stream = nullptr;
  std::atomic<DWORD> m_flags = 0;
  std::atomic<DWORD> m_scale = 100;
  std::atomic<HWND> m_window = nullptr;
  std::atomic<int> m_create_word = 0;

  mutable std::mutex m_mutex;  // guards what follows
  zebx::CaptionTexts m_texts;
  CTime m_current_time;
};
