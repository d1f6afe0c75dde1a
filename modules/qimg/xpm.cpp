#include "modules/qimg/xpm.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "modules/qimg/c_text.h"

namespace qimg {
namespace {

constexpr std::size_t kMaxColours = 256;

std::uint32_t PixelOf(const std::uint8_t* row, std::uint32_t x) {
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, row + std::size_t{x} * 4, sizeof(pixel));
  return pixel >> 24 == 0 ? 0 : pixel;  // transparent ones are all the same
}

// Indices by colour, in the order of the rows. More than the most allowed: too many.
std::unordered_map<std::uint32_t, std::uint32_t> CountColours(modules::Page& page) {
  std::unordered_map<std::uint32_t, std::uint32_t> indices;
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height) && indices.size() <= kMaxColours; ++y) {
    const std::uint8_t* const row = modules::Row(page, y);
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      indices.try_emplace(PixelOf(row, x), static_cast<std::uint32_t>(indices.size()));
    }
  }
  return indices;
}

}  // namespace

modules::Verdict ReadXpmHeader(std::span<const std::uint8_t> file, XpmHeader& header) {
  const auto quote = std::find(file.begin(), file.end(), std::uint8_t{'"'});
  CText numbers(file.subspan(static_cast<std::size_t>(quote - file.begin())));
  numbers.Next();
  const auto width = NumberOf(numbers.Next());
  const auto height = NumberOf(numbers.Next());
  const auto colours = NumberOf(numbers.Next());
  if (!width || !height || !colours) return {glib::IERR, "The header makes no sense"};
  header = {*width, *height, *colours};
  if (!modules::SizeAllowed(*width, *height)) return {glib::NSUP, "The picture has no pixels or too many"};
  return modules::kFine;
}

std::uint32_t XpmPageBits(std::span<const std::uint8_t> file, const XpmHeader& header) {
  if (header.colours <= kMaxColours) return modules::IndexBits(header.colours);
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  return text.find("None") != std::string_view::npos || text.find("none") != std::string_view::npos ? 32 : 24;
}

std::vector<std::uint8_t> WithoutLeadingBlanks(std::span<const std::uint8_t> file) {
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  const std::size_t quote = text.find('"');
  if (quote == std::string_view::npos) return {};
  const std::size_t first = text.find_first_not_of(" \t", quote + 1);
  if (first == std::string_view::npos || first == quote + 1) return {};
  std::vector<std::uint8_t> copy(file.begin(), file.end());
  std::swap(copy[quote], copy[first - 1]);
  return copy;
}

void PutBackIntoPalette(std::uint32_t colours, glib::ImageDataExchange& exchange) {
  if (exchange.pages.count == 0 || colours > kMaxColours) return;
  modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
  if (page.bits != 32) return;
  const auto indices = CountColours(page);
  if (indices.size() > kMaxColours) return;
  const std::uint32_t bits = modules::IndexBits(std::max<std::size_t>(indices.size(), colours));
  const auto width = static_cast<std::uint32_t>(page.width);
  const auto height = static_cast<std::uint32_t>(page.height);
  std::uint8_t* const pixels = exchange.AllocateRaster(width, height, bits);
  if (pixels == nullptr) return;
  const std::size_t stride = glib::PaddedStride(width, bits);
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint8_t* const row = modules::Row(page, y);
    for (std::uint32_t x = 0; x < width; ++x) {
      modules::PutIndex(pixels + y * stride, bits, x, indices.at(PixelOf(row, x)));
    }
  }
  for (const auto& [colour, index] : indices) page.palette[index] = colour;
  page.paletteEntries = static_cast<std::uint32_t>(indices.size());
  exchange.FreeRaster(page.pixels);
  page.pixels = pixels;
  page.bits = static_cast<std::int32_t>(bits);
}

}  // namespace qimg
