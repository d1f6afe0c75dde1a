#ifndef MODULES_QPCT_PICTURE_HEADER_H_
#define MODULES_QPCT_PICTURE_HEADER_H_

#include <cstdint>
#include <optional>
#include <span>

#include "modules/common/byte_reader.h"
#include "platform/metafile/geometry.h"

namespace qpct {

// Top, left, bottom, right, as they stand in the file.
platform::Box ReadBox(modules::ByteReader& in);

struct PictureHeader {
  platform::Box frame;     // in the units of the drawing
  double dpi = 72.0;       // of these units
  bool wordCodes = false;  // version 2: operations are words at even places
  std::size_t body = 0;    // where they begin
};

// With or without the 512 bytes that lead a file. Nothing if there is no picture.
std::optional<PictureHeader> ReadPictureHeader(std::span<const std::uint8_t> file);

}  // namespace qpct

#endif  // MODULES_QPCT_PICTURE_HEADER_H_
