#include "glib/format/metafile_pages.h"

#include "platform/metafile/metafile.h"

namespace glib {
namespace {

constexpr double kFrameUnitsPerInch = 2540.0;

// Up to 2^32 units and any resolution; what no raster can have becomes 0.
std::int32_t FramePixels(std::int32_t from, std::int32_t to, double dpi) {
  const double units = static_cast<double>(to) - static_cast<double>(from);
  const double pixels = units * (dpi == 0.0 ? 72.0 : dpi) / kFrameUnitsPerInch;
  return pixels >= 0.0 && pixels < 2147483648.0 ? static_cast<std::int32_t>(pixels) : 0;
}

bool ResolveSize(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width, std::int32_t& height) {
  platform::EnhMetaHeader header;
  if (!platform::GetEnhMetaFileHeader(metafile, header)) return false;
  if (width < 0) width = FramePixels(header.frameLeft, header.frameRight, xDpi);
  if (height < 0) height = FramePixels(header.frameTop, header.frameBottom, yDpi);
  return true;
}

}  // namespace

// There is no player for the records yet: both know the size and can't draw.

std::uint8_t* RenderMetafile32(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width,
                               std::int32_t& height) {
  ResolveSize(metafile, yDpi, xDpi, width, height);
  return nullptr;
}

std::uint8_t* RenderMetafile(MetafileHandle metafile, std::int32_t, double yDpi, double xDpi, std::int32_t& width,
                             std::int32_t& height, std::uint32_t) {
  ResolveSize(metafile, yDpi, xDpi, width, height);
  return nullptr;
}

}  // namespace glib
