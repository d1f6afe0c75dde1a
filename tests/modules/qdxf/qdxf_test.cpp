#include <gtest/gtest.h>

#include <bit>
#include <initializer_list>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "glib/module_api/result_values.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kDxfId = 0x80001006;

using Groups = std::initializer_list<std::pair<int, std::string>>;

std::string Text(Groups groups) {
  std::string text;
  for (const auto& [code, value] : groups) text += "  " + std::to_string(code) + "\r\n" + value + "\r\n";
  return text;
}

std::string Entity(const std::string& kind, Groups groups) {
  return Text({{0, kind}}) + Text({{8, "0"}}) + Text(groups);
}

std::string Section(const std::string& name, const std::string& content) {
  return Text({{0, "SECTION"}, {2, name}}) + content + Text({{0, "ENDSEC"}});
}

// A drawing of 100 x 50 units whose corners are marked, as 1024 x 512 pixels with a margin of one.
std::string Drawing(const std::string& entities, const std::string& blocks = "", const std::string& tables = "") {
  const std::string corners = Entity("LINE", {{10, "0"}, {20, "0"}, {11, "0"}, {21, "1"}}) +
                              Entity("LINE", {{10, "100"}, {20, "50"}, {11, "100"}, {21, "49"}});
  return Section("HEADER", Text({{9, "$ACADVER"}, {1, "AC1015"}})) + Section("TABLES", tables) +
         Section("BLOCKS", blocks) + Section("ENTITIES", corners + entities) + Text({{0, "EOF"}});
}

class Qdxf : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Load(std::string_view file) const {
    return host_.Load({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()}, kDxfId);
  }
  Loaded Draw(const std::string& file) const {
    Loaded loaded = Load(file);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageAt(0).bits, 0);
    DrawMetafiles(loaded);
    EXPECT_EQ(loaded.PageAt(0).width, 1026);
    EXPECT_EQ(loaded.PageAt(0).height, 514);
    return loaded;
  }
  // The colour within a pixel of a place in the drawing's units; 0 where there is nothing.
  static std::uint32_t Near(const Loaded& loaded, double x, double y) {
    const auto& page = loaded.PageAt(0);
    const int column = static_cast<int>(x * 10.24) + 1;
    const int row = static_cast<int>((50 - y) * 10.24) + 1;
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        if (column + dx < 0 || row + dy < 0 || column + dx >= page.width || row + dy >= page.height) continue;
        const std::uint32_t pixel =
            PixelAt(page, static_cast<std::uint32_t>(column + dx), static_cast<std::uint32_t>(row + dy));
        if (pixel >> 24 != 0) return pixel;
      }
    }
    return 0;
  }

  ModuleHost host_{"qdxf"};
};

