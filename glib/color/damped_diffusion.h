#ifndef GLIB_COLOR_DAMPED_DIFFUSION_H_
#define GLIB_COLOR_DAMPED_DIFFUSION_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/candidate_lists.h"

namespace glib {

// Floyd-Steinberg diffusion of which a part of the error is dropped: full diffusion makes pictures noisier than the eye
// likes.

// The part of an error that is passed on, of 256, for a palette of so many colours. Smooth, so that nearly equal
// palettes give nearly equal pictures.
std::int32_t DiffusionStrength(std::size_t colorCount);

// A word without colour: the pixel keeps its index. Others without colour get index 0. Both take no error and pass none
// on.
inline constexpr std::uint32_t kHeldPixel = 1;

// How far the pixels of an entry would have liked to be from it, in sixteenths of a level; red, green, blue.
struct EntryDrift {
  std::array<std::int64_t, 3> sum{};
  std::int64_t count = 0;
};

// Diffuses the rows of a page, one band of up to four after the other from the top.
class DampedDiffusion {
 public:
  static constexpr std::size_t kBandRows = 4;

  // The colours that `lists` was made with, whose index 0 is `firstIndex`. `strength` is at most 256.
  DampedDiffusion(CandidateLists& lists, std::span<const std::uint32_t> colors, std::uint32_t firstIndex,
                  std::int32_t strength, std::size_t width);

  // `rows` (1 to 4) rows of words without padding, and as many of indices. Only the last band has fewer than four rows.
  // The rows are in flight together, each two pixels behind the one above, which gives the same pixels as one after the
  // other.
  void DiffuseBand(const std::uint32_t* colors, std::size_t rows, std::uint8_t* indices);

  // The same, one row after the other; what DiffuseBand must equal.
  void DiffuseBandPlain(const std::uint32_t* colors, std::size_t rows, std::uint8_t* indices);

  // Adds what DiffuseBand does from now on to drifts, 256 of them by index. Rows of at most 65535 pixels.
  void CollectDrifts(std::vector<EntryDrift>& drifts) { drifts_ = &drifts; }

  // Blue, green, red, alpha in sixteenths of a level.
  struct alignas(16) Fine {
    std::int32_t lane[4];
  };

 private:
  std::uint8_t DiffusePixelPlain(std::uint32_t color, std::size_t row, std::size_t x);
  void EndBand(std::size_t rows);

  CandidateLists& lists_;
  std::int32_t strength_;
  std::size_t width_;
  std::vector<Fine> entries_;                              // by index
  std::array<std::vector<Fine>, kBandRows + 1> passedOn_;  // errors of the row above the band and of its own rows, with
                                                           // a pixel of none before and behind
  std::vector<Fine> drift_;                                // of this band; the fourth lane counts
  std::vector<EntryDrift>* drifts_ = nullptr;
};

}  // namespace glib

#endif  // GLIB_COLOR_DAMPED_DIFFUSION_H_
