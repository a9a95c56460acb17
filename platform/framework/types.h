// The operating system's short type names that exported signatures use, with fixed widths.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;

// Words that carry an address or a handle are as wide as a pointer.
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

// Handles of the operating system: opaque, null for none. Whoever gets one by a Create or Get
// operation gives it back by the matching Destroy, Delete or Release.
using HWND = struct ZebxWindow*;
using HDC = struct ZebxDeviceContext*;
using HBITMAP = struct ZebxBitmap*;

using CString = std::string;
using CDWordArray = std::vector<DWORD>;
