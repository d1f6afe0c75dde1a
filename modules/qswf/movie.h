#ifndef MODULES_QSWF_MOVIE_H_
#define MODULES_QSWF_MOVIE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"
#include "modules/qswf/values.h"

namespace qswf {

struct MovieHeader {
  Rect stage;               // twips
  std::uint32_t width = 0;  // pixels
  std::uint32_t height = 0;
  double framesPerSecond = 0;
  std::uint32_t frames = 0;
  std::size_t size = 0;  // tags begin behind so many bytes
};

// The bytes of a movie from its stage on, unpacked if it is compressed; at most `limit` of them.
modules::Verdict UnpackMovie(std::span<const std::uint8_t> file, std::size_t limit, std::vector<std::uint8_t>& movie);

modules::Verdict ReadMovieHeader(std::span<const std::uint8_t> movie, MovieHeader& header);

// Frames that differ from the one before as pages of the movie's size; bitmaps as pages where nothing is placed.
std::uint32_t LoadMovie(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qswf

#endif  // MODULES_QSWF_MOVIE_H_
