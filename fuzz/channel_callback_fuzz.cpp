// Calls of a channel in any order and with any packet, while the host opens and closes the camera:
// whatever a packet's heads say, nothing outside what they say is read, and nothing outside the
// camera's buffers is written. The input is a row of calls: what is done, what its words are, a
// 16-bit length, and the bytes that it is done with.
#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <vector>

#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/show_param.h"
#include "capture/video_data.h"
#include "capture/zebx.h"
#include "fuzz/sparse_disk.h"
#include "platform/framework/byte_order.h"

#include "platform/zebdev/software/virtual_channels.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "record/mox_face.h"
#include "record/zeb_file.h"

using namespace zebx;

namespace {

constexpr DWORD kFrameSize = 135;

void Require(bool condition) {
  if (!condition) std::abort();
}

void Look(std::span<const BYTE> bytes) {
  static_cast<void>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

// A host that looks at everything it is given.
DWORD Listen(DWORD code, std::uintptr_t, std::uintptr_t first, std::uintptr_t second) {
  if (code == ZEBX_MSG_FRAME) {
    const auto& frame = *std::bit_cast<const CVideoData*>(second);
    Require(frame.IsWritable());
    Look({frame.GetVideoBuf(), frame.GetVideoLength()});
    if (frame.IsVoice() != 0) Look({frame.GetSpeechBuf(), frame.GetSpeechLength()});
    return 0;
  }
  auto* const faces = std::bit_cast<CMoxFace**>(second);
  for (CMoxFace* face : std::span(faces, first)) {
    const auto pixels = static_cast<std::size_t>(face->GetSize().cx * face->GetSize().cy);
    if (face->GetYBuf() != nullptr) Look({face->GetYBuf(), pixels});
    delete face;
  }
  delete[] faces;
  return 0;
}

// The packet that a channel would bring with these bytes at its front: as long as its heads say, up
// to what the library takes, and not a byte longer. Where the input ends, zeros follow.
class Packet {
 public:
  explicit Packet(std::span<const BYTE> bytes) : m_front(bytes) {}

  std::vector<BYTE> OfFrame() const {
    constexpr ULONGLONG kMostBytes = 1 << 20;
    ULONGLONG size = sizeof(tag_DEVFRAME);
    size += At<DWORD>(offsetof(tag_DEVFRAME, m_video_bytes));
    if ((At<DWORD>(offsetof(tag_DEVFRAME, m_flags)) & zebdev::kPacketHasSpeech) != 0) {
      size += At<DWORD>(offsetof(tag_DEVFRAME, m_speech_bytes));
    }
    return OfSize(size <= kMostBytes ? size : sizeof(tag_DEVFRAME));
  }
  std::vector<BYTE> OfFaces() const {
    constexpr DWORD kMostFaces = 64;
    constexpr std::size_t kMostBytes = 4 << 20;
    const auto count = At<DWORD>(offsetof(tag_FACEPACKET, m_count));
    std::size_t size = sizeof(tag_FACEPACKET);
    for (DWORD i = 0; i < count && count <= kMostFaces; ++i) {
      const std::size_t pixels = std::size_t{At<WORD>(size + 4)} * At<WORD>(size + 6);
      size += CMoxFace::kRecordHeaderBytes;
      if (size + pixels > sizeof(tag_FACEPACKET) + kMostBytes) break;
      size += pixels;
    }
    return OfSize(size);
  }
  std::vector<BYTE> OfSize(std::size_t size) const {
    std::vector<BYTE> packet(size);
    std::copy_n(m_front.begin(), std::min(size, m_front.size()), packet.begin());
    return packet;
  }

 private:
  template <typename Number>
  Number At(std::size_t offset) const {
    std::array<BYTE, sizeof(Number)> bytes = {};
    if (offset < m_front.size()) {
      std::copy_n(m_front.begin() + static_cast<std::ptrdiff_t>(offset),
                  std::min(bytes.size(), m_front.size() - offset), bytes.begin());
    }
    return ByteReader(bytes).Get<Number>();
  }

  std::span<const BYTE> m_front;
};

// The library with one open board; its camera is opened and closed by the calls.
class Host {
 public:
  Host() {
    zebdev::SetDevicePlan({zebdev::MakeVirtualDevice(0x040, 4)});
    zebdev::SetDrive(zebdev::Drive::kStepped);
    Require(zebxInitZebx(0, Listen, 0, nullptr, "d:\\dev") == 1);
    Require(zebxOpenBoard(0, kFrameSize, 25) == 1);
    for (LONG left = 0; left < 6; ++left) {
      auto mask = std::make_unique<CMaskInfo>();
      const CRect blocks{left, 1, left + 2, 3};
      mask->SetMBRect(&blocks, tag_FRAMESIZE{kFrameSize});
      m_masks.AddMaskInfo(mask.release());
    }
    m_camera = GetCaptureApp().FindCamera(&m_id).get();
    m_handle = reinterpret_cast<std::uintptr_t>(m_camera->GetDeviceHandle());
  }

  // Everything as at first.
  void Begin() {
    zebxCloseCamera(&m_id);
    Open();
    CZebFileInfo info;
    info.SetFileName("alarm");
    Require(m_file.Open(&info, kZebFileWrite) == 1);
  }
  void End() { m_file.Close(); }

  void Open() { zebxOpenCamera(&m_id, 0, nullptr, &m_masks, nullptr, &m_show); }

  // One call, as the bytes say: what is done, what the words are, and the packet.
  void Obey(BYTE what, BYTE words, std::span<const BYTE> bytes) {
    const std::uintptr_t device = (words & 7) == 0 ? words : m_handle;
    const Packet packet(bytes);
    switch (what % 8) {
      case 0:
        return Call(kNoxdevLiveFrame, device, words >> 6, packet.OfFrame());
      case 1:
        return Call(kNoxdevCaptionRequest, device, words, packet.OfSize(sizeof(tag_CAPTIONINFO)));
      case 2:
        return Call(kNoxdevPreAlarmFrame, (words & 1) != 0 ? 0 : Word(m_file),
                    (words & 2) != 0 ? 0 : Word(m_scratch), packet.OfFrame());
      case 3:
        return Call(kNoxdevFaces, device, words, packet.OfFaces());
      case 4:
        m_show.SetCameraName({bytes.begin(), bytes.end()});
        return m_show.ShowCaption(words & 1);
      case 5:
        zebxCloseCamera(&m_id);
        return;
      case 6:
        return Open();
      default:
        return Call(DWORD{words} << 8, m_handle, 0, packet.OfFrame());
    }
  }

 private:
  template <typename Object>
  static std::uintptr_t Word(Object& object) {
    return reinterpret_cast<std::uintptr_t>(&object);
  }
  void Call(DWORD type, std::uintptr_t first, std::uintptr_t second, std::vector<BYTE> packet) {
    CCaptureCamera::ChannelCallback(m_camera, type, first, second, packet.data());
    CCaptureCamera::ChannelCallback(nullptr, type, first, second, packet.data());
  }

  tag_ZEBCAMERAID m_id;
  CMaskList m_masks;
  CShowParam m_show;
  CCaptureCamera* m_camera = nullptr;
  std::uintptr_t m_handle = 0;
  CZebFile m_file;
  CZebFrameData m_scratch;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  const SparseDisk disk;
  static Host& host = *new Host;
  host.Begin();
  ByteReader calls({data, size});
  while (calls.Remaining() != 0) {
    const auto what = calls.Get<BYTE>();
    const auto words = calls.Get<BYTE>();
    const std::size_t bytes = calls.Get<WORD>();
    host.Obey(what, words, calls.Take(std::min(bytes, calls.Remaining())));
  }
  host.End();
  return 0;
}
