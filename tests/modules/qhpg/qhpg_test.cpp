#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "glib/module_api/result_values.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kHpgId = 0x80001007;
constexpr std::uint32_t kBlack = 0xFF000000;
constexpr std::uint32_t kRed = 0xFFFF0000;

class Qhpg : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Load(std::string_view plot) const {
    return host_.Load({reinterpret_cast<const std::uint8_t*>(plot.data()), plot.size()}, kHpgId);
  }
  // User units of one pixel, the origin at the lower left, on a sheet of 60 x 40 pixels with a dot in two corners.
  Loaded Draw(const std::string& plot) const {
    Loaded loaded = Load("IN;IP0,0,1016,1016;SC0,72,0,72;PW0;PU0,0;PD0,0;PU60.5,40.5;PD60.5,40.5;PU;" + plot);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageAt(0).bits, 0);
    DrawMetafiles(loaded);
    EXPECT_EQ(loaded.PageAt(0).width, 60);
    EXPECT_EQ(loaded.PageAt(0).height, 40);
    return loaded;
  }
  // Whether something was drawn at a pixel counted from the lower left.
  static bool Inked(const Loaded& loaded, int x, int y) {
    const auto& page = loaded.PageAt(0);
    return PixelAt(page, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(page.height - 1 - y)) >> 24 != 0;
  }
  static std::uint32_t At(const Loaded& loaded, int x, int y) {
    const auto& page = loaded.PageAt(0);
    return PixelAt(page, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(page.height - 1 - y));
  }

  ModuleHost host_{"qhpg"};
};

TEST_F(Qhpg, AreasLieWhereTheyAreFilled) {
  const struct {
    const char* name;
    std::string plot;
    int inX, inY;
    int outX, outY;
  } kCases[] = {
      {"rectangle", "PU10,10;RA20,30", 15, 20, 25, 20},
      {"rectangle by its size", "PU10,10;RR10,20", 15, 25, 15, 35},
      {"wedge", "PU30,20;WG15,0,90", 35, 25, 25, 25},
      {"polygon", "PU10,10;PM0;PD30,10,30,30;PM2;FP", 28, 15, 12, 28},
      {"polygon with a hole", "PU10,5;PM0;PD40,5,40,35,10,35;PM1;PU20,15;PD30,15,30,25,20,25;PM2;FP", 15, 20, 25, 20},
      {"polygon by ways", "PU10,10;PM0;PD;PR20,0,0,20;PM2;FP;PA", 28, 15, 12, 28},
      {"circle as polygon", "PU30,20;PM0;CI10;PM2;FP", 36, 20, 42, 20},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = Draw(c.plot);
    EXPECT_TRUE(Inked(loaded, c.inX, c.inY));
    EXPECT_FALSE(Inked(loaded, c.outX, c.outY));
  }
}

TEST_F(Qhpg, LinesCirclesAndArcs) {
  const struct {
    const char* name;
    std::string plot;
    int onX, onY;
    int offX, offY;
  } kCases[] = {
      {"line", "PU10,20;PD50,20", 30, 20, 30, 24},
      {"line by ways", "PU10,20;PR;PD20,0,0,10;PA", 30, 25, 20, 25},
      {"pen up between", "PU10,20;PD20,20;PU30,20;PD40,20", 35, 20, 25, 20},
      {"circle", "PU30,20;CI10", 40, 20, 30, 20},
      {"arc", "PU40,20;PD;AA30,20,90", 30, 30, 20, 20},
      {"arc by ways", "PU40,20;PD;AR-10,0,-90", 30, 10, 30, 30},
      {"arc through a point", "PU40,20;PD;AT30,30,20,20", 30, 30, 30, 10},
      {"curve", "PU10,10;PD;BZ10,36,50,36,50,10", 30, 29, 30, 12},
      {"curve by ways", "PU10,10;PD;BR0,26,40,26,40,0", 30, 29, 30, 12},
      {"tick upwards", "PU30,20;TL14,14;XT", 30, 28, 38, 20},
      {"tick to the right", "PU30,20;TL14;YT", 38, 20, 22, 20},
      {"a line type is a default, the paper's corners aren't", "LT2,50;DF;SC0,72,0,72;PU10,20;PD50,20", 28, 20, 30, 24},
      {"edge", "PU10,10;EA20,30", 10, 20, 15, 20},
      {"edge of a wedge", "PU30,20;EW15,0,90", 30, 28, 35, 25},
      {"no pen", "PU10,20;PD20,20;PU;SP0;PU30,20;PD40,20", 15, 20, 35, 20},
      {"window", "IW0,0,30,40;PU10,20;PD50,20;PU;IW", 20, 20, 40, 20},
      {"dashes", "LT2,50;PU0,20;PD60,20;LT", 5, 20, 30, 28},
      {"escapes", "\x1B.I81;;17:\x1B%1B\x1B&l0OPU10,20;PD50,20", 30, 20, 30, 24},
      {"unknown words", "QQ1,2;VS36;PU10,20;PD50,20", 30, 20, 30, 24},
      {"small letters", "pu10,20;pd50,20", 30, 20, 30, 24},
      {"no separators", "PU10,20PD50,20PU", 30, 20, 30, 24},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = Draw(c.plot);
    const bool near = Inked(loaded, c.onX, c.onY) || Inked(loaded, c.onX, c.onY - 1) || Inked(loaded, c.onX - 1, c.onY);
    EXPECT_TRUE(near);
    EXPECT_FALSE(Inked(loaded, c.offX, c.offY));
  }
}

