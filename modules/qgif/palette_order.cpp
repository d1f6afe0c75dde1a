#include "modules/qgif/palette_order.h"

#include <algorithm>
#include <bitset>
#include <utility>

#include "glib/color/candidate_lists.h"
#include "glib/color/nearest_listed.h"

namespace qgif {
namespace {

using modules::Page;
using Used = std::bitset<256>;

// Finds the colours that the pixels of a page need, unless they are those of the page before.
class ChangedColors {
 public:
  ChangedColors(const PixelView& view, glib::CandidateLists& lists) : view_(view), lists_(lists) {}

  // `before` may be null.
  Used Of(const Page& page, const Page* before) {
    const auto entries = IsIndexed(page) ? EntryWords(page, view_) : std::array<std::uint32_t, 256>{};
    std::array<std::uint32_t, 256> entriesBefore{};
    if (before != nullptr && IsIndexed(*before)) entriesBefore = EntryWords(*before, view_);
    const auto width = static_cast<std::size_t>(page.width);
    row_.resize(width);
    rowBefore_.resize(width);
    indices_.resize(width);
    Used used;
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
      ReadWordRow(page, y, view_, entries, row_.data());
      std::size_t count = width;
      if (before != nullptr) {
        ReadWordRow(*before, y, view_, entriesBefore, rowBefore_.data());
        count = 0;
        for (std::size_t x = 0; x < width; ++x) {
          const std::uint32_t word = row_[x];
          row_[count] = word;
          count += word != rowBefore_[x] && word != kTransparent ? 1 : 0;
        }
      }
      glib::FindNearest(lists_, row_.data(), count, nullptr, indices_.data());
      for (std::size_t i = 0; i < count; ++i) used.set(indices_[i]);
    }
    return used;
  }

 private:
  PixelView view_;
  glib::CandidateLists& lists_;
  std::vector<std::uint32_t> row_;
  std::vector<std::uint32_t> rowBefore_;
  std::vector<std::uint8_t> indices_;
};

}  // namespace

void OrderForChanges(std::span<const Page* const> pages, const PixelView& view, glib::ColorMeasure measure,
                     std::vector<std::uint32_t>& colors) {
  if (pages.size() < 2 || colors.size() < 2) return;
  glib::CandidateLists lists(colors, 0, measure);
  ChangedColors changed(view, lists);
  std::vector<Used> frames;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    const Page* before = i == 0 ? nullptr : pages[i - 1];
    const bool comparable = before != nullptr && before->width == pages[i]->width && before->height == pages[i]->height;
    frames.push_back(changed.Of(*pages[i], comparable ? before : nullptr));
  }
  std::stable_sort(frames.begin(), frames.end(), [](const Used& a, const Used& b) { return a.count() < b.count(); });

  std::vector<std::uint32_t> ordered;
  Used taken;
  const auto take = [&](const Used& wanted) {
    for (std::size_t i = 0; i < colors.size(); ++i) {
      if (wanted[i] && !taken[i]) ordered.push_back(colors[i]);
    }
    taken |= wanted;
  };
  for (const Used& frame : frames) take(frame);
  take(Used().set());
  colors = std::move(ordered);
}

}  // namespace qgif
