// The source that plays files.
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/zebdev/software/channel_source.h"
#include "platform/zebdev/software/wav_loop.h"
#include "platform/zebdev/software/y4m_loop.h"

namespace zebx::zebdev {
namespace {

class FileSource final : public ChannelSource {
 public:
  CString OpenVideo(const CString& path) { return m_video.Open(path); }
  CString OpenSound(const CString& path) {
    m_sound = std::make_unique<WavLoop>();
    CString fault = m_sound->Open(path);
    if (!fault.empty()) m_sound = nullptr;
    return fault;
  }

  bool DrawPicture(ULONGLONG time_ms, noxcodec::Picture& picture) override {
    const noxcodec::Picture* const shown = m_video.PictureAt(time_ms);
    if (shown == nullptr) return false;
    m_is_repeated = m_video.PicturesRead() == m_drawn;
    m_drawn = m_video.PicturesRead();
    m_scaler.Scale(shown->View(), picture);
    return true;
  }
  bool IsRepeated() const override { return m_is_repeated; }
  bool ReadSound(std::span<std::int16_t> samples) override {
    return m_sound != nullptr && m_sound->Read(samples);
  }

 private:
  Y4mLoop m_video;
  ULONGLONG m_drawn = 0;  // pictures read when one was drawn last
  bool m_is_repeated = false;
  std::unique_ptr<WavLoop> m_sound;  // null without sound
  noxcodec::PictureScaler m_scaler;
};

}  // namespace

std::unique_ptr<ChannelSource> OpenFileSource(const CString& video_path, const CString& sound_path,
                                              CString* fault) {
  auto source = std::make_unique<FileSource>();
  CString what = source->OpenVideo(video_path);
  const bool is_open = what.empty();
  if (is_open && !sound_path.empty()) what = source->OpenSound(sound_path);
  if (fault != nullptr) *fault = what;
  return is_open ? std::move(source) : nullptr;
}

}  // namespace zebx::zebdev
