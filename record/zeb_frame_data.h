// One compressed video frame of one camera with its speech, as capture hands it to the writer, the
// reader fills it and the players decode it.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "record/frame_format.h"

class CFile;

// Owns its two buffers. Their capacities are fixed by the constructor or CreateBuffer; an operation
// that would put more into a buffer than it holds fails and changes nothing. A length may say more
// than its buffer holds, as after CreateBuffer: such a frame is not written. A copy made by the
// copy constructor shares the buffers with its source; assignment copies the bytes. Used by one
// thread at a time.
class ZEBX_API CZebFrameData {
 public:
  // The video buffer holds width * height * 2 bytes, the speech buffer `audio_size`; a size of 0
  // makes no buffer. The time stamp is the current tick count. Throws std::bad_alloc.
  explicit CZebFrameData(DWORD width = 640, DWORD height = 240, DWORD audio_size = 65536);
  CZebFrameData(const CZebFrameData&);
  virtual ~CZebFrameData();

  // Buffer form: for a frame inside a larger byte message. Both advance the cursor and return the
  // number of bytes, or 0 with everything left as it was when the lengths do not fit the record's
  // buffers. Write needs GetSize() bytes. Read trusts the lengths in the buffer as far as the
  // record's own buffers go; the form with `end` also never reads at or behind `end`. A text that
  // is empty in the buffer leaves the record's text as it was.
  virtual DWORD Read(BYTE*& cursor);
  virtual DWORD Write(BYTE*& cursor) const;
  virtual DWORD GetSize() const;
  DWORD Read(BYTE*& cursor, const BYTE* end);

  // File form, at the file's position. Write returns the bytes written, in one system call; 0 for a
  // null file, a length without its buffer or a file error. Read answers 1, or 0 when the frame is
  // not whole, does not fit the buffers, or a file error occurs; a frame that does not fit leaves
  // the file behind it, with the record's lengths at 0. File and memory errors are reported.
  DWORD Write(CFile* file) const;
  int Read(CFile* file);
  // The same two with file and memory errors thrown to the caller. WriteTo needs IsWritable(); the
  // bytes of `before` go first, in the same system call, and do not count.
  DWORD WriteTo(CFile& file, std::span<const BYTE> before = {}) const;
  bool ReadFrom(CFile& file);
  // True when the buffers hold as many bytes as the lengths say.
  bool IsWritable() const;
  // The header of the file form.
  zebx::FrameHeader GetHeader() const;

  // Replaces both buffers, contents undefined, lengths unchanged.
  // 1, or 0 with nothing changed when either size is 0. Throws std::bad_alloc, nothing changed.
  int CreateBuffer(DWORD video_size, DWORD speech_size);
  // True when the buffers hold so many bytes.
  bool HasRoomFor(DWORD video_bytes, DWORD speech_bytes) const {
    return video_bytes <= m_video_capacity && speech_bytes <= m_speech_capacity;
  }
  // Replaces each buffer that is too small for the frame of `header`. Throws std::bad_alloc.
  void Reserve(const zebx::FrameHeader& header);
  // Copies everything but the texts and the rate statistics; bytes only where both buffers exist
  // and the source's holds its length, speech only with the voice flag. 1, or 0 with nothing
  // changed when the bytes do not fit.
  int operator=(const CZebFrameData& other);
  // Copies frame type, flags, time stamp and both texts. Always 1.
  int CopyHeader(const CZebFrameData& other);
  // Sets lengths, frame type, flags and time stamp to 0; everything else stays.
  void Reset();

  WORD GetFrameType() const { return m_frame_type; }
  void SetFrameType(WORD type) { m_frame_type = type; }
  bool IsIFrame() const { return m_frame_type == zebx::kIFrame; }
  WORD GetFlag() const { return m_flags; }
  void SetFlag(WORD flags) { m_flags = flags; }
  DWORD GetTimeStamp() const { return m_time_stamp; }
  void SetTimeStamp(DWORD time_stamp) { m_time_stamp = time_stamp; }