TEST_F(Qhpg, PensHaveColors) {
  EXPECT_EQ(At(Draw("PU10,10;RA20,30"), 15, 20), kBlack);
  EXPECT_EQ(At(Draw("SP2;PU10,10;RA20,30"), 15, 20), kRed);
  EXPECT_EQ(At(Draw("PC3,255,0,0;SP3;PU10,10;RA20,30"), 15, 20), kRed);
  EXPECT_EQ(At(Draw("CR0,100,0,100,0,100;PC3,100,0,0;SP3;PU10,10;RA20,30"), 15, 20), kRed);
  EXPECT_EQ(At(Draw("FT10,50;PU10,10;RA20,30"), 15, 20) & 0xFF, 128U);
}

TEST_F(Qhpg, HatchesStayWithinTheirArea) {
  const Loaded loaded = Draw("FT3,4,0;PU10,10;RA40,30");
  int rows = 0;
  for (int y = 0; y < 40; ++y) {
    rows += Inked(loaded, 25, y) ? 1 : 0;
    EXPECT_FALSE(Inked(loaded, 45, y));
  }
  EXPECT_GE(rows, 4);
  EXPECT_LE(rows, 13);
}

TEST_F(Qhpg, LabelsStandOnTheirPlace) {
  const auto ink = [](const Loaded& loaded, int left, int right, int bottom, int top) {
    int count = 0;
    for (int x = left; x < right; ++x) {
      for (int y = bottom; y < top; ++y) count += Inked(loaded, x, y) ? 1 : 0;
    }
    return count;
  };
  const std::string big = "SI.2,.4;";  // 5.7 x 11.3 pixels
  const Loaded plain = Draw(big + "PU10,10;LBHH\x03");
  EXPECT_GT(ink(plain, 10, 25, 10, 21), 20);
  EXPECT_LE(ink(plain, 0, 60, 0, 9) + ink(plain, 0, 9, 0, 39), 2);  // the corner
  EXPECT_GT(ink(Draw(big + "DT#;PU10,10;LBHH#PU;"), 10, 25, 10, 21), 20);
  EXPECT_GT(ink(Draw(big + "LO7;PU30,10;LBHH\x03"), 12, 30, 10, 21), 20);
  EXPECT_EQ(ink(Draw(big + "LO7;PU30,10;LBHH\x03"), 31, 60, 1, 39), 0);
  EXPECT_GT(ink(Draw(big + "LO3;PU10,30;LBHH\x03"), 10, 25, 19, 30), 20);
  EXPECT_GT(ink(Draw(big + "DI0,1;PU30,10;LBHH\x03"), 18, 30, 10, 25), 20);
  EXPECT_GT(ink(Draw(big + "PU10,5;CP0,1;LBHH\x03"), 10, 25, 26, 39), 20);
  EXPECT_EQ(ink(Draw("COSP2;PU10,10;PD50,10;PU"), 20, 40, 9, 12), ink(Draw("PU10,10;PD50,10;PU"), 20, 40, 9, 12));
}

