// Everything a host can do with a recording it did not make.
#pragma once

#include "platform/framework/file_exception.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

// Opens the file at `path` in a memory file system and asks, reads, clips and copies it; it is up
// to sanitizers to find fault. Files "clip" and "alarm" are overwritten. False when it does not
// open.
inline bool ExerciseRecording(const CString& path) {
  CZebFileInfo info;
  info.Create(path);
  info.SetFileName(path);
  CZebFile file;
  if (file.Open(&info, kZebFileRead) == 0) return false;

  CZebFrameData frame(16, 16, 256);
  // A last block may announce thousands of frames that are not there: a few of those will do.
  constexpr int kMissingFrames = 8;
  int frames = 0;
  for (int missing = 0; missing < kMissingFrames; ++frames) {
    if (file.ReadOneFrame(&frame, -1, 0) == 0) break;
    missing = frame.GetVideoLength() == 0 ? missing + 1 : 0;
  }
  const int blocks = file.GetTotalBlock();
  for (int block = -1; block <= blocks; ++block) {
    file.GetFrameNumOfBlock(block);
    file.GetBlockTime(block);
    file.GetBlockTimeStamp(block);
    if (block >= 0 && block % 16 == 0) file.ReadOneFrame(&frame, block, block % 7);
  }
  file.GetFrameIndex(blocks, frames);
  int block = 0;
  int index = 0;
  file.GetFilePos(block, index);
  file.ReadOneFrame(&frame, 0, 0x7FFFFFFF);
  try {
    file.ClipFile("clip", 0, blocks, 0);
    file.ClipFile("clip", blocks / 2, blocks - 1, 3);
    CZebFileInfo alarm_info;
    alarm_info.SetFileName("alarm");
    CZebFile alarm;
    if (alarm.Open(&alarm_info, kZebFileWrite) == 1) file.AlarmPreviewData(&alarm, 3);
    alarm.Close();
  } catch (const CFileException&) {
    return true;
  }
  return true;
}
