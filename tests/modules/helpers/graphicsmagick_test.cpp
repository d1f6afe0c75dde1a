#include "modules/common/graphicsmagick.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "tests/support/byte_writer.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"

namespace tests {
namespace {

using namespace std::string_literals;

constexpr const char* kHelperFile = ZEFA_BUILD_FOLDER "/modules/helpers/graphicsmagick.so";

std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The helper's entries, without the module between.
class GraphicsMagick : public ::testing::Test {
 protected:
  void SetUp() override {
    void* helper = dlopen(kHelperFile, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(helper, nullptr) << dlerror();
    read_ = reinterpret_cast<decltype(&MagickRead)>(dlsym(helper, "MagickRead"));
    ping_ = reinterpret_cast<decltype(&MagickPing)>(dlsym(helper, "MagickPing"));
    ASSERT_NE(read_, nullptr);
    ASSERT_NE(ping_, nullptr);
    ::testing::internal::CaptureStderr();
  }
  void TearDown() override { EXPECT_EQ(::testing::internal::GetCapturedStderr(), ""); }

  Loaded Read(std::span<const std::uint8_t> file, const modules::MagickOptions& options) const {
    Loaded loaded = EmptyExchange();
    loaded.result = read_(file.data(), file.size(), &options, loaded.exchange.get());
    loaded.message = loaded.exchange->message->c_str();
    return loaded;
  }
  Loaded Read(std::string_view file, const char* coder) const { return Read(AsBytes(file), {.coder = coder}); }

  decltype(&MagickRead) read_ = nullptr;
  decltype(&MagickPing) ping_ = nullptr;
};

// An uncompressed or run-length TGA of 2 x 2 pixels, bottom row first.
std::vector<std::uint8_t> MakeTga(std::uint32_t bits, std::uint32_t attributes, std::string_view pixels) {
  ByteWriter out;
  out.Byte(0).Byte(0).Byte(2).Zeros(9).Word(2).Word(2).Byte(bits).Byte(attributes);
  return out.Text(pixels).bytes;
}

// Two pixels, 0 and 1, through a map of `colours` entries.
std::vector<std::uint8_t> MakeMappedTga(std::uint32_t colours, std::uint32_t greyStep) {
  ByteWriter out;
  out.Byte(0).Byte(1).Byte(1).Word(0).Word(colours).Byte(24).Zeros(4).Word(2).Word(1).Byte(8).Byte(0);
  for (std::uint32_t i = 0; i < colours; ++i) {
    const std::uint32_t level = greyStep != 0 ? i * greyStep : i * 3 + 5;
    out.Byte(level).Byte(level).Byte(greyStep != 0 ? level : i);
  }
  return out.Byte(0).Byte(1).bytes;
}

TEST_F(GraphicsMagick, PicturesWithAMapStayIndexed) {
  const struct {
    std::uint32_t colours;
    std::uint32_t greyStep;
    std::int32_t bits;
    std::uint8_t grey;
    std::uint32_t second;  // pixel (1, 0)
  } kCases[] = {
      {2, 255, 1, 0, 0xFFFFFFFF}, {2, 0, 1, 0, 0xFF010808},  {4, 85, 4, 1, 0xFF555555},  {4, 84, 4, 0, 0xFF545454},
      {16, 0, 4, 0, 0xFF010808},  {17, 0, 8, 0, 0xFF010808}, {256, 1, 8, 1, 0xFF010101},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::to_string(c.colours) + " colours, step " + std::to_string(c.greyStep));
    const Loaded loaded = Read(MakeMappedTga(c.colours, c.greyStep), {.coder = "TGA"});
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    EXPECT_EQ(page.bits, c.bits);
    EXPECT_EQ(page.paletteEntries, c.colours);
    EXPECT_EQ(page.grayscale, c.grey);
    EXPECT_EQ(page.delay, 10U);
    EXPECT_EQ(IndexAt(page, 0, 0), 0U);
    EXPECT_EQ(IndexAt(page, 1, 0), 1U);
    EXPECT_EQ(PixelAt(page, 1, 0), c.second) << std::hex << PixelAt(page, 1, 0);
  }
}

TEST_F(GraphicsMagick, AlphaIsStraight) {
  const auto tga = MakeTga(32, 8, "\x10\x20\x30\x80\x01\x02\x03\x00\x04\x05\x06\xFF\x07\x08\x09\x7F"s);
  const Loaded loaded = Read(tga, {.coder = "TGA"});
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.bits, 32);
  EXPECT_EQ(PixelAt(page, 0, 1), 0x80302010U);
  EXPECT_EQ(PixelAt(page, 1, 1), 0x00030201U);
  EXPECT_EQ(PixelAt(page, 0, 0), 0xFF060504U);
}

TEST_F(GraphicsMagick, GreyPixelsBecomeIndicesOnRequest) {
  const std::string file = "P6 2 1 255\naaabbb";
  EXPECT_EQ(Read(AsBytes(file), {.coder = "PNM"}).PageAt(0).bits, 24);
  const Loaded grey = Read(AsBytes(file), {.coder = "PNM", .greyIsIndexed = true});
  EXPECT_EQ(grey.PageAt(0).bits, 8);
  EXPECT_EQ(grey.PageAt(0).grayscale, 1);
  EXPECT_EQ(PixelAt(grey.PageAt(0), 1, 0), 0xFF626262U);
  EXPECT_EQ(Read(AsBytes("P6 1 1 255\nabc"), {.coder = "PNM", .greyIsIndexed = true}).PageAt(0).bits, 24);
}

TEST_F(GraphicsMagick, AllPicturesArePages) {
  const Loaded loaded = Read("P5 1 1 255\naP6 1 1 255\nbcd", "PNM");
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 2U);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), 0xFF626364U);
}

