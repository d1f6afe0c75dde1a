#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "modules/qgif/block_output.h"
#include "modules/qgif/frame_packer.h"
#include "modules/qgif/gif_structure.h"
#include "modules/qgif/lzw_decoder.h"
#include "modules/qgif/lzw_encoder.h"
#include "tests/support/lzw_reference.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

struct MemorySink : qgif::ByteSink {
  bool Take(std::span<const std::uint8_t> bytes) override {
    taken.insert(taken.end(), bytes.begin(), bytes.end());
    return true;
  }
  Bytes taken;
};

// Our decoder behind the padding that it asks for; pixels past what it says are not looked at.
Bytes Decode(Bytes codes, unsigned codeSize, std::size_t pixelCount) {
  const std::size_t size = codes.size();
  codes.resize(size + qgif::kCodePadding, 0xFF);
  Bytes pixels(pixelCount + 1, 0xEE);
  const std::size_t count = qgif::DecodeLzw({codes.data(), size}, codeSize, pixels.data(), pixelCount);
  EXPECT_EQ(pixels[pixelCount], 0xEE) << "written past the end";
  pixels.resize(count);
  return pixels;
}

enum class Kind { kNoise, kRuns, kFlat, kGradient, kPeriods };

Bytes MakePixels(Kind kind, std::size_t count, unsigned colours, std::uint32_t seed) {
  std::mt19937 random(seed);
  Bytes pixels(count);
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    switch (kind) {
      case Kind::kNoise:
        value = static_cast<std::uint32_t>(random());
        break;
      case Kind::kRuns:
        if (random() % 23 == 0) value = static_cast<std::uint32_t>(random());
        break;
      case Kind::kFlat:
        value = colours - 1;
        break;
      case Kind::kGradient:
        value = static_cast<std::uint32_t>(i / 97) + random() % 2;
        break;
      case Kind::kPeriods:
        value = static_cast<std::uint32_t>(i % 37 * (i / 4000 + 1));
        break;
    }
    pixels[i] = static_cast<std::uint8_t>(value % colours);
  }
  return pixels;
}

struct LzwCase {
  Kind kind;
  unsigned colours;
};

class LzwRoundTrip : public testing::TestWithParam<LzwCase> {};

