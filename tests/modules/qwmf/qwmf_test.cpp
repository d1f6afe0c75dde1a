#include <gtest/gtest.h>

#include <array>

#include "platform/metafile/metafile.h"
#include "platform/metafile/recorder.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/dib_writer.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace {

using tests::ByteWriter;
using tests::Loaded;
using tests::ModuleHost;
using tests::PixelAt;

constexpr std::uint32_t kWmfId = 0x80001001;
constexpr std::uint32_t kApmId = 0x80001002;
constexpr std::uint32_t kEmfId = 0x80001003;
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

// A metafile of 16-bit records.
class WmfWriter {
 public:
  WmfWriter& Record(std::uint16_t function, const std::vector<std::int32_t>& words) {
    body_.Long(static_cast<std::uint32_t>(3 + words.size())).Word(function);
    for (const std::int32_t word : words) body_.Word(static_cast<std::uint32_t>(word));
    return *this;
  }
  WmfWriter& Record(std::uint16_t function, const std::vector<std::int32_t>& words, std::vector<std::uint8_t> bytes) {
    if (bytes.size() % 2 != 0) bytes.push_back(0);
    body_.Long(static_cast<std::uint32_t>(3 + words.size() + bytes.size() / 2)).Word(function);
    for (const std::int32_t word : words) body_.Word(static_cast<std::uint32_t>(word));
    body_.Bytes(bytes);
    return *this;
  }
  WmfWriter& Window(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
    return Record(0x020B, {top, left}).Record(0x020C, {height, width});
  }
  // Object `index`, selected, with no pen at `index` + 1.
  WmfWriter& Brush(std::int32_t index, std::int32_t red, std::int32_t green, std::int32_t blue) {
    Record(0x02FC, {0, red | green << 8, blue, 0}).Record(0x012D, {index});
    return Record(0x02FA, {5, 0, 0, 0, 0}).Record(0x012D, {index + 1});
  }
  WmfWriter& Box(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
    return Record(0x041B, {bottom, right, top, left});
  }

  std::vector<std::uint8_t> Plain() const {
    ByteWriter file;
    const auto words = static_cast<std::uint32_t>(9 + body_.bytes.size() / 2 + 3);
    file.Word(1).Word(9).Word(0x300).Long(words).Word(16).Long(100).Word(0);
    file.Bytes(body_.bytes).Long(3).Word(0);
    return file.bytes;
  }
  std::vector<std::uint8_t> Placeable(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
                                      std::uint32_t inch) const {
    ByteWriter file;
    file.Long(0x9AC6CDD7).Word(0);
    for (const std::int32_t side : {left, top, right, bottom}) file.Word(static_cast<std::uint32_t>(side));
    file.Word(inch).Long(0).Word(0).Bytes(Plain());
    return file.bytes;
  }

 private:
  ByteWriter body_;
};

class Qwmf : public testing::Test {
 protected:
  // The one page, drawn.
  const glib::ImageDataExchange::Page& Draw(const std::vector<std::uint8_t>& file, std::uint32_t id) {
    loaded = host.Load(file, id);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), 1U);
    EXPECT_EQ(loaded.PageAt(0).bits, 0);
    EXPECT_EQ(loaded.PageAt(0).width, -1);
    tests::DrawMetafiles(loaded);
    return loaded.PageAt(0);
  }

  ModuleHost host{"qwmf"};
  Loaded loaded;
};

TEST_F(Qwmf, HasItsRows) {
  ASSERT_TRUE(host.Ok());
  EXPECT_EQ(host.Ids(), (std::vector<std::uint32_t>{kWmfId, kApmId, kEmfId}));
  EXPECT_FALSE(host.HasEntry("SaveImageData"));
}

