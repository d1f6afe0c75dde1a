#include "glib/color/assign_palette.h"

#include <array>
#include <cstddef>

#include "glib/color/nearest_entry.h"
#include "glib/color/row_reports.h"

namespace glib {

void AssignPalette(std::uint8_t* pixels, const std::uint32_t* oldPalette, std::uint32_t oldCount,
                   const std::uint32_t* newPalette, std::uint32_t newCount, std::uint32_t width, std::uint32_t height,
                   ProgressCallback callback, std::uintptr_t user) {
  NearestEntryFinder finder(newPalette, newCount, oldCount);
  std::array<std::uint8_t, 256> table{};
  for (std::uint32_t i = 0; i < oldCount; ++i) {
    const std::uint32_t word = oldPalette[i];
    table[i] = static_cast<std::uint8_t>(finder.Find(static_cast<std::int32_t>(word & 255),
                                                     static_cast<std::int32_t>(word >> 8 & 255),
                                                     static_cast<std::int32_t>(word >> 16 & 255)));
  }
  RowReports reports(callback, user, width, height, "assign...");
  for (std::uint32_t y = 0; y < height; ++y) {
    reports.BeforeRow(y);
    std::uint8_t* row = pixels + PaddedStride(width, 8) * y;
    for (std::uint32_t x = 0; x < width; ++x) row[x] = table[row[x]];
  }
  reports.End();
}

}  // namespace glib
