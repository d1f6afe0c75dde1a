#include "modules/common/dib.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/damage.h"
#include "tests/support/dib_writer.h"
#include "tests/support/module_host.h"

namespace modules {
namespace {

using tests::DibRows;
using tests::DibSpec;
using tests::IndexAt;
using tests::Loaded;
using tests::MakeDib;
using tests::PixelAt;
using Bytes = std::vector<std::uint8_t>;

Loaded LoadBytes(std::span<const std::uint8_t> dib, std::size_t dataOffset = 0) {
  Loaded loaded = tests::EmptyExchange();
  loaded.result = LoadDib(dib, dataOffset, *loaded.exchange);
  loaded.message = loaded.exchange->message->c_str();
  return loaded;
}

Loaded LoadSpec(const DibSpec& spec) { return LoadBytes(MakeDib(spec)); }

// A value for each pixel that differs between neighbours and from row to row.
std::uint32_t Scattered(std::uint32_t x, std::uint32_t y) { return (x * 2654435761U + y * 40503U + 12345U) >> 3; }

std::vector<std::uint32_t> SomePalette(std::uint32_t count) {
  std::vector<std::uint32_t> palette;
  for (std::uint32_t i = 0; i < count; ++i) palette.push_back((i * 77731U + 4211U) & 0xFFFFFFU);
  return palette;
}

struct Depth {
  std::uint32_t bits;
  std::int32_t pageBits;
};

TEST(Dib, EveryHeaderReadsEveryDepthBothWaysUp) {
  constexpr std::uint32_t kHeaders[] = {12, 16, 24, 40, 48, 52, 56, 64, 108, 124};
  constexpr Depth kDepths[] = {{1, 1}, {2, 4}, {4, 4}, {8, 8}, {24, 24}};
  for (const std::uint32_t headerSize : kHeaders) {
    for (const Depth depth : kDepths) {
      for (const std::int32_t width : {1, 3, 7, 8, 9, 33}) {
        for (const std::int32_t height : {5, -5}) {
          if (headerSize == 12 && height < 0) continue;  // its height has no sign
          SCOPED_TRACE(std::to_string(headerSize) + " bytes, " + std::to_string(depth.bits) + " bits, " +
                       std::to_string(width) + "x" + std::to_string(height));
          const std::uint32_t mask = (1U << depth.bits) - 1;
          const auto value = [&](std::uint32_t x, std::uint32_t y) { return Scattered(x, y) & mask; };
          DibSpec spec{.headerSize = headerSize, .width = width, .height = height, .bits = depth.bits};
          if (depth.bits <= 8) spec.palette = SomePalette(1U << depth.bits);
          spec.data = DibRows(width, height, depth.bits, value);
          const Loaded loaded = LoadSpec(spec);
          ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
          const Page& page = loaded.PageAt(0);
          ASSERT_EQ(page.bits, depth.pageBits);
          ASSERT_EQ(page.width, width);
          ASSERT_EQ(page.height, 5);
          for (std::uint32_t y = 0; y < 5; ++y) {
            for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(width); ++x) {
              const std::uint32_t colour = depth.bits <= 8 ? spec.palette[value(x, y)] : value(x, y);
              ASSERT_EQ(PixelAt(page, x, y), 0xFF000000U | colour) << x << "," << y;
            }
          }
        }
      }
    }
  }
}

struct Fields {
  const char* name;
  std::uint32_t headerSize;
  std::uint32_t bits;
  std::uint32_t compression;
  std::vector<std::uint32_t> masks;
  std::uint32_t pixel;
  std::int32_t pageBits;
  std::uint32_t expected;
};

TEST(Dib, ColoursComeFromWhereTheMasksSay) {
  const Fields kCases[] = {
      {"555 without masks", 40, 16, 0, {}, 0x7C00, 24, 0xFFFF0000},
      {"555, low levels", 40, 16, 0, {}, 1U << 10 | 2U << 5 | 3U, 24, 0xFF081019},
      {"565", 40, 16, 3, {0xF800, 0x07E0, 0x001F}, 0x07E0, 24, 0xFF00FF00},
      {"565, half", 40, 16, 3, {0xF800, 0x07E0, 0x001F}, 16U << 11 | 32U << 5 | 15U, 24, 0xFF84827B},
      {"444 with alpha behind a short header", 40, 16, 6, {0x0F00, 0x00F0, 0x000F, 0xF000}, 0x7123, 32, 0x77112233},
      {"4444 in the header", 56, 16, 3, {0x0F00, 0x00F0, 0x000F, 0xF000}, 0x8F00, 32, 0x88FF0000},
      {"three masks in the header", 52, 32, 3, {0xFF, 0xFF00, 0xFF0000}, 0x99112233, 24, 0xFF332211},
      {"alpha lowest", 108, 32, 3, {0xFF00, 0xFF0000, 0xFF000000, 0xFF}, 0x11223380, 32, 0x80332211},
      {"usual order with alpha", 124, 32, 3, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 0x40112233, 32, 0x40112233},
      {"usual order without alpha", 124, 32, 3, {0xFF0000, 0xFF00, 0xFF, 0}, 0x40112233, 24, 0xFF112233},
      {"10 bits each", 40, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF}, 1023U << 20 | 512U << 10 | 2U, 24, 0xFFFF8000},
      {"one bit", 40, 16, 3, {0x8000, 0x0001, 0x0010}, 0x8010, 24, 0xFFFF00FF},
      {"20 bits of red", 40, 32, 3, {0xFFFFF000, 0x00000FC0, 0x0000003F}, 0x80000FFF, 24, 0xFF80FFFF},
      {"a colour without mask", 40, 16, 3, {0xFF00, 0, 0x00FF}, 0x1234, 24, 0xFF120034},
      {"24 bits with masks", 40, 24, 3, {0x0000FF, 0x00FF00, 0xFF0000}, 0x112233, 24, 0xFF332211},
      {"no mask at all", 40, 32, 3, {0, 0, 0}, 0x00112233, 24, 0xFF112233},
  };
  for (const Fields& fields : kCases) {
    SCOPED_TRACE(fields.name);
    DibSpec spec{.headerSize = fields.headerSize, .width = 3, .height = 2, .bits = fields.bits};
    spec.compression = fields.compression;
    spec.masks = fields.masks;
    spec.data = DibRows(3, 2, fields.bits,
                        [&](std::uint32_t x, std::uint32_t y) { return x == 1 && y == 0 ? fields.pixel : 0; });
    const Loaded loaded = LoadSpec(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const Page& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, fields.pageBits);
    EXPECT_EQ(PixelAt(page, 1, 0), fields.expected) << std::hex << PixelAt(page, 1, 0);
    EXPECT_EQ(PixelAt(page, 0, 0) & 0xFFFFFFU, 0U);
    EXPECT_EQ(PixelAt(page, 1, 1) & 0xFFFFFFU, 0U);
  }
}

