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

using CString = std::string;
using CDWordArray = std::vector<DWORD>;
