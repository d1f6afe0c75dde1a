#ifndef GLIB_COLOR_CANDIDATE_LISTS_H_
#define GLIB_COLOR_CANDIDATE_LISTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_space.h"
#include "glib/color/nearest_candidates.h"

namespace glib {

// For each small cube of colours (5 bits a channel) the entries that are nearest to any colour in it. Lists are made
// when they are first asked for, from those of the larger cubes around.
class CandidateLists {
 public:
  // 1 to 256 colours. Index i + `firstIndex` stands for colors[i]; all of them are below 256.
  CandidateLists(std::span<const std::uint32_t> colors, std::uint32_t firstIndex, ColorMeasure measure);

  // Where the list of a colour begins in Groups(), and how many groups it has. A call may move the groups.
  struct List {
    std::uint32_t first;
    std::uint32_t count;
  };
  List ListOf(std::uint32_t color) {
    const std::uint32_t cube = CubeOf(color);
    if (lists_[cube].count == 0) MakeList(cube);
    return lists_[cube];
  }
  const CandidateGroup* Groups() const { return groups_.data(); }

  // The place of a colour as the search takes it.
  std::int32_t RedGreen(std::uint32_t color) const { return red_[color >> 16 & 255U] | green_[color >> 8 & 255U]; }
  std::int32_t Blue(std::uint32_t color) const { return blue_[color & 255U]; }

 private:
  static constexpr unsigned kBits = 5;
  static constexpr unsigned kCoarsestBits = 3;

  // A cube of colours, as the places of its corners.
  struct Cube {
    Place low;
    Place high;
  };

  static std::uint32_t CubeOf(std::uint32_t color) {
    return (color >> 19 & 31U) << 10 | (color >> 11 & 31U) << 5 | (color >> 3 & 31U);
  }
  Cube CornersOf(std::uint32_t cube, unsigned bits) const;
  const std::vector<std::uint8_t>& CoarseList(std::uint32_t cube, unsigned bits);
  std::vector<std::uint8_t> Rivals(std::span<const std::uint8_t> entries, const Cube& cube) const;
  void DropBeaten(const Cube& cube, std::vector<std::uint8_t>& entries) const;
  void MakeList(std::uint32_t cube);

  std::uint32_t firstIndex_;
  std::vector<Place> entries_;
  std::array<std::int32_t, 256> red_;
  std::array<std::int32_t, 256> green_;
  std::array<std::int32_t, 256> blue_;
  std::vector<std::uint8_t> all_;
  std::array<std::vector<std::vector<std::uint8_t>>, 2> coarse_;  // of 3 and 4 bits a channel; empty: not made yet
  std::vector<List> lists_;
  std::vector<CandidateGroup> groups_;
};

}  // namespace glib

#endif  // GLIB_COLOR_CANDIDATE_LISTS_H_
