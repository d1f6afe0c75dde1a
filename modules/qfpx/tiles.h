#ifndef MODULES_QFPX_TILES_H_
#define MODULES_QFPX_TILES_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qfpx {

// The three streams that make the highest resolution of a picture.
struct Streams {
  std::span<const std::uint8_t> contents;  // "Image Contents"
  std::span<const std::uint8_t> header;    // of the subimage: where its tiles are
  std::span<const std::uint8_t> data;      // of the subimage
};

// The picture as a page. Tiles that can't be read stay empty, which is told in the message.
std::uint32_t LoadTiles(const Streams& streams, glib::ImageDataExchange& exchange);

}  // namespace qfpx

#endif  // MODULES_QFPX_TILES_H_
