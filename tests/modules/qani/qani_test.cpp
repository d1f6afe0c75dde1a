#include <gtest/gtest.h>
#include <png.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/dib_writer.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kAniId = 0x30000005;
constexpr std::uint32_t kCurId = 0x20000007;
constexpr std::uint32_t kIcoId = 0x20000006;

using Bytes = std::vector<std::uint8_t>;
using PixelFunction = std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>;

constexpr std::int32_t kWidth = 5;
constexpr std::int32_t kHeight = 3;

std::string_view AsText(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// A bitmap with a mask below it, whose set bits `hidden` gives.
Bytes IconImage(std::uint32_t bits, const PixelFunction& value, const PixelFunction& hidden) {
  DibSpec spec{.width = kWidth, .height = 2 * kHeight, .bits = bits};
  for (std::uint32_t i = 0; bits <= 8 && i < 1U << bits; ++i) spec.palette.push_back(i * 0x101010 % 0x1000000 + i);
  spec.data = DibRows(kWidth, kHeight, bits, value);
  const Bytes mask = DibRows(kWidth, kHeight, 1, hidden);
  spec.data.insert(spec.data.end(), mask.begin(), mask.end());
  return MakeDib(spec);
}

std::uint32_t Nothing(std::uint32_t, std::uint32_t) { return 0; }
std::uint32_t Sum(std::uint32_t x, std::uint32_t y) { return x + y; }

// What the directory says of sizes is wrong on purpose.
Bytes MakeIcon(std::uint32_t kind, const std::vector<Bytes>& images) {
  ByteWriter out;
  out.Word(0).Word(kind).Word(static_cast<std::uint32_t>(images.size()));
  auto offset = static_cast<std::uint32_t>(6 + 16 * images.size());
  for (const Bytes& image : images) {
    out.Byte(99).Byte(0).Byte(0).Byte(0).Long(0).Long(1).Long(offset);
    offset += static_cast<std::uint32_t>(image.size());
  }
  for (const Bytes& image : images) out.Bytes(image);
  return out.bytes;
}

Bytes MakePng(std::uint32_t width, std::uint32_t height, std::uint32_t format, const Bytes& pixels) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  png_alloc_size_t size = 0;
  png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
  Bytes png(size);
  EXPECT_NE(png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr), 0);
  png.resize(size);
  return png;
}

ByteWriter Chunk(std::string_view name, const Bytes& data) {
  ByteWriter out;
  out.Text(name).Long(static_cast<std::uint32_t>(data.size())).Bytes(data);
  if (data.size() % 2 != 0) out.Byte(0);
  return out;
}

Bytes Longs(std::initializer_list<std::uint32_t> numbers) {
  ByteWriter out;
  for (const std::uint32_t number : numbers) out.Long(number);
  return out.bytes;
}

struct AniSpec {
  std::vector<Bytes> frames = {};
  std::uint32_t steps = 0;
  std::uint32_t rate = 6;
  std::uint32_t flags = 1;
  Bytes rates = {};
  Bytes order = {};
};

Bytes MakeAni(const AniSpec& spec) {
  ByteWriter inside;
  inside.Text("ACON");
  // With a length that reaches into what follows, as met in real files.
  inside.Text("LIST").Long(16).Text("INFOINAM").Long(2).Text("a").Byte(0);
  const auto frameCount = static_cast<std::uint32_t>(spec.frames.size());
  inside.Bytes(Chunk("anih", Longs({36, frameCount, spec.steps, 0, 0, 0, 0, spec.rate, spec.flags})).bytes);
  if (!spec.rates.empty()) inside.Bytes(Chunk("rate", spec.rates).bytes);
  if (!spec.order.empty()) inside.Bytes(Chunk("seq ", spec.order).bytes);
  ByteWriter frames;
  frames.Text("fram");
  for (const Bytes& frame : spec.frames) frames.Bytes(Chunk("icon", frame).bytes);
  inside.Bytes(Chunk("LIST", frames.bytes).bytes);
  return Chunk("RIFF", inside.bytes).bytes;
}

// An icon whose first pixel has the given grey.
Bytes FrameOf(std::uint32_t grey) {
  return MakeIcon(1, {IconImage(
                         24, [=](std::uint32_t, std::uint32_t) { return grey * 0x010101; }, Nothing)});
}

class Qani : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  ModuleHost host_{"qani"};
};

TEST_F(Qani, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kAniId, kCurId, kIcoId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qani, KeepsTheDepthOfPicturesThatHideNothing) {
  for (const std::uint32_t bits : {1U, 4U, 8U, 24U}) {
    SCOPED_TRACE(bits);
    const PixelFunction value = [=](std::uint32_t x, std::uint32_t y) { return bits == 1 ? (x + y) % 2 : x + 3 * y; };
    // Bits behind the last pixel of a mask's row are no pixels.
    Bytes image = IconImage(bits, value, Nothing);
    image[image.size() - 4] |= 0x07;
    const Loaded loaded = host_.Load(MakeIcon(1, {image}), kIcoId);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    EXPECT_EQ(page.bits, static_cast<std::int32_t>(bits));
    EXPECT_EQ(page.slideNumber, -1);
    ASSERT_EQ(page.width, kWidth);
    ASSERT_EQ(page.height, kHeight);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kWidth; ++x) {
        if (bits <= 8) {
          EXPECT_EQ(IndexAt(page, x, y), value(x, y)) << x << ' ' << y;
        } else {
          EXPECT_EQ(PixelAt(page, x, y), 0xFF000000U | value(x, y)) << x << ' ' << y;
        }
      }
    }
  }
}

