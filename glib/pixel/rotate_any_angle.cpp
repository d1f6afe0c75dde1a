#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "glib/pixel/rotate_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/rotate_any_angle.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_PIXEL_ROTATE_ANY_ANGLE_CPP_ONCE_
#define GLIB_PIXEL_ROTATE_ANY_ANGLE_CPP_ONCE_
namespace glib {
namespace {

// Columns of a target row, `begin` up to `end`.
struct Span {
  std::int32_t begin;
  std::int32_t end;
};

// A target row's own terms.
struct RowTerms {
  double ySine;
  double yCosine;
};

}  // namespace
}  // namespace glib
#endif  // GLIB_PIXEL_ROTATE_ANY_ANGLE_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Columns of `span`, all of which have a source pixel. `out` is the target row.
void NearestSpan(const std::uint32_t* source, const TurnedGrid& grid, const RowTerms& row, Span span,
                 std::uint32_t* out) {
  const hn::ScalableTag<double> d;
  const hn::Rebind<std::int32_t, decltype(d)> di;
  const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
  const auto cosine = hn::Set(d, grid.cosine);
  const auto sine = hn::Set(d, grid.sine);
  const auto ySine = hn::Set(d, row.ySine);
  const auto yCosine = hn::Set(d, row.yCosine);
  const auto centreX = hn::Set(di, grid.centreX);
  const auto centreY = hn::Set(di, grid.centreY);
  const auto width = hn::Set(di, grid.width);
  const auto step = hn::Set(d, static_cast<double>(lanes));
  auto xx = hn::Iota(d, static_cast<double>(span.begin - grid.targetCentreX));
  HWY_ALIGN std::int32_t places[HWY_MAX_BYTES / sizeof(double)];
  for (std::int32_t x = span.begin; x < span.end; x += lanes, xx = hn::Add(xx, step)) {
    const auto sx = hn::Add(hn::DemoteTo(di, hn::Sub(hn::Mul(xx, cosine), ySine)), centreX);
    const auto sy = hn::Add(hn::DemoteTo(di, hn::Add(hn::Mul(xx, sine), yCosine)), centreY);
    hn::StoreU(hn::Add(hn::Mul(sy, width), sx), di, places);
    const std::int32_t count = std::min(lanes, span.end - x);
    for (std::int32_t i = 0; i < count; ++i) out[x + i] = source[places[i]];
  }
}

// Columns of `span`, all of which have four source pixels.
void MixedSpan(const std::uint32_t* source, const TurnedGrid& grid, const RowTerms& row, Span span,
               std::uint32_t* out) {
  const hn::CappedTag<double, 4> d;
  const hn::Rebind<std::int32_t, decltype(d)> di;
  const hn::Rebind<std::uint8_t, decltype(d)> d8;
  const auto load = [&](const std::uint32_t* pixel, std::size_t channel) HWY_ATTR {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixel) + channel;
    return hn::PromoteTo(d, hn::PromoteTo(di, hn::LoadU(d8, bytes)));
  };
  for (std::int32_t x = span.begin; x < span.end; ++x) {
    const double xx = x - grid.targetCentreX;
    const double fx = xx * grid.cosine - row.ySine + grid.centreX;
    const double fy = xx * grid.sine + row.yCosine + grid.centreY;
    const auto ix = static_cast<std::int32_t>(fx);
    const auto iy = static_cast<std::int32_t>(fy);
    const auto dx = hn::Set(d, fx - ix);
    const auto restX = hn::Set(d, 1.0 - (fx - ix));
    const auto dy = hn::Set(d, fy - iy);
    const auto restY = hn::Set(d, 1.0 - (fy - iy));
    const std::uint32_t* upper = source + static_cast<std::ptrdiff_t>(iy) * grid.width + ix;
    const std::uint32_t* lower = upper + grid.width;
    for (std::size_t c = 0; c < 4; c += hn::Lanes(d)) {
      const auto below = hn::Add(hn::Mul(load(lower, c), restX), hn::Mul(load(lower + 1, c), dx));
      const auto above = hn::Add(hn::Mul(load(upper, c), restX), hn::Mul(load(upper + 1, c), dx));
      const auto value = hn::Add(hn::Mul(below, dy), hn::Mul(above, restY));
      // Both conversions keep to the range: a place just before the first row or column gives values outside it.
      hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(di, value)), d8, reinterpret_cast<std::uint8_t*>(out + x) + c);
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(NearestSpan);
HWY_EXPORT(MixedSpan);

