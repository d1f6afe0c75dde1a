#include "modules/common/byte_reader.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace modules {
namespace {

constexpr std::uint8_t kBytes[] = {0x01, 0x82, 0x03, 0x84, 0x05};

TEST(ByteReader, ReadsBothByteOrders) {
  const std::span<const std::uint8_t> bytes(kBytes);
  EXPECT_EQ(ByteReader(bytes).Word(), 0x8201U);
  EXPECT_EQ(ByteReader(bytes).BigWord(), 0x0182U);
  EXPECT_EQ(ByteReader(bytes).Long(), 0x84038201U);
  EXPECT_EQ(ByteReader(bytes).BigLong(), 0x01820384U);
  EXPECT_EQ(ByteReader(bytes).SignedWord(), static_cast<std::int16_t>(0x8201));
  EXPECT_EQ(ByteReader(bytes.subspan(1)).SignedBigWord(), static_cast<std::int16_t>(0x8203));
  EXPECT_EQ(ByteReader(bytes).SignedLong(), static_cast<std::int32_t>(0x84038201));
}

TEST(ByteReader, StaysWithinItsBytes) {
  ByteReader in(kBytes);
  EXPECT_TRUE(in.Skip(3));
  EXPECT_FALSE(in.Failed());
  EXPECT_EQ(in.Long(), 0x0584U);  // what is missing reads as zeros
  EXPECT_TRUE(in.Failed());
  EXPECT_TRUE(in.AtEnd());
  EXPECT_EQ(in.Byte(), 0U);
  EXPECT_TRUE(in.Take(1).empty());
  EXPECT_TRUE(in.Seek(5));
  EXPECT_FALSE(in.Seek(6));
  EXPECT_EQ(in.Position(), 5U);
  EXPECT_TRUE(in.Seek(1));
  EXPECT_FALSE(in.Skip(static_cast<std::size_t>(-1)));
  EXPECT_TRUE(in.AtEnd());
}

TEST(ByteReader, TakesAndCopiesWhatThereIs) {
  ByteReader in(kBytes);
  EXPECT_EQ(in.Take(2).size(), 2U);
  EXPECT_FALSE(in.Failed());
  std::array<std::uint8_t, 5> target{9, 9, 9, 9, 9};
  EXPECT_EQ(in.Read(target.data(), target.size()), 3U);
  EXPECT_EQ(target, (std::array<std::uint8_t, 5>{3, 0x84, 5, 9, 9}));
  EXPECT_TRUE(in.Failed());
  ByteReader nothing({});
  EXPECT_TRUE(nothing.AtEnd());
  EXPECT_FALSE(nothing.Failed());
  EXPECT_EQ(nothing.Read(target.data(), 1), 0U);
}

}  // namespace
}  // namespace modules
