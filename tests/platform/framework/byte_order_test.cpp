#include "platform/framework/byte_order.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/bytes.h"

namespace {

TEST(ByteOrder, PutsValuesLittleEndianAndPackedAndTakesThemBack) {
  const std::string golden = Hex("fe 0203 fcfcfdfe 08090a0b0c0d0e8f") + "abcd";
  std::vector<BYTE> bytes(golden.size());
  ByteWriter writer(bytes);
  writer.Put(std::int8_t{-2});
  writer.Put(WORD{0x0302});
  writer.Put(LONG{-0x01020304});
  writer.Put(ULONGLONG{0x8F0E0D0C0B0A0908});
  writer.PutText("abcd");
  EXPECT_TRUE(writer.Ok());
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), golden);

  ByteReader reader(bytes);
  EXPECT_EQ(reader.Get<std::int8_t>(), -2);
  EXPECT_EQ(reader.Get<WORD>(), 0x0302);
  EXPECT_EQ(reader.Get<LONG>(), -0x01020304);
  EXPECT_EQ(reader.Get<ULONGLONG>(), 0x8F0E0D0C0B0A0908);
  EXPECT_EQ(reader.TakeText(4), "abcd");
  EXPECT_TRUE(reader.Ok());
}

TEST(ByteOrder, FailsForGoodAtTheFirstValueThatIsNotWhole) {
  std::vector<BYTE> bytes(4);
  ByteWriter writer({bytes.data(), 3});
  writer.Put(WORD{0x0201});
  writer.Put(DWORD{0xFFFFFFFF});
  writer.Put(BYTE{0xFF});  // would fit
  EXPECT_FALSE(writer.Ok());
  EXPECT_EQ(writer.Written(), 2U);
  EXPECT_EQ(bytes, (std::vector<BYTE>{1, 2, 0, 0}));

  ByteReader reader(bytes);
  EXPECT_EQ(reader.Get<WORD>(), 0x0201);
  EXPECT_EQ(reader.TakeText(std::numeric_limits<std::size_t>::max()), "");
  EXPECT_FALSE(reader.Ok());
  EXPECT_EQ(reader.Remaining(), 0U);
}

}  // namespace