TEST_F(Qdxf, EntitiesLieWhereTheyAreDrawn) {
  const auto vertex = [](const char* x, const char* y, const char* bulge) {
    return Entity("VERTEX", {{10, x}, {20, y}, {42, bulge}});
  };
  const struct {
    const char* name;
    std::string entity;
    double onX, onY;
    double offX, offY;
  } kCases[] = {
      {"line", Entity("LINE", {{10, "10"}, {20, "10"}, {11, "30"}, {21, "10"}}), 20, 10, 20, 12},
      {"circle", Entity("CIRCLE", {{10, "50"}, {20, "25"}, {40, "20"}}), 70, 25, 50, 25},
      {"arc", Entity("ARC", {{10, "50"}, {20, "25"}, {40, "20"}, {50, "90"}, {51, "180"}}), 35.86, 39.14, 64.14, 39.14},
      {"arc past 0", Entity("ARC", {{10, "50"}, {20, "25"}, {40, "20"}, {50, "270"}, {51, "90"}}), 70, 25, 30, 25},
      {"arc from below",
       Entity("ARC",
              {{10, "-50"}, {20, "25"}, {40, "20"}, {50, "90"}, {51, "180"}, {210, "0"}, {220, "0"}, {230, "-1"}}),
       64.14, 39.14, 35.86, 39.14},
      {"ellipse",
       Entity("ELLIPSE", {{10, "50"}, {20, "25"}, {11, "20"}, {21, "0"}, {40, "0.5"}, {41, "0"}, {42, "6.2831853"}}),
       50, 35, 50, 45},
      {"polyline",
       Entity("POLYLINE", {{66, "1"}, {70, "1"}}) + vertex("10", "10", "0") + vertex("30", "10", "0") +
           vertex("30", "30", "0") + Entity("SEQEND", {}),
       20, 20, 10, 20},
      {"bulge", Entity("LWPOLYLINE", {{90, "2"}, {70, "0"}, {10, "40"}, {20, "25"}, {42, "1"}, {10, "60"}, {20, "25"}}),
       50, 15, 50, 35},
      {"solid",
       Entity("SOLID",
              {{10, "10"}, {20, "10"}, {11, "30"}, {21, "10"}, {12, "10"}, {22, "30"}, {13, "30"}, {23, "30"}}),
       20, 28, 35, 20},
      {"spline",
       Entity("SPLINE", {{70, "8"},
                         {71, "2"},
                         {72, "6"},
                         {73, "3"},
                         {40, "0"},
                         {40, "0"},
                         {40, "0"},
                         {40, "1"},
                         {40, "1"},
                         {40, "1"},
                         {10, "20"},
                         {20, "10"},
                         {30, "0"},
                         {10, "50"},
                         {20, "50"},
                         {30, "0"},
                         {10, "80"},
                         {20, "10"},
                         {30, "0"}}),
       50, 30, 50, 45},
      {"hatch",
       Entity("HATCH", {{2, "SOLID"},
                        {70, "1"},
                        {71, "0"},
                        {91, "1"},
                        {92, "2"},
                        {72, "0"},
                        {73, "1"},
                        {93, "3"},
                        {10, "10"},
                        {20, "10"},
                        {10, "40"},
                        {20, "10"},
                        {10, "10"},
                        {20, "40"},
                        {97, "0"},
                        {75, "0"},
                        {76, "1"}}),
       18, 18, 38, 38},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = Draw(Drawing(c.entity));
    EXPECT_NE(Near(loaded, c.onX, c.onY), 0U);
    EXPECT_EQ(Near(loaded, c.offX, c.offY), 0U);
  }
}

TEST_F(Qdxf, InsertionsTurnScaleAndRepeat) {
  const std::string block =
      Text({{0, "BLOCK"}, {8, "0"}, {2, "B"}, {70, "0"}, {10, "1"}, {20, "0"}, {30, "0"}}) +
      Entity("SOLID",
             {{62, "0"}, {10, "1"}, {20, "0"}, {11, "3"}, {21, "0"}, {12, "1"}, {22, "1"}, {13, "3"}, {23, "1"}}) +
      Text({{0, "ENDBLK"}});
  const std::string insertion = Entity(
      "INSERT",
      {{62, "1"}, {2, "B"}, {10, "20"}, {20, "10"}, {41, "2"}, {42, "2"}, {50, "90"}, {70, "3"}, {71, "1"}, {44, "8"}});
  const Loaded loaded = Draw(Drawing(insertion, block));
  // Four by two, turned: from 18 to 20 and from 10 to 14; three of them, the step turned too.
  for (const double up : {0.0, 8.0, 16.0}) {
    EXPECT_EQ(Near(loaded, 19, 12 + up), 0xFFFF0000U) << up;
    EXPECT_EQ(Near(loaded, 21.5, 12 + up), 0U) << up;
    EXPECT_EQ(Near(loaded, 19, 16 + up), 0U) << up;
  }
}

std::string Block(const std::string& name, const std::string& content) {
  return Text({{0, "BLOCK"}, {8, "0"}, {2, name}, {70, "0"}, {10, "0"}, {20, "0"}, {30, "0"}}) + content +
         Text({{0, "ENDBLK"}});
}

TEST_F(Qdxf, DimensionsDrawTheirBlocks) {
  const std::string line = Entity("LINE", {{10, "10"}, {20, "20"}, {11, "60"}, {21, "20"}});
  const auto dimension = [](const char* type) {
    return Entity("DIMENSION", {{2, "*d1"}, {10, "60"}, {20, "20"}, {11, "35"}, {21, "22"}, {70, type}, {1, ""}});
  };
  for (const char* type : {"32", "33", "34", "35", "36", "37", "38"}) {
    const Loaded loaded = Draw(Drawing(dimension(type), Block("*D1", line)));
    EXPECT_NE(Near(loaded, 35, 20), 0U) << type;
  }
}

