#include <gtest/gtest.h>
#include <lzma.h>
#include <zlib.h>

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/modules/qjpg/jpeg_files.h"
#include "tests/modules/qpng/png_files.h"
#include "tests/modules/qswf/swf_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kSwfId = 0x3000001B;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;
constexpr std::uint32_t kGreen = 0xFF00FF00;

std::vector<std::uint8_t> Packed(std::span<const std::uint8_t> bytes) {
  std::vector<std::uint8_t> packed(compressBound(bytes.size()));
  uLongf size = packed.size();
  compress(packed.data(), &size, bytes.data(), bytes.size());
  packed.resize(size);
  return packed;
}

std::vector<std::uint8_t> AsCws(std::vector<std::uint8_t> file) {
  const auto packed = Packed(std::span(file).subspan(8));
  file.resize(8);
  file[0] = 'C';
  file.insert(file.end(), packed.begin(), packed.end());
  return file;
}

std::vector<std::uint8_t> RedBox() {
  return SwfWriter(20, 10).Box(1, 2, 3, 8, 9, {255, 0, 0}).Place(1, 1).Show().File();
}

class Qswf : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Load(const std::vector<std::uint8_t>& bytes) const {
    Loaded loaded = host_.Load(bytes, kSwfId);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    return loaded;
  }

  ModuleHost host_{"qswf"};
};

TEST_F(Qswf, ShapesLieOnTheBackground) {
  for (const bool packed : {false, true}) {
    const Loaded loaded = Load(packed ? AsCws(RedBox()) : RedBox());
    ASSERT_EQ(loaded.PageCount(), 1U);
    const auto& page = loaded.PageAt(0);
    EXPECT_EQ(page.bits, 24);
    ASSERT_EQ(page.width, 20);
    ASSERT_EQ(page.height, 10);
    EXPECT_EQ(PixelAt(page, 2, 3), kRed);
    EXPECT_EQ(PixelAt(page, 7, 8), kRed);
    EXPECT_EQ(PixelAt(page, 8, 8), kWhite);
    EXPECT_EQ(PixelAt(page, 2, 2), kWhite);
  }
  SwfWriter movie(4, 4);
  movie.Tag(9, BitWriter().Color({0, 0, 255})).Show();
  EXPECT_EQ(PixelAt(Load(movie.File()).PageAt(0), 3, 3), kBlue);
}

TEST_F(Qswf, SeeThroughColorsMixWithWhatIsBelow) {
  SwfWriter movie(10, 10);
  movie.Box(1, 0, 0, 5, 10, {0, 0, 255}).Box(2, 0, 0, 10, 5, {255, 0, 0, 128}).Place(1, 1).Place(2, 2).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 2, 8), kBlue);
  const auto near = [](std::uint32_t pixel, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    const auto part = [&](int shift) { return static_cast<int>(pixel >> shift & 255); };
    return std::abs(part(16) - static_cast<int>(red)) <= 1 && std::abs(part(8) - static_cast<int>(green)) <= 1 &&
           std::abs(part(0) - static_cast<int>(blue)) <= 1;
  };
  EXPECT_TRUE(near(PixelAt(page, 2, 2), 128, 0, 127)) << std::hex << PixelAt(page, 2, 2);
  EXPECT_TRUE(near(PixelAt(page, 8, 2), 255, 127, 127)) << std::hex << PixelAt(page, 8, 2);
}

TEST_F(Qswf, MatricesColorsAndDepths) {
  SwfWriter movie(20, 10);
  movie.Box(1, 0, 0, 4, 4, {255, 0, 0}).Box(2, 0, 0, 4, 4, {0, 0, 255});
  movie.Place(2, 5, 2, 0).Place(1, 3, 0, 0);
  // Twice as wide, and its red turned into green.
  BitWriter place;
  place.Byte(0x0E).Word(9).Word(1).Matrix(131072, 65536, 10 * 20, 4 * 20);
  place.Bits(2, 3).Bits(4, 10);
  for (const int times : {0, 256, 256, 256}) place.Bits(10, times);
  for (const int plus : {0, 255, 0, 0}) place.Bits(10, plus);
  movie.Tag(26, place).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 0, 0), kRed);
  EXPECT_EQ(PixelAt(page, 2, 0), kBlue);  // above
  EXPECT_EQ(PixelAt(page, 10, 4), kGreen);
  EXPECT_EQ(PixelAt(page, 17, 7), kGreen);
  EXPECT_EQ(PixelAt(page, 18, 7), kWhite);
}

