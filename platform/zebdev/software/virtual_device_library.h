// The virtual device library's state: its devices, the handles given out, what drives channels, the
// calls that are to fail, and the journal. noxdev.cpp and noxdev_channels.cpp turn it into the
// functions of the door.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/framework/call_script.h"
#include "platform/zebdev/software/virtual_channel.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

namespace zebx::zebdev {

// One per process, which stays; what runs is ended when the process exits. Operations that answer
// an int are those of the door. Any thread may call, channels' callbacks too. The lock guards what
// stands below it; it is held for one look-up or change, and nobody is called or waited for
// meanwhile.
class VirtualDeviceLibrary {
 public:
  static VirtualDeviceLibrary& Instance();

  void SetPlan(std::vector<VirtualDevice> devices);
  CallScript& Script() { return m_script; }
  void SetDrive(Drive drive);
  LiveSoundOutput& Sound() { return m_sound; }
  std::shared_ptr<ChannelControls> Controls(DWORD device, DWORD channel);
  // The run of a channel by its numbers; null when there is none.
  std::shared_ptr<ChannelRun> Running(DWORD device, DWORD channel);

  int Initialize(DWORD start_up_word, DWORD reserved);
  int Invalidate();
  int GetDeviceNum(DWORD* count);
  int CreateDevice(NoxdevHandle* device, DWORD number);
  int DestroyDevice(NoxdevHandle device);
  int GetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability);
  int OpenDevice(NoxdevHandle device, DWORD mode, const char* directory);
  int CloseDevice(NoxdevHandle device);
  int SetTVOut(NoxdevHandle device, DWORD first, DWORD second);
  int IOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second);
  int Restore(NoxdevHandle device);
  int IsValidChannel(NoxdevHandle device, DWORD channel, int* is_valid);
  int StartChannel(NoxdevHandle device, DWORD channel, DWORD reserved, NoxdevChannelProc callback,
                   void* context);

  // A call on a channel of an open device: `action` gets the channel and answers whether it
  // succeeded. It runs without a lock.
  template <typename Action, typename... Words>
  int CallOnChannel(Function function, NoxdevHandle device, DWORD channel, Action action,
                    Words... words) {
    const auto on_channel = [&] {
      const auto found = FindChannel(device, channel);
      return found != nullptr && action(*found);
    };
    return m_script.Call(static_cast<std::size_t>(function), on_channel, NumberOf(device), channel,
                         words...);
  }

 private:
  using Channels = std::map<DWORD, std::shared_ptr<VirtualChannel>>;
  using Runs = std::vector<std::shared_ptr<ChannelRun>>;

  // What a handle stands for.
  struct Device {
    NoxdevHandle m_handle = nullptr;
    DWORD m_number = 0;
    VirtualDevice m_planned;
    bool m_is_open = false;
    Channels m_channels;  // while it is open
  };

  VirtualDeviceLibrary();

  // A call of the door: `action`, with the lock held, unless the call is to fail.
  template <typename Action, typename... Words>
  int Call(Function function, Action action, Words... words);
  // The same for a call on a device; `action` gets the device and is not run for a void handle.
  template <typename Action, typename... Words>
  int CallOn(NoxdevHandle handle, Function function, Action action, Words... words);

  // The number of the device behind a handle, nothing for a void one.
  std::optional<DWORD> NumberOf(NoxdevHandle handle);
  std::shared_ptr<VirtualChannel> FindChannel(NoxdevHandle handle, DWORD channel);
  // Takes the plan from the environment unless one was set.
  void ReadEnvironment();
  // Ends channels that no handle leads to any more; what lasts, as it ends itself, goes to m_left.
  void End(const Channels& channels);
  // Takes all devices away, for which the library is not ready any more, and waits for whatever of
  // their channels lasts.
  void EndAll();
  // Joins the threads of m_left. With `waits`, also of those that somebody is still inside of.
  void CollectLeft(bool waits);

  // With the lock held.

  Device* Find(NoxdevHandle handle);
  static const tag_DEVICECAP& CapabilityOf(const Device& device);
  Channels MakeChannels(const Device& device, DWORD mode, const CString& directory);
  std::shared_ptr<ChannelControls> ControlsOf(DWORD device, DWORD channel);

  CallScript m_script;
  LiveSoundOutput m_sound;
  std::once_flag m_environment_once;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<VirtualDevice> m_plan;
  bool m_has_plan = false;  // set by SetPlan
  bool m_is_ready = false;
  Drive m_drive = Drive::kPaced;
  std::uintptr_t m_last_handle = 0;  // handles are never used again
  std::vector<Device> m_devices;     // that were created
  std::map<std::pair<DWORD, DWORD>, std::shared_ptr<ChannelControls>> m_controls;
  Runs m_left;
};

}  // namespace zebx::zebdev