TEST_F(Qdxf, WhatIsNotToBeSeenIsNotDrawn) {
  const std::string line = Entity("LINE", {{60, "1"}, {10, "10"}, {20, "20"}, {11, "60"}, {21, "20"}});
  const std::string sheet = Entity("LINE", {{67, "1"}, {10, "-500"}, {20, "-500"}, {11, "500"}, {21, "500"}});
  // A line behind that of the sheet, as the sheet's own flag must not reach it, nor the other way.
  const std::string after = Entity("LINE", {{10, "10"}, {20, "40"}, {11, "60"}, {21, "40"}});
  const std::string field = Entity("ATTDEF", {{10, "2"}, {20, "2"}, {40, "8"}, {1, "HHH"}, {2, "TAG"}, {70, "0"}});
  const std::string attribute =
      Entity("INSERT", {{2, "B"}, {66, "1"}, {10, "70"}, {20, "10"}}) +
      Entity("ATTRIB", {{10, "70"}, {20, "30"}, {40, "8"}, {1, "HHH"}, {2, "TAG"}, {70, "1"}}) + Entity("SEQEND", {});
  const Loaded loaded = Draw(Drawing(line + sheet + after + attribute, Block("B", field)));
  EXPECT_EQ(Near(loaded, 35, 20), 0U);
  EXPECT_NE(Near(loaded, 35, 40), 0U);
  for (double x = 70; x < 85; x += 0.5) {
    EXPECT_EQ(Near(loaded, x, 16), 0U) << x;
    EXPECT_EQ(Near(loaded, x, 34), 0U) << x;
  }
}

TEST_F(Qdxf, PolylinesHaveWidths) {
  const Loaded even = Draw(Drawing(Entity("LWPOLYLINE", {{90, "4"},
                                                         {70, "1"},
                                                         {43, "4"},
                                                         {10, "20"},
                                                         {20, "10"},
                                                         {10, "60"},
                                                         {20, "10"},
                                                         {10, "60"},
                                                         {20, "40"},
                                                         {10, "20"},
                                                         {20, "40"}})));
  for (const auto& [x, y, on] : {std::tuple{40, 11.5, true}, {40, 8.5, true}, {40, 13.0, false}, {18.4, 8.4, true}}) {
    EXPECT_EQ(Near(even, x, y) != 0, on) << x << ", " << y;
  }
  // From a point to ten units wide and back.
  const auto vertex = [](const char* x, const char* start, const char* end) {
    return Entity("VERTEX", {{10, x}, {20, "25"}, {40, start}, {41, end}});
  };
  const Loaded changing = Draw(Drawing(Entity("POLYLINE", {{66, "1"}, {70, "0"}}) + vertex("10", "0", "10") +
                                       vertex("50", "10", "0") + vertex("90", "0", "0") + Entity("SEQEND", {})));
  EXPECT_NE(Near(changing, 49, 29), 0U);
  EXPECT_NE(Near(changing, 51, 21), 0U);
  EXPECT_EQ(Near(changing, 20, 27), 0U);
  EXPECT_NE(Near(changing, 30, 27), 0U);
  EXPECT_EQ(Near(changing, 80, 27), 0U);
}

TEST_F(Qdxf, NetsDrawTheirEdges) {
  const auto place = [](const char* x, const char* y, const char* flags) {
    return Entity("VERTEX", {{10, x}, {20, y}, {70, flags}});
  };
  const Loaded mesh =
      Draw(Drawing(Entity("POLYLINE", {{66, "1"}, {70, "16"}, {71, "2"}, {72, "2"}}) + place("20", "10", "64") +
                   place("60", "10", "64") + place("20", "40", "64") + place("60", "40", "64") + Entity("SEQEND", {})));
  for (const auto& [x, y] : {std::pair{40, 10}, {40, 40}, {20, 25}, {60, 25}}) {
    EXPECT_NE(Near(mesh, x, y), 0U) << x << ", " << y;
  }
  EXPECT_EQ(Near(mesh, 40, 25), 0U);
  // A triangle of faces whose last edge isn't to be seen.
  const Loaded faces = Draw(
      Drawing(Entity("POLYLINE", {{66, "1"}, {70, "64"}, {71, "3"}, {72, "1"}}) + place("20", "10", "192") +
              place("60", "10", "192") + place("60", "40", "192") +
              Entity("VERTEX", {{10, "0"}, {20, "0"}, {70, "128"}, {71, "1"}, {72, "2"}, {73, "-3"}}) +
              Entity("VERTEX", {{10, "0"}, {20, "0"}, {70, "128"}, {71, "1"}, {72, "99"}}) + Entity("SEQEND", {})));
  EXPECT_NE(Near(faces, 40, 10), 0U);
  EXPECT_NE(Near(faces, 60, 25), 0U);
  EXPECT_EQ(Near(faces, 40, 25), 0U);
}

