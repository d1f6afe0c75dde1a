#ifndef GLIB_COLOR_PALETTE_MAPPER_H_
#define GLIB_COLOR_PALETTE_MAPPER_H_

#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/adaptive_palette.h"
#include "glib/color/candidate_lists.h"
#include "glib/color/color_page.h"

namespace glib {

struct MapSettings {
  std::uint32_t firstIndex = 0;  // of the first colour; 1 leaves index 0 to transparent pixels
  PaletteLevel level = PaletteLevel::kDefault;
  bool grayscale = false;
  bool dither = false;  // diffuse the error
};

// Turns pages into indices of a palette.
class PaletteMapper {
 public:
  // At most 256 - firstIndex colours, in any order; without any, all pixels get index 0.
  PaletteMapper(std::span<const std::uint32_t> colors, const MapSettings& settings);

  // Writes the page to `indices`, one a byte, rows without padding. Transparent pixels get index 0. Pixels whose byte
  // in `held` (of the same shape; may be null) is not 0 keep what stands in `indices`. Neither takes error from its
  // neighbours or passes any on.
  void Map(const ColorPage& page, const std::uint8_t* held, std::uint8_t* indices);

 private:
  void Dither(const ColorPage& page, const std::uint8_t* held, std::uint8_t* indices);

  MapSettings settings_;
  std::uint32_t firstIndex_;
  std::vector<std::uint32_t> colors_;
  CandidateLists lists_;
};

}  // namespace glib

#endif  // GLIB_COLOR_PALETTE_MAPPER_H_
