#include "modules/qgif/change_finder.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace qgif {
namespace {

using modules::Page;

std::uint32_t WidthOf(const Page& page) { return static_cast<std::uint32_t>(page.width); }
std::uint32_t HeightOf(const Page& page) { return static_cast<std::uint32_t>(page.height); }
bool SameSize(const Page& a, const Page& b) { return a.width == b.width && a.height == b.height; }

bool IsNear(std::uint32_t a, std::uint32_t b, std::uint32_t distance) {
  if (a == kTransparent || b == kTransparent) return a == b;
  std::uint32_t sum = 0;
  for (const int shift : {0, 8, 16}) {
    const std::uint32_t difference = (a >> shift & 255U) - (b >> shift & 255U);  // its square is right modulo 2^32
    sum += difference * difference;
  }
  return sum <= distance * distance;
}

void Include(FrameArea& area, std::uint32_t left, std::uint32_t right, std::uint32_t y) {
  if (area.Empty()) {
    area = {left, y, right - left, 1};
    return;
  }
  const std::uint32_t end = std::max(area.left + area.width, right);
  area.left = std::min(area.left, left);
  area.width = end - area.left;
  area.height = std::max(area.top + area.height, y + 1) - area.top;  // rows come from top to bottom
}

void Include(FrameArea& area, const FrameArea& other) {
  if (other.Empty()) return;
  if (area.Empty()) {
    area = other;
    return;
  }
  const std::uint32_t right = std::max(area.left + area.width, other.left + other.width);
  const std::uint32_t bottom = std::max(area.top + area.height, other.top + other.height);
  area.left = std::min(area.left, other.left);
  area.top = std::min(area.top, other.top);
  area.width = right - area.left;
  area.height = bottom - area.top;
}

}  // namespace

ChangeFinder::ChangeFinder(const std::vector<const Page*>& pages, const PixelView& view, const IndexedPages& indexed,
                           std::uint32_t width, std::uint32_t height, bool interlaced, std::uint32_t loss)
    : pages_(pages),
      view_(view),
      indexed_(indexed),
      width_(width),
      interlaced_(interlaced),
      loss_(loss),
      shown_(std::size_t{width} * height, kTransparent),
      row_(width),
      rowBefore_(width) {}

const ChangedFrame& ChangeFinder::Next(std::size_t number) {
  const Page& page = *pages_[number];
  const std::size_t pixels = std::size_t{WidthOf(page)} * HeightOf(page);
  const bool comparable = number != 0 && SameSize(page, *pages_[number - 1]);
  plane_.resize(pixels);
  held_.assign(pixels, 0);
  if (comparable) FindHeld(number);
  const bool sameIndices = comparable && indexed_.ShareTable(number, number - 1);
  indexed_.Index(number, sameIndices ? held_.data() : nullptr, plane_.data());

  const FrameArea vanishing = number + 1 < pages_.size() ? FindVanishing(number) : FrameArea{};
  frame_.clears = !vanishing.Empty();
  FindChanges(number, vanishing);
  FillFrame(number);
  if (frame_.clears) {
    for (std::uint32_t y = 0; y < frame_.area.height; ++y) {
      std::fill_n(ShownRow(frame_.area.top + y) + frame_.area.left, frame_.area.width, kTransparent);
    }
  }
  return frame_;
}

void ChangeFinder::ReadWords(std::size_t number, std::uint32_t y, std::vector<std::uint32_t>& words) const {
  const Page& page = *pages_[number];
  ReadWordRow(page, y, view_, IsIndexed(page) ? EntryWords(page, view_) : std::array<std::uint32_t, 256>{},
              words.data());
}

void ChangeFinder::FindHeld(std::size_t number) {
  const std::uint32_t width = WidthOf(*pages_[number]);
  for (std::uint32_t y = 0; y < HeightOf(*pages_[number]); ++y) {
    ReadWords(number, y, row_);
    ReadWords(number - 1, y, rowBefore_);
    std::uint8_t* held = held_.data() + std::size_t{y} * width;
    for (std::uint32_t x = 0; x < width; ++x) held[x] = row_[x] == rowBefore_[x] ? 1 : 0;
    if (loss_ == 0) continue;
    const std::uint32_t* shown = ShownRow(y);
    for (std::uint32_t x = 0; x < width; ++x) held[x] = held[x] != 0 || IsNear(row_[x], shown[x], loss_) ? 1 : 0;
  }
}

