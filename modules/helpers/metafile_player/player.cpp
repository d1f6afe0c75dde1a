#include <algorithm>
#include <cmath>
#include <new>

#include "modules/common/helper.h"
#include "modules/helpers/metafile_player/canvas.h"
#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"
#include "platform/metafile/player.h"

namespace metafile_player {
namespace {

using platform::Record;

// Side of a tile in pixels, as the library's surfaces can hold it.
constexpr std::int32_t kMaxTileSide = 8191;

// Small tiles save fresh memory, which costs more than most drawing; but each plays all records again. A record's byte
// that is passed over takes about as long as a pixel's samples that were never touched.
std::int64_t TilePixels(std::int64_t pixels, std::size_t recordBytes) {
  constexpr double kLeast = 1 << 16, kMost = 1 << 20;
  const double tiles = std::sqrt(static_cast<double>(pixels) / static_cast<double>(recordBytes));
  return static_cast<std::int64_t>(std::clamp(static_cast<double>(pixels) / std::max(tiles, 1.0), kLeast, kMost));
}

constexpr double kScreenUnitsPerMm = 96 / 25.4;

// Units of the recorded device to a millimetre; plain screens where the header doesn't tell.
double PerMm(std::uint32_t device, std::uint32_t micrometres, std::uint32_t millimetres) {
  const double mm = micrometres != 0 ? micrometres / 1000.0 : millimetres;
  return device == 0 || mm == 0 ? kScreenUnitsPerMm : device / mm;
}

bool ReadPlacement(const Record& header, std::int32_t width, std::int32_t height, Placement& placement) {
  constexpr double kFrameUnitsPerMm = 100;
  const bool precise = header.Size() >= platform::kHeaderBytesWithMicrometres;
  placement.perMmX = PerMm(header.Long(72), precise ? header.Long(100) : 0, header.Long(80));
  placement.perMmY = PerMm(header.Long(76), precise ? header.Long(104) : 0, header.Long(84));
  placement.handleCount = header.Word(56);
  const double left = header.SignedLong(24), top = header.SignedLong(28);
  const double frameWidth = header.SignedLong(32) - left, frameHeight = header.SignedLong(36) - top;
  if (frameWidth <= 0 || frameHeight <= 0) return false;
  const double xScale = kSamples * width / frameWidth;
  const double yScale = kSamples * height / frameHeight;
  placement.deviceToSamples = {kFrameUnitsPerMm / placement.perMmX * xScale,
                               0,
                               0,
                               kFrameUnitsPerMm / placement.perMmY * yScale,
                               -left * xScale,
                               -top * yScale};
  placement.pixelsPerScreenPixel = std::sqrt(xScale * yScale) / kSamples * kFrameUnitsPerMm / kScreenUnitsPerMm;
  return true;
}

// Of a record that draws nothing, in samples.
constexpr std::uint64_t kRecordWork = 64;

void DrawTile(std::span<const std::uint8_t> stream, Canvas& canvas, Shared& shared, const Placement& placement) {
  Playback playback(canvas, shared, placement);
  platform::RecordReader reader(stream);
  Record record;
  for (std::uint32_t i = 0; i < kMaxRecords && !canvas.Exhausted() && reader.Next(record); ++i) {
    canvas.Spend(kRecordWork);
    playback.Play(record);
  }
}

bool DrawPicture(std::span<const std::uint8_t> stream, std::int32_t width, std::int32_t height, std::uint32_t paper,
                 std::uint32_t* pixels) {
  platform::RecordReader reader(stream);
  Record header;
  Placement placement;
  if (!reader.Next(header) || header.Type() != platform::kEmrHeader) return false;
  if (!ReadPlacement(header, width, height, placement)) {
    // A picture without size shows nothing.
    std::fill_n(pixels, static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0U);
    return true;
  }
  Shared shared;
  Canvas canvas(paper);
  const std::int32_t tileWidth = std::min(width, kMaxTileSide);
  const std::int64_t tilePixels = TilePixels(std::int64_t{width} * height, stream.size());
  const auto tileHeight = static_cast<std::int32_t>(
      std::min<std::int64_t>({height, kMaxTileSide, std::max<std::int64_t>(tilePixels / tileWidth, 1)}));
  const auto pixelsPerRow = static_cast<std::size_t>(width);
  for (std::int32_t y = 0; y < height; y += tileHeight) {
    for (std::int32_t x = 0; x < width; x += tileWidth) {
      const std::int32_t columns = std::min(tileWidth, width - x), rows = std::min(tileHeight, height - y);
      std::uint32_t* const to = pixels + static_cast<std::size_t>(y) * pixelsPerRow + static_cast<std::size_t>(x);
      if (canvas.Exhausted()) {
        for (std::int32_t i = 0; i < rows; ++i) {
          std::fill_n(to + static_cast<std::size_t>(i) * pixelsPerRow, columns, 0U);
        }
        continue;
      }
      if (!canvas.Begin(columns, rows)) return false;
      Placement tile = placement;
      tile.deviceToSamples.dx -= static_cast<double>(x) * kSamples;
      tile.deviceToSamples.dy -= static_cast<double>(y) * kSamples;
      DrawTile(stream, canvas, shared, tile);
      canvas.Finish(to, pixelsPerRow);
    }
  }
  return true;
}

}  // namespace
}  // namespace metafile_player

ZEFA_HELPER_ENTRY(bool)
PlayRecords(const std::uint8_t* records, std::size_t size, std::int32_t width, std::int32_t height, std::uint32_t paper,
            std::uint32_t* pixels) {
  try {
    return metafile_player::DrawPicture({records, size}, width, height, paper, pixels);
  } catch (const std::bad_alloc&) {
    return false;
  }
}
