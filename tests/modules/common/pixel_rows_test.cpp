#include "modules/common/pixel_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "tests/support/instruction_sets.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::mt19937& random, std::size_t count) {
  Bytes bytes(count);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

// Rows are exactly as long as their pixels, so that the sanitizers see a read behind them; targets have a byte in front
// and one behind that must stay.
TEST(PixelRows, EveryInstructionSetEqualsThePlainForms) {
  test_support::ForEachInstructionSet([](const char* set) {
    SCOPED_TRACE(set);
    std::mt19937 random(7);
    for (std::size_t count = 0; count <= 200; ++count) {
      const Bytes rows[4] = {RandomBytes(random, count), RandomBytes(random, count), RandomBytes(random, count),
                             RandomBytes(random, count)};
      Bytes fast = RandomBytes(random, 4 * count + 2);
      Bytes plain = fast;
      modules::JoinThree(rows[0].data(), rows[1].data(), rows[2].data(), count, fast.data() + 1);
      modules::JoinThreePlain(rows[0].data(), rows[1].data(), rows[2].data(), count, plain.data() + 1);
      ASSERT_EQ(fast, plain) << "three, " << count;
      modules::JoinFour(rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data(), count, fast.data() + 1);
      modules::JoinFourPlain(rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data(), count, plain.data() + 1);
      ASSERT_EQ(fast, plain) << "four, " << count;
      const Bytes pixels = RandomBytes(random, 3 * count);
      modules::SwapOuterBytes(pixels.data(), count, fast.data() + 1);
      modules::SwapOuterBytesPlain(pixels.data(), count, plain.data() + 1);
      ASSERT_EQ(fast, plain) << "swap, " << count;
      modules::SwapOuterBytes(fast.data() + 1, count, fast.data() + 1);
      ASSERT_EQ(Bytes(fast.begin() + 1, fast.begin() + 1 + static_cast<std::ptrdiff_t>(3 * count)), pixels);
    }
  });
}

TEST(PixelRows, EveryWordIsRounded) {
  constexpr std::size_t kWords = 65536;
  Bytes words(2 * kWords);
  Bytes bigWords(2 * kWords);
  Bytes rounded(kWords);
  for (std::size_t i = 0; i < kWords; ++i) {
    const auto word = static_cast<std::uint16_t>(i);
    std::memcpy(&words[2 * i], &word, 2);
    bigWords[2 * i] = static_cast<std::uint8_t>(i >> 8);
    bigWords[2 * i + 1] = static_cast<std::uint8_t>(i);
    rounded[i] = static_cast<std::uint8_t>(std::lround(static_cast<double>(i) / 257));
  }
  test_support::ForEachInstructionSet([&](const char* set) {
    SCOPED_TRACE(set);
    // Also in pieces that are no multiple of a vector.
    for (const std::size_t piece : {kWords, std::size_t{1}, std::size_t{77}}) {
      Bytes fast(kWords), fastBig(kWords);
      for (std::size_t i = 0; i < kWords; i += piece) {
        const std::size_t count = std::min(piece, kWords - i);
        modules::RoundWords(&words[2 * i], count, &fast[i]);
        modules::RoundBigWords(&bigWords[2 * i], count, &fastBig[i]);
      }
      EXPECT_EQ(fast, rounded);
      EXPECT_EQ(fastBig, rounded);
    }
  });
}

TEST(PixelRows, PixelsWorkedByHand) {
  const Bytes a = {1, 2}, b = {3, 4}, c = {5, 6}, d = {7, 8};
  Bytes pixels(6);
  modules::JoinThreePlain(a.data(), b.data(), c.data(), 2, pixels.data());
  EXPECT_EQ(pixels, (Bytes{1, 3, 5, 2, 4, 6}));
  modules::SwapOuterBytesPlain(pixels.data(), 2, pixels.data());
  EXPECT_EQ(pixels, (Bytes{5, 3, 1, 6, 4, 2}));
  pixels.resize(8);
  modules::JoinFourPlain(a.data(), b.data(), c.data(), d.data(), 2, pixels.data());
  EXPECT_EQ(pixels, (Bytes{1, 3, 5, 7, 2, 4, 6, 8}));
}

}  // namespace