TEST_F(Qdxf, HatchesAreDrawnWithTheirLines) {
  const auto hatch = [](Groups family) {
    return Text({{0, "HATCH"}, {8, "0"},   {2, "NET"}, {70, "0"},  {71, "0"},  {91, "1"},  {92, "2"},
                 {72, "0"},    {73, "1"},  {93, "4"},  {10, "20"}, {20, "10"}, {10, "80"}, {20, "10"},
                 {10, "80"},   {20, "40"}, {10, "20"}, {20, "40"}, {97, "0"},  {75, "0"},  {76, "1"},
                 {52, "0"},    {41, "1"},  {77, "0"},  {78, "1"}}) +
           Text(family) + Text({{98, "0"}});
  };
  const Loaded lines = Draw(Drawing(hatch({{53, "0"}, {43, "0"}, {44, "5"}, {45, "0"}, {46, "10"}, {79, "0"}})));
  for (const int y : {15, 25, 35}) EXPECT_NE(Near(lines, 50, y), 0U) << y;
  for (const int y : {12, 20, 30, 45}) EXPECT_EQ(Near(lines, 50, y), 0U) << y;
  EXPECT_EQ(Near(lines, 15, 25), 0U);
  EXPECT_EQ(Near(lines, 85, 25), 0U);
  // Upright ones of strokes that begin further up from line to line.
  const Loaded strokes = Draw(
      Drawing(hatch({{53, "90"}, {43, "30"}, {44, "0"}, {45, "-10"}, {46, "5"}, {79, "2"}, {49, "5"}, {49, "-15"}})));
  EXPECT_NE(Near(strokes, 30, 22.5), 0U);
  EXPECT_EQ(Near(strokes, 30, 30), 0U);
  EXPECT_NE(Near(strokes, 40, 17.5), 0U);
  EXPECT_EQ(Near(strokes, 40, 22.5), 0U);
  EXPECT_EQ(Near(strokes, 35, 22.5), 0U);
  // Lines too dense to be seen are a tint, however many there would be.
  const Loaded dense = Draw(Drawing(hatch({{53, "0"}, {43, "0"}, {44, "0"}, {45, "0"}, {46, "1e-9"}, {79, "0"}})));
  EXPECT_NE(Near(dense, 50, 25), 0U);
  EXPECT_NE(Near(dense, 50, 25), 0xFF000000U);
  EXPECT_EQ(Near(dense, 50, 45), 0U);
}

TEST_F(Qdxf, LinesWithoutEndCrossThePicture) {
  const Loaded loaded = Draw(Drawing(Entity("XLINE", {{10, "50"}, {20, "10"}, {11, "1"}, {21, "0"}}) +
                                     Entity("RAY", {{10, "50"}, {20, "25"}, {11, "0"}, {21, "1"}})));
  EXPECT_NE(Near(loaded, 2, 10), 0U);
  EXPECT_NE(Near(loaded, 98, 10), 0U);
  EXPECT_NE(Near(loaded, 50, 48), 0U);
  EXPECT_EQ(Near(loaded, 50, 15), 0U);
}

// The same drawing as its groups are stored in the binary form, with codes of one byte or of two.
std::string Binary(const std::string& file, bool wide) {
  std::string bytes("AutoCAD Binary DXF\r\n\x1A\0", 22);
  const auto put = [&](std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 255);
  };
  for (std::size_t at = 0; at < file.size();) {
    const auto line = [&] {
      const std::size_t end = file.find("\r\n", at);
      const std::string text = file.substr(at, end - at);
      at = end + 2;
      return text;
    };
    const int code = std::stoi(line());
    const std::string value = line();
    put(static_cast<std::uint64_t>(code), wide ? 2 : 1);
    if (code >= 10 && code <= 59) {
      put(std::bit_cast<std::uint64_t>(std::stod(value)), 8);
    } else if (code >= 60 && code <= 79) {
      put(static_cast<std::uint64_t>(std::stoi(value)), 2);
    } else {
      bytes += value + '\0';
    }
  }
  return bytes;
}

