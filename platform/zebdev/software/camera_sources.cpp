#include "platform/zebdev/software/camera_sources.h"

#include <mutex>
#include <stdexcept>
#include <utility>

#include "platform/framework/error_report.h"
#include "platform/framework/file_system.h"
#include "platform/noxcodec/software/picture_scaler.h"

namespace zebx::zebdev {
namespace {

class SecondStream final : public ChannelSource {
 public:
  explicit SecondStream(std::shared_ptr<ChannelState> camera) : m_camera(std::move(camera)) {}

  bool DrawPicture(ULONGLONG, noxcodec::Picture& picture) override {
    if (!m_camera->m_latest.CopyTo(m_full)) return false;
    m_scaler.Scale(m_full.View(), picture);
    return true;
  }

 private:
  const std::shared_ptr<ChannelState> m_camera;
  noxcodec::Picture m_full;
  noxcodec::PictureScaler m_scaler;
};

class GuardedSource final : public ChannelSource {
 public:
  explicit GuardedSource(std::shared_ptr<ChannelSource> source) : m_source(std::move(source)) {}

  bool DrawPicture(ULONGLONG time_ms, noxcodec::Picture& picture) override {
    const std::lock_guard lock(m_mutex);
    return m_source->DrawPicture(time_ms, picture);
  }
  bool IsRepeated() const override {
    const std::lock_guard lock(m_mutex);
    return m_source->IsRepeated();
  }
  bool IsCompressed() const override {
    const std::lock_guard lock(m_mutex);
    return m_source->IsCompressed();
  }
  bool ReadFrame(ULONGLONG time_ms, bool needs_i_frame, CompressedFrame& frame) override {
    const std::lock_guard lock(m_mutex);
    return m_source->ReadFrame(time_ms, needs_i_frame, frame);
  }
  bool ReadSound(std::span<std::int16_t> samples) override {
    const std::lock_guard lock(m_mutex);
    return m_source->ReadSound(samples);
  }
  std::vector<FaceArea> Faces() const override {
    const std::lock_guard lock(m_mutex);
    return m_source->Faces();
  }

 private:
  mutable std::mutex m_mutex;
  const std::shared_ptr<ChannelSource> m_source;  // guarded by m_mutex
};

bool IsThere(const CString& path) {
  const auto status = CurrentFileSystem().Status(path);
  return status && !status->m_is_directory;
}

// Hosts put a backslash behind their directory, also behind a native one.
CString WithSeparator(CString directory) {
  const bool has_drive = directory.size() > 1 && directory[1] == ':';
  while (!directory.empty() && (directory.back() == '\\' || directory.back() == '/')) {
    directory.pop_back();
  }
  return directory + (has_drive ? "\\" : "/");
}

}  // namespace

std::shared_ptr<ChannelSource> OpenCamera(const CString& directory, DWORD number) {
  const CString path = WithSeparator(directory) + "camera" + std::to_string(number);
  if (!IsThere(path + ".y4m")) return MakeStreetSource(number);
  CString fault;
  std::shared_ptr<ChannelSource> source =
      OpenFileSource(path + ".y4m", IsThere(path + ".wav") ? path + ".wav" : "", &fault);
  if (!fault.empty()) ReportError(std::runtime_error(fault));
  return source;
}

std::shared_ptr<ChannelSource> MakeSecondStream(std::shared_ptr<ChannelState> camera) {
  return std::make_shared<SecondStream>(std::move(camera));
}

std::shared_ptr<ChannelSource> MakeGuarded(std::shared_ptr<ChannelSource> source) {
  return std::make_shared<GuardedSource>(std::move(source));
}

}  // namespace zebx::zebdev
