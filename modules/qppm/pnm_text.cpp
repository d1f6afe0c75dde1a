#include "modules/qppm/pnm_text.h"

#include "modules/qppm/pnm.h"
#include "modules/qppm/pnm_rows.h"

namespace qppm {
namespace {

bool ReadBits(TextReader& in, std::uint8_t* row, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; ++x) {
    std::uint32_t bit = 0;
    if (!in.Bit(bit)) return false;
    row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | bit << (7 - x % 8));
  }
  return true;
}

bool ReadGrey(TextReader& in, const SampleScale& scale, std::uint8_t* row, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; ++x) {
    std::uint32_t sample = 0;
    if (!in.Number(sample)) return false;
    row[x] = scale.Of(sample);
  }
  return true;
}

bool ReadColour(TextReader& in, const SampleScale& scale, std::uint8_t* row, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; ++x, row += 3) {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    if (!in.Number(red) || !in.Number(green) || !in.Number(blue)) return false;
    row[0] = scale.Of(blue);
    row[1] = scale.Of(green);
    row[2] = scale.Of(red);
  }
  return true;
}

}  // namespace

std::uint32_t ReadTextRows(std::span<const std::uint8_t> data, const PnmHeader& header, modules::Page& page) {
  TextReader in(data);
  const SampleScale scale(header.highest);
  for (std::uint32_t y = 0; y < header.height; ++y) {
    std::uint8_t* row = modules::Row(page, y);
    const bool whole = header.kind == PnmKind::kBits   ? ReadBits(in, row, header.width)
                       : header.kind == PnmKind::kGrey ? ReadGrey(in, scale, row, header.width)
                                                       : ReadColour(in, scale, row, header.width);
    if (!whole) return y;
  }
  return header.height;
}

}  // namespace qppm