TEST(Dib, FourthByteIsAlphaWhereAnyIsSet) {
  for (const std::uint32_t alpha : {0U, 1U, 0xFFU}) {
    SCOPED_TRACE(alpha);
    DibSpec spec{.width = 1100, .height = 3, .bits = 32};
    spec.data = DibRows(1100, 3, 32, [&](std::uint32_t x, std::uint32_t y) {
      return (x == 1099 && y == 0 ? alpha : 0) << 24 | (Scattered(x, y) & 0xFFFFFF);
    });
    const Loaded loaded = LoadSpec(spec);
    ASSERT_EQ(loaded.result, glib::RCOK);
    const Page& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, alpha == 0 ? 24 : 32);
    EXPECT_EQ(PixelAt(page, 1099, 0) >> 24, alpha == 0 ? 255U : alpha);
    EXPECT_EQ(PixelAt(page, 5, 1) >> 24, alpha == 0 ? 255U : 0U);
    for (std::uint32_t x = 0; x < 1100; ++x) {
      ASSERT_EQ(PixelAt(page, x, 2) & 0xFFFFFF, Scattered(x, 2) & 0xFFFFFF) << x;
    }
  }
}

TEST(Dib, MaskedAlphaOfZeroEverywhereIsOpaque) {
  DibSpec spec{.headerSize = 108, .width = 2, .height = 2, .bits = 32, .compression = 3};
  spec.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  spec.data = DibRows(2, 2, 32, [](std::uint32_t x, std::uint32_t) { return x == 0 ? 0x112233U : 0U; });
  const Loaded loaded = LoadSpec(spec);
  ASSERT_EQ(loaded.PageAt(0).bits, 32);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0), 0xFF112233U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 1, 1), 0xFF000000U);
}

