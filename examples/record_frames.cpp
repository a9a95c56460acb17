// Records frames as an encoder delivers them. The packets come out of another recording here, where
// a camera's would come out of its callback.
#include <zebx/zebx.h>

#include <algorithm>
#include <cstdio>

int main(int argc, char** argv) {
  CZebFileInfo camera;
  camera.SetFileName(argc == 3 ? argv[1] : "");
  CZebFile encoder;
  if (encoder.Open(&camera, kZebFileRead) == 0) {
    std::fprintf(stderr, "usage: record_frames FILE.zebz OUT.zebz (which is replaced)\n");
    return 2;
  }

  CZebFileInfo info;
  info.SetFileName(argv[2]);
  info.SetCameraID({0, 3});  // board and camera
  info.SetCameraName("gate");
  info.SetFrameSize(camera.GetFrameSize());
  info.SetBeginTime(CTime::GetCurrentTime());
  CZebFile recording;
  if (recording.Open(&info, kZebFileWrite) == 0) return 1;
  CZebFrameData packet;
  CZebFrameData frame;  // its buffers hold what packets of usual sizes bring
  while (encoder.ReadOneFrame(&packet, -1, 0) == 1) {
    frame.Reset();
    frame.SetFrameType(packet.GetFrameType());  // 0 for an I-frame
    frame.SetTimeStamp(packet.GetTimeStamp());  // milliseconds
    if (frame.SetVideoLength(packet.GetVideoLength()) == 0) return 1;
    std::copy_n(packet.GetVideoBuf(), packet.GetVideoLength(), frame.GetVideoBuf());
    if (recording.WriteOneFrame(&frame) != zebx::kFrameWritten) return 1;
  }
  std::printf("%d frames in %d blocks\n", recording.GetTotalFrame(), recording.GetTotalBlock());
  recording.Close();  // throws when the disk refuses the last bytes
}