TEST_F(Qswf, ClipsHoldUpToTheirDepth) {
  SwfWriter movie(20, 10);
  movie.Box(1, 0, 0, 20, 10, {255, 0, 0}).Box(2, 0, 0, 5, 10, {0, 0, 0}).Box(3, 10, 0, 12, 2, {0, 0, 255});
  movie.Place(2, 1, 0, 0, 4).Place(1, 2).Place(3, 5).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 4, 5), kRed);
  EXPECT_EQ(PixelAt(page, 5, 5), kWhite);
  EXPECT_EQ(PixelAt(page, 10, 0), kBlue);
}

TEST_F(Qswf, LinesHaveTheirWidth) {
  BitWriter data;
  data.Word(1).Rect(0, 0, 400, 200).Byte(0).Byte(1).Word(80).Color({255, 0, 0}).StyleBits();
  data.Polygon({{40, 100}, {360, 100}}, 0, 0, 1).EndShape();
  SwfWriter movie(20, 10);
  movie.Tag(2, data).Place(1, 1).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 10, 3), kRed);
  EXPECT_EQ(PixelAt(page, 10, 6), kRed);
  EXPECT_EQ(PixelAt(page, 10, 2), kWhite);
  EXPECT_EQ(PixelAt(page, 10, 7), kWhite);
}

TEST_F(Qswf, AHoleAndItsFillShareTheirEdges) {
  // The inner box has the outer fill on its left and its own on its right.
  BitWriter data;
  data.Word(1).Rect(0, 0, 200, 200).Byte(2).Byte(0).Color({255, 0, 0}).Byte(0).Color({0, 0, 255}).Byte(0).StyleBits();
  data.Polygon({{0, 0}, {200, 0}, {200, 200}, {0, 200}}, 0, 1, 0);
  data.Polygon({{60, 60}, {140, 60}, {140, 140}, {60, 140}}, 1, 2, 0).EndShape();
  SwfWriter movie(10, 10);
  movie.Tag(2, data).Place(1, 1).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  for (std::uint32_t i = 0; i < 10; ++i) {
    EXPECT_EQ(PixelAt(page, i, 5), i >= 3 && i < 7 ? kBlue : kRed) << i;
  }
}

TEST_F(Qswf, GradientsRunThroughTheirStops) {
  // From black at the left to white at the right, over 32 pixels.
  BitWriter data;
  data.Word(1).Rect(0, 0, 640, 200).Byte(1).Byte(0x10).Matrix(65536 * 640 / 32768, 65536 * 640 / 32768, 320, 100);
  data.Byte(2).Byte(0).Color({0, 0, 0}).Byte(255).Color({255, 255, 255}).Byte(0).StyleBits();
  data.Polygon({{0, 0}, {640, 0}, {640, 200}, {0, 200}}, 0, 1, 0).EndShape();
  SwfWriter movie(32, 10);
  movie.Tag(2, data).Place(1, 1).Show();
  const Loaded loaded = Load(movie.File());
  for (std::uint32_t x = 0; x < 32; ++x) {
    const double expected = (x + 0.5) / 32 * 255;
    EXPECT_NEAR(PixelAt(loaded.PageAt(0), x, 5) & 255, expected, 3.0) << x;
  }
}

// A bitmap of 2 x 2 pixels: opaque red, half green; half blue, nothing.
BitWriter SmallBitmap(std::uint32_t number) {
  const std::uint8_t kPixels[] = {255, 255, 0, 0, 128, 0, 128, 0, 128, 0, 0, 128, 0, 0, 0, 0};
  BitWriter data;
  return data.Word(number).Byte(5).Word(2).Word(2).Bytes(Packed(kPixels));
}