TEST_F(Qdxf, BinaryFilesAreReadAsText) {
  const std::string file = Drawing(Entity("CIRCLE", {{62, "1"}, {10, "50"}, {20, "25"}, {40, "20"}}));
  for (const bool wide : {false, true}) {
    const std::string binary = Binary(file, wide);
    EXPECT_EQ(Near(Draw(binary), 70, 25), Near(Draw(file), 70, 25)) << wide;
    for (std::size_t size = 0; size < binary.size(); size += 5)
      CheckOutcome(Load(std::string_view(binary).substr(0, size)));
  }
}

TEST_F(Qdxf, LayersGiveColorsAndHide) {
  const std::string layers = Text({{0, "TABLE"}, {2, "LAYER"}, {70, "3"}}) +
                             Text({{0, "LAYER"}, {2, "SHOWN"}, {70, "0"}, {62, "5"}, {6, "CONTINUOUS"}}) +
                             Text({{0, "LAYER"}, {2, "OFF"}, {70, "0"}, {62, "-3"}, {6, "CONTINUOUS"}}) +
                             Text({{0, "LAYER"}, {2, "FROZEN"}, {70, "1"}, {62, "3"}, {6, "CONTINUOUS"}}) +
                             Text({{0, "ENDTAB"}});
  const auto line = [](const char* layer, int y) {
    const std::string foot = std::to_string(y - 1);
    const std::string top = std::to_string(y + 1);
    return Text({{0, "SOLID"},
                 {8, layer},
                 {10, "10"},
                 {20, foot},
                 {11, "90"},
                 {21, foot},
                 {12, "10"},
                 {22, top},
                 {13, "90"},
                 {23, top}});
  };
  const Loaded loaded =
      Draw(Drawing(line("SHOWN", 10) + line("OFF", 20) + line("FROZEN", 30) + line("0", 40), "", layers));
  EXPECT_EQ(Near(loaded, 50, 10), 0xFF0000FFU);
  EXPECT_EQ(Near(loaded, 50, 20), 0U);
  EXPECT_EQ(Near(loaded, 50, 30), 0U);
  EXPECT_EQ(Near(loaded, 50, 40), 0xFF000000U);
}

TEST_F(Qdxf, DashesLeaveGaps) {
  const std::string types =
      Text({{0, "TABLE"}, {2, "LTYPE"}, {70, "1"}}) +
      Text({{0, "LTYPE"}, {2, "D"}, {70, "0"}, {3, "-"}, {72, "65"}, {73, "2"}, {40, "20"}, {49, "10"}, {49, "-10"}}) +
      Text({{0, "ENDTAB"}});
  const Loaded loaded =
      Draw(Drawing(Entity("LINE", {{6, "D"}, {10, "10"}, {20, "25"}, {11, "90"}, {21, "25"}}), "", types));
  EXPECT_NE(Near(loaded, 15, 25), 0U);
  EXPECT_EQ(Near(loaded, 25, 25), 0U);
  EXPECT_NE(Near(loaded, 35, 25), 0U);
}

