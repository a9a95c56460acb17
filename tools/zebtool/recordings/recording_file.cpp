#include "tools/zebtool/recordings/recording_file.h"

#include "tools/zebtool/console/console.h"

namespace zebtool {

void OpenRecording(CFile& file, const std::string& path) {
  CFileException error(CFileException::Cause::kGeneric, 0, path);
  if (file.Open(path, CFile::kModeRead | CFile::kShareDenyNone, &error) == 0) {
    throw JobError("cannot open '" + path + "': " + error.what());
  }
}

void OpenRecording(CZebFile& file, const std::string& path) {
  CFile raw;
  OpenRecording(raw, path);  // says why, when it cannot be opened at all
  CZebFileInfo info;
  info.SetFileName(path);
  if (file.Open(&info, kZebFileRead) == 0) {
    throw JobError("'" + path +
                   "' has no readable header, or no frame in any finished block; "
                   "'zebtool verify' says what is wrong, 'zebtool salvage' saves its frames");
  }
}

}  // namespace zebtool