TEST_F(Qhpg, SymbolsMarkEachPlace) {
  const Loaded loaded = Draw("SI0.3,0.3;SMH;PU10,20;PA30,20;SM;PA50,20");
  const auto inked = [&](int x) {
    bool any = false;
    for (int y = 14; y < 27; ++y) {
      for (int dx = -4; dx <= 4; ++dx) any = any || Inked(loaded, x + dx, y);
    }
    return any;
  };
  EXPECT_TRUE(inked(10));
  EXPECT_TRUE(inked(30));
  EXPECT_FALSE(inked(20));
  EXPECT_FALSE(inked(50));
}

TEST_F(Qhpg, PackedLinesAreRead) {
  // Base 64: twice the way, plus one if below zero; a last digit is 191 above its value, others 63.
  const auto number = [](int value) {
    unsigned coded = value < 0 ? static_cast<unsigned>(-value) * 2 + 1 : static_cast<unsigned>(value) * 2;
    std::string digits;
    for (; coded >= 64; coded /= 64) digits += static_cast<char>(63 + coded % 64);
    return digits + static_cast<char>(191 + coded);
  };
  const Loaded loaded = Draw("PE<=" + number(10) + number(20) + number(30) + number(0) + number(0) + number(-15) + ";");
  EXPECT_TRUE(Inked(loaded, 25, 20) || Inked(loaded, 25, 19));
  EXPECT_TRUE(Inked(loaded, 40, 12) || Inked(loaded, 39, 12));
  EXPECT_FALSE(Inked(loaded, 25, 10));
  EXPECT_FALSE(Inked(loaded, 5, 10));
}

TEST_F(Qhpg, ScalesOfEachKind) {
  const struct {
    const char* plot;
    std::int32_t width, height;
  } kCases[] = {
      {"IN;PW0;PU0,0;PD1016,2032;", 72, 144},
      {"IN;PW0;IP0,0,1016,1016;SC0,1,0,1;PU0,0;PD1,2;", 72, 144},
      {"IN;PW0;IP0,0,2032,1016;SC0,1,0,1,1;PU0,0;PD1,1;", 72, 72},
      {"IN;PW0;IP0,0,1016,1016;SC0,1016,0,2032,2;PU0,0;PD1,1;", 72, 144},
      {"IN;PW0;RO90;PU0,0;PD1016,2032;", 144, 72},
      {"IN;PW0;IP0,0,1016,1016;SC0,1,0,1;IP0,0,2032,2032;PU0,0;PD1,1;", 144, 144},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.plot);
    const Loaded loaded = Load(c.plot);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    DrawMetafiles(loaded);
    EXPECT_NEAR(loaded.PageAt(0).width, c.width, 1);
    EXPECT_NEAR(loaded.PageAt(0).height, c.height, 1);
  }
}

TEST_F(Qhpg, SenselessPlotsAreRefused) {
  for (const char* plot : {"", "no plot at all.", "IN;", "IN;SP0;PD10,10,500,500;", "LB", "IN;PD1e9,1e9;"}) {
    CheckOutcome(Load(plot));
  }
  EXPECT_EQ(Load("IN;").result, glib::IERR);
  EXPECT_EQ(Load("IN;PD999999999,999999999;").result, glib::NSUP);
  EXPECT_EQ(Load("IN;SC0,0.000001,0,1;PD5,5,1000000,3;").result, glib::NSUP);
}

TEST_F(Qhpg, InformationSaysDrawing) {
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("p.hpgl", "IN;PD100,100;"), kHpgId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 0);
}

TEST_F(Qhpg, DamagedFilesEndCleanly) {
  const std::string plot =
      "\x1B.(;.I81;:IN;IP0,0,900,900;SC0,9,0,9;SP2;LT2,4;PU1,1;PD2,3;AA4,4,90,5;CI2;FT3,1,45;RA5,5;PM0;PD3,3,1,2;PM1;"
      "PM2;FP;EP;DT#;LBab\nc#CP1,2;PE<=7>c\xE0??\xE0;DI1,2;LO15;LBx#";
  TryDamaged({reinterpret_cast<const std::uint8_t*>(plot.data()), plot.size()},
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kHpgId); });
}

TEST_F(Qhpg, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("hpgl", host_, kHpgId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