TEST_F(Qdxf, TextsStandOnTheirPlace) {
  const auto inked = [](const Loaded& loaded, double left, double right, double bottom, double top) {
    int count = 0;
    for (double x = left; x < right; x += 0.2) {
      for (double y = bottom; y < top; y += 0.2) count += Near(loaded, x, y) != 0 ? 1 : 0;
    }
    return count;
  };
  const Loaded left = Draw(Drawing(Entity("TEXT", {{10, "10"}, {20, "10"}, {40, "8"}, {1, "HH"}})));
  EXPECT_GT(inked(left, 10, 30, 10, 18), 100);
  EXPECT_EQ(inked(left, 1, 9.5, 1, 49), 0);
  const Loaded right = Draw(Drawing(
      Entity("TEXT", {{10, "0"}, {20, "0"}, {40, "8"}, {1, "HH"}, {72, "2"}, {73, "3"}, {11, "60"}, {21, "40"}})));
  EXPECT_GT(inked(right, 40, 60, 32, 40), 100);
  EXPECT_EQ(inked(right, 61, 99, 1, 48), 0);
  // From one place to another: as wide as that, or as high as that makes it.
  const Loaded fitted = Draw(Drawing(
      Entity("TEXT", {{10, "10"}, {20, "10"}, {11, "90"}, {21, "10"}, {40, "8"}, {1, "HHHH"}, {72, "5"}, {73, "0"}})));
  EXPECT_GT(inked(fitted, 80, 90, 10, 18), 50);
  EXPECT_EQ(inked(fitted, 92, 99, 1, 48) + inked(fitted, 10, 90, 20, 48), 0);
  const Loaded aligned = Draw(Drawing(
      Entity("TEXT", {{10, "10"}, {20, "10"}, {11, "90"}, {21, "10"}, {40, "8"}, {1, "HHHH"}, {72, "3"}, {73, "0"}})));
  EXPECT_GT(inked(aligned, 80, 90, 10, 28), 50);
  EXPECT_GT(inked(aligned, 10, 90, 25, 29), 50);
  EXPECT_EQ(inked(aligned, 92, 99, 1, 48), 0);
  // A box breaks lines at spaces.
  const Loaded boxed =
      Draw(Drawing(Entity("MTEXT", {{10, "10"}, {20, "45"}, {40, "6"}, {41, "30"}, {71, "1"}, {1, "HHH HHH HHHH"}})));
  EXPECT_EQ(inked(boxed, 45, 99, 2, 48), 0);
  EXPECT_GT(inked(boxed, 10, 30, 29, 35), 50);
  EXPECT_GT(inked(boxed, 10, 30, 19, 25), 50);
  const Loaded lines =
      Draw(Drawing(Entity("MTEXT", {{10, "10"}, {20, "45"}, {40, "6"}, {71, "1"}, {1, "{\\fArial|b0;H\\P%%dH}"}})));
  EXPECT_GT(inked(lines, 10, 30, 39, 45), 50);
  EXPECT_GT(inked(lines, 10, 30, 29, 35), 50);
  EXPECT_EQ(inked(lines, 10, 30, 2, 27), 0);
}

TEST_F(Qdxf, InsertionsInThemselvesEnd) {
  std::string insertions;
  for (int i = 0; i < 10; ++i) insertions += Entity("INSERT", {{2, "B"}, {10, "1"}, {20, "1"}});
  const std::string block = Text({{0, "BLOCK"}, {8, "0"}, {2, "B"}, {10, "0"}, {20, "0"}}) +
                            Entity("LINE", {{10, "5"}, {20, "5"}, {11, "6"}, {21, "6"}}) + insertions +
                            Text({{0, "ENDBLK"}});
  Draw(Drawing(Entity("INSERT", {{2, "B"}, {10, "1"}, {20, "1"}}), block));
  const Loaded rows = Load(Drawing(
      Entity("INSERT", {{2, "B"}, {10, "1"}, {20, "1"}, {70, "32000"}, {71, "32000"}, {44, "1"}, {45, "1"}}), block));
  CheckOutcome(rows);
}

TEST_F(Qdxf, SenselessDrawingsAreRefused) {
  for (const std::string& file :
       {std::string(), std::string("no drawing"), Text({{0, "EOF"}}), Section("ENTITIES", ""),
        Section("ENTITIES", Entity("LWPOLYLINE", {{90, "2000000000"}, {10, "1"}, {20, "1"}})),
        Section("ENTITIES",
                Entity("SPLINE", {{71, "999999"}, {72, "2000000000"}, {73, "2000000000"}, {40, "1"}, {10, "1"}})),
        Section("ENTITIES", Entity("LINE", {{10, "1e300"}, {20, "nan"}, {11, "-1e300"}, {21, "inf"}}))}) {
    const Loaded loaded = Load(file);
    CheckOutcome(loaded);
  }
  EXPECT_EQ(Load(Section("ENTITIES", "")).result, glib::IERR);
}

TEST_F(Qdxf, InformationSaysDrawing) {
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("d.dxf", Drawing("")), kDxfId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 0);
}

TEST_F(Qdxf, CutFilesEndCleanly) {
  const std::string file =
      Drawing(Entity("TEXT", {{10, "10"}, {20, "10"}, {40, "8"}, {1, "HH"}}) + Entity("ARC", {{40, "5"}, {50, "1"}}));
  for (std::size_t size = 0; size < file.size(); size += 3) CheckOutcome(Load(std::string_view(file).substr(0, size)));
}

TEST_F(Qdxf, RealFilesLookAsElsewhere) {
  const auto files = CorpusFiles("dxf");
  if (files.empty()) GTEST_SKIP() << "no corpus";
  for (const Expected& file : files) {
    const Loaded loaded = host_.Load(file.path, kDxfId);
    DrawMetafiles(loaded);
    EXPECT_EQ(Compare(file, loaded), "") << file.name;
  }
}

}  // namespace
}  // namespace tests
