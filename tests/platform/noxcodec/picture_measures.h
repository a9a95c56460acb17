// Pictures and media to encode, and measures of what comes back.
#pragma once

#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/zebdev/software/street_scene.h"

using OwnedDecoder = std::unique_ptr<NxcDecoder, decltype(&nxcDestroyHandle)>;

// Null when it is refused.
inline OwnedDecoder MakeVideoDecoder(DWORD width, DWORD height) {
  NxcHandle handle = nullptr;
  nxcCreateVideoDecoder(&handle, 1, width, height, 0);
  return {handle, nxcDestroyHandle};
}
inline OwnedDecoder MakeAudioDecoder() {
  NxcHandle handle = nullptr;
  nxcCreateAudioDecoder(&handle, 0);
  return {handle, nxcDestroyHandle};
}

// The next number of `bits` bits that looks random and is the same on every machine.
inline int Roll(DWORD& dice, int bits) {
  dice = dice * 1664525 + 1013904223;
  return static_cast<int>(dice >> (32 - bits));
}

// The first `count` pictures of the generated street.
inline std::vector<zebx::noxcodec::Picture> StreetPictures(int width, int height, int count) {
  const zebx::zebdev::StreetScene scene(width, height);
  std::vector<zebx::noxcodec::Picture> pictures(static_cast<std::size_t>(count));
  for (DWORD i = 0; i < pictures.size(); ++i) scene.Render(i, pictures[i]);
  return pictures;
}

// A picture whose pixels are what `value` says for their plane and place, in order.
template <typename Value>
zebx::noxcodec::Picture DrawPicture(int width, int height, Value value) {
  zebx::noxcodec::Picture picture(width, height);
  for (int plane = 0; plane < zebx::noxcodec::kPlaneCount; ++plane) {
    const auto view = picture.Plane(plane);
    for (int y = 0; y < view.height; ++y) {
      for (int x = 0; x < view.width; ++x) view.Row(y)[x] = static_cast<BYTE>(value(plane, x, y));
    }
  }
  return picture;
}

using PacketBytes = std::vector<BYTE>;

inline std::vector<PacketBytes> EncodeAll(const zebx::noxcodec::VideoEncoderSettings& settings,
                                          const std::vector<zebx::noxcodec::Picture>& pictures) {
  zebx::noxcodec::VideoEncoder encoder(settings);
  std::vector<PacketBytes> packets;
  for (const auto& picture : pictures) {
    const auto data = encoder.Encode(picture.View()).data;
    packets.emplace_back(data.begin(), data.end());
  }
  return packets;
}

// Peak signal to noise ratio in dB; 99 for equal planes.
inline double Psnr(const zebx::noxcodec::PlaneView& a, const zebx::noxcodec::PlaneView& b) {
  double sum = 0;
  for (int y = 0; y < a.height; ++y) {
    for (int x = 0; x < a.width; ++x) sum += std::pow(a.Row(y)[x] - b.Row(y)[x], 2);
  }
  return sum > 0 ? 10 * std::log10(255.0 * 255.0 * a.width * a.height / sum) : 99;
}