TEST_F(Qwmf, APlaceableFileHasTheSizeOfItsBox) {
  // Two inches by one.
  WmfWriter wmf;
  wmf.Window(100, 200, 288, 144).Brush(0, 255, 0, 0).Box(100, 200, 244, 344);
  const auto& page = Draw(wmf.Placeable(100, 200, 388, 344, 144), kApmId);
  ASSERT_EQ(page.width, 144);
  ASSERT_EQ(page.height, 72);
  EXPECT_EQ(PixelAt(page, 0, 0), kRed);
  EXPECT_EQ(PixelAt(page, 71, 71), kRed);
  EXPECT_EQ(PixelAt(page, 72, 40), 0U);
}

TEST_F(Qwmf, AWindowOfItsOwnFillsTheBox) {
  WmfWriter wmf;
  wmf.Window(0, 0, 10, -10).Brush(0, 255, 0, 0).Box(0, 0, 5, -5);  // y goes up
  const auto& page = Draw(wmf.Placeable(0, 0, 720, 720, 720), kApmId);
  ASSERT_EQ(page.width, 72);
  EXPECT_EQ(PixelAt(page, 10, 10), kRed);
  EXPECT_EQ(PixelAt(page, 10, 60), 0U);
  EXPECT_EQ(PixelAt(page, 60, 10), 0U);
}

TEST_F(Qwmf, APlainFileHasTheSizeOfItsWindow) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 48).Brush(0, 255, 0, 0).Box(48, 0, 96, 48);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  ASSERT_EQ(page.width, 72) << "an inch of 96 units";
  ASSERT_EQ(page.height, 36);
  EXPECT_EQ(PixelAt(page, 35, 5), 0U);
  EXPECT_EQ(PixelAt(page, 36, 5), kRed);
}

TEST_F(Qwmf, WithoutAWindowTheDrawingIsTheSize) {
  WmfWriter wmf;
  wmf.Brush(0, 0, 0, 255).Box(96, 96, 288, 192);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  ASSERT_EQ(page.width, 144);
  ASSERT_EQ(page.height, 72);
  EXPECT_EQ(PixelAt(page, 0, 0), kBlue);
  EXPECT_EQ(PixelAt(page, 143, 71), kBlue);
}

TEST_F(Qwmf, ObjectsTakeTheLowestSlot) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0);
  wmf.Record(0x00F7, {0, 0});               // a palette: slot 2
  wmf.Record(0x01F0, {0});                  // slot 0 is free again
  wmf.Record(0x02FC, {0, 0, 255, 0});       // and taken by a blue brush
  wmf.Record(0x02FC, {0, 255 << 8, 0, 0});  // green: slot 3
  wmf.Record(0x012D, {0}).Box(0, 0, 96, 48);
  wmf.Record(0x012D, {3}).Box(0, 48, 96, 96);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 5, 5), kBlue);
  EXPECT_EQ(PixelAt(page, 5, 60), 0xFF00FF00);
}

TEST_F(Qwmf, ShapesStateAndClips) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0);
  wmf.Record(0x001E, {});
  wmf.Record(0x0416, {96, 24, 0, 0});                   // clip to the left quarter
  wmf.Record(0x0324, {4, 0, 0, 96, 0, 96, 24, 0, 24});  // polygon, cut off
  wmf.Record(0x0127, {-1});
  wmf.Record(0x0538, {1, 4, 48, 48, 96, 48, 96, 96, 48, 96});  // poly-polygon
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 5, 5), kRed);
  EXPECT_EQ(PixelAt(page, 30, 5), 0U);
  EXPECT_EQ(PixelAt(page, 50, 50), kRed);
  EXPECT_EQ(PixelAt(page, 30, 50), 0U);
}

