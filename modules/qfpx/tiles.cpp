#include "modules/qfpx/tiles.h"

#include <algorithm>
#include <vector>

#include "modules/qfpx/image_contents.h"
#include "modules/qfpx/tile_samples.h"

namespace qfpx {
namespace {

constexpr std::size_t kStreamHeader = 28;  // in front of either stream of a subimage
constexpr std::size_t kLeastDescriptor = 16;
// The format knows tiles of 64 pixels only.
constexpr std::uint32_t kMaxTileSide = 1024;

struct TileTable {
  TileSize size;
  std::uint32_t across = 0;
  std::uint32_t down = 0;
  std::size_t offset = 0;  // of the first descriptor
  std::size_t step = 0;
};

std::uint32_t Needed(std::uint32_t side, std::uint32_t tile) { return (side + tile - 1) / tile; }

modules::Verdict ReadTable(std::span<const std::uint8_t> header, const ImageContents& contents, TileTable& table) {
  constexpr modules::Verdict kWrong{glib::IERR, "The table of the picture's tiles is damaged"};
  modules::ByteReader in(header);
  in.Skip(kStreamHeader + 4);  // and bytes of this part
  const std::uint32_t width = in.Long();
  const std::uint32_t height = in.Long();
  const std::uint32_t count = in.Long();
  table.size.width = in.Long();
  table.size.height = in.Long();
  in.Skip(4);  // channels
  table.offset = kStreamHeader + std::size_t{in.Long()};
  table.step = in.Long();
  if (in.Failed() || width != contents.width || height != contents.height || table.step < kLeastDescriptor ||
      table.size.width == 0 || table.size.width > kMaxTileSide || table.size.height == 0 ||
      table.size.height > kMaxTileSide) {
    return kWrong;
  }
  table.across = Needed(width, table.size.width);
  table.down = Needed(height, table.size.height);
  const std::uint64_t bytes = std::uint64_t{count} * table.step;
  const bool fits = table.offset <= header.size() && bytes <= header.size() - table.offset;
  return fits && count >= std::uint64_t{table.across} * table.down ? modules::kFine : kWrong;
}

Tile ReadDescriptor(const Streams& streams, const TileTable& table, std::size_t index) {
  modules::ByteReader in(streams.header);
  in.Skip(table.offset + index * table.step);
  const std::size_t offset = kStreamHeader + std::size_t{in.Long()};
  const std::size_t length = in.Long();
  Tile tile;
  tile.compression = in.Long();
  tile.subtype = in.Long();
  const auto data = streams.data.subspan(std::min(offset, streams.data.size()));
  tile.data = data.first(std::min(length, data.size()));
  return tile;
}

std::uint8_t Clamped(double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

// From luminance and two chrominances of Photo CD to blue, green, red.
void YccToColour(std::uint8_t* pixel) {
  const double luminance = 1.3584 * pixel[2];
  const double blue = 2.2179 * (pixel[1] - 156);
  const double red = 1.8215 * (pixel[0] - 137);
  pixel[0] = Clamped(luminance + blue);
  pixel[1] = Clamped(luminance - 0.194 * blue - 0.509 * red);
  pixel[2] = Clamped(luminance + red);
}

// One row of a tile, as far as it is within the page.
void PutRow(const std::uint8_t* samples, const ImageContents& contents, std::uint8_t* target, std::uint32_t count) {
  const std::uint32_t bytes = contents.Bits() / 8;
  const std::uint32_t channels = contents.channels;
  if (channels == 1) {
    std::copy_n(samples, count, target);
    return;
  }
  for (std::uint32_t x = 0; x < count; ++x, samples += channels, target += bytes) {
    for (std::uint32_t i = 0; i < channels; ++i) {
      const std::uint32_t place = contents.place[i];
      if (place == 3) {
        target[3] = samples[i];
      } else {
        target[2 - place] = samples[i];
      }
    }
    if (channels == 2) target[0] = target[1] = target[2];
    if (contents.space == Space::kYcc) YccToColour(target);
  }
}

}  // namespace

std::uint32_t LoadTiles(const Streams& streams, glib::ImageDataExchange& exchange) {
  const PropertySet properties(streams.contents);
  ImageContents contents;
  TileTable table;
  modules::Verdict verdict = ReadImageContents(properties, contents);
  if (verdict.result == glib::RCOK) verdict = ReadTable(streams.header, contents, table);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  modules::Page* page = modules::AddPage(exchange, contents.width, contents.height, contents.Bits());
  if (page == nullptr) return glib::NSUP;
  if (contents.channels == 1) modules::SetGrayRamp(*page, 256);

  std::vector<std::uint8_t> samples(table.size.Pixels() * contents.channels);
  const std::size_t rowBytes = std::size_t{table.size.width} * contents.channels;
  const std::size_t pixelBytes = contents.Bits() / 8;
  const std::size_t tiles = std::size_t{table.across} * table.down;
  std::size_t read = 0;
  for (std::size_t i = 0; i < tiles; ++i) {
    if (!ReadTile(ReadDescriptor(streams, table, i), table.size, contents, properties, samples)) continue;
    ++read;
    const auto left = static_cast<std::uint32_t>(i % table.across * table.size.width);
    const auto top = static_cast<std::uint32_t>(i / table.across * table.size.height);
    const std::uint32_t columns = std::min(table.size.width, contents.width - left);
    const std::uint32_t rows = std::min(table.size.height, contents.height - top);
    for (std::uint32_t y = 0; y < rows; ++y) {
      PutRow(samples.data() + y * rowBytes, contents, modules::Row(*page, top + y) + left * pixelBytes, columns);
    }
  }
  if (read == tiles) return glib::RCOK;
  if (read != 0) return modules::Fail(exchange, glib::RCOK, "Some tiles of the picture can't be read");
  modules::DropLastPage(exchange);
  return modules::Fail(exchange, glib::IERR, "No tile of the picture can be read");
}

}  // namespace qfpx
