#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "glib/format/registry.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "tests/support/temporary_folder.h"

namespace glib {
namespace {

constexpr const char* kFixtures = ZEFA_BUILD_FOLDER "/modules_fixture";
constexpr std::uint32_t kBmpFormatId = 0x00000002;

constexpr std::uint32_t Letters(const char (&letters)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(letters[i]);
  return value;
}

// An exchange as a film prepares it.
struct Exchange : ImageDataExchange {
  Exchange() { message = &text; }

  gen::basic_string<char> text;
};

// Both ways to the modules must come out alike.
class ModuleCallsTest : public testing::TestWithParam<bool> {
 protected:
  ModuleCallsTest() : registry(MakeRegistry()) {}

  static std::unique_ptr<FilterManager> MakeRegistry() {
    testing::internal::CaptureStderr();  // about the module that lacks an entry
    auto made = std::make_unique<FilterManager>(kFixtures, GetParam());
    testing::internal::GetCapturedStderr();
    return made;
  }

  test_support::TemporaryFolder folder;
  std::unique_ptr<FilterManager> registry;
};

INSTANTIATE_TEST_SUITE_P(Registry, ModuleCallsTest, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Catalogue" : "Scan"; });

TEST_P(ModuleCallsTest, LoadsPages) {
  const std::string path = folder.Write("x.dat",
                                        "GIF89a\n"
                                        "page bits=8 width=3 height=2 fill=7 slide=0 x=1 y=2 name=first\n"
                                        "page bits=24 width=2 height=2 slide=0\n"
                                        "page bits=0 frame=100x200 slide=1\n"
                                        "message done\n");
  Exchange exchange;
  exchange.id = kBmpFormatId;  // plays no part for a path
  EXPECT_EQ(registry->LoadImage(path.c_str(), exchange, nullptr), RCOK);
  EXPECT_EQ(exchange.id, kGifFormatId);
  EXPECT_STREQ(exchange.text.c_str(), "done");
  ASSERT_EQ(exchange.pages.count, 3U);
  EXPECT_EQ(exchange.pages.At(0)->width, 3);
  EXPECT_EQ(exchange.pages.At(0)->pixels[6], 7);
  EXPECT_STREQ(exchange.pages.At(0)->name.c_str(), "first");
  EXPECT_NE(exchange.pages.At(2)->metafile, nullptr);
}

TEST_P(ModuleCallsTest, HandsOverWhatAModuleNeeds) {
  const std::string path = folder.Write("x.gif", "GIF89a\nshow\n");
  GIFSave loadWord;
  Exchange exchange;
  exchange.background = RGB32(1, 2, 3, 0);
  EXPECT_EQ(registry->LoadImage(path.c_str(), exchange, &loadWord), RCOK);
  EXPECT_STREQ(exchange.text.c_str(),
               "id=30000003 size=ffffffff word=30000003 film=0 callback=0 background=010203 raster=1");
}

TEST_P(ModuleCallsTest, PassesResultsOfModulesOn) {
  const std::string path =
      folder.Write("x.gif", "GIF89a\npage\nmessage broken\nresult OHNO\nthumbnail NAIL\ninfo result=LOST\n");
  Exchange exchange;
  EXPECT_EQ(registry->LoadImage(path.c_str(), exchange, nullptr), Letters("OHNO"));
  EXPECT_STREQ(exchange.text.c_str(), "broken");
  EXPECT_EQ(exchange.pages.count, 1U);  // the caller's to release
  exchange.thumbnailWidth = exchange.thumbnailHeight = 1;
  EXPECT_EQ(registry->LoadThumbnail(path.c_str(), exchange), Letters("NAIL"));
  FileInfo* info = nullptr;
  EXPECT_EQ(registry->GetImageInfo(path.c_str(), info), Letters("LOST"));
  EXPECT_EQ(info, nullptr);
  GIFSave settings;
  EXPECT_EQ(registry->SaveImage("refuse-FULL", exchange, &settings), Letters("FULL"));
}

TEST_P(ModuleCallsTest, LoadsFromMemory) {
  const std::string source = "GIF89a\npage\nshow\n";
  const auto load = [&](const std::string& block, std::uint32_t id, Exchange& exchange) {
    exchange.sourceSize = static_cast<std::uint32_t>(block.size());
    exchange.id = id;
    return registry->LoadImage(block.data(), exchange, nullptr);
  };
  Exchange bySignature;
  EXPECT_EQ(load(source, kAnyFormat, bySignature), RCOK);
  EXPECT_EQ(bySignature.id, kGifFormatId);
  EXPECT_EQ(bySignature.pages.count, 1U);
  Exchange byId;
  EXPECT_EQ(load(source, kBmpFormatId, byId), RCOK);
  EXPECT_STREQ(byId.text.c_str(), "id=00000002 size=00000011 word=none film=0 callback=0 background=ffffff raster=1");
  Exchange unknownId;
  EXPECT_EQ(load(source, 0x12345, unknownId), NSUP);
  EXPECT_EQ(unknownId.id, 0x12345U);
  Exchange unknownBytes;
  EXPECT_EQ(load("nothing known", kAnyFormat, unknownBytes), NSUP);
  Exchange noBlock;
  noBlock.sourceSize = 0;
  EXPECT_EQ(registry->LoadImage(nullptr, noBlock, nullptr), NSUP);
}

TEST_P(ModuleCallsTest, AnswersForSourcesWithoutAModule) {
  const std::string unknown = folder.Write("x.dat", "nothing known");
  const std::string pcx = folder.Write("x.pcx", "\x0A\5\1\x08");  // no such module in this folder
  const std::string missing = folder.Text("missing.gif");
  FileInfo* info = nullptr;
  for (const char* path : {unknown.c_str(), pcx.c_str(), missing.c_str(), "", static_cast<const char*>(nullptr)}) {
    Exchange exchange;
    EXPECT_EQ(registry->LoadImage(path, exchange, nullptr), NSUP);
    EXPECT_EQ(registry->LoadThumbnail(path, exchange), NSUP);
    EXPECT_EQ(registry->GetImageInfo(path, info), NSUP);
    EXPECT_EQ(exchange.id, kAnyFormat);
  }
}

TEST_P(ModuleCallsTest, GivesThumbnailsWhereAModuleHasThem) {
  const std::string gif = folder.Write("x.gif", "GIF89a\n");
  const std::string bmp = folder.Write("x.bmp", "BM\npage\n");
  Exchange exchange;
  exchange.thumbnailWidth = 5;
  exchange.thumbnailHeight = 4;
  exchange.thumbnailFlag = 1;
  exchange.sourceSize = 3;  // a thumbnail's source is a path all the same
  EXPECT_EQ(registry->LoadThumbnail(gif.c_str(), exchange), RCOK);
  EXPECT_EQ(exchange.id, kGifFormatId);
  ASSERT_EQ(exchange.pages.count, 1U);
  EXPECT_EQ(exchange.pages.At(0)->width, 5);
  EXPECT_STREQ(exchange.pages.At(0)->name.c_str(), "flagged thumbnail");

  Exchange without;
  EXPECT_EQ(registry->LoadThumbnail(bmp.c_str(), without), TMIS);
  EXPECT_EQ(without.id, kAnyFormat);
  EXPECT_EQ(registry->LoadImage(bmp.c_str(), without, nullptr), RCOK);
  EXPECT_EQ(without.pages.count, 1U);
}

TEST_P(ModuleCallsTest, GivesFileInformation) {
  const std::string path = folder.Write("x.gif", "GIF89a\ninfo bits=4 width=30 height=20 pages=3 dpix=96 dpiy=48\n");
  FileInfo* info = nullptr;
  ASSERT_EQ(registry->GetImageInfo(path.c_str(), info), RCOK);
  const std::unique_ptr<FileInfo> owner(info);
  EXPECT_EQ(info->id, kGifFormatId);
  EXPECT_EQ(info->bits(), 4);
  EXPECT_EQ(info->width, 30);
  EXPECT_EQ(info->height, 20);
  EXPECT_EQ(info->pages, 3);
  EXPECT_EQ(info->size, 62);
  EXPECT_EQ(info->dpiX, 96.0);
  EXPECT_EQ(info->dpiY, 48.0);
}

TEST_P(ModuleCallsTest, SavesByTheIdOfTheSettings) {
  Exchange exchange;
  auto* page = new ImageDataExchange::Page;
  exchange.pages.Append(page);
  page->bits = 4;
  page->width = 3;
  page->height = 2;
  page->pixels = AllocateRaster(3, 2, 4);
  page->pixels[0] = 0x12;
  page->pixels[5] = 0x30;
  page->palette[0] = 0xFF010203;
  page->paletteEntries = 1;
  page->name.Assign("layer");
  GIFSave settings;
  settings.paletteItems = 16;
  EXPECT_EQ(registry->SaveImage(folder.Text("x.bmp").c_str(), exchange, &settings), RCOK);
  EXPECT_EQ(exchange.id, kAnyFormat);
  EXPECT_EQ(folder.Read("x.bmp"),
            "settings id=30000003 width=0 height=0 depth=8 first=0 count=4294967295 dither=1 grayscale=0 quantize=8 "
            "paletteItems=16 transparentIndex=-1 interlace=0 nfi=0 dpi=0x0\n"
            "exchange id=ffffffff size=ffffffff pages=1 film=0 callback=0 raster=1\n"
            "page bits=4 width=3 height=2 owned=1 aligned=1 slide=-1 x=0 y=0 delay=10 dpi=72x72 visible=1 name=layer "
            "background=ffffff entries=1 pixels=12000030 palette=ff010203\n");

  BaseFormatDesc readOnly(kBmpFormatId);
  EXPECT_EQ(registry->SaveImage(folder.Text("y.gif").c_str(), exchange, &readOnly), NSUP);
  BaseFormatDesc unknown(0x12345);
  EXPECT_EQ(registry->SaveImage(folder.Text("y.gif").c_str(), exchange, &unknown), NSUP);
  EXPECT_EQ(folder.Read("y.gif"), "");
}

TEST(RasterFunctions, GiveZeroedRowsOfWholeWords) {
  std::uint8_t* one = AllocateRaster(1, 1, 1);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(one[0] | one[1] | one[2] | one[3], 0);
  FreeRaster(one);
  FreeRaster(nullptr);
  EXPECT_EQ(AllocateRaster(0, 5, 8), nullptr);
  EXPECT_EQ(AllocateRaster(5, 0, 8), nullptr);
  EXPECT_EQ(AllocateRaster(0xFFFFFFFF, 1, 32), nullptr);
  EXPECT_EQ(AllocateRaster(0x10000, 0x10000, 8), nullptr);  // would wrap to a small block
}

}  // namespace
}  // namespace glib