TEST_F(Qwmf, BitmapsStandUpright) {
  const auto dib = tests::MakeDib(
      {.width = 2, .height = 2, .bits = 24, .data = tests::DibRows(2, 2, 24, [](std::uint32_t x, std::uint32_t y) {
                                              return y == 0 ? (x == 0 ? 0xFF0000U : 0x0000FFU) : 0x00FF00U;
                                            })});
  struct Case {
    std::uint16_t function;
    std::vector<std::int32_t> words;
  };
  constexpr std::int32_t kCopyLow = 0x0020, kCopyHigh = 0x00CC;
  for (const Case& one : {Case{0x0F43, {kCopyLow, kCopyHigh, 0, 2, 2, 0, 0, 96, 96, 0, 0}},
                          Case{0x0B41, {kCopyLow, kCopyHigh, 2, 2, 0, 0, 96, 96, 0, 0}}}) {
    WmfWriter wmf;
    wmf.Window(0, 0, 96, 96).Record(one.function, one.words, dib);
    const auto& page = Draw(wmf.Plain(), kWmfId);
    EXPECT_EQ(PixelAt(page, 10, 10), kRed) << one.function;
    EXPECT_EQ(PixelAt(page, 60, 10), kBlue);
    EXPECT_EQ(PixelAt(page, 10, 60), 0xFF00FF00);
  }
}

TEST_F(Qwmf, PatternBlitsHaveNoBitmap) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0);
  wmf.Record(0x061D, {0x0021, 0x00F0, 48, 96, 0, 0});            // the upper half
  wmf.Record(0x0940, {0x0042, 0x0000, 0, 0, 0, 24, 96, 48, 0});  // black below it
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 10, 10), kRed);
  EXPECT_EQ(PixelAt(page, 10, 40), 0xFF000000);
  EXPECT_EQ(PixelAt(page, 10, 60), 0U);
}

TEST_F(Qwmf, PalettesGiveColors) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96);
  wmf.Record(0x02FA, {5, 0, 0, 0, 0}).Record(0x012D, {0});                   // no pen: object 0
  wmf.Record(0x00F7, {0x300, 2, 0x00FF, 0, 0, 0x00FF}).Record(0x0234, {1});  // red and blue
  wmf.Record(0x02FC, {0, 1, 0x0100, 0}).Record(0x012D, {2}).Box(0, 0, 48, 96);
  wmf.Record(0x0037, {1, 1, 0x00FF, 0});  // the second one is red from now on
  wmf.Record(0x02FC, {0, 1, 0x0100, 0}).Record(0x012D, {3}).Box(48, 0, 96, 96);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 10, 10), kBlue);
  EXPECT_EQ(PixelAt(page, 60, 10), kRed);
}

TEST_F(Qwmf, BitmapsMayUseThePalette) {
  // Two pixels of one byte: the first colour of the bitmap is the second one of the palette.
  ByteWriter dib;
  dib.Long(40).Long(2).Long(1).Word(1).Word(8);
  for (int i = 0; i < 4; ++i) dib.Long(0);
  dib.Long(2).Long(0).Word(1).Word(0).Long(0x0100);
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96);
  wmf.Record(0x00F7, {0x300, 2, 0x00FF, 0, 0, 0x00FF}).Record(0x0234, {0});
  wmf.Record(0x0F43, {0x0020, 0x00CC, 1, 1, 2, 0, 0, 96, 96, 0, 0}, dib.bytes);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 10, 10), kBlue);
  EXPECT_EQ(PixelAt(page, 60, 10), kRed);
}

TEST_F(Qwmf, PatternsOfOneBitTakeTheColorsOfText) {
  const auto dib =
      tests::MakeDib({.width = 8,
                      .height = 8,
                      .bits = 1,
                      .palette = {0, 0xFFFFFF},
                      .data = tests::DibRows(8, 8, 1, [](std::uint32_t, std::uint32_t y) { return y < 4 ? 0U : 1U; })});
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96);
  wmf.Record(0x02FA, {5, 0, 0, 0, 0}).Record(0x012D, {0});
  wmf.Record(0x0209, {0x00FF, 0}).Record(0x0201, {0, 0x00FF});  // red on blue
  wmf.Record(0x0142, {3, 0}, dib).Record(0x012D, {1}).Box(0, 0, 96, 96);
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 10, 1), kRed);
  EXPECT_EQ(PixelAt(page, 10, 6), kBlue);
}