TEST_F(Qani, MasksBecomeAlpha) {
  const PixelFunction hidden = [](std::uint32_t x, std::uint32_t y) { return x == 1 && y != 1 ? 1U : 0U; };
  for (const std::uint32_t bits : {1U, 4U, 8U, 24U, 32U}) {
    SCOPED_TRACE(bits);
    const Loaded loaded = host_.Load(MakeIcon(2, {IconImage(bits, bits == 1 ? Nothing : Sum, hidden)}), kCurId);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, 32);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kWidth; ++x) {
        const std::uint32_t index = bits == 1 ? 0 : Sum(x, y);
        const std::uint32_t colour = bits <= 8 ? index * 0x101010 + index : index;
        EXPECT_EQ(PixelAt(page, x, y), (hidden(x, y) != 0 ? 0 : 0xFF000000U) | colour) << x << ' ' << y;
      }
    }
  }
}

TEST_F(Qani, AnAlphaOfItsOwnCountsMoreThanTheMask) {
  const PixelFunction value = [](std::uint32_t x, std::uint32_t y) { return x << 28 | y << 8 | x; };
  const PixelFunction all = [](std::uint32_t, std::uint32_t) { return 1U; };
  const Loaded loaded = host_.Load(MakeIcon(1, {IconImage(32, value, all)}), kIcoId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  for (std::uint32_t x = 0; x < kWidth; ++x) EXPECT_EQ(PixelAt(loaded.PageAt(0), x, 2), value(x, 2));
}

TEST_F(Qani, ReadsPngPictures) {
  struct Case {
    const char* name;
    std::uint32_t format;
    Bytes pixels;  // of 2 x 1
    std::int32_t bits;
    std::uint32_t left, right;
  };
  const std::vector<Case> cases = {
      {"colour and alpha", PNG_FORMAT_RGBA, {1, 2, 3, 4, 5, 6, 7, 255}, 32, 0x04010203, 0xFF050607},
      {"colour", PNG_FORMAT_RGB, {1, 2, 3, 4, 5, 6}, 24, 0xFF010203, 0xFF040506},
      {"grey", PNG_FORMAT_GRAY, {7, 200}, 8, 0xFF070707, 0xFFC8C8C8},
      {"grey and alpha", PNG_FORMAT_GA, {7, 1, 200, 2}, 32, 0x01070707, 0x02C8C8C8},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    const auto icon = MakeIcon(1, {MakePng(2, 1, one.format, one.pixels), IconImage(4, Sum, Nothing)});
    const Loaded loaded = host_.Load(icon, kIcoId);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageCount(), 2U);
    EXPECT_EQ(loaded.PageAt(0).bits, one.bits);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0), one.left);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 1, 0), one.right);
    EXPECT_EQ(loaded.PageAt(1).bits, 4);

    const test_support::TemporaryFolder folder;
    const auto info = host_.Info(folder.Write("a.ico", AsText(icon)), kIcoId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->bits(), one.bits);
    EXPECT_EQ(info->width, 2);
    EXPECT_EQ(info->height, 1);
    EXPECT_EQ(info->pages, 2);
  }
}

TEST_F(Qani, OnePictureInsideDamagedLeavesTheOthers) {
  Bytes bad = IconImage(8, Sum, Nothing);
  bad[14] = 7;  // no depth
  const Loaded loaded = host_.Load(MakeIcon(1, {bad, IconImage(24, Sum, Nothing)}), kIcoId);
  EXPECT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(loaded.PageCount(), 1U);
  EXPECT_NE(loaded.message, "");
  EXPECT_EQ(host_.Load(MakeIcon(1, {bad}), kIcoId).result, glib::IERR);
  EXPECT_EQ(host_.Load(MakeIcon(1, {}), kIcoId).result, glib::IERR);
}

TEST_F(Qani, PicturesDoNotShareTheirBytes) {
  const Bytes image = IconImage(24, Sum, Nothing);
  ByteWriter out;
  out.Word(0).Word(1).Word(60000);
  for (int i = 0; i < 60000; ++i) out.Zeros(12).Long(6 + 60000 * 16);
  const Loaded loaded = host_.Load(out.Bytes(image).bytes, kIcoId);
  EXPECT_LE(loaded.PageCount(), out.bytes.size() / image.size() + 1);
}

