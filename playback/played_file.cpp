#include "playback/played_file.h"

#include "record/zeb_file.h"

namespace zebx {

std::unique_ptr<CVideoData> MakePlayedFrame(tag_ZEBCAMERAID camera) {
  constexpr DWORD kWidth = 352;
  constexpr DWORD kHeight = 288;
  return std::make_unique<CVideoData>(camera, kWidth, kHeight);
}

std::unique_ptr<CVideoData> OpenPlayedFile(const CString& path) {
  CZebFileInfo info;
  info.SetFileName(path);
  auto file = std::make_unique<CZebFile>();
  if (file->Open(&info, kZebFileRead) == 0) return nullptr;
  auto frame = MakePlayedFrame(file->GetCameraID());
  if (file->ReadOneFrame(frame.get(), kNextFrame, 0) == 0) return nullptr;
  frame->SetFile(file.get());
  static_cast<void>(file.release());
  return frame;
}

tag_PLAYPOS PositionOf(const CVideoData& frame) {
  const CZebFile& file = *frame.GetFile();
  const int block = frame.GetBlockIndex();
  const int index = frame.GetFrameIndex();
  return {.m_block = block,
          .m_frame = index,
          .m_file_frame = static_cast<DWORD>(file.GetFrameIndex(block, index)),
          .m_time = file.GetTime(frame.GetTimeStamp())};
}

}  // namespace zebx
