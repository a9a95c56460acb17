#include "platform/framework/mem_file.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace {

std::span<const BYTE> Bytes(std::string_view text) {
  return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

std::string Text(const CMemFile& file) {
  return {file.GetBytes().begin(), file.GetBytes().end()};
}

TEST(CMemFile, GrowsOverwritesAndReadsShortAtItsEnd) {
  CMemFile file;
  EXPECT_TRUE(file.IsOpen());
  file.WritePieces({Bytes("abc"), {}, Bytes("def")});
  file.Seek(2);
  file.Write(Bytes("XY"));
  EXPECT_EQ(file.GetPosition(), 4U);
  EXPECT_EQ(Text(file), "abXYef");
  std::array<BYTE, 8> into{};
  EXPECT_EQ(file.Read(into), 2U);
  EXPECT_EQ(into[0], 'e');
  EXPECT_EQ(file.GetPosition(), 6U);
  EXPECT_EQ(file.Read(into), 0U);
}

TEST(CMemFile, FillsWithZerosWhenWrittenOrExtendedBeyondItsEnd) {
  CMemFile file;
  file.Seek(2);
  file.Write(Bytes("a"));
  file.SetLength(4);
  EXPECT_EQ(Text(file), std::string("\0\0a\0", 4));
  EXPECT_EQ(file.SeekToEnd(), 4U);
  file.SetLength(1);
  EXPECT_EQ(file.GetPosition(), 4U);
  std::array<BYTE, 1> into{};
  EXPECT_EQ(file.Read(into), 0U);
  file.Close();
  EXPECT_EQ(file.GetLength(), 0U);
  EXPECT_EQ(file.GetPosition(), 0U);
}

TEST(CMemFile, StaysAsItWasWhenThereIsNoMemory) {
  CMemFile file;
  file.Write(Bytes("abc"));
  constexpr auto kFarAway = std::numeric_limits<ULONGLONG>::max();
  EXPECT_THROW(file.SetLength(kFarAway), std::bad_alloc);
  for (const ULONGLONG position : {kFarAway, kFarAway - 1, kFarAway / 2}) {
    file.Seek(position);
    EXPECT_THROW(file.WritePieces({Bytes("a"), Bytes("bc")}), std::bad_alloc);
    EXPECT_EQ(file.GetPosition(), position);
  }
  EXPECT_EQ(Text(file), "abc");
}

}  // namespace