TEST_F(Qani, StepsOfAnAnimationFollowItsOrderAndTimes) {
  AniSpec spec{.frames = {FrameOf(10), FrameOf(20), FrameOf(30)}, .steps = 4, .flags = 3};
  spec.order = Longs({2, 0, 0, 1});
  spec.rates = Longs({6, 1, 60, 7});
  const Loaded loaded = host_.Load(MakeAni(spec), kAniId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 4U);
  constexpr std::uint32_t kGreys[] = {30, 10, 10, 20};
  constexpr std::uint32_t kDelays[] = {10, 2, 100, 12};
  for (std::uint32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(PixelAt(loaded.PageAt(i), 0, 0), 0xFF000000U | kGreys[i] * 0x010101) << i;
    EXPECT_EQ(loaded.PageAt(i).delay, kDelays[i]) << i;
    EXPECT_EQ(loaded.PageAt(i).slideNumber, -1);
  }
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("a.ani", AsText(MakeAni(spec))), kAniId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->pages, 4);
  EXPECT_EQ(info->width, kWidth);
  EXPECT_EQ(info->bits(), 24);
}

TEST_F(Qani, TellsOfALargeAnimationFromItsBeginning) {
  AniSpec spec{.frames = std::vector<Bytes>(700, FrameOf(10)), .steps = 700, .flags = 1};
  const Bytes file = MakeAni(spec);
  constexpr std::size_t kBeginning = 65536;
  ASSERT_GT(file.size(), kBeginning);
  const test_support::TemporaryFolder folder;
  // Of what lies behind the beginning nothing is needed; only where the steps must be counted or their order is behind
  // the frames, all of it is.
  struct Case {
    std::uint32_t steps, flags;
    std::int32_t pages, pagesOfCut;
  };
  const auto cutPages = static_cast<std::int32_t>((kBeginning - 100) / (FrameOf(10).size() + 8));
  for (const Case& c : {Case{700, 1, 700, 700}, Case{9, 1, 9, 9}, Case{0, 1, 700, cutPages}, Case{700, 3, 700, 700}}) {
    spec.steps = c.steps;
    spec.flags = c.flags;
    const Bytes whole = MakeAni(spec);
    const auto info = host_.Info(folder.Write("a.ani", AsText(whole)), kAniId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->pages, c.pages);
    const Bytes cut(whole.begin(), whole.begin() + kBeginning);
    const auto cutInfo = host_.Info(folder.Write("b.ani", AsText(cut)), kAniId);
    ASSERT_NE(cutInfo, nullptr);
    EXPECT_NEAR(cutInfo->pages, c.pagesOfCut, 1);
  }
}

TEST_F(Qani, WithoutOrderAndTimesTheFramesFollowEachOther) {
  for (const std::uint32_t steps : {0U, 2U}) {
    const Loaded loaded = host_.Load(MakeAni({.frames = {FrameOf(10), FrameOf(20)}, .steps = steps}), kAniId);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageCount(), 2U);
    EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), 0xFF141414U);
    EXPECT_EQ(loaded.PageAt(1).delay, 10U);
  }
}

TEST_F(Qani, FramesMayBeBitmapsWithoutAMask) {
  DibSpec spec{.width = 2, .height = 1, .bits = 24};
  spec.data = DibRows(2, 1, 24, [](std::uint32_t x, std::uint32_t) { return 0x112233 + x; });
  const Loaded loaded = host_.Load(MakeAni({.frames = {MakeDib(spec)}, .steps = 1, .flags = 0}), kAniId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).height, 1);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 1, 0), 0xFF112234U);
}

TEST_F(Qani, RefusesAnimationsThatPointNowhereOrGrowOnly) {
  AniSpec wrong{.frames = {FrameOf(1)}, .steps = 2, .order = Longs({0, 1})};
  EXPECT_EQ(host_.Load(MakeAni(wrong), kAniId).result, glib::IERR);
  EXPECT_EQ(host_.Load(MakeAni({.frames = {FrameOf(1)}, .steps = 5000}), kAniId).result, glib::NSUP);
  DibSpec large{.width = 1024, .height = 2048, .bits = 1};
  large.data.resize(2 * 1024 * 128);
  AniSpec bomb{.frames = {MakeIcon(1, {MakeDib(large)})}, .steps = 4096, .order = Bytes(4 * 4096)};
  EXPECT_EQ(host_.Load(MakeAni(bomb), kAniId).result, glib::NSUP);
  bomb.steps = 64;
  EXPECT_EQ(host_.Load(MakeAni(bomb), kAniId).PageCount(), 64U);
}

TEST_F(Qani, DamagedFilesEndCleanly) {
  const PixelFunction hidden = [](std::uint32_t x, std::uint32_t) { return x % 2; };
  const Bytes png = MakePng(2, 2, PNG_FORMAT_RGBA, Bytes(16, 0x55));
  const auto icon = MakeIcon(1, {IconImage(4, Sum, hidden), png});
  TryDamaged(icon, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kIcoId); });
  AniSpec spec{.frames = {icon, FrameOf(3)}, .steps = 3, .rates = Longs({1, 2, 3}), .order = Longs({0, 1, 0})};
  TryDamaged(MakeAni(spec), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kAniId); });
}

TEST_F(Qani, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("ico", host_, kIcoId) || !CheckCorpus("cur", host_, kCurId) || !CheckCorpus("ani", host_, kAniId)) {
    GTEST_SKIP() << "no corpus";
  }
}

}  // namespace
}  // namespace tests
