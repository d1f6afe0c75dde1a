#include "modules/helpers/metafile_player/clip.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "modules/helpers/metafile_player/limits.h"
#include "platform/metafile/records.h"

namespace metafile_player {
namespace {

constexpr auto kFar = static_cast<std::int32_t>(kMaxCoordinate);

using RegionHandle = std::shared_ptr<cairo_region_t>;

RegionHandle Owned(cairo_region_t* region) {
  RegionHandle handle(region, cairo_region_destroy);
  if (cairo_region_status(region) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  return handle;
}

RegionHandle CopyOf(const Region& region) { return Owned(cairo_region_copy(region.get())); }

Region Everywhere() {
  const cairo_rectangle_int_t all{-kFar, -kFar, 2 * kFar, 2 * kFar};
  return Owned(cairo_region_create_rectangle(&all));
}

std::int32_t Sample(double at) {
  return static_cast<std::int32_t>(std::round(std::clamp(at, -kMaxCoordinate, kMaxCoordinate)));
}

// The samples of a surface that are set, row by row.
std::vector<cairo_rectangle_int_t> SpansOf(cairo_surface_t* surface, std::int32_t x, std::int32_t y) {
  const int width = cairo_image_surface_get_width(surface);
  const int height = cairo_image_surface_get_height(surface);
  const std::uint8_t* row = cairo_image_surface_get_data(surface);
  std::vector<cairo_rectangle_int_t> spans;
  for (int i = 0; i < height; ++i, row += cairo_image_surface_get_stride(surface)) {
    const std::uint8_t* const end = row + width;
    for (const std::uint8_t* at = row; spans.size() < kMaxRegionBoxes;) {
      at = std::find_if(at, end, [](std::uint8_t sample) { return sample != 0; });
      if (at == end) break;
      const std::uint8_t* const last = std::find(at, end, std::uint8_t{0});
      spans.push_back({x + static_cast<int>(at - row), y + i, static_cast<int>(last - at), 1});
      at = last;
    }
  }
  return spans;
}

}  // namespace

Region RegionOf(std::span<const Area> boxes) {
  std::vector<cairo_rectangle_int_t> whole;
  for (const Area& box : boxes) {
    const std::int32_t left = Sample(box.left), top = Sample(box.top);
    whole.push_back({left, top, std::max(Sample(box.right) - left, 0), std::max(Sample(box.bottom) - top, 0)});
  }
  return Owned(cairo_region_create_rectangles(whole.data(), static_cast<int>(whole.size())));
}

Region RegionOf(const Path& path, bool winding, std::int32_t width, std::int32_t height) {
  const Area extent = path.Extent();
  const std::int32_t left = std::clamp(Sample(std::floor(extent.left)), 0, width);
  const std::int32_t top = std::clamp(Sample(std::floor(extent.top)), 0, height);
  const std::int32_t right = std::clamp(Sample(std::ceil(extent.right)), left, width);
  const std::int32_t bottom = std::clamp(Sample(std::ceil(extent.bottom)), top, height);
  if (left == right || top == bottom || path.CrossedRows(height, 0) > kMaxCrossedRows) return RegionOf({});
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_A8, right - left, bottom - top), cairo_surface_destroy);
  cairo_surface_set_device_offset(surface.get(), -left, -top);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo(cairo_create(surface.get()), cairo_destroy);
  if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
  cairo_set_fill_rule(cairo.get(), winding ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
  path.Trace(cairo.get());
  cairo_fill(cairo.get());
  cairo_surface_flush(surface.get());
  const auto spans = SpansOf(surface.get(), left, top);
  return Owned(cairo_region_create_rectangles(spans.data(), static_cast<int>(spans.size())));
}

Region Combined(const Region& before, const Region& with, std::uint32_t mode) {
  if (mode == platform::kRegionCopy) return with;
  if (before == nullptr && mode == platform::kRegionAnd) return with;
  if (before == nullptr && mode == platform::kRegionOr) return before;
  const Region from = before != nullptr ? before : Everywhere();
  // Stripes that cross each other make the product of their numbers.
  if (std::int64_t{BoxCount(from)} * BoxCount(with) > kMaxRegionProduct) return before;
  RegionHandle result = CopyOf(from);
  cairo_status_t status = CAIRO_STATUS_SUCCESS;
  switch (mode) {
    case platform::kRegionAnd:
      status = cairo_region_intersect(result.get(), with.get());
      break;
    case platform::kRegionOr:
      status = cairo_region_union(result.get(), with.get());
      break;
    case platform::kRegionXor:
      status = cairo_region_xor(result.get(), with.get());
      break;
    case platform::kRegionDiff:
      status = cairo_region_subtract(result.get(), with.get());
      break;
    default:
      return before;
  }
  if (status != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  return static_cast<std::size_t>(BoxCount(result)) > kMaxRegionBoxes ? before : Region(result);
}

Region Moved(const Region& region, double dx, double dy) {
  RegionHandle moved = CopyOf(region);
  cairo_region_translate(moved.get(), Sample(dx), Sample(dy));
  // Moving on and on must not leave the range of the numbers.
  cairo_region_intersect(moved.get(), Everywhere().get());
  return moved;
}

Region RimOf(const Region& region, std::int32_t width, std::int32_t height) {
  if (std::int64_t{BoxCount(region)} * BoxCount(region) > kMaxRegionProduct) return nullptr;
  Region core = region;
  for (const std::int32_t dx : {-width, 0, width}) {
    for (const std::int32_t dy : {-height, 0, height}) {
      core = Combined(core, Moved(region, dx, dy), platform::kRegionAnd);
    }
  }
  return Combined(region, core, platform::kRegionDiff);
}

int BoxCount(const Region& region) { return cairo_region_num_rectangles(region.get()); }

Path PathOf(const Region& region) {
  Path path;
  const int boxes = BoxCount(region);
  for (int i = 0; i < boxes; ++i) {
    cairo_rectangle_int_t box;
    cairo_region_get_rectangle(region.get(), i, &box);
    path.AddBox({static_cast<double>(box.x), static_cast<double>(box.y), static_cast<double>(box.x) + box.width,
                 static_cast<double>(box.y) + box.height});
  }
  // A region of no boxes is nowhere, which is not the same as none.
  if (boxes == 0) path.AddBox({});
  return path;
}

}  // namespace metafile_player