BitWriter BitmapBox(std::uint32_t number, std::uint32_t bitmap, std::uint32_t kind, std::int32_t side) {
  BitWriter data;
  data.Word(number)
      .Rect(0, 0, side * 20, side * 20)
      .Byte(1)
      .Byte(kind)
      .Word(bitmap)
      .Matrix(65536 * 20, 65536 * 20, 0, 0);
  data.Byte(0).StyleBits();
  data.Polygon({{0, 0}, {side * 20, 0}, {side * 20, side * 20}, {0, side * 20}}, 0, 1, 0);
  return data.EndShape();
}

TEST_F(Qswf, BitmapsFillAndRepeat) {
  SwfWriter movie(8, 8);
  movie.Tag(36, SmallBitmap(1)).Tag(2, BitmapBox(2, 1, 0x40, 6)).Place(2, 1).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  for (std::uint32_t at = 0; at < 6; at += 2) {
    EXPECT_EQ(PixelAt(page, at, at), kRed);
    EXPECT_EQ(PixelAt(page, at + 1, at + 1), kWhite);
    EXPECT_NEAR(PixelAt(page, at + 1, at) >> 16 & 255, 127, 1);
    EXPECT_NEAR(PixelAt(page, at + 1, at) >> 8 & 255, 255, 1);
  }
  EXPECT_EQ(PixelAt(page, 6, 6), kWhite);
}

TEST_F(Qswf, JpegBitmapsOfEachKind) {
  const Bytes jpeg = MakeJpeg({.width = 16, .height = 16});
  const std::uint8_t kLead[] = {0xFF, 0xD9, 0xFF, 0xD8};
  const std::vector<std::uint8_t> clear(256, 0);
  BitWriter plain;
  plain.Word(1).Bytes(kLead).Bytes(jpeg);
  BitWriter alpha;
  ByteWriter length;
  length.Long(static_cast<std::uint32_t>(jpeg.size()));
  alpha.Word(1).Bytes(length.bytes).Bytes(jpeg).Bytes(Packed(clear));
  for (const bool hidden : {false, true}) {
    SwfWriter movie(16, 16);
    movie.Tag(hidden ? 35 : 21, hidden ? alpha : plain).Tag(2, BitmapBox(2, 1, 0x41, 16)).Place(2, 1).Show();
    const Loaded loaded = Load(movie.File());
    std::uint32_t coloured = 0;
    for (std::uint32_t i = 0; i < 16; ++i) coloured += PixelAt(loaded.PageAt(0), i, i) != kWhite ? 1 : 0;
    EXPECT_EQ(coloured, hidden ? 0U : 16U);
  }
}

TEST_F(Qswf, AMovieOfBitmapsGivesThem) {
  SwfWriter movie(20, 20);
  movie.Tag(36, SmallBitmap(7)).Tag(36, SmallBitmap(3)).Show();
  const Loaded loaded = Load(movie.File());
  ASSERT_EQ(loaded.PageCount(), 2U);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, 32);
  EXPECT_EQ(page.width, 2);
  EXPECT_EQ(page.delay, 10U);
  EXPECT_EQ(PixelAt(page, 1, 0), 0x8000FF00U);  // no longer multiplied
  EXPECT_EQ(PixelAt(page, 1, 1), 0U);
}

