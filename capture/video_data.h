// A frame of one camera with the camera's settings: what an open camera hands to the host, and what
// the players read their frames into.
#pragma once

#include <memory>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "record/zeb_file_info.h"
#include "record/zeb_frame_data.h"

class CEncodeParam;
class CMaskList;
class CZebFile;

// Owns camera id, masks, encoder settings and the attached file, if any. A copy made by the copy
// constructor shares all of them and the buffers with its source: what one changes in them the
// other sees, and whoever lets go of the file last closes it. Used by one thread at a time. What an
// open camera hands to the host is the camera's own: valid during the notification, and overwritten
// by the next frame.
class ZEBX_API CVideoData : public CZebFrameData {
 public:
  // A frame record of width * height * 2 video bytes and 65,536 speech bytes, no masks, default
  // settings and no file. Throws std::bad_alloc.
  CVideoData(tag_ZEBCAMERAID camera, DWORD width, DWORD height);
  CVideoData(const CVideoData&);
  // Lets go of an attached file, as SetFile(nullptr) does.
  ~CVideoData() override;
  // Assigns the frame record and the YUV flag; masks, settings, file and post-process flag stay. 1,
  // or 0 with nothing changed when the bytes do not fit.
  int operator=(const CVideoData& other);

  // Borrowed; valid as long as this object or a copy of it.
  tag_ZEBCAMERAID* GetCameraID() const { return m_camera.get(); }
  CMaskList* GetMaskList() const { return m_masks.get(); }
  CEncodeParam* GetEncodeParam() const { return m_encode_param.get(); }

  // Lets go of the attached file and takes over another, or null. A file that no copy holds any
  // more is closed and destroyed; an error of the disk is reported. The attached file given again
  // stays attached; one that another object holds must not be given. Always 1. Throws
  // std::bad_alloc for a new file, with nothing changed and the file still the caller's.
  int SetFile(CZebFile* file);
  // Borrowed; null without a file.
  CZebFile* GetFile() const { return m_file.get(); }

  // Flags of whoever decodes the frame: kept and copied here, nothing else.
  void EnablePostProcess(int is_on) { m_is_post_process = is_on; }
  int IsPostProcess() const { return m_is_post_process; }
  void SetYUV(int is_yuv) { m_is_yuv = is_yuv; }
  int IsYUV() const { return m_is_yuv; }
  // Does nothing: the buffers keep the size they were made with.
  void SetSize(DWORD width, DWORD height);

  // Byte form: the frame record's, then the mask list's; no settings. The cursor advances; the
  // answer is the bytes moved. Write needs GetSize() bytes. 0, with the cursor and everything else
  // as it was, for a frame that does not fit its buffers, for bytes that are not whole before
  // `end`, and without the memory, which is reported. Without `end` the count of masks is trusted.
  DWORD Read(BYTE*& cursor) override;
  DWORD Write(BYTE*& cursor) const override;
  DWORD GetSize() const override;
  DWORD Read(BYTE*& cursor, const BYTE* end);
  // The file form is the frame record's alone.
  using CZebFrameData::Read;
  using CZebFrameData::Write;

 private:
  std::shared_ptr<tag_ZEBCAMERAID> m_camera;
  std::shared_ptr<CMaskList> m_masks;
  std::shared_ptr<CEncodeParam> m_encode_param;
  std::shared_ptr<CZebFile> m_file;
  [[maybe_unused]] DWORD m_spare = 0;  // goes along with copies; has no use yet
  int m_is_post_process = 1;
  int m_is_yuv = 0;
};
