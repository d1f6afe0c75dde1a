#include "modules/qfpx/tile_samples.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "modules/common/jpeg_reader.h"

namespace qfpx {
namespace {

enum Compression : std::uint32_t { kRaw = 0, kOneColour = 1, kJpeg = 2 };

constexpr std::size_t kMarkerBytes = 2;

// A JPEG file out of shared tables and a tile's own stream, with a note on whether its colours are converted: nothing
// in the stream says so. Both parts begin with a start and end with an end.
std::vector<std::uint8_t> WholeJpeg(std::span<const std::uint8_t> tables, std::span<const std::uint8_t> stream,
                                    bool converted) {
  const std::uint8_t start[] = {0xFF, 0xD8, 0xFF, 0xEE, 0, 14, 'A', 'd', 'o',
                                'b',  'e',  0,    100,  0, 0,  0,   0,   static_cast<std::uint8_t>(converted ? 1 : 0)};
  std::vector<std::uint8_t> file(std::begin(start), std::end(start));
  if (tables.size() > 2 * kMarkerBytes)
    file.insert(file.end(), tables.begin() + kMarkerBytes, tables.end() - kMarkerBytes);
  if (stream.size() > kMarkerBytes) file.insert(file.end(), stream.begin() + kMarkerBytes, stream.end());
  return file;
}

bool ReadJpeg(const Tile& tile, const TileSize& size, const ImageContents& contents, const PropertySet& properties,
              std::span<std::uint8_t> samples) {
  if (contents.HasOpacity()) return false;
  const bool converted = (tile.subtype >> 16 & 255U) != 0;
  const std::vector<std::uint8_t> file = WholeJpeg(JpegTables(properties, tile.subtype >> 24), tile.data, converted);
  modules::JpegReader reader(file);
  const bool fits = reader.ReadHeader() && reader.Width() == size.width && reader.Height() == size.height &&
                    reader.Bits() == 8 * contents.channels;
  if (!fits || !reader.Start()) return false;
  const std::size_t rowBytes = std::size_t{size.width} * contents.channels;
  for (std::uint32_t y = 0; y < size.height; ++y) {
    const auto row = samples.subspan(y * rowBytes, rowBytes);
    if (!reader.ReadRow(row.data())) return false;
    // The reader gives the first channel last.
    for (std::size_t i = 0; contents.channels == 3 && i < rowBytes; i += 3) std::swap(row[i], row[i + 2]);
  }
  return !reader.WithoutRows();
}

}  // namespace

bool ReadTile(const Tile& tile, const TileSize& size, const ImageContents& contents, const PropertySet& properties,
              std::span<std::uint8_t> samples) {
  switch (tile.compression) {
    case kRaw:
      if (tile.data.size() < samples.size()) return false;
      std::copy_n(tile.data.begin(), samples.size(), samples.begin());
      return true;
    case kOneColour:
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint8_t>(tile.subtype >> 8 * (i % contents.channels));
      }
      return true;
    case kJpeg:
      return ReadJpeg(tile, size, contents, properties, samples);
    default:
      return false;
  }
}

}  // namespace qfpx
