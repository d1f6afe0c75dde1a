#include "modules/helpers/metafile_player/bitmap.h"

#include <algorithm>
#include <vector>

#include "glib/module_api/exchange.h"
#include "modules/common/dib.h"
#include "modules/helpers/metafile_player/limits.h"

namespace metafile_player {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;
constexpr std::uint32_t kMaxSurfaceSide = 32767;  // of the drawing library

// A place for the one page that the bitmap reader makes.
class PageHolder : public glib::ImageDataExchange {
 public:
  PageHolder() {
    AllocateRaster = glib::AllocateRaster;
    FreeRaster = glib::FreeRaster;
  }
};

std::uint32_t IndexAt(const std::uint8_t* row, std::size_t x, std::int32_t bits) {
  if (bits == 8) return row[x];
  if (bits == 4) return x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15U;
  return row[x / 8] >> (7 - x % 8) & 1U;
}

void CopyRow(const modules::Page& page, std::size_t y, std::uint32_t* to) {
  const std::uint8_t* row = page.pixels + y * page.Stride();
  for (std::size_t x = 0; x < static_cast<std::size_t>(page.width); ++x) {
    if (page.bits == 32) {
      to[x] = reinterpret_cast<const std::uint32_t*>(row)[x];
    } else if (page.bits == 24) {
      to[x] = kOpaque | static_cast<std::uint32_t>(row[3 * x + 2]) << 16 |
              static_cast<std::uint32_t>(row[3 * x + 1]) << 8 | row[3 * x];
    } else {
      to[x] = page.palette[IndexAt(row, x, page.bits)];
    }
  }
}

// The library takes sums of a colour and another's rest, so that a colour above its alpha would wrap.
std::uint32_t HeldToAlpha(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  std::uint32_t held = alpha << 24;
  for (int shift = 0; shift < 24; shift += 8) held |= std::min(pixel >> shift & 255, alpha) << shift;
  return held;
}

}  // namespace

std::shared_ptr<const Bitmap> DecodeBitmap(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                           AlphaOf alpha) {
  std::vector<std::uint8_t> dib(header.begin(), header.end());
  modules::DibHeader known;
  if (modules::ReadDibHeader(dib, modules::DibForm::kPicture, known).result != glib::RCOK) return nullptr;
  if (known.width > kMaxSurfaceSide || known.height > kMaxSurfaceSide ||
      std::uint64_t{known.width} * known.height > kMaxBitmapPixels) {
    return nullptr;
  }
  dib.insert(dib.end(), rows.begin(), rows.end());
  PageHolder holder;
  if (modules::LoadDib(dib, header.size(), holder) != glib::RCOK || holder.pages.count == 0) return nullptr;
  const modules::Page& page = *holder.pages.At(0);

  auto bitmap = std::make_shared<Bitmap>();
  bitmap->width = page.width;
  bitmap->height = page.height;
  bitmap->bottomUp = !known.topDown;
  bitmap->twoColors = known.bits == 1 && page.palette[0] == kOpaque && page.palette[1] == 0xFFFFFFFF;
  const bool blended = alpha == AlphaOf::kMultiplied && page.bits == 32;
  bitmap->surface.reset(
      cairo_image_surface_create(blended ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, page.width, page.height));
  if (cairo_surface_status(bitmap->surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(bitmap->surface.get());
  std::uint8_t* to = cairo_image_surface_get_data(bitmap->surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(bitmap->surface.get()));
  for (std::size_t y = 0; y < static_cast<std::size_t>(page.height); ++y, to += stride) {
    auto* words = reinterpret_cast<std::uint32_t*>(to);
    CopyRow(page, y, words);
    if (blended) std::transform(words, words + page.width, words, HeldToAlpha);
  }
  cairo_surface_mark_dirty(bitmap->surface.get());
  return bitmap;
}

Surface TwoColored(cairo_surface_t* from, std::uint32_t dark, std::uint32_t bright) {
  const int width = cairo_image_surface_get_width(from);
  const int height = cairo_image_surface_get_height(from);
  Surface copy(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
  cairo_surface_flush(copy.get());
  std::uint8_t* to = cairo_image_surface_get_data(copy.get());
  if (to == nullptr) return copy;
  const std::uint8_t* row = cairo_image_surface_get_data(from);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool isBright = (reinterpret_cast<const std::uint32_t*>(row)[x] & 0x8000) != 0;
      reinterpret_cast<std::uint32_t*>(to)[x] = isBright ? bright : dark;
    }
    row += cairo_image_surface_get_stride(from);
    to += cairo_image_surface_get_stride(copy.get());
  }
  cairo_surface_mark_dirty(copy.get());
  return copy;
}

std::shared_ptr<const Bitmap> BitmapCache::Get(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                               AlphaOf alpha, const HeaderOf& headerOf) {
  const Key key{header.data(), rows.data(), alpha};
  if (const auto found = kept_.find(key); found != kept_.end()) return found->second;
  auto bitmap = DecodeBitmap(headerOf(), rows, alpha);
  const std::size_t pixels =
      bitmap == nullptr ? 0 : static_cast<std::size_t>(bitmap->width) * static_cast<std::size_t>(bitmap->height);
  if (pixels <= kMaxCachedPixels - keptPixels_) {
    keptPixels_ += pixels;
    kept_.emplace(key, bitmap);
  }
  return bitmap;
}

}  // namespace metafile_player