TEST_F(Qswf, TextShowsItsGlyphs) {
  // A glyph that is the em's lower half, and one that is nothing.
  const auto glyph = [](bool full) {
    BitWriter data;
    data.Byte(0x10);
    if (full) {
      data.Bits(6, 0b000101).Bits(5, 12).Bits(12, 0).Bits(12, -512).Bits(1, 1);
      const std::int32_t kSteps[][2] = {{1024, 0}, {0, 512}, {-1024, 0}, {0, -512}};
      for (const auto& step : kSteps) data.Bits(2, 3).Bits(4, 10).Bits(1, 1).Bits(12, step[0]).Bits(12, step[1]);
    }
    return data.Bits(6, 0);
  };
  const auto full = glyph(true).Result();
  const auto empty = glyph(false).Result();
  BitWriter font;
  font.Word(1).Word(4).Word(static_cast<std::uint32_t>(4 + full.size())).Bytes(full).Bytes(empty);
  BitWriter text;
  text.Word(2).Rect(0, 0, 400, 200).Matrix(65536, 65536, 0, 0).Byte(1).Byte(12);
  text.Byte(0x8F).Word(1).Color({255, 0, 0}).Word(20).Word(160).Word(80);
  text.Byte(3).Bits(1, 0).Bits(12, 80).Bits(1, 1).Bits(12, 80).Bits(1, 0).Bits(12, 80).Byte(0);
  SwfWriter movie(20, 10);
  movie.Tag(10, font).Tag(11, text).Place(2, 1).Show();
  const Loaded loaded = Load(movie.File());
  const auto& page = loaded.PageAt(0);
  for (std::uint32_t x = 0; x < 20; ++x) {
    const bool inked = (x >= 1 && x < 5) || (x >= 9 && x < 13);
    EXPECT_EQ(PixelAt(page, x, 7), inked ? kRed : kWhite) << x;
    EXPECT_EQ(PixelAt(page, x, 5), kWhite) << x;
  }
}

TEST_F(Qswf, FramesThatChangeArePages) {
  SwfWriter movie(10, 10);
  movie.Box(1, 0, 0, 5, 5, {255, 0, 0}).Place(1, 1).Show().Show().Show();
  BitWriter move;
  move.Byte(0x05).Word(1).Matrix(65536, 65536, 100, 100);
  movie.Tag(26, move).Show().Tag(28, BitWriter().Word(1)).Show();
  const Loaded loaded = Load(movie.File());
  ASSERT_EQ(loaded.PageCount(), 3U);
  EXPECT_EQ(loaded.PageAt(0).delay, 30U);
  EXPECT_EQ(loaded.PageAt(1).delay, 10U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0), kRed);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), kWhite);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 9, 9), kRed);
  EXPECT_EQ(PixelAt(loaded.PageAt(2), 9, 9), kWhite);
}

TEST_F(Qswf, SpritesAndMorphsShowTheirStart) {
  SwfWriter inner(1, 1);
  BitWriter sprite;
  sprite.Word(5).Word(2);
  // The tags of a movie behind its head, up to its end.
  const auto head = SwfWriter(1, 1).File().size() - 2;
  const auto body = inner.Place(1, 1, 2, 2).Show().Place(1, 2, 6, 6).Show().File();
  sprite.Bytes(std::span(body).subspan(head));
  BitWriter morph;
  morph.Word(6).Rect(0, 0, 40, 40).Rect(0, 0, 99, 99).Word(0).Word(0);
  morph.Byte(1).Byte(0).Color({0, 0, 255, 255}).Color({0, 255, 0, 255}).Byte(0).StyleBits();
  morph.Polygon({{0, 0}, {40, 0}, {40, 40}, {0, 40}}, 0, 1, 0).EndShape();
  SwfWriter movie(10, 10);
  movie.Box(1, 0, 0, 2, 2, {255, 0, 0}).Tag(39, sprite).Tag(46, morph).Place(5, 1).Place(6, 2, 8, 0).Show();
  const Loaded loaded = Load(movie.File());
  ASSERT_EQ(loaded.PageCount(), 1U);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 3, 3), kRed);
  EXPECT_EQ(PixelAt(page, 7, 7), kWhite);
  EXPECT_EQ(PixelAt(page, 9, 1), kBlue);
}

TEST_F(Qswf, SpritesInSpritesEnd) {
  // Each holds the next twice, forty deep, and the last the first.
  SwfWriter movie(4, 4);
  movie.Box(1, 0, 0, 4, 4, {255, 0, 0});
  const auto head = SwfWriter(1, 1).File().size() - 2;
  for (std::uint32_t i = 0; i < 40; ++i) {
    BitWriter sprite;
    sprite.Word(10 + i).Word(1);
    const std::uint32_t next = i == 39 ? 10 : 11 + i;
    const auto body = SwfWriter(1, 1).Place(next, 1).Place(next, 2).Place(1, 3).Show().File();
    movie.Tag(39, sprite.Bytes(std::span(body).subspan(head)));
  }
  const Loaded loaded = Load(movie.Place(10, 1).Show().File());
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 2, 2), kRed);
}

