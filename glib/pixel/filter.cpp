#include "glib/pixel/filter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "glib/module_api/progress.h"
#include "glib/pixel/filter_rows.h"
#include "glib/pixel/row_reports.h"

namespace glib {
namespace {

RowReports ReportsOf(const RasterFilter& filter, std::int32_t width, std::int32_t height) {
  const gen::basic_string<char> text =
      filter.stage.IsEmpty() ? gen::basic_string<char>("processing") : filter.stage + "; processing";
  const auto w = static_cast<std::uint32_t>(width);
  const auto h = static_cast<std::uint32_t>(height);
  return RowReports(filter.callback, filter.userValue, filter.callback == nullptr ? 0 : RowsPerReport(w, h), h,
                    text.c_str());
}

// The place of a neighbour beside a pixel.
struct Neighbour {
  std::size_t row;  // 0 above, 1 at, 2 below
  std::ptrdiff_t column;
};

constexpr Neighbour kNeighbours[9] = {{0, -1}, {0, 0}, {0, 1}, {1, -1}, {1, 0}, {1, 1}, {2, -1}, {2, 0}, {2, 1}};

}  // namespace

bool RasterFilter::ConvolveRaster(std::uint8_t* pixels, std::int32_t width, std::int32_t height,
                                  FilterKernel kernel) const {
  if (pixels == nullptr || width < 3 || height < 3) return false;
  const auto columns = static_cast<std::size_t>(width);
  auto* words = reinterpret_cast<std::uint32_t*>(pixels);
  const auto row = [&](std::int32_t y) { return words + static_cast<std::size_t>(y) * columns; };
  // The row below is still old in the raster itself.
  std::vector<std::uint32_t> upper(row(0), row(1));
  std::vector<std::uint32_t> middle(upper);
  RowReports reports = ReportsOf(*this, width, height);
  for (std::int32_t y = 0; y < height; ++y) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y)) return false;
    std::memcpy(middle.data(), row(y), columns * sizeof(std::uint32_t));
    const std::uint32_t* lower = y + 1 < height ? row(y + 1) : middle.data();
    ConvolveRow(upper.data(), middle.data(), lower, columns, kernel, row(y));
    std::swap(upper, middle);
  }
  return true;
}

bool RasterFilter::RankRaster(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::uint32_t rank) const {
  if (pixels == nullptr || width < 3 || height < 3) return true;
  const auto columns = static_cast<std::size_t>(width);
  auto* words = reinterpret_cast<std::uint32_t*>(pixels);
  const auto row = [&](std::int32_t y) { return words + static_cast<std::size_t>(y) * columns; };
  std::vector<std::uint32_t> upper(row(0), row(1));
  std::vector<std::uint32_t> middle(columns);
  std::vector<std::uint8_t> brightness[3];
  for (auto& values : brightness) values.resize(columns);
  BrightnessRow(row(0), columns, brightness[0].data());
  BrightnessRow(row(1), columns, brightness[1].data());
  std::vector<std::uint8_t> scratch(3 * columns);
  std::vector<std::uint8_t> chosen(columns);
  RowReports reports = ReportsOf(*this, width, height);
  for (std::int32_t y = 1; y + 1 < height; ++y) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y)) return false;
    std::memcpy(middle.data(), row(y), columns * sizeof(std::uint32_t));
    BrightnessRow(row(y + 1), columns, brightness[2].data());
    RankRow(brightness[0].data(), brightness[1].data(), brightness[2].data(), columns, rank, scratch.data(),
            chosen.data());
    const std::uint32_t* old[3] = {upper.data(), middle.data(), row(y + 1)};
    const std::uint32_t* from[9];
    for (std::size_t i = 0; i < 9; ++i) from[i] = old[kNeighbours[i].row] + kNeighbours[i].column;
    std::uint32_t* out = row(y);
    for (std::size_t x = 1; x + 1 < columns; ++x) out[x] = from[chosen[x]][x];
    std::swap(upper, middle);
    std::swap(brightness[0], brightness[1]);
    std::swap(brightness[1], brightness[2]);
  }
  return true;
}

}  // namespace glib
