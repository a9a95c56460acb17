// The virtual device library's state: its devices, the handles given out, the calls that are to
// fail, and the journal. noxdev.cpp turns it into the functions of the door.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/framework/call_script.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

// What a handle stands for.
struct NoxdevDevice {
  DWORD m_number = 0;
  zebx::zebdev::VirtualDevice m_device;
  bool m_is_open = false;
};

namespace zebx::zebdev {

// One per process. Operations that answer an int are those of the door. The lock guards what stands
// below it; it is held for one look-up or change and nobody is called meanwhile.
class VirtualDeviceLibrary {
 public:
  static VirtualDeviceLibrary& Instance();

  void SetPlan(std::vector<VirtualDevice> devices);
  CallScript& Script() { return m_script; }

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

 private:
  VirtualDeviceLibrary();

  // One call of the door: `action`, with the lock held, unless the call is to fail. `action`
  // answers whether it succeeded.
  template <typename Action, typename... Words>
  int Call(Function function, Action action, Words... words);
  // The same for a call on a device; `action` gets the device and is not run for a void handle.
  template <typename Action, typename... Words>
  int CallOn(NoxdevHandle handle, Function function, Action action, Words... words);

  // The number of the device behind a handle, nothing for a void one.
  std::optional<DWORD> NumberOf(NoxdevHandle handle);
  // With the lock held.
  NoxdevDevice* Find(NoxdevHandle handle) const;

  // Takes the plan from the environment unless one was set.
  void ReadEnvironment();

  CallScript m_script;
  std::once_flag m_environment_once;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<VirtualDevice> m_plan;
  bool m_has_plan = false;  // set by SetPlan
  bool m_is_ready = false;
  std::vector<std::unique_ptr<NoxdevDevice>> m_created;
};

}  // namespace zebx::zebdev
