#include "platform/framework/byte_order.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

TEST(ByteWriter, PutsValuesLittleEndianAndPacked) {
  std::array<BYTE, 18> bytes{};
  ByteWriter writer(bytes);
  writer.Put(BYTE{0x01});
  writer.Put(WORD{0x0302});
  writer.Put(DWORD{0x07060504});
  writer.Put(ULONGLONG{0x0F0E0D0C0B0A0908});
  writer.PutText("abc");
  EXPECT_TRUE(writer.Ok());
  EXPECT_EQ(writer.Written(), bytes.size());
  const std::array<BYTE, 18> golden = {1,  2,  3,  4,  5,  6,  7,   8,   9,
                                       10, 11, 12, 13, 14, 15, 'a', 'b', 'c'};
  EXPECT_EQ(bytes, golden);
}

TEST(ByteWriter, WritesNothingOfAValueThatDoesNotFitNorAnythingAfterIt) {
  std::array<BYTE, 4> bytes{};
  ByteWriter writer(std::span<BYTE>(bytes).first(3));
  writer.Put(WORD{0xFFFF});
  writer.Put(DWORD{0xFFFFFFFF});
  writer.Put(BYTE{0xFF});  // would fit
  EXPECT_FALSE(writer.Ok());
  EXPECT_EQ(writer.Written(), 2U);
  EXPECT_EQ(bytes, (std::array<BYTE, 4>{0xFF, 0xFF, 0, 0}));
}

TEST(ByteReader, TakesBackWhatWasPut) {
  std::vector<BYTE> bytes(64);
  ByteWriter writer(bytes);
  writer.Put(std::int8_t{-2});
  writer.Put(std::int16_t{-300});
  writer.Put(std::numeric_limits<LONG>::min());
  writer.Put(LONGLONG{-1});
  writer.Put(std::numeric_limits<ULONGLONG>::max() - 1);
  writer.PutText("text");
  ByteReader reader(std::span<const BYTE>(bytes).first(writer.Written()));
  EXPECT_EQ(reader.Get<std::int8_t>(), -2);
  EXPECT_EQ(reader.Get<std::int16_t>(), -300);
  EXPECT_EQ(reader.Get<LONG>(), std::numeric_limits<LONG>::min());
  EXPECT_EQ(reader.Get<LONGLONG>(), -1);
  EXPECT_EQ(reader.Get<ULONGLONG>(), std::numeric_limits<ULONGLONG>::max() - 1);
  EXPECT_EQ(reader.TakeText(4), "text");
  EXPECT_EQ(reader.Remaining(), 0U);
  EXPECT_TRUE(reader.Ok());
}

TEST(ByteReader, FailsForGoodAtTheFirstValueThatIsNotWhole) {
  const std::array<BYTE, 5> bytes = {1, 2, 3, 4, 5};
  ByteReader reader(bytes);
  EXPECT_EQ(reader.Get<WORD>(), 0x0201);
  EXPECT_EQ(reader.Get<DWORD>(), 0U);
  EXPECT_FALSE(reader.Ok());
  EXPECT_EQ(reader.Get<BYTE>(), 0);  // there was one left
  EXPECT_TRUE(reader.Take(1).empty());
  EXPECT_EQ(reader.TakeText(0), "");
  EXPECT_FALSE(reader.Ok());
}

TEST(ByteReader, RefusesLengthsFarBeyondTheBytes) {
  const std::array<BYTE, 2> bytes = {1, 2};
  ByteReader reader(bytes);
  EXPECT_EQ(reader.TakeText(std::numeric_limits<std::size_t>::max()), "");
  EXPECT_FALSE(reader.Ok());
}

}  // namespace
