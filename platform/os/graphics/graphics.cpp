#include "platform/os/graphics/graphics.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "platform/framework/bitmap.h"
#include "platform/os/graphics/pixels.h"
#include "platform/os/graphics/stretch.h"
#include "platform/os/windows/windows.h"

using namespace zebx;

namespace os {

namespace {

struct Bitmap {
  PixelLayout m_layout;
  std::vector<BYTE> m_bytes;
  std::vector<Color> m_colors;
  HDC m_context = nullptr;  // the one it is selected into; guarded by the tables' mutex

  PixelTarget Target() { return {m_layout, m_bytes, m_colors}; }
};

struct DeviceContext {
  enum class Kind { kScreen, kWindow, kMemory };

  Kind m_kind = Kind::kMemory;
  HWND m_window = nullptr;
  HBITMAP m_bitmap = nullptr;         // guarded by the tables' mutex
  std::shared_ptr<Bitmap> m_picture;  // of m_bitmap
  StretchMode m_stretch_mode = StretchMode::kBlackOnWhite;
};

using ContextPointer = std::shared_ptr<DeviceContext>;
using BitmapPointer = std::shared_ptr<Bitmap>;

// Every handle in use. Contexts and bitmaps share one series of numbers, so that the handle of one
// is never taken for the other.
class Tables {
 public:
  static Tables& Get() {
    // Never destroyed: a host's threads may end after main has.
    static Tables& tables = *new Tables;
    return tables;
  }

  std::mutex m_mutex;  // guards everything below
  std::map<HDC, ContextPointer> m_contexts;
  std::map<HBITMAP, BitmapPointer> m_bitmaps;
  HDC m_screen = nullptr;

  template <class Handle>
  Handle NewHandle() {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a number in the place of an address
    return reinterpret_cast<Handle>(++m_last_handle);
  }
  ContextPointer Context(HDC dc) const {
    const auto found = m_contexts.find(dc);
    return found != m_contexts.end() ? found->second : nullptr;
  }
  BitmapPointer BitmapOf(HBITMAP bitmap) const {
    const auto found = m_bitmaps.find(bitmap);
    return found != m_bitmaps.end() ? found->second : nullptr;
  }
  HDC AddContext(DeviceContext context) {
    HDC dc = NewHandle<HDC>();
    m_contexts.emplace(dc, std::make_shared<DeviceContext>(std::move(context)));
    return dc;
  }

 private:
  Tables() {
    DeviceContext screen;
    screen.m_kind = DeviceContext::Kind::kScreen;
    m_screen = AddContext(screen);
  }

  std::uintptr_t m_last_handle = 0;
};

ContextPointer FindContext(HDC dc) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  return tables.Context(dc);
}

BitmapPointer MakeBitmap(const PixelLayout& layout) {
  auto bitmap = std::make_shared<Bitmap>();
  bitmap->m_layout = layout;
  bitmap->m_bytes.resize(layout.TotalBytes());
  if (layout.m_bit_count <= 8) bitmap->m_colors.resize(std::size_t{1} << layout.m_bit_count);
  return bitmap;
}

HBITMAP AddBitmap(BitmapPointer bitmap) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  auto* handle = tables.NewHandle<HBITMAP>();
  tables.m_bitmaps.emplace(handle, std::move(bitmap));
  return handle;
}

// The form of the screen's pictures: rows from the top, 4 bytes a pixel.
std::optional<PixelLayout> ScreenLayout(CSize size) {
  BitmapInfoHeader header;
  header.m_width = size.cx;
  header.m_height = -size.cy;
  header.m_bit_count = 32;
  return PixelLayout::Of(header);
}

bool WithWindowPixels(HWND window, const std::function<void(const PixelTarget&)>& draw) {
  bool drawn = false;
  WithWindowPicture(window, [&](const WindowPicture& picture) {
    const auto layout = ScreenLayout(picture.m_size);
    if (!layout) return;
    draw({*layout, picture.m_pixels, {}});
    drawn = true;
  });
  return drawn;
}

// Lets `draw` work on the picture that a context stands for. False when there is none.
bool WithPicture(const DeviceContext& context,
                 const std::function<void(const PixelTarget&)>& draw) {
  switch (context.m_kind) {
    case DeviceContext::Kind::kMemory:
      if (context.m_picture == nullptr) return false;
      draw(context.m_picture->Target());
      return true;
    case DeviceContext::Kind::kWindow:
      return WithWindowPixels(context.m_window, draw);
    case DeviceContext::Kind::kScreen:
      break;
  }
  return false;
}

PixelSource SourceOf(const PixelTarget& picture) {
  return {picture.m_layout, picture.m_bytes, picture.m_colors};
}

// A copy of a context's picture, for when it is both read and drawn into.
struct PictureCopy {
  explicit PictureCopy(const PixelTarget& picture)
      : m_layout(picture.m_layout),
        m_bytes(picture.m_bytes.begin(), picture.m_bytes.end()),
        m_colors(picture.m_colors.begin(), picture.m_colors.end()) {}

