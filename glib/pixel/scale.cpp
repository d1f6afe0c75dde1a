#include "glib/pixel/scale.h"

#include <cstring>

#include "glib/module_api/exchange.h"
#include "glib/module_api/progress.h"
#include "glib/pixel/scale_routes.h"

namespace glib {

std::uint8_t* RasterScaler::ScaleRaster(const RasterView& source, std::int32_t targetWidth, std::int32_t targetHeight,
                                        ProgressCallback callback) const {
  if (source.pixels == nullptr || source.width < 1 || source.height < 1 || targetWidth < 1 || targetHeight < 1) {
    return nullptr;
  }
  const std::int32_t bits = smooth != 0 ? 32 : source.bits;
  const auto width = static_cast<std::uint32_t>(targetWidth);
  const auto height = static_cast<std::uint32_t>(targetHeight);
  std::uint8_t* block = AllocateRaster(width, height, static_cast<std::uint32_t>(bits));
  if (block == nullptr) return nullptr;

  const ScaleTarget target{block, targetWidth, targetHeight, PaddedStride(width, static_cast<std::size_t>(bits))};
  if (source.width == targetWidth && source.height == targetHeight && source.bits == bits) {
    std::memcpy(block, source.pixels, target.stride * height);
    return block;
  }

  RowReports reports(callback, userValue, RowsPerReport(width, height), height, "scaling...");
  const bool enlarging = targetWidth > source.width && targetHeight > source.height;
  if (smooth == 0) {
    ScaleNearest(source, target, reports);
  } else if (source.bits == 32) {
    (enlarging ? EnlargeFixed : ReduceFixed)(source, target, reports);
  } else {
    (enlarging ? EnlargeFloat : ReduceBox)(source, target, reports);
  }
  return block;
}

}  // namespace glib
