// A block of frames that the host has prepared, for CZebFile::WriteBlock.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"

class CFile;

// Implemented by the host; the library never makes one.
class ZEBX_API CFrameBlock : public CObject {
  DECLARE_DYNAMIC(CFrameBlock)

 public:
  // Bytes of frame data in the stream.
  virtual DWORD GetDataLength() const = 0;
  // Of the first frame.
  virtual DWORD GetTimeStamp() const = 0;
  virtual DWORD GetFrameNum() const = 0;
  virtual CTime GetBeginTime() const = 0;
  virtual CTime GetEndTime() const = 0;
  // The frames in file form, back to back from position 0, the first of them an I-frame. Borrowed
  // for the call of WriteBlock, which moves its position. Must not be null.
  virtual CFile* GetStream() = 0;
};
