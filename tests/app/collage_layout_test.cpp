#include "app/collage_layout.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace app {

bool operator==(const CollageCell& a, const CollageCell& b) {
  return a.width == b.width && a.height == b.height && a.x == b.x && a.y == b.y && a.canvasWidth == b.canvasWidth &&
         a.canvasHeight == b.canvasHeight;
}

void PrintTo(const CollageCell& cell, std::ostream* out) {
  *out << cell.width << 'x' << cell.height << " at " << cell.x << ',' << cell.y << " canvas " << cell.canvasWidth << 'x'
       << cell.canvasHeight;
}

namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(CollageLayout, CentresImagesInTheirCells) {
  struct Case {
    std::string name;
    CollageGrid grid;
    std::vector<CollageCell> cells;  // with what is expected
  };
  const Case cases[] = {
      {"one image fills its cell", {2, 2, 0, 0}, {{30, 20, 0, 0, 30, 20}}},
      {"cells of 210 for the widest of 200", {3, 1, 10, 0}, {{100, 50, 55, 0, 155, 50}, {200, 50, 215, 0, 205, 50}}},
      {"odd rest goes to the right and the bottom", {2, 1, 0, 0}, {{5, 4, 0, 0, 5, 4}, {2, 1, 6, 1, 4, 3}}},
      {"the next row starts behind the row's last image, which stands one lower here",
       {2, 2, 0, 0},
       {{4, 4, 0, 0, 4, 4}, {4, 2, 4, 1, 4, 3}, {4, 3, 0, 5, 4, 3}}},
      {"gap between rows", {1, 2, 0, 6}, {{4, 4, 0, 3, 4, 7}, {4, 4, 0, 16, 4, 7}}},
      {"negative gaps cut, and no position is below 0", {2, 1, -4, -4}, {{10, 10, 0, 0, 8, 8}, {10, 10, 4, 0, 8, 8}}},
      {"a gap that leaves nothing of a cell", {1, 1, -20, 0}, {{10, 10, 0, 0, 0, 10}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<CollageCell> cells;
    for (const CollageCell& cell : c.cells) cells.push_back({cell.width, cell.height, 0, 0, 0, 0});
    ASSERT_TRUE(LayOutSheet(c.grid, cells));
    EXPECT_EQ(cells, c.cells);
  }
}

TEST(CollageLayout, RefusesWhatNoRasterHolds) {
  const std::vector<CollageCell> one = {{10, 10}};
  const std::vector<CollageCell> two = {{10, 10}, {10, 10}};
  struct Case {
    CollageGrid grid;
    std::vector<CollageCell> cells;
    bool good;
  };
  const Case cases[] = {
      {{2, 2, 0, 0}, {}, false},
      {{0, 2, 0, 0}, one, false},
      {{2, 1, kMax, 0}, two, false},
      {{1, 1, kMax, kMax}, one, false},
      {{1, 2, kMax, kMax}, two, false},
      {{1, 2, 0, kMax}, two, false},
      {{kMax, kMax, 0, 0}, two, true},
      {{1, 1, 32757, 32757}, one, true},   // 32767 squared pixels of 4 bytes
      {{1, 1, 32759, 32759}, one, false},  // 32769 squared
      {{1, 1, 0, 0}, {{kMax, kMax}}, false},
      {{1, 2, kMin, kMin}, {{kMax, 1}, {1, 1}}, false},
      {{2, 2, kMin, kMin}, two, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.grid.columns) + ";" + std::to_string(c.grid.rows) + ";" +
                 std::to_string(c.grid.gapX) + ";" + std::to_string(c.grid.gapY));
    std::vector<CollageCell> cells = c.cells;
    EXPECT_EQ(LayOutSheet(c.grid, cells), c.good);
    for (const CollageCell& cell : cells) {
      EXPECT_GE(cell.x, 0);
      EXPECT_GE(cell.y, 0);
    }
  }
}

}  // namespace
}  // namespace app