TEST_F(Qswf, InformationComesFromTheHeader) {
  const test_support::TemporaryFolder folder;
  const auto file = AsCws(RedBox());
  const auto info =
      host_.Info(folder.Write("m.swf", {reinterpret_cast<const char*>(file.data()), file.size()}), kSwfId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, 20);
  EXPECT_EQ(info->height, 10);
  EXPECT_EQ(info->bits(), 24);
  EXPECT_EQ(info->pages, 1);
}

TEST_F(Qswf, AbsurdSizesAreRefused) {
  for (const auto& [width, height] : {std::pair{0, 5}, {-3, 5}, {26000, 26000}, {4200, 4200}}) {
    const Loaded loaded = host_.Load(SwfWriter(width, height).Show().File(), kSwfId);
    EXPECT_NE(loaded.result, glib::RCOK) << width;
    CheckOutcome(loaded);
  }
  SwfWriter movie(4, 4);
  BitWriter bitmap;
  bitmap.Word(1).Byte(5).Word(65535).Word(65535).Bytes(Packed(std::vector<std::uint8_t>(100)));
  const Loaded loaded = host_.Load(movie.Tag(20, bitmap).Show().File(), kSwfId);
  EXPECT_EQ(loaded.result, glib::NSUP);
  CheckOutcome(loaded);
}

// A frame of a film of 16 by 16 pixels: the upper half of one colour, the lower of another, blue first.
BitWriter ScreenFrame(std::uint32_t film, std::uint32_t number, std::initializer_list<std::uint8_t> upper,
                      std::initializer_list<std::uint8_t> lower) {
  std::vector<std::uint8_t> pixels;
  for (int i = 0; i < 256; ++i) {
    const auto& color = i < 128 ? lower : upper;  // the lowest row comes first
    pixels.insert(pixels.end(), color.begin(), color.end());
  }
  const auto packed = Packed(pixels);
  BitWriter frame;
  frame.Word(film).Word(number).Bits(4, 0).Bits(12, 16).Bits(4, 0).Bits(12, 16);
  frame.Byte(static_cast<std::uint32_t>(packed.size() >> 8)).Byte(static_cast<std::uint32_t>(packed.size() & 255));
  return frame.Bytes(packed);
}

// A film that is shown twice as wide as its frames are, at the frames that `ratios` say.
std::vector<std::uint8_t> Film(std::initializer_list<std::uint32_t> ratios) {
  SwfWriter movie(40, 20);
  movie.Tag(60, BitWriter().Word(7).Word(2).Word(32).Word(16).Byte(0).Byte(3));
  bool placed = false;
  for (const std::uint32_t ratio : ratios) {
    BitWriter place;
    place.Byte(placed ? 0x11 : 0x16).Word(1);
    if (!placed) place.Word(7).Matrix(65536, 65536, 4 * 20, 2 * 20);
    movie.Tag(26, place.Word(ratio)).Show();
    placed = true;
  }
  movie.Tag(61, ScreenFrame(7, 1, {255, 0, 0}, {0, 255, 0})).Tag(61, ScreenFrame(7, 3, {0, 0, 255}, {0, 255, 0}));
  return movie.File();
}

TEST_F(Qswf, FilmsShowTheFrameThatIsPlaced) {
  // Before its first frame a film shows nothing; a frame lasts until the next, and the way back is open.
  const Loaded loaded = Load(Film({0, 1, 2, 4, 1}));
  ASSERT_EQ(loaded.PageCount(), 5U);
  const std::uint32_t upper[] = {kWhite, kBlue, kBlue, kRed, kBlue};
  for (std::uint32_t i = 0; i < 5; ++i) {
    const auto& page = loaded.PageAt(i);
    EXPECT_EQ(PixelAt(page, 5, 3), upper[i]) << i;
    EXPECT_EQ(PixelAt(page, 35, 8), upper[i]) << i;
    EXPECT_EQ(PixelAt(page, 35, 12), i == 0 ? kWhite : kGreen) << i;
    EXPECT_EQ(PixelAt(page, 3, 3), kWhite) << i;
    EXPECT_EQ(PixelAt(page, 36, 3), kWhite) << i;
  }
}

