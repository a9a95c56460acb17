#include "platform/os/windows/windows.h"

#include <memory>
#include <mutex>
#include <utility>

#include "platform/os/windows/window_table.h"
#include "platform/os/windows/window_thread.h"

namespace os {
namespace {

constexpr LONGLONG kBytesPerPixel = 4;

// A rectangle may come from anywhere; wider or higher screens do not.
constexpr LONGLONG kMaxSide = 16384;

CSize SizeOf(const CRect& rectangle) {
  const LONGLONG width = LONGLONG{rectangle.right} - rectangle.left;
  const LONGLONG height = LONGLONG{rectangle.bottom} - rectangle.top;
  if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide) return {};
  return {static_cast<LONG>(width), static_cast<LONG>(height)};
}

}  // namespace

HWND CreateWindow(HWND parent, const CString& title, const CRect& rectangle,
                  WindowProcedure procedure) {
  auto queue = ThisThreadQueue();
  if (!procedure || queue->IsClosed()) return nullptr;
  auto window = std::make_shared<Window>();
  window->m_title = title;
  window->m_procedure = std::move(procedure);
  window->m_queue = std::move(queue);
  window->m_rectangle = rectangle;
  window->m_parent = parent;
  return WindowTable::Get().Add(std::move(window));
}

int DestroyWindow(HWND window) {
  const auto queue = ThisThreadQueue();
  bool is_own = false;
  WindowTable::Get().Visit(window, [&](Window& found) { is_own = found.m_queue == queue; });
  return is_own && DestroyOwnTree(window, *queue) ? 1 : 0;
}

int CloseWindow(HWND window) {
  return CloseTree(window, ThisThreadQueue()) ? 1 : 0;
}

int IsWindow(HWND window) {
  return WindowTable::Get().Visit(window, [](Window&) {}) ? 1 : 0;
}

CString GetWindowText(HWND window) {
  CString title;
  WindowTable::Get().Visit(window, [&](Window& found) { title = found.m_title; });
  return title;
}

int GetWindowRect(HWND window, CRect* rectangle) {
  const auto read = [&](Window& found) { *rectangle = found.m_rectangle; };
  return WindowTable::Get().Visit(window, read) ? 1 : 0;
}

int MoveWindow(HWND window, const CRect& rectangle) {
  const auto write = [&](Window& found) { found.m_rectangle = rectangle; };
  return WindowTable::Get().Visit(window, write) ? 1 : 0;
}

int WithWindowPicture(HWND window, const std::function<void(const WindowPicture&)>& use) {
  std::shared_ptr<PixelBuffer> buffer;
  WindowTable::Get().Visit(window, [&](Window& found) { buffer = found.m_pixels; });
  if (buffer == nullptr) return 0;

  const std::lock_guard lock(buffer->m_mutex);
  // Only now, so that of two users the later one decides the size.
  CRect rectangle;
  if (GetWindowRect(window, &rectangle) == 0) return 0;
  const CSize size = SizeOf(rectangle);
  if (size != buffer->m_size) {
    buffer->m_size = {};
    buffer->m_pixels.assign(static_cast<std::size_t>(kBytesPerPixel * size.cx * size.cy), 0);
    buffer->m_size = size;
  }
  // The pixels themselves may be those of another size, if memory ran out for a new one.
  if (size == CSize{}) return 0;
  use({size, buffer->m_pixels});
  return 1;
}

}  // namespace os
