// The header of a recording file: the bytes from its start to the first block header.
// docs/recording-format.md is its page.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "platform/framework/byte_order.h"

namespace zebx {

struct RecordingHeader {
  // Where the fields stand.
  static constexpr std::size_t kVersionAt = 4;
  static constexpr std::size_t kSizeAt = 8;
  static constexpr std::size_t kFlagsAt = 12;
  static constexpr std::size_t kReservedWordAt = 16;
  static constexpr std::size_t kFrameSizeAt = 22;
  static constexpr std::size_t kReservedByteAt = 23;
  static constexpr std::size_t kBeginTimeAt = 24;
  static constexpr std::size_t kEndTimeAt = 28;
  static constexpr std::size_t kBeginTimeStampAt = 32;
  static constexpr std::size_t kGmtAt = 36;
  static constexpr std::size_t kNamesAt = 40;

  static constexpr std::string_view kMagic = "XBEZ";
  static constexpr DWORD kMaxNameBytes = 500;
  static constexpr std::size_t kNames = 3;
  static constexpr std::size_t kMinBytes = kNamesAt + kNames * sizeof(DWORD);
  static constexpr std::size_t kMaxBytes = kMinBytes + kNames * kMaxNameBytes;

  enum : DWORD { kRemote = 0x1, kClip = 0x2, kRT8Port = 0x4, kKnownFlags = 0x7 };

  bool m_has_magic = true;
  DWORD m_version = 0;
  DWORD m_size = 0;  // the offset of the first block; Format sets it
  DWORD m_flags = 0;
  DWORD m_reserved_word = 0;
  BYTE m_camera_index = 0;
  BYTE m_board_index = 0;
  BYTE m_frame_size = 0;
  BYTE m_reserved_byte = 0;  // Format writes 0
  DWORD m_begin_time = 0;
  DWORD m_end_time = 0;
  DWORD m_begin_time_stamp = 0;
  int m_gmt = 0;
  std::array<CString, kNames> m_names;  // camera, board, host

  // The header at the start of `bytes`, as much of it as is there. Where the names stop making
  // sense, the rest of them stay empty; `bad_name_at`, when not null, becomes the offset of the
  // length that is too large, 0 when the bytes end too early. The number of bytes that the header
  // takes, 0 when the magic is wrong or the names are not whole.
  std::size_t Parse(std::span<const BYTE> bytes, std::size_t* bad_name_at = nullptr) {
    ByteReader reader(bytes);
    m_has_magic = reader.TakeText(kMagic.size()) == kMagic;
    m_version = reader.Get<DWORD>();
    m_size = reader.Get<DWORD>();
    m_flags = reader.Get<DWORD>();
    m_reserved_word = reader.Get<DWORD>();
    m_camera_index = reader.Get<BYTE>();
    m_board_index = reader.Get<BYTE>();
    m_frame_size = reader.Get<BYTE>();
    m_reserved_byte = reader.Get<BYTE>();
    m_begin_time = reader.Get<DWORD>();
    m_end_time = reader.Get<DWORD>();
    m_begin_time_stamp = reader.Get<DWORD>();
    m_gmt = reader.Get<int>();
    for (CString& name : m_names) {
      const std::size_t at = bytes.size() - reader.Remaining();
      const auto length = reader.Get<DWORD>();
      const bool too_long = length > kMaxNameBytes;
      if (too_long || !reader.Ok() || length > reader.Remaining()) {
        if (bad_name_at != nullptr) *bad_name_at = too_long ? at : 0;
        return 0;
      }
      name = reader.TakeText(length);
    }
    return m_has_magic ? bytes.size() - reader.Remaining() : 0;
  }

  // How many bytes of a name are stored.
  static DWORD StoredBytes(std::string_view name) {
    return static_cast<DWORD>(std::min<std::size_t>(name.size(), kMaxNameBytes));
  }

  // Puts the header into `buffer`, longer names cut, and returns the part of it that is used.
  std::span<const BYTE> Format(std::array<BYTE, kMaxBytes>& buffer) {
    m_size = kMinBytes;
    for (const CString& name : m_names) m_size += StoredBytes(name);
    ByteWriter writer(buffer);
    writer.PutText(kMagic);
    writer.Put(m_version);
    writer.Put(m_size);
    writer.Put(m_flags);
    writer.Put(m_reserved_word);
    writer.Put(m_camera_index);
    writer.Put(m_board_index);
    writer.Put(m_frame_size);
    writer.Put(BYTE{0});
    writer.Put(m_begin_time);
    writer.Put(m_end_time);
    writer.Put(m_begin_time_stamp);
    writer.Put(m_gmt);
    for (const CString& name : m_names) {
      writer.Put(StoredBytes(name));
      writer.PutText(std::string_view{name}.substr(0, StoredBytes(name)));
    }
    return std::span(buffer).first(writer.Written());
  }
};

}  // namespace zebx