// As a movie is packed by LZMA: the settings stand before the data, the length that the library puts there does not.
std::vector<std::uint8_t> AsZws(const std::vector<std::uint8_t>& file) {
  lzma_options_lzma options;
  lzma_lzma_preset(&options, 1);
  lzma_stream stream = LZMA_STREAM_INIT;
  EXPECT_EQ(lzma_alone_encoder(&stream, &options), LZMA_OK);
  std::vector<std::uint8_t> packed(file.size() + 1000);
  stream.next_in = file.data() + 8;
  stream.avail_in = file.size() - 8;
  stream.next_out = packed.data();
  stream.avail_out = packed.size();
  EXPECT_EQ(lzma_code(&stream, LZMA_FINISH), LZMA_STREAM_END);
  packed.resize(packed.size() - stream.avail_out);
  lzma_end(&stream);
  ByteWriter out;
  out.Text("ZWS").Byte(13).Long(static_cast<std::uint32_t>(file.size()));
  out.Long(static_cast<std::uint32_t>(packed.size() - 13)).Bytes(std::span(packed).first(5));
  return out.Bytes(std::span(packed).subspan(13)).bytes;
}

TEST_F(Qswf, MoviesMayBePackedByLzma) {
  const auto file = AsZws(RedBox());
  EXPECT_EQ(PixelAt(Load(file).PageAt(0), 2, 3), kRed);
  const test_support::TemporaryFolder folder;
  const auto info =
      host_.Info(folder.Write("m.swf", {reinterpret_cast<const char*>(file.data()), file.size()}), kSwfId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, 20);
  TryDamaged(file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kSwfId); });
}

TEST_F(Qswf, BitmapsMayBePng) {
  // One bit a pixel; the second colour isn't there at all.
  const PngOptions options{.width = 9, .height = 2, .type = PNG_COLOR_TYPE_PALETTE, .depth = 1, .alphas = {255, 0}};
  const auto png = MakePng(options);
  const png_color first = PngPaletteColour(0);
  const std::uint32_t seen = 0xFF000000U | static_cast<std::uint32_t>(first.red << 16 | first.green << 8 | first.blue);
  for (const std::uint32_t code : {21U, 35U}) {
    SwfWriter movie(10, 4);
    BitWriter bitmap;
    bitmap.Word(1);
    for (std::uint32_t i = 0; code == 35 && i < 4; ++i) {
      bitmap.Byte(static_cast<std::uint32_t>(png.size()) >> (8 * i) & 255);
    }
    movie.Tag(code, bitmap.Bytes(png)).Place(1, 1).Show();
    const Loaded loaded = Load(movie.File());
    for (std::uint32_t x = 0; x < 9; ++x) {
      for (std::uint32_t y = 0; y < 2; ++y) {
        const std::uint32_t wanted = StoredSample(options, x, y, 0) == 0 ? seen : kWhite;
        EXPECT_EQ(PixelAt(loaded.PageAt(0), x, y), wanted) << code << ": " << x << ", " << y;
      }
    }
  }
}

// A box of text: flags, then what they announce.
BitWriter TextBox(std::uint32_t number, std::uint32_t flags, std::uint32_t more) {
  BitWriter box;
  box.Word(number).Rect(0, 0, 80 * 20, 40 * 20).Byte(flags).Byte(more);
  return box;
}

int Inked(const Loaded& loaded, std::uint32_t left, std::uint32_t right, std::uint32_t top, std::uint32_t bottom) {
  int count = 0;
  for (std::uint32_t y = top; y < bottom; ++y) {
    for (std::uint32_t x = left; x < right; ++x) count += PixelAt(loaded.PageAt(0), x, y) != kWhite ? 1 : 0;
  }
  return count;
}

