#include "platform/framework/byte_order.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

namespace {

TEST(ByteOrder, PutsValuesLittleEndianAndPackedAndTakesThemBack) {
  std::array<BYTE, 19> bytes{};
  ByteWriter writer(bytes);
  writer.Put(std::int8_t{-2});
  writer.Put(WORD{0x0302});
  writer.Put(LONG{-0x01020304});
  writer.Put(ULONGLONG{0x8F0E0D0C0B0A0908});
  writer.PutText("abcd");
  EXPECT_TRUE(writer.Ok());
  EXPECT_EQ(writer.Written(), bytes.size());
  const std::array<BYTE, 19> golden = {0xFE, 2,  3,  0xFC, 0xFC, 0xFD, 0xFE, 8,   9,  10,
                                       11,   12, 13, 14,   0x8F, 'a',  'b',  'c', 'd'};
  EXPECT_EQ(bytes, golden);

  ByteReader reader(golden);
  EXPECT_EQ(reader.Get<std::int8_t>(), -2);
  EXPECT_EQ(reader.Get<WORD>(), 0x0302);
  EXPECT_EQ(reader.Get<LONG>(), -0x01020304);
  EXPECT_EQ(reader.Get<ULONGLONG>(), 0x8F0E0D0C0B0A0908);
  EXPECT_EQ(reader.TakeText(4), "abcd");
  EXPECT_EQ(reader.Remaining(), 0U);
  EXPECT_TRUE(reader.Ok());
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

TEST(ByteReader, FailsForGoodAtTheFirstValueThatIsNotWhole) {
  const std::array<BYTE, 5> bytes = {1, 2, 3, 4, 5};
  ByteReader reader(bytes);
  EXPECT_EQ(reader.Get<WORD>(), 0x0201);
  EXPECT_EQ(reader.Get<DWORD>(), 0U);
  EXPECT_FALSE(reader.Ok());
  EXPECT_EQ(reader.Get<BYTE>(), 0);  // there was one left
  EXPECT_TRUE(reader.Take(1).empty());
  ByteReader greedy(bytes);
  EXPECT_EQ(greedy.TakeText(std::numeric_limits<std::size_t>::max()), "");
  EXPECT_FALSE(greedy.Ok());
}

}  // namespace
