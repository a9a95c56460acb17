// The channel functions of channels.h over the virtual devices.
#include <algorithm>
#include <cstdlib>

#include "platform/zebdev/channels.h"
#include "platform/zebdev/software/picture_colour.h"
#include "platform/zebdev/software/picture_pixels.h"
#include "platform/zebdev/software/virtual_device_library.h"

using namespace zebx;

using zebdev::Function;
using zebdev::VirtualChannel;
using zebdev::VirtualDeviceLibrary;

namespace {

constexpr DWORD kMaxShowType = 2;
constexpr DWORD kStillFormat = 1;
constexpr LONG kMacroblock = 16;

// A call on a channel: see VirtualDeviceLibrary::CallOnChannel.
template <typename Action, typename... Words>
int OnChannel(Function function, NoxdevHandle device, DWORD channel, Action action,
              Words... words) {
  return VirtualDeviceLibrary::Instance().CallOnChannel(function, device, channel, action,
                                                        words...);
}

// The same for a function that does something to the run of a started channel.
template <typename Action, typename... Words>
int OnRun(Function function, NoxdevHandle device, DWORD channel, Action action, Words... words) {
  const auto on_run = [&](const VirtualChannel& found) {
    const auto running = found.Running();
    return running != nullptr && action(*running);
  };
  return OnChannel(function, device, channel, on_run, words...);
}

// A change of what the channel was told; `change` gets its state, locked.
template <typename Change, typename... Words>
int OnState(Function function, NoxdevHandle device, DWORD channel, Change change, Words... words) {
  const auto on_state = [&](VirtualChannel& found) {
    const std::lock_guard lock(found.State().m_mutex);
    return change(found.State());
  };
  return OnChannel(function, device, channel, on_state, words...);
}

// What a record that may be null says, for the journal.
template <typename Record, typename Field>
std::optional<Field> FieldOf(const Record* record, Field Record::*field) {
  return record == nullptr ? std::nullopt : std::optional<Field>(record->*field);
}

bool IsInPicture(const tag_MASKAREA& area, const zebdev::ChannelIdentity& identity) {
  return area.m_left < area.m_right && area.m_top < area.m_bottom &&
         area.m_right <= static_cast<DWORD>(identity.m_width / kMacroblock) &&
         area.m_bottom <= static_cast<DWORD>(identity.m_height / kMacroblock);
}

}  // namespace

int noxdevChSetChannelName(NoxdevHandle device, DWORD channel, const char* name) {
  const auto store = [&](zebdev::ChannelState& state) {
    if (name == nullptr) return false;
    state.m_name = name;
    return true;
  };
  return OnState(Function::kChSetChannelName, device, channel, store, name);
}

int noxdevChSetConfig(NoxdevHandle device, DWORD channel, const tag_CHANNELCONFIG* config) {
  const auto apply = [&](zebdev::ChannelState& state) {
    if (config == nullptr) return false;
    state.m_settings.Apply(*config);
    return true;
  };
  using Config = tag_CHANNELCONFIG;
  return OnState(Function::kChSetConfig, device, channel, apply, FieldOf(config, &Config::m_valid),
                 FieldOf(config, &Config::m_streams), FieldOf(config, &Config::m_quality),
                 FieldOf(config, &Config::m_speed), FieldOf(config, &Config::m_motion_sensitivity),
                 FieldOf(config, &Config::m_alarm_frames), FieldOf(config, &Config::m_watermark));
}

int noxdevChStart(NoxdevHandle device, DWORD channel, DWORD reserved, NoxdevChannelProc callback,
                  void* context) {
  return VirtualDeviceLibrary::Instance().StartChannel(device, channel, reserved, callback,
                                                       context);
}

int noxdevChStop(NoxdevHandle device, DWORD channel) {
  const auto stop = [](VirtualChannel& found) {
    found.Stop();
    return true;
  };
  return OnChannel(Function::kChStop, device, channel, stop);
}

int noxdevChRequestIFrame(NoxdevHandle device, DWORD channel) {
  const auto request = [](zebdev::ChannelRun& run) {
    run.RequestIFrame();
    return true;
  };
  return OnRun(Function::kChRequestIFrame, device, channel, request);
}

int noxdevChEnumPreAlarmData(NoxdevHandle device, DWORD channel, std::uintptr_t first,
                             std::uintptr_t second) {
  const auto replay = [&](zebdev::ChannelRun& run) { return run.ReplayPreAlarm(first, second); };
  return OnRun(Function::kChEnumPreAlarmData, device, channel, replay);
}

int noxdevChStartPreviewVideo(NoxdevHandle device, DWORD channel, HWND window, DWORD reserved) {
  const auto show = [&](zebdev::ChannelRun& run) {
    run.ShowIn(window);
    return true;
  };
  return OnRun(Function::kChStartPreviewVideo, device, channel, show,
               ULONGLONG{reinterpret_cast<std::uintptr_t>(window)}, reserved);
}