TEST_F(Qswf, TextBoxesShowWhatTheyHoldAtFirst) {
  constexpr std::string_view kText = "HHHH HHHH HHH";
  const auto bytes = [](std::string_view text) { return std::vector<std::uint8_t>(text.begin(), text.end()); };
  SwfWriter plain(80, 40);
  BitWriter box = TextBox(1, 0x80 | 0x40 | 0x04 | 0x01, 0x20);  // text, wrapped, a colour, a font
  box.Word(9).Word(12 * 20).Color({255, 0, 0, 255}).Byte(1).Word(0).Word(0).Word(0).Word(0);  // to the right
  plain.Tag(37, box.Byte(0).Bytes(bytes(kText)).Byte(0)).Place(1, 1).Show();
  const Loaded loaded = Load(plain.File());
  EXPECT_GT(Inked(loaded, 40, 78, 2, 15), 40);
  EXPECT_GT(Inked(loaded, 50, 78, 16, 32), 30);  // the word that there is no room for
  EXPECT_EQ(Inked(loaded, 0, 45, 18, 40), 0);
  std::uint32_t red = 0;
  for (std::uint32_t x = 40; x < 78; ++x) red += PixelAt(loaded.PageAt(0), x, 8) == kRed ? 1 : 0;
  EXPECT_GT(red, 3U);

  SwfWriter marked(80, 40);
  BitWriter html = TextBox(1, 0x80 | 0x01, 0x02);
  html.Word(9).Word(6 * 20).Byte(0);
  html.Bytes(bytes("<p align=\"center\"><font size=\"24\" color=\"#0000FF\">&lt;H</font></p>")).Byte(0);
  const Loaded shown = Load(marked.Tag(37, html).Place(1, 1).Show().File());
  EXPECT_GT(Inked(shown, 30, 60, 5, 30), 60);
  EXPECT_EQ(Inked(shown, 0, 20, 0, 40) + Inked(shown, 62, 80, 0, 40), 0);
}

TEST_F(Qswf, TextBoxesUseTheMoviesGlyphs) {
  // A font of one letter, A: a square of the em's half on the baseline, as wide as the em.
  BitWriter glyph;
  glyph.Byte(0x10);
  glyph.Bits(6, 0b000101).Bits(5, 16).Bits(16, 0).Bits(16, 0).Bits(1, 1);
  const std::int32_t kSteps[][2] = {{512, 0}, {0, -512}, {-512, 0}, {0, 512}};
  for (const auto& step : kSteps) glyph.Bits(2, 3).Bits(4, 15).Bits(1, 1).Bits(17, step[0]).Bits(17, step[1]);
  glyph.Bits(6, 0);
  const auto shape = glyph.Result();
  BitWriter font;
  font.Word(9).Byte(0x80 | 0x04).Byte(0).Byte(0).Word(1);
  font.Word(4).Word(static_cast<std::uint32_t>(4 + shape.size())).Bytes(shape);
  font.Word('A').Word(1024).Word(0).Word(0).Word(1024);
  SwfWriter movie(80, 40);
  movie.Tag(48, font);
  BitWriter box = TextBox(1, 0x80 | 0x04 | 0x01, 0);
  box.Word(9).Word(20 * 20).Color({0, 0, 255, 255}).Byte(0).Byte('A').Byte('?').Byte('A').Byte(0);
  const Loaded loaded = Load(movie.Tag(37, box).Place(1, 1).Show().File());
  // From 2 pixels at the left, the baseline 22 below the top; what the font lacks takes no room.
  const auto at = [&](std::uint32_t x, std::uint32_t y) { return PixelAt(loaded.PageAt(0), x, y); };
  EXPECT_EQ(at(3, 20), kBlue);
  EXPECT_EQ(at(11, 13), kBlue);
  EXPECT_EQ(at(13, 20), kWhite);
  EXPECT_EQ(at(23, 20), kBlue);
  EXPECT_EQ(at(31, 13), kBlue);
  EXPECT_EQ(at(35, 20), kWhite);
}

