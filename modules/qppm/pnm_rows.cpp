#include "modules/qppm/pnm_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "modules/qppm/pnm.h"

namespace qppm {
namespace {

std::uint32_t SampleAt(const std::uint8_t* row, std::size_t index, bool wide) {
  if (!wide) return row[index];
  return static_cast<std::uint32_t>(row[2 * index]) << 8 | row[2 * index + 1];
}

void ScaleGrey(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool wide,
               const SampleScale& scale) {
  for (std::size_t x = 0; x < count; ++x) target[x] = scale.Of(SampleAt(source, x, wide));
}

void ScaleColour(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool wide,
                 const SampleScale& scale) {
  for (std::size_t x = 0; x < count; ++x) {
    for (std::size_t i = 0; i < 3; ++i) target[3 * x + 2 - i] = scale.Of(SampleAt(source, 3 * x + i, wide));
  }
}

}  // namespace

// A pixel is moved as a word of four bytes, whose stray byte the next store mends; 12 bytes a pixel would otherwise
// take three loads and stores each.
void SwapRedAndBlue(const std::uint8_t* source, std::uint8_t* target, std::size_t count) {
  static_assert(std::endian::native == std::endian::little);
  if (count == 0) return;
  for (std::size_t x = 0; x + 1 < count; ++x) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, source + 3 * x, sizeof(pixel));
    pixel = __builtin_bswap32(pixel) >> 8;
    std::memcpy(target + 3 * x, &pixel, sizeof(pixel));
  }
  const std::size_t last = 3 * (count - 1);
  std::reverse_copy(source + last, source + last + 3, target + last);
}

std::uint32_t ReadBinaryRows(std::span<const std::uint8_t> data, const PnmHeader& header, modules::Page& page) {
  const std::size_t rowBytes = PnmRowBytes(header);
  const auto rows = static_cast<std::uint32_t>(std::min<std::size_t>(data.size() / rowBytes, header.height));
  const bool wide = header.highest > 255;
  const bool asItIs = header.kind == PnmKind::kBits || header.highest == 255;
  const SampleScale scale(header.highest);
  for (std::uint32_t y = 0; y < rows; ++y) {
    const std::uint8_t* source = data.data() + y * rowBytes;
    std::uint8_t* target = modules::Row(page, y);
    if (header.kind == PnmKind::kColour) {
      asItIs ? SwapRedAndBlue(source, target, header.width) : ScaleColour(source, target, header.width, wide, scale);
    } else if (asItIs) {
      std::memcpy(target, source, rowBytes);
    } else {
      ScaleGrey(source, target, header.width, wide, scale);
    }
  }
  return rows;
}

}  // namespace qppm