TEST(Dib, PaletteIsAsLongAsTheHeaderAndTheDataOffsetAllow) {
  const auto rows = DibRows(2, 1, 8, [](std::uint32_t x, std::uint32_t) { return x == 0 ? 2U : 9U; });
  struct Case {
    const char* name;
    std::uint32_t declared;
    std::uint32_t written;
    std::size_t dataOffset;
    std::uint32_t entries;
  };
  constexpr Case kCases[] = {
      {"all 256", 0, 256, 0, 256},
      {"ten declared", 10, 10, 0, 10},
      {"offset cuts", 0, 12, 40 + 12 * 4, 12},
      {"more than the depth has", 300, 300, 0, 256},
      {"offset inside the header", 10, 10, 20, 10},
      {"gap before the data", 10, 14, 40 + 14 * 4, 10},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    DibSpec spec{.width = 2, .height = 1, .bits = 8, .declaredColours = c.declared};
    spec.palette = SomePalette(c.written);
    spec.data = rows;
    const Loaded loaded = LoadBytes(MakeDib(spec), c.dataOffset);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const Page& page = loaded.PageAt(0);
    EXPECT_EQ(page.paletteEntries, c.entries);
    EXPECT_EQ(IndexAt(page, 0, 0), 2U);
    EXPECT_EQ(IndexAt(page, 1, 0), 9U);
    EXPECT_EQ(PixelAt(page, 1, 0), 0xFF000000U | spec.palette[9]);
    EXPECT_EQ(page.palette[255], c.entries == 256 ? 0xFF000000U | spec.palette[255] : 0xFF000000U);
  }
}

TEST(Dib, PictureWithoutPaletteIsGrey) {
  DibSpec spec{.width = 3, .height = 1, .bits = 4};
  spec.data = {0x0F, 0x80, 0, 0};
  const Loaded loaded = LoadBytes(MakeDib(spec), 40);
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0), 0xFF000000U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 1, 0), 0xFFFFFFFFU);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 2, 0), 0xFF888888U);
}

TEST(Dib, ResolutionComesFromDotsPerMetre) {
  DibSpec spec{.width = 1, .height = 1, .perMetreX = 11811, .perMetreY = 0};
  spec.data = Bytes(4);
  const Loaded loaded = LoadSpec(spec);
  EXPECT_NEAR(loaded.PageAt(0).dpiX, 300.0, 0.01);
  EXPECT_EQ(loaded.PageAt(0).dpiY, 72.0);
}

struct Runs {
  const char* name;
  std::uint32_t bits;
  Bytes code;
  const char* rows;  // hexadecimal digits of the indices, top row first; '/' between rows
  bool cut = false;
};

TEST(Dib, RunLengthCodes) {
  const Runs kCases[] = {
      {"runs and row ends", 8, {6, 1, 0, 0, 2, 2, 4, 3, 0, 0, 6, 4, 0, 1}, "444444/223333/111111"},
      {"pixels as they are, filled up",
       8,
       {0, 3, 1, 2, 3, 0, 3, 4, 0, 0, 0, 4, 5, 6, 7, 8, 2, 9, 0, 1},
       "000000/567899/123444"},
      {"a move", 8, {1, 1, 0, 2, 2, 1, 1, 5, 0, 1}, "000000/000500/100000"},
      {"early end", 8, {3, 7, 0, 1, 9, 9}, "000000/000000/777000"},
      {"runs that pass the row",
       8,
       {9, 1, 3, 2, 0, 0, 1, 3, 0, 8, 4, 4, 4, 4, 4, 4, 4, 4, 0, 0, 6, 5, 0, 1},
       "555555/344444/111111"},
      {"a move out of the picture", 8, {1, 1, 0, 2, 200, 200, 5, 5}, "000000/000000/100000"},
      {"a row end too many", 8, {6, 1, 0, 0, 6, 2, 0, 0, 6, 3, 0, 0, 6, 4}, "333333/222222/111111"},
      {"no end, all rows there", 8, {6, 1, 0, 0, 6, 2, 0, 0, 6, 3}, "333333/222222/111111"},
      {"cut in the second row", 8, {6, 1, 0, 0, 2, 2}, "000000/220000/111111", true},
      {"cut in pixels as they are", 8, {6, 1, 0, 0, 0, 6, 1, 2, 3}, "000000/000000/111111", true},
      {"halves that take turns",
       4,
       {6, 0x12, 0, 0, 5, 0x34, 1, 0x50, 0, 0, 1, 0xA0, 5, 0xBC, 0, 1},
       "abcbcb/343435/121212"},
      {"halves as they are",
       4,
       {0, 5, 0x12, 0x34, 0x50, 0, 1, 0x60, 0, 0, 1, 0xF0, 0, 3, 0xAB, 0xC0, 0, 1},
       "000000/fabc00/123456"},
      {"halves, one run past the row", 4, {255, 0x78, 0, 1}, "000000/000000/787878"},
  };
  for (const Runs& runs : kCases) {
    SCOPED_TRACE(runs.name);
    DibSpec spec{.width = 6, .height = 3, .bits = runs.bits, .compression = runs.bits == 8 ? 1U : 2U};
    spec.palette = SomePalette(1U << runs.bits);
    spec.data = runs.code;
    const Loaded loaded = LoadSpec(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.message.empty(), !runs.cut);
    std::string rows;
    for (std::uint32_t y = 0; y < 3; ++y) {
      if (y != 0) rows += '/';
      for (std::uint32_t x = 0; x < 6; ++x) rows += "0123456789abcdef"[IndexAt(loaded.PageAt(0), x, y) & 15U];
    }
    EXPECT_EQ(rows, runs.rows);
  }
}