  DWORD GetVideoLength() const { return m_video_length; }
  // The caller puts the bytes into GetVideoBuf(). 1, or 0 without a buffer of that size.
  int SetVideoLength(DWORD length);
  // Borrowed; valid until CreateBuffer or the end of the record. Null without a buffer.
  BYTE* GetVideoBuf() const { return m_video.get(); }
  DWORD GetSpeechLength() const { return m_speech_length; }
  // The caller puts the bytes into GetSpeechBuf(); the length is not checked against it.
  void SetSpeechDataLen(DWORD length) { m_speech_length = length; }
  BYTE* GetSpeechBuf() const { return m_speech.get(); }
  // Copies the speech bytes. 1, or 0 with nothing changed without data, without the voice flag or
  // without a buffer of that size.
  int SetSpeechData(BYTE* data, DWORD length);

  // Where the reader found the frame: the block, and the frame inside its block.
  int GetBlockIndex() const { return m_block_index; }
  void SetBlockIndex(int block) { m_block_index = block; }
  int GetFrameIndex() const { return m_frame_index; }
  void SetFrameIndex(int frame) { m_frame_index = frame; }

  // Flag queries answer the masked bit; setters set the bit for every value but 0.
  int IsVideoLost() const { return m_flags & zebx::kFrameVideoLost; }
  void SetVideoLost(int lost) { SetBit(zebx::kFrameVideoLost, lost); }
  int IsVideoAlarm() const { return m_flags & zebx::kFrameVideoAlarm; }
  void SetVideoAlarm(int alarm) { SetBit(zebx::kFrameVideoAlarm, alarm); }
  int IsIOAlarm() const { return m_flags & zebx::kFrameIOAlarm; }
  void SetIOAlarm(int alarm) { SetBit(zebx::kFrameIOAlarm, alarm); }
  int IsAlarm() const { return m_flags & zebx::kFrameAlarm; }
  void SetAlarm() { SetBit(zebx::kFrameAlarm, 1); }
  int IsRT() const { return m_flags & zebx::kFrameRT; }
  void SetRT(int real_time) { SetBit(zebx::kFrameRT, real_time); }
  // Voice and audio are one bit.
  int IsVoice() const { return m_flags & zebx::kFrameVoice; }
  void SetVoice(int voice) { SetBit(zebx::kFrameVoice, voice); }
  void SetAudio(int audio) { SetBit(zebx::kFrameVoice, audio); }
  // 0 to 15. The setter only adds bits: it is meant for a record whose encoder bits are 0.
  BYTE GetEncoderType() const {
    return static_cast<BYTE>((m_flags & zebx::kFrameEncoderTypeMask) >> 4);
  }
  void SetEncoderType(BYTE type);

  // Rate texts for live display, "25f/s" and "12.34KB/s". CalcuCodeStatus counts this frame into
  // the current period, which runs from one I-frame to the next; ResetCodeStatus starts a new one.
  void CalcuCodeStatus();
  void ResetCodeStatus();
  CString GetFrameRate() const { return m_frame_rate; }
  CString GetCodeRate() const { return m_code_rate; }

 protected:
  // Bytes of the buffer form at the cursor; 0 when Read would refuse it.
  std::size_t BufferFormBytes(const BYTE* cursor, const BYTE* end) const;

 private:
  struct BufferForm;
  std::optional<BufferForm> ParseBufferForm(std::span<const BYTE> bytes) const;
  void SetBit(WORD bit, int on);
  bool HoldsVideo() const { return m_video_length <= m_video_capacity; }
  bool HoldsSpeech() const { return m_speech_length <= m_speech_capacity; }

  WORD m_frame_type = 0;
  WORD m_flags = 0;
  DWORD m_time_stamp = 0;
  DWORD m_video_length = 0;
  DWORD m_speech_length = 0;
  std::shared_ptr<BYTE[]> m_video;
  std::shared_ptr<BYTE[]> m_speech;
  DWORD m_video_capacity = 0;
  DWORD m_speech_capacity = 0;
  int m_block_index = 0;
  int m_frame_index = 0;  // doubles as the frame counter of the rate statistics
  DWORD m_period_start_stamp = 0;
  DWORD m_period_bytes = 0;
  CString m_frame_rate = "0.00f/s";
  CString m_code_rate = "0.00KB/s";
};
