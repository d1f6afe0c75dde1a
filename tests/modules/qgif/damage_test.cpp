#include "tests/support/damage.h"

#include <gtest/gtest.h>

#include "glib/module_api/save_settings.h"
#include "tests/modules/qgif/gif_fixture.h"
#include "tests/support/corpus.h"
#include "tests/support/module_host.h"

namespace {

using namespace qgif_test;

const tests::ModuleHost& Module() {
  static const tests::ModuleHost module("qgif");
  return module;
}

TEST(GifModule, RegistersItsRow) {
  ASSERT_TRUE(Module().Ok());
  EXPECT_EQ(Module().Ids(), std::vector<std::uint32_t>{glib::kGifFormatId});
  EXPECT_TRUE(Module().HasEntry("SaveImageData"));
  EXPECT_FALSE(Module().HasEntry("LoadImageThumbnail"));
}

TEST(GifModule, ReadsRealFiles) {
  if (!tests::CheckCorpus("gif", Module(), glib::kGifFormatId)) GTEST_SKIP() << "no corpus";
}

TEST(GifModule, SavesThroughItsEntries) {
  Exchange exchange;
  modules::Page& page = AddPage(exchange, 30, 20, 24);
  for (std::uint32_t i = 0; i < 600; ++i) SetWord(page, i % 30, i / 30, Rgb(i / 3, 1, 1));
  const TemporaryFolder folder;
  glib::GIFSave settings;
  ASSERT_EQ(Module().Save(folder.Path("a.gif"), exchange, settings), glib::RCOK);
  const tests::Loaded loaded = Module().Load(folder.Path("a.gif"));
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(SeenOf(loaded.PageAt(0)), SeenOf(page));
  const auto info = Module().Info(folder.Path("a.gif"), glib::kGifFormatId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 8);
  EXPECT_EQ(Module().Info(folder.Path("missing.gif"), glib::kGifFormatId), nullptr);
  EXPECT_EQ(Module().Load(folder.Path("missing.gif")).result, glib::IERR);
}

int blocksAllocated = 0;

// Each frame has the size of the screen and the codes of a single pixel.
TEST(GifModule, FramesWithoutRowsCostNoPage) {
  Bytes gif = BytesOf(std::string("GIF89a\xB8\x0B\xB8\x0B\x80\0\0\1\2\3\4\5\6", 19));
  const Bytes frame = BytesOf(std::string(",\0\0\0\0\xB8\x0B\xB8\x0B\0\2\2\x4C\1\0", 15));
  for (int i = 0; i < 100; ++i) gif.insert(gif.end(), frame.begin(), frame.end());
  gif.push_back(';');
  Exchange exchange;
  blocksAllocated = 0;
  exchange.AllocateRaster = [](std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
    ++blocksAllocated;
    return glib::AllocateRaster(width, height, bits);
  };
  EXPECT_EQ(qgif::LoadGif(gif, exchange), glib::IERR);
  EXPECT_EQ(blocksAllocated, 0);
}

// A still picture with a local table and an animation with all that frames can have.
TEST(GifModule, DamagedFilesDoNoHarm) {
  const Words table = {Rgb(1, 2, 3), Rgb(250, 0, 0), Rgb(0, 250, 0), Rgb(0, 0, 250)};
  GifBuilder still(9, 5, {});
  still.Frame(0, 0, 9, 5, Bytes(45, 1), table, true);
  GifBuilder moving(9, 5, table);
  Bytes pixels(45);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * i % 4);
  moving.Control(3, 2, 1);
  moving.Frame(0, 0, 9, 5, pixels);
  moving.Control(4, 3, 2);
  moving.Frame(2, 1, 5, 3, Bytes(pixels.begin(), pixels.begin() + 15), {table[1], table[0]}, true, 2);
  moving.Control(5, 1);
  moving.Frame(1, 0, 3, 2, Bytes(6, 2), {}, false, 2);
  for (const Bytes& file : {still.End(), moving.End()}) {
    tests::TryDamaged(file, [](std::span<const std::uint8_t> bytes) { return Module().Load(bytes); });
  }
}

}  // namespace
