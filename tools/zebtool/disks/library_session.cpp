#include "tools/zebtool/disks/library_session.h"

#include <utility>

#include "capture/zebx.h"
#include "platform/os/windows/windows.h"
#include "storage/storage_messages.h"
#include "tools/zebtool/console/console.h"

namespace zebtool {
namespace {

constexpr DWORD kNoStartUpWord = 0;

}  // namespace

LibrarySession::LibrarySession(DeletedDayReporter report_deleted_day, const CameraHost& cameras) {
  const auto procedure = [report = std::move(report_deleted_day)](HWND, UINT message, WPARAM,
                                                                  LPARAM day) -> LRESULT {
    if (message == ZEBX_MSG_DATE_DELETED && report) report(CTime(static_cast<DWORD>(day)));
    return 0;
  };
  m_window = os::CreateWindow(nullptr, "zebtool", CRect(), procedure);
  if (zebxInitZebx(kNoStartUpWord, cameras.notify, cameras.user_data, m_window,
                   cameras.device_directory.c_str()) == 0) {
    os::DestroyWindow(m_window);
    throw JobError("the library cannot be initialised");
  }
}

LibrarySession::~LibrarySession() {
  zebxCloseZebx();
  os::DestroyWindow(m_window);
}

}  // namespace zebtool