namespace {

// A block of target pixels draws from a slanted square of the source; this side keeps both in the first caches.
constexpr std::int32_t kBlockRows = 64;
constexpr std::int32_t kBlockColumns = 128;

RowTerms TermsOf(const TurnedGrid& grid, std::int32_t y) {
  const double yy = y - grid.targetCentreY;
  return {yy * grid.sine, yy * grid.cosine};
}

// The columns whose source place lies in 0 up to `limit`. `place` must rise, or fall if not `rising`, with the column,
// so the columns stand together and are found by halving.
template <typename Place>
Span ColumnsWithin(std::int32_t width, std::int32_t limit, bool rising, Place place) {
  const auto firstWhere = [&](auto holds) {
    std::int32_t low = 0;
    std::int32_t high = width;
    while (low < high) {
      const std::int32_t middle = low + (high - low) / 2;
      if (holds(place(middle))) {
        high = middle;
      } else {
        low = middle + 1;
      }
    }
    return low;
  };
  if (rising) {
    return {firstWhere([](std::int32_t p) { return p >= 0; }), firstWhere([&](std::int32_t p) { return p >= limit; })};
  }
  return {firstWhere([&](std::int32_t p) { return p < limit; }), firstWhere([](std::int32_t p) { return p < 0; })};
}

Span Common(Span a, Span b) {
  const std::int32_t begin = std::max(a.begin, b.begin);
  return {begin, std::max(begin, std::min(a.end, b.end))};
}

struct NearestPlaces {
  const TurnedGrid& grid;
  RowTerms row;
  std::int32_t X(std::int32_t x) const {
    const double xx = x - grid.targetCentreX;
    return static_cast<std::int32_t>(xx * grid.cosine - row.ySine) + grid.centreX;
  }
  std::int32_t Y(std::int32_t x) const {
    const double xx = x - grid.targetCentreX;
    return static_cast<std::int32_t>(xx * grid.sine + row.yCosine) + grid.centreY;
  }
};

struct MixedPlaces {
  const TurnedGrid& grid;
  RowTerms row;
  std::int32_t X(std::int32_t x) const {
    const double xx = x - grid.targetCentreX;
    return static_cast<std::int32_t>(xx * grid.cosine - row.ySine + grid.centreX);
  }
  std::int32_t Y(std::int32_t x) const {
    const double xx = x - grid.targetCentreX;
    return static_cast<std::int32_t>(xx * grid.sine + row.yCosine + grid.centreY);
  }
};

template <typename Places>
Span SpanWithin(const Places& places, std::int32_t width, std::int32_t height) {
  const TurnedGrid& grid = places.grid;
  const Span columns =
      ColumnsWithin(grid.targetWidth, width, grid.cosine >= 0.0, [&](std::int32_t x) { return places.X(x); });
  const Span rows =
      ColumnsWithin(grid.targetWidth, height, grid.sine >= 0.0, [&](std::int32_t x) { return places.Y(x); });
  return Common(columns, rows);
}

// Fills the columns outside each row's span, and calls `draw(y, columns)` for the part of a span inside each block.
template <typename Draw>
void DrawInBlocks(const TurnedGrid& grid, std::int32_t first, std::int32_t end, const std::vector<Span>& spans,
                  std::uint32_t background, std::uint32_t* target, Draw draw) {
  const auto row = [&](std::int32_t y) { return target + static_cast<std::ptrdiff_t>(y) * grid.targetWidth; };
  for (std::int32_t top = first; top < end; top += std::min(kBlockRows, end - top)) {
    const std::int32_t bottom = top + std::min(kBlockRows, end - top);
    for (std::int32_t left = 0; left < grid.targetWidth; left += std::min(kBlockColumns, grid.targetWidth - left)) {
      const Span block{left, left + std::min(kBlockColumns, grid.targetWidth - left)};
      for (std::int32_t y = top; y < bottom; ++y) {
        const Span span = Common(block, spans[static_cast<std::size_t>(y - first)]);
        if (span.begin == span.end) {
          std::fill(row(y) + block.begin, row(y) + block.end, background);
          continue;
        }
        std::fill(row(y) + block.begin, row(y) + span.begin, background);
        draw(y, span);
        std::fill(row(y) + span.end, row(y) + block.end, background);
      }
    }
  }
}

}  // namespace

void TurnRowsNearest(const std::uint32_t* source, const TurnedGrid& grid, std::int32_t first, std::int32_t end,
                     std::uint32_t background, std::uint32_t* target) {
  std::vector<Span> spans;
  spans.reserve(static_cast<std::size_t>(end - first));
  for (std::int32_t y = first; y < end; ++y) {
    spans.push_back(SpanWithin(NearestPlaces{grid, TermsOf(grid, y)}, grid.width, grid.height));
  }
  DrawInBlocks(grid, first, end, spans, background, target, [&](std::int32_t y, Span span) {
    HWY_DYNAMIC_DISPATCH(NearestSpan)
    (source, grid, TermsOf(grid, y), span, target + static_cast<std::ptrdiff_t>(y) * grid.targetWidth);
  });
}

void TurnRowsMixed(const std::uint32_t* source, const TurnedGrid& grid, std::int32_t first, std::int32_t end,
                   std::uint32_t background, std::uint32_t* target) {
  std::vector<Span> spans;
  std::vector<Span> inner;  // where a right and a lower neighbour exist
  for (std::int32_t y = first; y < end; ++y) {
    const MixedPlaces places{grid, TermsOf(grid, y)};
    spans.push_back(SpanWithin(places, grid.width, grid.height));
    inner.push_back(Common(spans.back(), SpanWithin(places, grid.width - 1, grid.height - 1)));
  }
  DrawInBlocks(grid, first, end, spans, background, target, [&](std::int32_t y, Span span) {
    const MixedPlaces places{grid, TermsOf(grid, y)};
    std::uint32_t* out = target + static_cast<std::ptrdiff_t>(y) * grid.targetWidth;
    Span mixed = Common(span, inner[static_cast<std::size_t>(y - first)]);
    if (mixed.begin == mixed.end) mixed = {span.end, span.end};
    const auto copy = [&](std::int32_t from, std::int32_t to) {
      for (std::int32_t x = from; x < to; ++x) {
        out[x] = source[static_cast<std::ptrdiff_t>(places.Y(x)) * grid.width + places.X(x)];
      }
    };
    copy(span.begin, mixed.begin);
    HWY_DYNAMIC_DISPATCH(MixedSpan)(source, grid, places.row, mixed, out);
    copy(mixed.end, span.end);
  });
}

}  // namespace glib
#endif  // HWY_ONCE