// A slow form of one run, to hold the quick one to.
TEST(Dib, HalfByteRunsStartAndEndAnywhere) {
  constexpr std::uint32_t kWidth = 40;
  for (std::uint8_t start = 0; start < 4; ++start) {
    for (std::uint8_t count = 1; count < 20; ++count) {
      DibSpec spec{.width = kWidth, .height = 1, .bits = 4, .compression = 2};
      spec.palette = SomePalette(16);
      spec.data = {40, 0xEE, 0, 1};
      if (start != 0) spec.data = {start, 0xEE, count, 0x5A, static_cast<std::uint8_t>(40 - start - count), 0xEE, 0, 1};
      if (start == 0) spec.data = {count, 0x5A, static_cast<std::uint8_t>(40 - count), 0xEE, 0, 1};
      const Loaded loaded = LoadSpec(spec);
      for (std::uint32_t x = 0; x < kWidth; ++x) {
        const bool inside = x >= start && x < static_cast<std::uint32_t>(start + count);
        const std::uint32_t expected = !inside ? 0xE : (x - start) % 2 == 0 ? 0x5 : 0xA;
        ASSERT_EQ(IndexAt(loaded.PageAt(0), x, 0), expected) << x << " of " << int{start} << "+" << int{count};
      }
    }
  }
}

TEST(Dib, RunsOfThreeBytes) {
  DibSpec spec{.headerSize = 64, .width = 4, .height = 2, .bits = 24, .compression = 4};
  spec.data = {3, 1, 2, 3, 1, 4, 5, 6, 0, 0, 0, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 0, 1};
  const Loaded loaded = LoadSpec(spec);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const Page& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 2, 1), 0xFF030201U);
  EXPECT_EQ(PixelAt(page, 3, 1), 0xFF060504U);
  EXPECT_EQ(PixelAt(page, 0, 0), 0xFF090807U);
  EXPECT_EQ(PixelAt(page, 2, 0), 0xFF0F0E0DU);
  EXPECT_EQ(PixelAt(page, 3, 0), 0xFF000000U);
}

TEST(Dib, CutRowsStayZeroAndAreSpokenOf) {
  DibSpec spec{.width = 5, .height = 4, .bits = 24};
  spec.data = DibRows(5, 4, 24, [](std::uint32_t, std::uint32_t y) { return 0x010101 * (y + 1); });
  spec.data.resize(2 * 16 + 15);  // the third row lacks its padding alone
  const Loaded loaded = LoadSpec(spec);
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_NE(loaded.message, "");
  for (std::uint32_t y = 0; y < 4; ++y) EXPECT_EQ(PixelAt(loaded.PageAt(0), 4, y) & 255U, y == 0 ? 0 : y + 1);

  spec.data.resize(14);
  const Loaded none = LoadSpec(spec);
  EXPECT_EQ(none.result, glib::IERR);
  EXPECT_EQ(none.PageCount(), 0U);
  EXPECT_NE(none.message, "");
}

struct Refused {
  const char* name;
  DibSpec spec;
  std::uint32_t result;
};

