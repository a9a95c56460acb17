// The library for as long as a subcommand works with it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "capture/notify.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"

namespace zebtool {

// What a host with cameras gives the library.
struct CameraHost {
  ZEBX_NOTIFY_PROC notify = nullptr;
  std::uintptr_t user_data = 0;
  std::string device_directory;
};

// Initialises the library, with a window of its own for what the library tells; the destructor
// closes it. One at a time, in the thread that made it.
class LibrarySession {
 public:
  // Called with the midnight of each day that recycling deletes, as it happens.
  using DeletedDayReporter = std::function<void(CTime day)>;

  // Throws JobError when the library cannot be initialised.
  explicit LibrarySession(DeletedDayReporter report_deleted_day = {},
                          const CameraHost& cameras = {});
  ~LibrarySession();
  LibrarySession(const LibrarySession&) = delete;
  LibrarySession& operator=(const LibrarySession&) = delete;

 private:
  HWND m_window;
};

}  // namespace zebtool