// Every form of the coder against the plain one. The longest picture is long enough for a table to be kept full.
TEST_P(LzwRoundTrip, AllFormsAgree) {
  const auto [kind, colours] = GetParam();
  const unsigned codeSize = qgif::CodeSizeFor(colours - 1);
  qgif::LzwEncoder encoder;
  for (const std::size_t count : {1U, 2U, 3U, 255U, 5000U, 60000U, 150000U}) {
    SCOPED_TRACE(count);
    const Bytes pixels = MakePixels(kind, count, colours, 7);
    const Bytes plain = support::EncodeLzwPlainly(pixels, codeSize);
    EXPECT_EQ(Decode(plain, codeSize, count), pixels);

    MemorySink sink;
    qgif::BlockOutput output(sink);
    encoder.Encode({pixels.data(), count, static_cast<std::uint32_t>(count), 1, false}, codeSize,
                   qgif::ClearTableFor(count), output);
    ASSERT_TRUE(output.Flush());
    ASSERT_EQ(sink.taken.front(), codeSize);
    ASSERT_EQ(sink.taken.back(), 0);
    const Bytes codes = support::JoinBlocks(sink.taken, 1);
    EXPECT_EQ(support::DecodeLzwPlainly(codes, codeSize, count + 100), pixels) << "or pixels too many";
    EXPECT_EQ(Decode(codes, codeSize, count), pixels);
    if (count < 100000) {
      EXPECT_EQ(codes, plain);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Pictures, LzwRoundTrip,
                         testing::Values(LzwCase{Kind::kNoise, 256}, LzwCase{Kind::kNoise, 129},
                                         LzwCase{Kind::kNoise, 2}, LzwCase{Kind::kNoise, 16}, LzwCase{Kind::kRuns, 256},
                                         LzwCase{Kind::kRuns, 5}, LzwCase{Kind::kFlat, 1}, LzwCase{Kind::kFlat, 256},
                                         LzwCase{Kind::kGradient, 200}, LzwCase{Kind::kGradient, 17},
                                         LzwCase{Kind::kPeriods, 256}, LzwCase{Kind::kPeriods, 32}));

// Rows of a part of a plane, in either order.
TEST(LzwEncoder, TakesRowsByStrideAndOrder) {
  constexpr std::uint32_t kStride = 41;
  const Bytes plane = MakePixels(Kind::kRuns, kStride * 30, 100, 3);
  qgif::LzwEncoder encoder;
  for (const std::uint32_t height : {1U, 2U, 3U, 4U, 5U, 8U, 9U, 17U, 29U}) {
    for (const bool interlaced : {false, true}) {
      const std::uint32_t width = 1 + height;
      MemorySink sink;
      qgif::BlockOutput output(sink);
      encoder.Encode({plane.data() + 5, kStride, width, height, interlaced}, 7, qgif::ClearTable::kWhenBehind, output);
      output.Flush();
      const Bytes decoded = Decode(support::JoinBlocks(sink.taken, 1), 7, std::size_t{width} * height);
      Bytes expected;
      std::vector<std::uint32_t> order;
      for (const std::uint32_t start : {0U, 4U, 2U, 1U}) {
        for (std::uint32_t y = start; y < height; y += start == 0 ? 8 : start * 2) order.push_back(y);
      }
      if (!interlaced) std::sort(order.begin(), order.end());
      for (const std::uint32_t y : order) {
        const auto row = plane.begin() + 5 + y * kStride;
        expected.insert(expected.end(), row, row + width);
      }
      EXPECT_EQ(decoded, expected) << height << (interlaced ? " interlaced" : "");
    }
  }
}

// Whatever the codes are, both decoders see the same pixels.
TEST(LzwDecoder, DamagedCodesAgreeWithThePlainForm) {
  std::mt19937 random(11);
  for (unsigned codeSize = 1; codeSize <= 8; ++codeSize) {
    const Bytes pixels = MakePixels(Kind::kRuns, 3000, 1U << codeSize, codeSize);
    const Bytes good = support::EncodeLzwPlainly(pixels, codeSize);
    for (int i = 0; i < 300; ++i) {
      Bytes codes = good;
      codes.resize(1 + random() % codes.size());
      for (unsigned k = random() % 4; k-- > 0;) codes[random() % codes.size()] = static_cast<std::uint8_t>(random());
      ASSERT_EQ(Decode(codes, codeSize, 2900), support::DecodeLzwPlainly(codes, codeSize, 2900))
          << codeSize << " " << i;
    }
  }
}

// Without a choice the same bytes come out; with choices every pixel is one of the two, and what a run may join it
// does.
TEST(LzwEncoder, ChoosesBetweenIndices) {
  std::mt19937 random(5);
  qgif::LzwEncoder encoder;
  for (const unsigned codeSize : {2U, 4U, 5U, 8U}) {
    for (const Kind kind : {Kind::kNoise, Kind::kRuns, Kind::kGradient}) {
      for (const std::size_t count : {1U, 2U, 9U, 3000U, 130000U}) {
        SCOPED_TRACE(std::to_string(codeSize) + " " + std::to_string(count));
        const Bytes pixels = MakePixels(kind, count, 1U << codeSize, 9);
        MemorySink plain;
        MemorySink same;
        MemorySink chosen;
        qgif::BlockOutput plainOutput(plain);
        qgif::BlockOutput sameOutput(same);
        qgif::BlockOutput chosenOutput(chosen);
        encoder.Encode({pixels.data(), count, static_cast<std::uint32_t>(count), 1, false}, codeSize,
                       qgif::ClearTable::kWhenBehind, plainOutput);
        encoder.EncodeChoices(pixels.data(), pixels.data(), count, codeSize, qgif::ClearTable::kWhenBehind, sameOutput);
        Bytes others = pixels;
        for (std::uint8_t& other : others) other = random() % 4 != 0 ? std::uint8_t{1} : other;
        encoder.EncodeChoices(pixels.data(), others.data(), count, codeSize, qgif::ClearTable::kWhenBehind,
                              chosenOutput);
        ASSERT_TRUE(plainOutput.Flush() && sameOutput.Flush() && chosenOutput.Flush());
        EXPECT_TRUE(plain.taken == same.taken);
        const Bytes decoded = Decode(support::JoinBlocks(chosen.taken, 1), codeSize, count);
        ASSERT_EQ(decoded.size(), count);
        for (std::size_t i = 0; i < count; ++i) ASSERT_TRUE(decoded[i] == pixels[i] || decoded[i] == others[i]) << i;
        if (count >= 3000 && kind == Kind::kNoise) {
          EXPECT_LT(chosen.taken.size(), plain.taken.size());
        }
      }
    }
  }
}

// The shortest of all ways is no longer than the plain ones, and every pixel is one of the two that it may be.
TEST(FramePacker, PacksChangesTheShortestWay) {
  for (const Kind kind : {Kind::kNoise, Kind::kRuns, Kind::kGradient, Kind::kPeriods}) {
    std::mt19937 random(8);
    qgif::ChangedFrame frame;
    frame.area = {0, 0, 300, 100};
    frame.transparent = 31;
    frame.choices = true;
    frame.drawn = MakePixels(kind, 30000, 31, 4);
    frame.sparse = frame.drawn;
    for (std::size_t i = 0; i < frame.sparse.size();) {
      const std::size_t end = std::min(frame.sparse.size(), i + random() % 90);
      if (random() % 2 == 0)
        std::fill(frame.sparse.begin() + static_cast<std::ptrdiff_t>(i),
                  frame.sparse.begin() + static_cast<std::ptrdiff_t>(end), std::uint8_t{31});
      i = end + 1;
    }
    MemorySink packed;
    qgif::BlockOutput packedOutput(packed);
    qgif::FramePacker(packedOutput).PackChanges(frame, 5);
    packedOutput.Flush();
    for (const Bytes& plane : {frame.drawn, frame.sparse}) {
      for (const auto clear : {qgif::ClearTable::kAtOnce, qgif::ClearTable::kWhenBehind}) {
        MemorySink plain;
        qgif::BlockOutput output(plain);
        qgif::LzwEncoder().Encode({plane.data(), 300, 300, 100, false}, 5, clear, output);
        output.Flush();
        EXPECT_LE(packed.taken.size(), plain.taken.size());
        EXPECT_EQ(Decode(support::JoinBlocks(plain.taken, 1), 5, plane.size()), plane);
      }
    }
    const Bytes decoded = Decode(support::JoinBlocks(packed.taken, 1), 5, frame.drawn.size());
    ASSERT_EQ(decoded.size(), frame.drawn.size());
    for (std::size_t i = 0; i < decoded.size(); ++i) {
      ASSERT_TRUE(decoded[i] == frame.drawn[i] || decoded[i] == frame.sparse[i]) << i;
    }
  }
}

// A table that is never cleared keeps its last entry, and the codes stay at their widest.
TEST(LzwDecoder, KeepsAFullTable) {
  const Bytes pixels = MakePixels(Kind::kNoise, 400000, 3, 5);
  qgif::LzwEncoder encoder;
  MemorySink sink;
  qgif::BlockOutput output(sink);
  encoder.Encode({pixels.data(), 400, 400, 1000, false}, 2, qgif::ClearTable::kWhenBehind, output);
  output.Flush();
  const Bytes codes = support::JoinBlocks(sink.taken, 1);
  EXPECT_EQ(Decode(codes, 2, pixels.size()), pixels);
  EXPECT_LT(codes.size(), support::EncodeLzwPlainly(pixels, 2).size());
}

TEST(LzwDecoder, RefusesCodeSizesThatNoIndexHas) {
  for (const unsigned codeSize : {0U, 9U, 12U, 255U}) EXPECT_TRUE(Decode(Bytes(50, 0), codeSize, 10).empty());
}

}  // namespace