// The area of all pixels that have a colour on this page and none on the next one.
FrameArea ChangeFinder::FindVanishing(std::size_t number) {
  const Page& page = *pages_[number];
  const Page& next = *pages_[number + 1];
  FrameArea area;
  const bool covered = next.width >= page.width && next.height >= page.height;
  if (covered && !indexed_.HasTransparentPixels(number + 1)) return area;
  for (std::uint32_t y = 0; y < HeightOf(page); ++y) {
    ReadWords(number, y, rowBefore_);
    const std::uint32_t nextWidth = y < HeightOf(next) ? WidthOf(next) : 0;
    if (nextWidth != 0) ReadWords(number + 1, y, row_);
    std::uint32_t left = WidthOf(page);
    std::uint32_t right = 0;
    for (std::uint32_t x = 0; x < WidthOf(page); ++x) {
      if (rowBefore_[x] == kTransparent || (x < nextWidth && row_[x] != kTransparent)) continue;
      left = std::min(left, x);
      right = x + 1;
    }
    if (left < right) Include(area, left, right, y);
  }
  return area;
}

// Words of the indices of a page.
std::array<std::uint32_t, 256> ChangeFinder::WordsOf(std::size_t number) const {
  std::array<std::uint32_t, 256> words{};
  const std::vector<std::uint32_t>& table = indexed_.Table(number).words;
  std::copy(table.begin(), table.end(), words.begin());
  const int transparent = indexed_.Transparent(number);
  if (transparent >= 0) words[static_cast<std::size_t>(transparent)] = kTransparent;
  return words;
}

// A pixel needs no drawing if its colour is shown, or if it didn't change: what is shown for it then stays, unless it
// was cleared.
bool ChangeFinder::NeedsDrawing(std::uint32_t shown, std::uint32_t word, std::uint8_t held) {
  if (shown == word) return false;
  return held == 0 || shown == kTransparent;
}

void ChangeFinder::FindChanges(std::size_t number, const FrameArea& vanishing) {
  const Page& page = *pages_[number];
  const auto words = WordsOf(number);
  std::array<bool, 256> used{};
  FrameArea area;
  for (std::uint32_t y = 0; y < HeightOf(page); ++y) {
    const std::size_t begin = std::size_t{y} * WidthOf(page);
    const std::uint32_t* shown = ShownRow(y);
    std::uint32_t left = WidthOf(page);
    std::uint32_t right = 0;
    for (std::uint32_t x = 0; x < WidthOf(page); ++x) {
      const std::uint8_t index = plane_[begin + x];
      if (!NeedsDrawing(shown[x], words[index], held_[begin + x])) continue;
      used[index] = true;
      left = std::min(left, x);
      right = x + 1;
    }
    if (left < right) Include(area, left, right, y);
  }
  Include(area, vanishing);
  if (number == 0) area = {0, 0, WidthOf(page), HeightOf(page)};
  if (area.Empty()) area = {0, 0, 1, 1};
  frame_.area = area;

  // Any index that nothing is drawn with can stand for what stays. The lowest one keeps the codes short; one behind the
  // entries is there where the table has been filled up to a power of two.
  const std::size_t slots = std::size_t{1} << TableBits(indexed_.Table(number).words.size());
  const std::size_t limit = std::min<std::size_t>(slots, indexed_.MaxEntries());
  const auto end = used.begin() + static_cast<std::ptrdiff_t>(limit);
  const auto unused = std::find(used.begin(), end, false);
  frame_.transparent = unused == end ? -1 : static_cast<int>(unused - used.begin());
  needed_ = used;
}

void ChangeFinder::FillFrame(std::size_t number) {
  const Page& page = *pages_[number];
  const auto words = WordsOf(number);
  const FrameArea& area = frame_.area;
  frame_.drawn.resize(std::size_t{area.width} * area.height);
  frame_.sparse.resize(frame_.drawn.size());
  bool keeps = false;
  for (std::uint32_t i = 0; i < area.height; ++i) {
    const std::uint32_t y = area.top + (interlaced_ ? InterlacedRow(i, area.height) : i);
    const std::size_t begin = std::size_t{y} * WidthOf(page) + area.left;
    const std::uint8_t* plane = plane_.data() + begin;
    const std::uint8_t* held = held_.data() + begin;
    std::uint32_t* shown = ShownRow(y) + area.left;
    std::uint8_t* drawn = frame_.drawn.data() + std::size_t{i} * area.width;
    std::uint8_t* sparse = frame_.sparse.data() + std::size_t{i} * area.width;
    for (std::uint32_t x = 0; x < area.width; ++x) {
      const std::uint32_t word = words[plane[x]];
      drawn[x] = sparse[x] = plane[x];
      if (frame_.transparent < 0 || NeedsDrawing(shown[x], word, held[x])) {
        shown[x] = word;
        continue;
      }
      keeps = true;
      const auto transparent = static_cast<std::uint8_t>(frame_.transparent);
      sparse[x] = transparent;
      // What need not be drawn is not worth an index that nothing else has.
      if (shown[x] != word || word == kTransparent || !needed_[plane[x]]) drawn[x] = transparent;
    }
  }
  if (!keeps) frame_.transparent = -1;
  frame_.choices = frame_.drawn != frame_.sparse;
  frame_.highest = std::max(*std::max_element(frame_.drawn.begin(), frame_.drawn.end()),
                            *std::max_element(frame_.sparse.begin(), frame_.sparse.end()));
}

}  // namespace qgif