TEST_F(GraphicsMagick, ContentNeverChoosesTheCoder) {
  // A picture of another format, and a text that would be a drawing, a script or a request elsewhere.
  for (const std::string_view file : {std::string_view("P6 1 1 255\nabc"), std::string_view("%!PS\nshowpage"),
                                      std::string_view("push graphic-context\n"), std::string_view("<svg/>")}) {
    const Loaded loaded = Read(file, "PCX");
    EXPECT_NE(loaded.result, glib::RCOK) << file;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
}

TEST_F(GraphicsMagick, HugePicturesAreRefused) {
  for (const std::string_view file : {std::string_view("P6 70000 1 255\na"), std::string_view("P6 65535 65535 255\na"),
                                      std::string_view("P5 60000 60000 65535\na")}) {
    const Loaded loaded = Read(file, "PNM");
    EXPECT_NE(loaded.result, glib::RCOK) << file;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
}

TEST_F(GraphicsMagick, PingTellsWithoutPixels) {
  modules::MagickSummary found;
  const modules::MagickOptions pnm{.coder = "PNM", .greyIsIndexed = true};
  const std::string file = "P5 7 5 255\n" + std::string(35, 'a');
  ASSERT_EQ(ping_(AsBytes(file).data(), file.size(), &pnm, &found), glib::RCOK);
  EXPECT_EQ(found.width, 7U);
  EXPECT_EQ(found.height, 5U);
  EXPECT_EQ(found.bits, 8U);
  EXPECT_EQ(found.pages, 1U);
  EXPECT_EQ(found.dpiX, 72.0);
  EXPECT_EQ(ping_(AsBytes(file).data(), 3, &pnm, &found), glib::IERR);
}

TEST_F(GraphicsMagick, DamagedFilesEndCleanly) {
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");  // the check captures by itself
  const auto tga = MakeTga(24, 0, "abcdefghijkl");
  TryDamaged(tga, [&](std::span<const std::uint8_t> bytes) { return Read(bytes, {.coder = "TGA"}); });
  ::testing::internal::CaptureStderr();
}

TEST(MissingHelper, IsToldByName) {
  Loaded loaded = EmptyExchange();
  EXPECT_EQ(modules::HelperEntry("no_such_helper", "MagickRead"), nullptr);
  EXPECT_EQ(modules::HelperEntry("graphicsmagick", "NoSuchEntry"), nullptr);
  EXPECT_EQ(modules::MissingHelper(*loaded.exchange, "no_such_helper"), glib::NSUP);
  EXPECT_NE(loaded.exchange->message->Find("no_such_helper"), -1);
}

}  // namespace
}  // namespace tests
