#include "modules/helpers/metafile_player/clip.h"

#include <algorithm>
#include <cmath>
#include <new>

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

Region Combined(const Region& one, const Region& other, std::uint32_t mode) {
  RegionHandle result = CopyOf(one);
  switch (mode) {
    case platform::kRegionAnd:
      cairo_region_intersect(result.get(), other.get());
      break;
    case platform::kRegionOr:
      cairo_region_union(result.get(), other.get());
      break;
    case platform::kRegionXor:
      cairo_region_xor(result.get(), other.get());
      break;
    default:
      cairo_region_subtract(result.get(), other.get());
      break;
  }
  return result;
}

// The samples of a tile that a clip leaves, row by row.
Region Rasterised(const Clip& clip, std::int32_t width, std::int32_t height) {
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_A8, width, height), cairo_surface_destroy);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo(cairo_create(surface.get()), cairo_destroy);
  if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
  ApplyTerms(cairo.get(), clip);
  cairo_paint(cairo.get());
  cairo_surface_flush(surface.get());
  const std::uint8_t* row = cairo_image_surface_get_data(surface.get());
  std::vector<cairo_rectangle_int_t> spans;
  for (std::int32_t y = 0; y < height; ++y, row += cairo_image_surface_get_stride(surface.get())) {
    const std::uint8_t* const end = row + width;
    for (const std::uint8_t* at = row; spans.size() < kMaxRegionBoxes;) {
      at = std::find_if(at, end, [](std::uint8_t sample) { return sample != 0; });
      if (at == end) break;
      const std::uint8_t* const last = std::find(at, end, std::uint8_t{0});
      spans.push_back({static_cast<int>(at - row), y, static_cast<int>(last - at), 1});
      at = last;
    }
  }
  return Owned(cairo_region_create_rectangles(spans.data(), static_cast<int>(spans.size())));
}

}  // namespace

Region RegionOf(std::span<const Area> boxes) {
  std::vector<cairo_rectangle_int_t> whole;
  const auto sample = [](double at) {
    return static_cast<std::int32_t>(std::round(std::clamp(at, -kMaxCoordinate, kMaxCoordinate)));
  };
  for (const Area& box : boxes) {
    const std::int32_t left = sample(box.left), top = sample(box.top);
    whole.push_back({left, top, std::max(sample(box.right) - left, 0), std::max(sample(box.bottom) - top, 0)});
  }
  return Owned(cairo_region_create_rectangles(whole.data(), static_cast<int>(whole.size())));
}

Region Moved(const Region& region, double dx, double dy) {
  RegionHandle moved = CopyOf(region);
  const auto whole = [](double by) {
    return static_cast<std::int32_t>(std::round(std::clamp(by, -kMaxCoordinate, kMaxCoordinate)));
  };
  cairo_region_translate(moved.get(), whole(dx), whole(dy));
  // Moving on and on must not leave the range of the numbers.
  cairo_region_intersect(moved.get(), Everywhere().get());
  return moved;
}

Region RimOf(const Region& region, std::int32_t width, std::int32_t height) {
  Region core = region;
  for (const std::int32_t dx : {-width, 0, width}) {
    for (const std::int32_t dy : {-height, 0, height}) {
      core = Combined(core, Moved(region, dx, dy), platform::kRegionAnd);
    }
  }
  return Combined(region, core, platform::kRegionDiff);
}

Path PathOf(const Region& region) {
  Path path;
  const int boxes = cairo_region_num_rectangles(region.get());
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

void Clip::Intersect(std::shared_ptr<const ClipTerm> term) {
  if (!terms_.empty() && terms_.back()->region != nullptr && term->region != nullptr) {
    terms_.back() = std::make_shared<ClipTerm>(Combined(terms_.back()->region, term->region, platform::kRegionAnd));
    return;
  }
  if (terms_.size() < kMaxClipTerms) terms_.push_back(std::move(term));
}

void Clip::Intersect(const Clip& other) {
  for (const auto& term : other.terms_) Intersect(term);
}

std::uint64_t Clip::Combine(ClipTerm term, std::uint32_t mode, std::int32_t width, std::int32_t height) {
  if (mode < platform::kRegionAnd || mode > platform::kRegionCopy) return 0;
  if (mode == platform::kRegionOr && terms_.empty()) return 0;
  if (mode == platform::kRegionCopy) terms_.clear();
  if (mode == platform::kRegionCopy || mode == platform::kRegionAnd) {
    Intersect(std::make_shared<ClipTerm>(std::move(term)));
    return 0;
  }
  std::uint64_t work = 0;
  if (term.region == nullptr) {
    Clip alone;
    alone.Intersect(std::make_shared<ClipTerm>(std::move(term)));
    term = ClipTerm(Rasterised(alone, width, height));
    work += static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
  }
  if (mode == platform::kRegionDiff) {
    Intersect(std::make_shared<ClipTerm>(Combined(Everywhere(), term.region, mode)));
    return work;
  }
  Region before = Everywhere();
  if (terms_.size() == 1 && terms_[0]->region != nullptr) {
    before = terms_[0]->region;
  } else if (!terms_.empty()) {
    before = Rasterised(*this, width, height);
    work += static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
  }
  terms_.assign(1, std::make_shared<ClipTerm>(Combined(before, term.region, mode)));
  return work;
}

void Clip::Move(double dx, double dy) {
  for (auto& term : terms_) {
    if (term->region != nullptr) {
      term = std::make_shared<ClipTerm>(Moved(term->region, dx, dy));
    } else {
      auto copy = std::make_shared<ClipTerm>(*term);
      copy->path.Move(dx, dy);
      term = std::move(copy);
    }
  }
}

void ApplyTerms(cairo_t* cairo, const Clip& clip) {
  for (const auto& term : clip.Terms()) {
    term->path.Trace(cairo);
    cairo_set_fill_rule(cairo, term->winding ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    cairo_clip(cairo);
  }
}

}  // namespace metafile_player