TEST_F(Qwmf, RegionsAreFramed) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0);
  wmf.Record(0x06FF, {0, 6, 0, 0, 40, 1, 2, 0, 0, 96, 96, 2, 0, 96, 0, 96, 2});  // all of it
  wmf.Record(0x0429, {2, 0, 8, 16});                                             // 16 wide, 8 high
  const auto& page = Draw(wmf.Plain(), kWmfId);
  EXPECT_EQ(PixelAt(page, 40, 5), kRed);
  EXPECT_EQ(PixelAt(page, 40, 7), 0U);
  EXPECT_EQ(PixelAt(page, 11, 40), kRed);
  EXPECT_EQ(PixelAt(page, 13, 40), 0U);
}

TEST_F(Qwmf, JustifiedTextReachesFurther) {
  std::uint32_t last[2] = {};
  for (const std::int32_t extra : {0, 48}) {
    WmfWriter wmf;
    wmf.Window(0, 0, 192, 96).Record(0x0102, {1});
    wmf.Record(0x020A, {1, extra});
    wmf.Record(0x0521, {3}, {'I', ' ', 'I', 0, 10, 0, 10, 0});
    const auto& page = Draw(wmf.Plain(), kWmfId);
    for (std::uint32_t x = 0; x < 144; ++x) {
      for (std::uint32_t y = 0; y < 72; ++y) {
        if (PixelAt(page, x, y) != 0) last[extra / 48] = x;
      }
    }
  }
  EXPECT_EQ(last[0] + 36, last[1]);
}

TEST_F(Qwmf, ManyObjectsTakeNoTime) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0);
  for (int i = 0; i < 300000; ++i) wmf.Record(0x02FA, {0, 0, 0, 0, 0});
  wmf.Box(0, 0, 96, 96);
  EXPECT_EQ(PixelAt(Draw(wmf.Plain(), kWmfId), 10, 10), kRed);
}

TEST_F(Qwmf, TextIsDrawn) {
  WmfWriter wmf;
  wmf.Window(0, 0, 192, 96);
  wmf.Record(0x0102, {1});
  wmf.Record(0x0521, {3}, {'H', 'H', 'H', 0, 40, 0, 20, 0});
  const auto& page = Draw(wmf.Plain(), kWmfId);
  std::size_t inked = 0;
  for (std::uint32_t y = 0; y < 72; ++y) {
    for (std::uint32_t x = 0; x < 144; ++x) {
      if (PixelAt(page, x, y) == 0) continue;
      ++inked;
      EXPECT_TRUE(x >= 14 && x < 60 && y >= 29 && y < 50) << x << ", " << y;
    }
  }
  EXPECT_GT(inked, 20U);
}

// A blue picture of one inch.
std::vector<std::uint8_t> BlueEmf() {
  platform::MetafileRecorder recorder(72);
  recorder.SelectObject(recorder.CreateBrush(platform::kBrushSolid, platform::ColorRef(0, 0, 255)));
  recorder.SelectObject(platform::kNullPen);
  recorder.Rectangle({0, 0, 72, 72});
  const std::unique_ptr<platform::Metafile> metafile(recorder.Close());
  return metafile->records;
}

std::vector<std::uint8_t> Comment(std::span<const std::uint8_t> piece, std::size_t left, std::size_t whole) {
  ByteWriter bytes;
  bytes.Text("WMFC").Long(1).Long(0x10000).Word(0).Long(0).Long(2);
  bytes.Long(static_cast<std::uint32_t>(piece.size())).Long(static_cast<std::uint32_t>(left));
  bytes.Long(static_cast<std::uint32_t>(whole)).Bytes(piece);
  return bytes.bytes;
}

