// Records what a camera delivers into a new recording. The camera here is another recording.
#include <zebx/zebx.h>

#include <cstdio>

int main(int argc, char** argv) {
  CZebFileInfo camera_info;
  camera_info.SetFileName(argc > 2 ? argv[1] : "");
  CZebFile camera;
  if (camera.Open(&camera_info, kZebFileRead) == 0) {
    std::fprintf(stderr, "usage: record_frames CAMERA.zebz NEW.zebz (which is overwritten)\n");
    return 2;
  }
  CZebFileInfo info;
  info.SetFileName(argv[2]);
  info.SetCameraName("gate");
  info.SetFrameSize(camera_info.GetFrameSize());
  CZebFile recording;
  if (recording.Open(&info, kZebFileWrite) == 0) return 1;
  CZebFrameData frame;
  while (camera.ReadOneFrame(&frame, -1, 0) == 1) {
    if (recording.WriteOneFrame(&frame) != zebx::kFrameWritten) return 1;
  }
  recording.Close();  // without it the last block is not finished
}
