#include "tests/support/layers.h"

#include <cstring>

#include "platform/metafile/metafile.h"
#include "platform/metafile/recorder.h"
#include "platform/pages.h"

namespace test_support {

std::uint8_t* NewPages(const std::vector<std::uint8_t>& bytes) {
  auto* block = static_cast<std::uint8_t*>(platform::AllocatePages(bytes.size()));
  std::memcpy(block, bytes.data(), bytes.size());
  return block;
}

glib::Layer* AddLayer32(glib::Slide& slide, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                        const std::vector<std::uint32_t>& pixels) {
  auto* layer = new glib::Layer(&slide);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixels.data());
  layer->SetPixels(x, y, width, height, NewPages({bytes, bytes + 4 * pixels.size()}));
  slide.AddLayer(layer);
  return layer;
}

glib::Layer* AddLayer32(glib::Slide& slide, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                        std::uint32_t pixel) {
  return AddLayer32(
      slide, x, y, width, height,
      std::vector<std::uint32_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), pixel));
}

glib::Layer* AddLayer(glib::Slide& slide, std::int32_t bits, std::int32_t width, std::int32_t height,
                      const std::vector<std::uint8_t>& rows) {
  auto* layer = new glib::Layer(&slide);
  layer->SetRaster(0, 0, width, height, NewPages(rows), nullptr, bits);
  slide.AddLayer(layer);
  return layer;
}

std::vector<std::uint32_t> Words(const glib::RasterBlock& raster) {
  if (raster.bits != 32 || raster.pixels == nullptr) return {};
  const auto* words = reinterpret_cast<const std::uint32_t*>(raster.pixels);
  return {words, words + static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height)};
}

std::vector<std::uint8_t> RowBytes(const glib::RasterBlock& raster) {
  if (raster.pixels == nullptr) return {};
  return {raster.pixels, raster.pixels + raster.Stride() * static_cast<std::size_t>(raster.height)};
}

glib::MetafileHandle NewMetafile(std::int32_t frameRight, std::int32_t frameBottom) {
  std::uint32_t header[27] = {1, sizeof header};
  header[8] = static_cast<std::uint32_t>(frameRight);
  header[9] = static_cast<std::uint32_t>(frameBottom);
  std::memcpy(&header[10], " EMF", 4);
  return platform::SetEnhMetaFileBits(reinterpret_cast<const std::uint8_t*>(header), sizeof header);
}

glib::MetafileHandle UnreadableMetafile() { return new platform::Metafile({}); }

glib::MetafileHandle HalfRedMetafile(std::int32_t width, std::int32_t height) {
  platform::MetafileRecorder recorder(100);
  recorder.SetFrame({0, 0, width, height});
  recorder.SelectObject(recorder.CreateBrush(platform::kBrushSolid, platform::ColorRef(255, 0, 0)));
  recorder.SelectObject(platform::kNullPen);
  recorder.Rectangle({0, 0, width / 2, height});
  return recorder.Close();
}

}  // namespace test_support
