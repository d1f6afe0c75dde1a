#include "glib/pixel/depth_rows.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/instruction_sets.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

Bytes RandomBytes(std::mt19937& random, std::size_t count) {
  Bytes bytes(count);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

Words RandomWords(std::mt19937& random, std::size_t count) {
  Words words(count);
  for (auto& word : words) word = static_cast<std::uint32_t>(random());
  return words;
}

// The source row is exactly as long as its pixels need, so that the sanitizers see a read behind it.
TEST(DepthRows, EveryInstructionSetEqualsThePlainForms) {
  test_support::ForEachInstructionSet([](const char* set) {
    SCOPED_TRACE(set);
    std::mt19937 random(5);
    for (std::size_t count = 0; count <= 70; ++count) {
      const Bytes rgb = RandomBytes(random, 3 * count);
      Words fast = RandomWords(random, count + 2);
      Words plain = fast;
      glib::WidenRow(fast.data() + 1, rgb.data(), count);
      glib::WidenRowPlain(plain.data() + 1, rgb.data(), count);
      ASSERT_EQ(fast, plain) << "widen " << count;

      const Words words = RandomWords(random, count);
      Bytes fastBytes = RandomBytes(random, 3 * count + 2);
      Bytes plainBytes = fastBytes;
      glib::NarrowRow(fastBytes.data() + 1, words.data(), count);
      glib::NarrowRowPlain(plainBytes.data() + 1, words.data(), count);
      ASSERT_EQ(fastBytes, plainBytes) << "narrow " << count;
    }
  });
}

TEST(DepthRows, BitsThroughTheTableEqualThePlainForm) {
  std::mt19937 random(6);
  const std::uint32_t palette[2] = {0x11223344, 0xFFEEDDCC};
  for (std::size_t count = 0; count <= 300; ++count) {
    const Bytes row = RandomBytes(random, (count + 7) / 8);
    Words fast = RandomWords(random, count + 2);
    Words plain = fast;
    glib::ExpandBits(fast.data() + 1, row.data(), palette, count);
    glib::ExpandBitsPlain(plain.data() + 1, row.data(), palette, count);
    ASSERT_EQ(fast, plain) << count;
  }
}

TEST(DepthRows, PixelsWorkedByHand) {
  const Bytes rgb = {1, 2, 3, 254, 253, 252};
  Words words(2);
  glib::WidenRowPlain(words.data(), rgb.data(), 2);
  EXPECT_EQ(words, (Words{0xFF030201, 0xFFFCFDFE}));
  Bytes back(6);
  glib::NarrowRowPlain(back.data(), words.data(), 2);
  EXPECT_EQ(back, rgb);

  Words palette(256);
  for (std::uint32_t i = 0; i < 256; ++i) palette[i] = 0x80000000U + i;
  const Bytes indices = {0xA5, 0x0F, 0xC0};
  Words expanded(9);
  glib::ExpandBytes(expanded.data(), indices.data(), palette.data(), 3);
  EXPECT_EQ(Words(expanded.begin(), expanded.begin() + 3), (Words{0x800000A5, 0x8000000F, 0x800000C0}));
  glib::ExpandNibbles(expanded.data(), indices.data(), palette.data(), 5);
  EXPECT_EQ(Words(expanded.begin(), expanded.begin() + 5),
            (Words{0x8000000A, 0x80000005, 0x80000000, 0x8000000F, 0x8000000C}));
  glib::ExpandBitsPlain(expanded.data(), indices.data(), palette.data(), 9);
  EXPECT_EQ(expanded, (Words{0x80000001, 0x80000000, 0x80000001, 0x80000000, 0x80000000, 0x80000001, 0x80000000,
                             0x80000001, 0x80000000}));

  Bytes unpacked(9);
  glib::UnpackRow(unpacked.data(), indices.data(), 9, 1);
  EXPECT_EQ(unpacked, (Bytes{1, 0, 1, 0, 0, 1, 0, 1, 0}));
  unpacked.resize(5);
  glib::UnpackRow(unpacked.data(), indices.data(), 5, 4);
  EXPECT_EQ(unpacked, (Bytes{10, 5, 0, 15, 12}));
}

}  // namespace