int noxdevChStartPreviewAudio(NoxdevHandle device, DWORD channel) {
  const auto start = [](zebdev::ChannelState& state) {
    return state.m_settings.m_previews_audio = true;
  };
  return OnState(Function::kChStartPreviewAudio, device, channel, start);
}

int noxdevChStopPreviewAudio(NoxdevHandle device, DWORD channel) {
  const auto stop = [](zebdev::ChannelState& state) {
    state.m_settings.m_previews_audio = false;
    return true;
  };
  return OnState(Function::kChStopPreviewAudio, device, channel, stop);
}

int noxdevChChangeShow(NoxdevHandle device, DWORD channel, DWORD show_type) {
  const auto change = [&](zebdev::ChannelState& state) {
    if (show_type > kMaxShowType) return false;
    state.m_settings.m_show_type = show_type;
    return true;
  };
  return OnState(Function::kChChangeShow, device, channel, change, show_type);
}

int noxdevChCapturePicture(NoxdevHandle device, DWORD channel, BYTE* pixels, const CRect* rectangle,
                           LONG row_step_bytes, DWORD format) {
  const CRect asked = rectangle != nullptr ? *rectangle : CRect{};
  const auto capture = [&](VirtualChannel& found) {
    if (pixels == nullptr || asked.left != 0 || asked.top != 0 || format != kStillFormat ||
        asked.IsEmpty() || std::max(asked.right, asked.bottom) > zebdev::PicturePixels::kMaxSide ||
        std::abs(LONGLONG{row_step_bytes}) != LONGLONG{3} * asked.right) {
      return false;
    }
    noxcodec::Picture picture;
    zebdev::PicturePixels still;
    const std::span<BYTE> buffer(pixels, std::size_t{3} * static_cast<std::size_t>(asked.right) *
                                             static_cast<std::size_t>(asked.bottom));
    return found.CurrentPicture(picture) &&
           still.WriteBgr(picture.View(), asked.right, asked.bottom, row_step_bytes, buffer) != 0;
  };
  return OnChannel(Function::kChCapturePicture, device, channel, capture, asked.right, asked.bottom,
                   row_step_bytes, format);
}

int noxdevGetDefaultColor(DWORD device_type, tag_DEVCOLOR* color, int is_ntsc) {
  const auto get = [&] {
    const auto found = zebdev::DefaultColour(device_type, is_ntsc != 0);
    if (color == nullptr || !found) return false;
    *color = *found;
    return true;
  };
  return VirtualDeviceLibrary::Instance().Script().Call(
      static_cast<std::size_t>(Function::kGetDefaultColor), get, device_type, is_ntsc);
}

int noxdevChSetVideoColor(NoxdevHandle device, DWORD channel, const tag_DEVCOLOR* color) {
  const auto set = [&](zebdev::ChannelState& state) {
    if (color == nullptr) return false;
    state.m_settings.m_color = zebdev::LimitedColour(*color);
    return true;
  };
  return OnState(
      Function::kChSetVideoColor, device, channel, set,
      FieldOf(color, &tag_DEVCOLOR::m_component_0), FieldOf(color, &tag_DEVCOLOR::m_component_1),
      FieldOf(color, &tag_DEVCOLOR::m_component_3), FieldOf(color, &tag_DEVCOLOR::m_component_2));
}

int noxdevChGetVideoColor(NoxdevHandle device, DWORD channel, tag_DEVCOLOR* color) {
  const auto get = [&](const zebdev::ChannelState& state) {
    if (color == nullptr) return false;
    *color = state.m_settings.m_color;
    return true;
  };
  return OnState(Function::kChGetVideoColor, device, channel, get);
}

int noxdevChAddMaskArea(NoxdevHandle device, DWORD channel, const tag_MASKAREA* area) {
  const auto add = [&](zebdev::ChannelState& state) {
    return area != nullptr && IsInPicture(*area, state.m_identity) && state.m_masks.Add(*area);
  };
  return OnState(Function::kChAddMaskArea, device, channel, add,
                 FieldOf(area, &tag_MASKAREA::m_left), FieldOf(area, &tag_MASKAREA::m_top),
                 FieldOf(area, &tag_MASKAREA::m_right), FieldOf(area, &tag_MASKAREA::m_bottom));
}

int noxdevChClearMaskArea(NoxdevHandle device, DWORD channel) {
  const auto clear = [](zebdev::ChannelState& state) {
    state.m_masks.Clear();
    return true;
  };
  return OnState(Function::kChClearMaskArea, device, channel, clear);
}

int noxdevChGetMaskInfo(NoxdevHandle device, DWORD channel, tag_MASKSTATE* state) {
  const auto get = [&](const zebdev::ChannelState& channel_state) {
    if (state == nullptr) return false;
    *state = channel_state.m_masks.State();
    return true;
  };
  return OnState(Function::kChGetMaskInfo, device, channel, get);
}