  PixelSource Source() const { return {m_layout, m_bytes, m_colors}; }

  PixelLayout m_layout;
  std::vector<BYTE> m_bytes;
  std::vector<Color> m_colors;
};

bool HasNegativeSize(const Area& area) {
  return area.m_width < 0 || area.m_height < 0;
}

}  // namespace

HDC GetDC(HWND window) try {
  Tables& tables = Tables::Get();
  if (window == nullptr) return tables.m_screen;
  if (IsWindow(window) == 0) return nullptr;
  DeviceContext context;
  context.m_kind = DeviceContext::Kind::kWindow;
  context.m_window = window;
  const std::lock_guard lock(tables.m_mutex);
  return tables.AddContext(context);
} catch (const std::bad_alloc&) {
  return nullptr;
}

int ReleaseDC(HWND window, HDC dc) {
  Tables& tables = Tables::Get();
  if (dc == tables.m_screen) return window == nullptr ? 1 : 0;
  const std::lock_guard lock(tables.m_mutex);
  const ContextPointer context = tables.Context(dc);
  if (context == nullptr || context->m_kind != DeviceContext::Kind::kWindow ||
      context->m_window != window) {
    return 0;
  }
  tables.m_contexts.erase(dc);
  return 1;
}

HDC CreateCompatibleDC(HDC dc) try {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  if (tables.Context(dc) == nullptr) return nullptr;
  return tables.AddContext({});
} catch (const std::bad_alloc&) {
  return nullptr;
}

int DeleteDC(HDC dc) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  const ContextPointer context = tables.Context(dc);
  if (context == nullptr || context->m_kind != DeviceContext::Kind::kMemory) return 0;
  if (context->m_picture != nullptr) context->m_picture->m_context = nullptr;
  tables.m_contexts.erase(dc);
  return 1;
}

HBITMAP SelectObject(HDC dc, HBITMAP bitmap) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  const ContextPointer context = tables.Context(dc);
  const BitmapPointer picture = tables.BitmapOf(bitmap);
  if (context == nullptr || context->m_kind != DeviceContext::Kind::kMemory) return nullptr;
  if (bitmap != nullptr && (picture == nullptr || picture->m_context != nullptr)) return nullptr;
  if (context->m_picture != nullptr) context->m_picture->m_context = nullptr;
  if (picture != nullptr) picture->m_context = dc;
  context->m_picture = picture;
  HBITMAP previous = std::exchange(context->m_bitmap, bitmap);
  return tables.m_bitmaps.contains(previous) ? previous : nullptr;
}

HBITMAP CreateDIBSection(HDC dc, const BitmapInfoHeader& header, std::span<BYTE>* bits) try {
  const auto layout = PixelLayout::Of(header);
  if (FindContext(dc) == nullptr || !layout) return nullptr;
  const BitmapPointer bitmap = MakeBitmap(*layout);
  HBITMAP handle = AddBitmap(bitmap);
  *bits = bitmap->m_bytes;
  return handle;
} catch (const std::bad_alloc&) {
  return nullptr;
}

HBITMAP CreateDIBitmap(HDC dc, const BitmapInfoHeader& header, std::span<const BYTE> bits,
                       std::span<const BYTE> color_table) try {
  const auto layout = PixelLayout::Of(header);
  if (FindContext(dc) == nullptr || !layout || bits.size() < layout->TotalBytes()) return nullptr;
  const auto screen_layout = ScreenLayout({layout->m_width, layout->m_height});
  if (!screen_layout) return nullptr;

  BitmapPointer bitmap = MakeBitmap(*screen_layout);
  const auto colors = ParseColorTable(color_table, layout->m_bit_count);
  const Area whole = {0, 0, layout->m_width, layout->m_height};
  StretchPixels({*layout, bits, colors}, whole, bitmap->Target(), whole,
                StretchMode::kBlackOnWhite);
  return AddBitmap(std::move(bitmap));
} catch (const std::bad_alloc&) {
  return nullptr;
}

int DeleteObject(HBITMAP bitmap) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  const BitmapPointer picture = tables.BitmapOf(bitmap);
  if (picture == nullptr || picture->m_context != nullptr) return 0;
  tables.m_bitmaps.erase(bitmap);
  return 1;
}

int DeleteObjectWhenFree(HBITMAP bitmap) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  // Its context still owns the picture.
  return tables.m_bitmaps.erase(bitmap) != 0 ? 1 : 0;
}

int GetBitmapSize(HBITMAP bitmap, CSize* size) {
  Tables& tables = Tables::Get();
  const std::lock_guard lock(tables.m_mutex);
  const BitmapPointer picture = tables.BitmapOf(bitmap);
  if (picture == nullptr) return 0;
  *size = {picture->m_layout.m_width, picture->m_layout.m_height};
  return 1;
}

