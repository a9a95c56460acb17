// A snapshot: one picture with where and when it was taken, and its file.
#pragma once

#include <memory>
#include <vector>

#include "capture/picture_formats.h"
#include "platform/framework/export.h"
#include "platform/framework/types.h"

class CFile;
struct tag_RGBIMAGE;  // a host's own picture record; nothing of it is read

// Formats of a snapshot file. Formats 1 and 2 are accepted, and neither written nor read.
enum ImageFormat : DWORD { kImageBmp = 0, kImageJpg = 1, kImageReserved = 2 };

// A value whose copies share the picture: it lives as long as any of them holds it. Pictures have 3
// bytes a pixel and unpadded rows of width * 3 bytes. Used by one thread at a time.
class ZEBX_API CImage {
 public:
  CImage();
  CImage(const CImage&);
  CImage& operator=(const CImage&);
  ~CImage();

  // Each setter marks its value as present, and each getter answers an empty value for one that is
  // not. Host name and gmt share a mark: setting either makes both present.
  void SetBoardName(const CString& name);
  void SetCameraName(const CString& name);
  void SetHostName(const CString& name);
  void SetTimeStamp(DWORD time_stamp);
  void SetGmt(int gmt);
  CString GetBoardName() const;
  CString GetCameraName() const;
  CString GetHostName() const;
  DWORD GetTimeStamp() const;
  int GetGmt() const;

  // In pixels: of the picture held. Without one, what the last fill or load asked for in vain.
  DWORD GetImageWidth() const { return m_width; }
  DWORD GetImageHeight() const { return m_height; }
  // Borrowed; valid until the picture is replaced here and in every copy. Null when there is none.
  BYTE* GetRawImage() const { return m_raw_image.get(); }
  // Bytes of the file loaded last, modulo 2^32.
  DWORD GetLength() const { return m_length; }

  // Takes over a picture of width * height * 3 bytes made by new BYTE[], not copied; the one held
  // already only changes its sizes. Always 1.
  int CreateImage(BYTE* buffer, DWORD width, DWORD height);
  // Copies a picture of 3 or 4 bytes a pixel (the fourth is dropped) with rows |pitch| bytes apart.
  // A negative pitch takes the rows from the last in the buffer to the first. With `zoom` the copy
  // is twice as wide and high, new pixels being means of their neighbours; its last two rows stay
  // 0. `source` may lie in the picture held. 1, or 0 for no source and another pixel size, and
  // without a picture for more than 2^32 bytes or more than the memory has.
  int FillRawImage(const BYTE* source, DWORD width, DWORD height, int pitch, DWORD bytes_per_pixel,
                   int zoom);
  // Sets width and height to the show size of a frame size and nothing else: the picture held, if
  // any, is the caller's to replace by one of that size. 1, or 0 for null and an unknown frame
  // size.
  int FillRawImage(const tag_RGBIMAGE* image, tag_FRAMESIZE frame_size);

  // Writes the snapshot file; ".bmp" is added to a path that does not end so, and an empty path
  // means capture.bmp. 1 for the formats 0 to 2, whether or not a file was written: none is when it
  // cannot be created, or when width and height tell of a larger picture than is held. 0 without a
  // picture and for another format. Throws CFileException when the disk refuses the bytes.
  int SaveImageAs(ImageFormat format, const CString& path);
  // Reads the snapshot file. 1 when a picture is held afterwards, also one from before; 0 for a
  // format other than 0 to 2. A file that is no uncompressed 24-bit picture, does not hold it
  // whole, or holds a larger one than the memory, leaves a picture held with its sizes; without
  // one, width and height become those that the file claims. Rows that come from the top down (a
  // negative height) are turned over. A file whose trailer is cut short or has a name of more than
  // 255 bytes gives what stands before that. Throws CFileException when the disk fails.
  int LoadImageAs(ImageFormat format, const CString& path);

 protected:
  void SaveAsBMP();
  void LoadAsBMP();
  // Does nothing: no such reader exists.
  void LoadAsJPG();

 private:
  std::vector<BYTE> FormatTrailer() const;
  void ReplaceRawImage(std::shared_ptr<BYTE[]> raw_image, ULONGLONG bytes);
  bool LoadPicture(CFile& file);
  void LoadTrailer(CFile& file);

  BYTE m_info_flags = 0;
  DWORD m_time_stamp = 0;
  CString m_board_name;
  CString m_camera_name;
  CString m_host_name;
  int m_gmt = 0;
  DWORD m_width = 0;
  DWORD m_height = 0;
  std::shared_ptr<BYTE[]> m_raw_image;
  ULONGLONG m_raw_image_bytes = 0;  // of m_raw_image, whatever width and height say
  CString m_file_name;
  DWORD m_length = 0;
};