TEST(Dib, RefusesWithTheRightResult) {
  const Refused kCases[] = {
      {"unknown header", {.headerSize = 13, .width = 1, .height = 1}, glib::NSUP},
      {"header of another age", {.headerSize = 200, .width = 1, .height = 1}, glib::NSUP},
      {"no width", {.width = 0, .height = 1}, glib::IERR},
      {"negative width", {.width = -4, .height = 1}, glib::IERR},
      {"no height", {.width = 1, .height = 0}, glib::IERR},
      {"lowest height", {.width = 1, .height = INT32_MIN}, glib::NSUP},
      {"too wide", {.width = 65536, .height = 1}, glib::NSUP},
      {"too many pixels", {.width = 65535, .height = 4097, .bits = 1}, glib::NSUP},
      {"three bits", {.width = 1, .height = 1, .bits = 3}, glib::IERR},
      {"64 bits", {.width = 1, .height = 1, .bits = 64}, glib::IERR},
      {"picture file inside", {.width = 1, .height = 1, .bits = 0, .compression = 5}, glib::NSUP},
      {"fax", {.headerSize = 64, .width = 1, .height = 1, .bits = 1, .compression = 3}, glib::NSUP},
      {"runs of a wrong depth", {.width = 1, .height = 1, .bits = 4, .compression = 1}, glib::IERR},
      {"masks for indices", {.width = 1, .height = 1, .bits = 8, .compression = 3}, glib::IERR},
      {"far more pixels than data", {.width = 60000, .height = 4000, .bits = 8, .compression = 1}, glib::IERR},
      {"far more rows than data", {.width = 60000, .height = 4000, .bits = 1}, glib::IERR},
  };
  for (const Refused& refused : kCases) {
    SCOPED_TRACE(refused.name);
    DibSpec spec = refused.spec;
    spec.data = Bytes(8192);
    const Loaded loaded = LoadSpec(spec);
    EXPECT_EQ(loaded.result, refused.result) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
}

TEST(Dib, LargestSidesAreAllowed) {
  DibSpec spec{.width = 65535, .height = 1, .bits = 1};
  spec.palette = {0, 0xFFFFFF};
  spec.data = Bytes(8192, 0xFF);
  EXPECT_EQ(LoadSpec(spec).result, glib::RCOK);
  std::swap(spec.width, spec.height);
  spec.data = Bytes(65535 * 4, 0xFF);
  EXPECT_EQ(LoadSpec(spec).result, glib::RCOK);
}

TEST(Dib, IconHeightCountsPictureAndMask) {
  DibSpec spec{.width = 3, .height = 8, .bits = 8};
  spec.palette = SomePalette(256);
  spec.data = Bytes(4 * 4 + 4 * 4, 7);
  const Bytes dib = MakeDib(spec);
  DibHeader header;
  DibPlan plan;
  ASSERT_EQ(ReadDibHeader(dib, DibForm::kPictureAndMask, header).result, glib::RCOK);
  ASSERT_EQ(PlanDib(dib, header, 0, plan).result, glib::RCOK);
  EXPECT_EQ(header.height, 4U);
  EXPECT_EQ(plan.dataOffset, 40U + 1024U);
  EXPECT_EQ(plan.maskOffset, 40U + 1024U + 16U);
}

TEST(Dib, DamagedDataEndCleanly) {
  DibSpec runs{.width = 6, .height = 3, .bits = 4, .compression = 2};
  runs.palette = SomePalette(16);
  runs.data = {0, 5, 0x12, 0x34, 0x50, 0, 1, 0x60, 0, 0, 0, 2, 1, 1, 6, 0x25, 0, 1};
  DibSpec fields{.headerSize = 124, .width = 5, .height = -3, .bits = 16, .compression = 3};
  fields.masks = {0xF800, 0x07E0, 0x001F, 0};
  fields.data = DibRows(5, -3, 16, Scattered);
  DibSpec triples{.headerSize = 64, .width = 4, .height = 2, .bits = 24, .compression = 4};
  triples.data = {3, 1, 2, 3, 1, 4, 5, 6, 0, 0, 0, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 0, 1};
  DibSpec alpha{.width = 4, .height = 2, .bits = 32};
  alpha.data = DibRows(4, 2, 32, Scattered);
  DibSpec core{.headerSize = 12, .width = 9, .height = 3, .bits = 1};
  core.palette = {0, 0xFFFFFF};
  core.data = DibRows(9, 3, 1, [](std::uint32_t x, std::uint32_t) { return x & 1U; });
  for (const DibSpec& spec : {runs, fields, triples, alpha, core}) {
    SCOPED_TRACE(spec.headerSize * 1000 + spec.bits);
    tests::TryDamaged(MakeDib(spec), [](std::span<const std::uint8_t> bytes) {
      const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
      return LoadBytes(exact);
    });
  }
}

}  // namespace
}  // namespace modules
