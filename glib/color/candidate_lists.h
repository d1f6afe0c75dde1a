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
    Prepare(cube);
    return ListIn(lists_.data(), cube);
  }
  const CandidateGroup* Groups() const { return groups_.data(); }

  // The place of a colour as the search takes it.
  std::int32_t RedGreen(std::uint32_t color) const { return red_[color >> 16 & 255U] | green_[color >> 8 & 255U]; }
  std::int32_t Blue(std::uint32_t color) const { return blue_[color & 255U]; }

  // For searches that work out cubes and places for many colours at once: a cube is the upper five bits of red, green
  // and blue, and an axis is (level x scale + 2048) / 4096, if there are such scales for all three (otherwise they are
  // 0). After Prepare of all cubes that are wanted, ListIn gives their lists.
  void Prepare(std::uint32_t cube) {
    if (lists_[cube] == 0) MakeList(cube);
  }
  const std::uint32_t* Lists() const { return lists_.data(); }
  static List ListIn(const std::uint32_t* lists, std::uint32_t cube) {
    return {lists[cube] >> kCountBits, lists[cube] & ((1U << kCountBits) - 1)};
  }
  static constexpr unsigned kScaleBits = 12;
  const std::array<std::int32_t, 3>& AxisScales() const { return axisScales_; }

  // A cube of colours, as the places of its corners.
  struct Cube {
    Place low;
    Place high;
  };

  // Entries in columns: the three axes of their places and their numbers. Columns are filled up to whole vectors with
  // places that are far from all colours.
  struct Columns {
    static constexpr std::size_t kCapacity = 256 + 64;
    const std::int32_t* axes[3];
    const std::int32_t* numbers;
    std::size_t count;
  };

 private:
  static constexpr unsigned kBits = 5;
  static constexpr unsigned kCoarsestBits = 3;
  static constexpr unsigned kCountBits = 6;  // 256 entries are 32 groups; 2^15 such lists fit the rest

  // Columns of one list in pool_, one behind the other.
  struct Stored {
    std::uint32_t first = 0;
    std::uint32_t count = 0;  // 0: not made yet
  };

  static std::uint32_t CubeOf(std::uint32_t color) {
    return (color >> 19 & 31U) << 10 | (color >> 11 & 31U) << 5 | (color >> 3 & 31U);
  }
  Cube CornersOf(std::uint32_t cube, unsigned bits) const;
  Columns ColumnsOf(const Stored& stored) const;
  Columns CoarseList(std::uint32_t cube, unsigned bits);
  void MakeList(std::uint32_t cube);

  std::array<std::int32_t, 256> red_;
  std::array<std::int32_t, 256> green_;
  std::array<std::int32_t, 256> blue_;
  std::array<std::int32_t, 3> axisScales_;
  std::vector<CandidateGroup> entries_;                            // all of them
  Stored all_;                                                     // the same as columns
  std::array<std::vector<Stored>, kBits - kCoarsestBits> coarse_;  // of 3 and 4 bits a channel
  std::vector<std::int32_t> pool_;
  std::vector<std::uint32_t> lists_;  // place in groups_ and number of groups; 0: not made yet
  std::vector<CandidateGroup> groups_;
};

}  // namespace glib

#endif  // GLIB_COLOR_CANDIDATE_LISTS_H_