TEST_F(Qswf, LinesEndAsTheySay) {
  const auto line = [](std::uint32_t cap, bool scales) {
    BitWriter shape;
    shape.Word(1).Rect(0, 0, 800, 800).Rect(0, 0, 800, 800).Byte(0);
    shape.Byte(0).Byte(1).Word(8 * 20).Bits(2, cap).Bits(2, 0).Bits(1, 0).Bits(2, scales ? 0 : 3).Bits(7, 0);
    shape.Bits(2, cap).Color({255, 0, 0, 255}).Byte(0x11);
    shape.Bits(6, 0b001001).Bits(5, 16).Bits(16, 200).Bits(16, 200).Bits(1, 1);
    shape.Bits(2, 3).Bits(4, 15).Bits(1, 0).Bits(1, 0).Bits(17, 200);  // from 10 to 20
    return shape.Bits(6, 0);
  };
  const auto inked = [&](std::uint32_t cap, bool scales, std::int32_t times, std::uint32_t x, std::uint32_t y) {
    SwfWriter movie(80, 60);
    movie.Tag(83, line(cap, scales));
    movie.Tag(26, BitWriter().Byte(6).Word(1).Word(1).Matrix(65536 * times, 65536 * times, 0, 0)).Show();
    return PixelAt(Load(movie.File()).PageAt(0), x, y) == kRed;
  };
  EXPECT_TRUE(inked(0, true, 1, 7, 10));  // round
  EXPECT_FALSE(inked(0, true, 1, 6, 7));
  EXPECT_FALSE(inked(1, true, 1, 7, 10));  // none
  EXPECT_TRUE(inked(1, true, 1, 11, 7));
  EXPECT_TRUE(inked(2, true, 1, 7, 7));  // square
  EXPECT_TRUE(inked(1, true, 2, 30, 14));
  EXPECT_FALSE(inked(1, false, 2, 30, 14));
  EXPECT_TRUE(inked(1, false, 2, 30, 17));
}

TEST_F(Qswf, LargeMoviesOfManyFramesEnd) {
  SwfWriter movie(4000, 4000);
  movie.Box(1, 0, 0, 4, 4, {255, 0, 0});
  for (std::uint32_t i = 0; i < 200; ++i) movie.Place(1, 1 + i, static_cast<std::int32_t>(i)).Show();
  const Loaded loaded = Load(movie.File());
  EXPECT_GE(loaded.PageCount(), 1U);
  EXPECT_LE(loaded.PageCount(), 8U);
  EXPECT_NE(loaded.message, "");
}

TEST_F(Qswf, FilmsThatCannotBeDecodedLeaveTheRest) {
  SwfWriter movie(40, 20);
  movie.Box(1, 0, 0, 4, 4, {255, 0, 0}).Place(1, 1);
  for (const std::uint32_t codec : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 255U}) {
    movie.Tag(60, BitWriter().Word(20 + codec).Word(2).Word(32).Word(16).Byte(0).Byte(codec));
    movie.Tag(61, BitWriter().Word(20 + codec).Word(0).Word(0xFFFF).Word(0x1234)).Place(20 + codec, 2 + codec);
  }
  movie.Show();
  const Loaded loaded = Load(movie.File());
  ASSERT_EQ(loaded.PageCount(), 1U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 2, 2), kRed);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 20, 10), kWhite);
}

TEST_F(Qswf, DamagedFilesEndCleanly) {
  const auto load = [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kSwfId); };
  TryDamaged(RedBox(), load);
  TryDamaged(AsCws(RedBox()), load);
  SwfWriter movie(4, 4);
  movie.Tag(36, SmallBitmap(1)).Tag(2, BitmapBox(2, 1, 0x40, 4)).Place(2, 1, 0, 0, 3).Place(2, 2).Show();
  TryDamaged(movie.File(), load);
}

TEST_F(Qswf, RealFilesLookAsElsewhere) {
  const auto files = CorpusFiles("swf");
  if (files.empty()) GTEST_SKIP() << "no corpus";
  for (const Expected& file : files) {
    EXPECT_EQ(Compare(file, host_.Load(file.path, kSwfId)), "") << file.name;
  }
}

}  // namespace
}  // namespace tests
