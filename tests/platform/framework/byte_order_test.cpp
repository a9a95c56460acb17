#include "platform/framework/byte_order.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace zebx;

namespace {

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
