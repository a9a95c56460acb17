// Lists the frames of a recording and decodes the first picture of every block.
#include <zebx/zebx.h>

#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
  CZebFileInfo info;
  info.SetFileName(argc > 1 ? argv[1] : "");
  CZebFile file;
  if (file.Open(&info, kZebFileRead) == 0) {
    std::fprintf(stderr, "usage: list_recording FILE.zebz (a recording with at least one block)\n");
    return 2;
  }
  DWORD width = 0;
  DWORD height = 0;
  NxcHandle decoder = nullptr;
  if (zebxGetEncodeSize(info.GetFrameSize(), &width, &height) == 0 ||
      nxcCreateVideoDecoder(&decoder, 0, width, height, 0) != 0) {
    return 1;
  }
  std::vector<BYTE> picture(std::size_t{4} * width * height);
  CZebFrameData frame;
  while (file.ReadOneFrame(&frame, -1, 0) == 1) {
    std::printf("block %d frame %d at %s: %u bytes%s\n", frame.GetBlockIndex(),
                frame.GetFrameIndex(),
                info.GetTime(frame.GetTimeStamp()).Format("%H:%M:%S").c_str(),
                frame.GetVideoLength(), frame.IsIFrame() ? ", I-frame" : "");
    if (frame.GetFrameIndex() > 0) continue;
    nxcDecodeVideo(decoder, frame.GetFrameType(), frame.GetVideoBuf(), frame.GetVideoLength());
    if (nxcGetVideo(decoder, picture.data(), kNxcFormatBgrx, static_cast<int>(4 * width), 0) == 0) {
      std::printf("  decoded, its middle pixel is #%02x%02x%02x\n", picture[picture.size() / 2 + 2],
                  picture[picture.size() / 2 + 1], picture[picture.size() / 2]);
    }
  }
  nxcDestroyHandle(decoder);
}