int GetBitmapPixels(HBITMAP bitmap, std::span<DWORD> pixels) {
  Tables& tables = Tables::Get();
  BitmapPointer picture;
  {
    const std::lock_guard lock(tables.m_mutex);
    picture = tables.BitmapOf(bitmap);
  }
  if (picture == nullptr) return 0;
  const PixelSource source = SourceOf(picture->Target());
  const auto width = static_cast<std::size_t>(source.m_layout.m_width);
  if (pixels.size() != width * static_cast<std::size_t>(source.m_layout.m_height)) return 0;
  for (LONG row = 0; row < source.m_layout.m_height; ++row) {
    source.ReadRow(row, 0, pixels.subspan(static_cast<std::size_t>(row) * width, width));
  }
  return 1;
}

UINT SetDIBColorTable(HDC dc, UINT first, std::span<const BYTE> colors) try {
  const ContextPointer context = FindContext(dc);
  if (context == nullptr || context->m_picture == nullptr) return 0;
  auto& table = context->m_picture->m_colors;
  if (first >= table.size()) return 0;
  const auto replacement = ParseColorTable(colors, context->m_picture->m_layout.m_bit_count);
  const std::size_t count = std::min(replacement.size(), table.size() - first);
  std::copy_n(replacement.begin(), count, table.begin() + static_cast<std::ptrdiff_t>(first));
  return static_cast<UINT>(count);
} catch (const std::bad_alloc&) {
  return 0;
}

int SetStretchBltMode(HDC dc, StretchMode mode) {
  const ContextPointer context = FindContext(dc);
  if (context == nullptr) return 0;
  context->m_stretch_mode = mode;
  return 1;
}

int StretchBlt(HDC to, int x, int y, int width, int height, HDC from, int source_x, int source_y,
               int source_width, int source_height, DWORD raster_operation) try {
  const Area onto = {x, y, width, height};
  const Area source_area = {source_x, source_y, source_width, source_height};
  const ContextPointer target = FindContext(to);
  const ContextPointer source = FindContext(from);
  if (target == nullptr || source == nullptr || HasNegativeSize(onto) ||
      HasNegativeSize(source_area) || raster_operation != kSrcCopy) {
    return 0;
  }
  // Pictures of windows are locked one at a time: two that are drawn into each other on two
  // threads would wait for each other for ever.
  std::optional<PictureCopy> copy;
  const bool is_memory = source->m_kind == DeviceContext::Kind::kMemory && source != target;
  if (is_memory) {
    if (source->m_picture == nullptr) return 0;
  } else if (!WithPicture(*source, [&](const PixelTarget& picture) { copy.emplace(picture); })) {
    return 0;
  }
  const PixelSource pixels = copy ? copy->Source() : SourceOf(source->m_picture->Target());
  return WithPicture(*target, [&](const PixelTarget& picture) {
    StretchPixels(pixels, source_area, picture, onto, target->m_stretch_mode);
  });
} catch (const std::bad_alloc&) {
  return 0;
}

int StretchDIBits(HDC to, int x, int y, int width, int height, int source_x, int source_y,
                  int source_width, int source_height, std::span<const BYTE> bits,
                  const BitmapInfoHeader& header, std::span<const BYTE> color_table,
                  DWORD raster_operation) try {
  const auto layout = PixelLayout::Of(header);
  const ContextPointer target = FindContext(to);
  const Area onto = {x, y, width, height};
  Area from = {source_x, source_y, source_width, source_height};
  if (target == nullptr || !layout || bits.size() < layout->TotalBytes() || HasNegativeSize(onto) ||
      HasNegativeSize(from) || raster_operation != kSrcCopy) {
    return kGdiError;
  }
  if (!layout->m_top_down) {
    const std::int64_t top = std::int64_t{layout->m_height} - source_y - source_height;
    from.m_y = static_cast<LONG>(std::clamp<std::int64_t>(top, INT32_MIN, INT32_MAX));
  }
  const auto colors = ParseColorTable(color_table, layout->m_bit_count);
  const bool drawn = WithPicture(*target, [&](const PixelTarget& picture) {
    StretchPixels({*layout, bits, colors}, from, picture, onto, target->m_stretch_mode);
  });
  return drawn ? layout->m_height : kGdiError;
} catch (const std::bad_alloc&) {
  return kGdiError;
}

DWORD GetPixel(HDC dc, int x, int y) {
  const ContextPointer context = FindContext(dc);
  DWORD result = kNoPixel;
  if (context == nullptr || x < 0 || y < 0) return result;
  WithPicture(*context, [&](const PixelTarget& picture) {
    if (x >= picture.m_layout.m_width || y >= picture.m_layout.m_height) return;
    Color color = 0;
    SourceOf(picture).ReadRow(y, x, {&color, 1});
    result = ((color & 0xFF) << 16) | (color & 0xFF00) | (color >> 16);
  });
  return result;
}

}  // namespace os

int zebx::DeletePlatformBitmap(HBITMAP bitmap) {
  return os::DeleteObjectWhenFree(bitmap);
}
