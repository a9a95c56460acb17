// The library's state: the host's callback and window, the devices with their boards, the watermark
// settings, and the place where the database is found.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <optional>

#include "capture/notify.h"
#include "platform/framework/types.h"

class CCaptureBoard;
class CCaptureCamera;
class CCaptureDevice;
class CZebDatabase;
struct tag_ZEBCAMERAID;

// The one application object of a loaded library. The host's thread uses it without a lock; Notify
// and GetWaterMark may run on any thread meanwhile.
class CCaptureApp {
 public:
  CCaptureApp();
  ~CCaptureApp();
  CCaptureApp(const CCaptureApp&) = delete;
  CCaptureApp& operator=(const CCaptureApp&) = delete;

  // Readies the device library and creates all devices that it can, at most kMaxDevices. 1 also
  // when there are none, and when the library is initialised already: nothing changes then. 0 when
  // the device library does not get ready or does not count its devices. Throws std::bad_alloc,
  // not initialised then.
  int Initialize(DWORD start_up_word, ZEBX_NOTIFY_PROC notify, std::uintptr_t user_data,
                 HWND host_window, const CString& device_directory);
  // Closes all devices and forgets what Initialize was given. Database and watermark stay.
  void Close();
  int IsInitialized() const { return m_is_initialized; }

  // Boards over all devices; they are numbered from 0.
  DWORD GetBoardCount() const { return m_board_count; }
  // The device that covers a board and the board itself, or null. Borrowed; valid until Close.
  CCaptureDevice* FindDevice(DWORD board) const;
  CCaptureBoard* FindBoard(DWORD board) const;
  // The camera of an open board, or null, also for null. Whoever keeps it longer than its board is
  // open has one that is unbound.
  std::shared_ptr<CCaptureCamera> FindCamera(const tag_ZEBCAMERAID* id) const;
  // Lets every device draw again after the display surfaces were restored.
  void RestoreDevices() const;

  HWND GetHostWindow() const { return m_host_window; }
  const CString& GetDeviceDirectory() const { return m_device_directory; }

  // The open database, or null. Whoever opens and closes databases owns it; this only remembers it.
  CZebDatabase* GetDatabase() const { return m_database; }
  void SetDatabase(CZebDatabase* database) { m_database = database; }

  // Calls the host's callback and returns its answer; kNotNotified when there is none.
  DWORD Notify(DWORD code, std::uintptr_t first, std::uintptr_t second) const {
    return CallHost(code, first, second).value_or(zebx::kNotNotified);
  }
  // The same for who has to know whether there was a callback that took the arguments.
  std::optional<DWORD> CallHost(DWORD code, std::uintptr_t first, std::uintptr_t second) const;

  // The enabled flag as it was set; writes the transparency, 0 to kMaxTransparency, or
  // kNoTransparency when none was ever set.
  int GetWaterMark(DWORD* transparency) const;
  void EnableWaterMark(int is_enabled) { m_is_watermark_enabled = is_enabled; }
  // Takes the low byte of the value, limited to kMaxTransparency.
  void SetWaterMarkTransparency(DWORD value);

  static constexpr DWORD kMaxDevices = 16;
  static constexpr DWORD kMaxTransparency = 128;
  static constexpr DWORD kNoTransparency = 0xFFFFFFFF;

 private:
  void CreateDevices(DWORD count);

  HWND m_host_window = nullptr;
  CZebDatabase* m_database = nullptr;
  int m_is_initialized = 0;
  CString m_device_directory;
  DWORD m_board_count = 0;
  std::array<std::unique_ptr<CCaptureDevice>, kMaxDevices> m_devices;  // without gaps

  // Read on threads of the device library.
  std::atomic<ZEBX_NOTIFY_PROC> m_notify = nullptr;
  std::atomic<std::uintptr_t> m_user_data = 0;
  std::atomic<DWORD> m_transparency = kNoTransparency;
  std::atomic<int> m_is_watermark_enabled = 0;
};

namespace zebx {

// The application object.
CCaptureApp& GetCaptureApp();

}  // namespace zebx