TEST_F(Qwmf, AWholeEnhancedMetafileInCommentsGoesFirst) {
  const auto emf = BlueEmf();
  const std::span<const std::uint8_t> all(emf);
  for (const bool whole : {true, false}) {
    WmfWriter wmf;
    wmf.Window(0, 0, 96, 48).Brush(0, 255, 0, 0).Box(0, 0, 96, 48);
    const auto escape = [&](std::span<const std::uint8_t> piece, std::size_t left) {
      const auto bytes = Comment(piece, left, emf.size());
      wmf.Record(0x0626, {15, static_cast<std::int32_t>(bytes.size())}, bytes);
    };
    escape(all.first(100), emf.size() - 100);
    if (whole) escape(all.subspan(100), 0);
    const auto& page = Draw(wmf.Plain(), kWmfId);
    EXPECT_EQ(page.height, whole ? 72 : 36);
    EXPECT_EQ(PixelAt(page, 5, 5), whole ? kBlue : kRed);
  }
}

TEST_F(Qwmf, AnEnhancedMetafileIsHandedOver) {
  const auto emf = BlueEmf();
  for (const std::uint32_t id : {kEmfId, kWmfId, glib::kAnyFormat}) {
    const auto& page = Draw(emf, id);
    EXPECT_EQ(page.width, 72);
    EXPECT_EQ(PixelAt(page, 71, 71), kBlue);
  }
  // Without its end record.
  const auto& page = Draw({emf.begin(), emf.end() - 20}, kEmfId);
  EXPECT_EQ(PixelAt(page, 71, 71), kBlue);
}

TEST_F(Qwmf, CommandsInCommentsAloneAreRefused) {
  platform::MetafileRecorder recorder(72);
  recorder.SetFrame({0, 0, 72, 72});
  const std::uint8_t plus[] = {'E', 'M', 'F', '+', 1, 2, 3, 4};
  recorder.Comment(plus);
  const std::unique_ptr<platform::Metafile> metafile(recorder.Close());
  EXPECT_EQ(host.Load(metafile->records, kEmfId).result, glib::NSUP);
}

TEST_F(Qwmf, InfoIsThatOfAMetafile) {
  const test_support::TemporaryFolder folder;
  const auto emf = BlueEmf();
  folder.Write("a.emf", {reinterpret_cast<const char*>(emf.data()), emf.size()});
  const auto info = host.Info((folder.path() / "a.emf").string(), kEmfId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 0);
  EXPECT_EQ(info->pages, 1);
  EXPECT_EQ(info->width, -1);
  folder.Write("b.emf", "no metafile at all");
  EXPECT_EQ(host.Info((folder.path() / "b.emf").string(), kEmfId), nullptr);
}

TEST_F(Qwmf, SurvivesDamage) {
  WmfWriter wmf;
  wmf.Window(0, 0, 96, 96).Brush(0, 255, 0, 0).Box(0, 0, 96, 48);
  wmf.Record(0x0538, {2, 3, 3, 0, 0, 9, 0, 9, 9, 1, 1, 8, 1, 8, 8});
  wmf.Record(0x06FF, {0, 6, 0, 0, 40, 1, 2, 0, 0, 9, 9, 2, 0, 9, 0, 9, 2});
  wmf.Record(0x012C, {2});
  wmf.Record(0x0A32, {5, 5, 2, 6, 0, 0, 9, 9, 'A' | 'B' << 8, 7, 7});
  wmf.Record(0x0626, {15, 4, 1, 2});
  tests::TryDamaged(wmf.Placeable(0, 0, 96, 96, 96),
                    [&](std::span<const std::uint8_t> bytes) { return host.Load(bytes, kApmId); });
  tests::TryDamaged(BlueEmf(), [&](std::span<const std::uint8_t> bytes) { return host.Load(bytes, kEmfId); });
}

}  // namespace
