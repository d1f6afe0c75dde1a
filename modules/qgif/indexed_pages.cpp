#include "modules/qgif/indexed_pages.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "modules/qgif/palette_order.h"

namespace qgif {
namespace {

using modules::Page;

// Adds the colours of a row; runs are looked up once.
bool AddRow(const std::vector<std::uint32_t>& words, std::uint32_t limit, ColorIndex& colors) {
  std::uint32_t last = ~words[0];
  for (const std::uint32_t word : words) {
    if (word != last && !colors.Add(word, limit)) return false;
    last = word;
  }
  return true;
}

std::vector<std::uint32_t> TransparentFirst(const ColorIndex& colors) {
  std::vector<std::uint32_t> words = colors.Words();
  const auto hole = std::find(words.begin(), words.end(), kTransparent);
  if (hole != words.end()) std::rotate(words.begin(), hole, hole + 1);
  return words;
}

ColorTable TableOf(const std::vector<std::uint32_t>& colors) {
  ColorTable table{colors};
  for (std::uint32_t& word : table.words) word |= kOpaque;
  return table;
}

bool IsPrefix(const ColorTable& shorter, const ColorTable& longer) {
  return shorter.words.size() <= longer.words.size() &&
         std::equal(shorter.words.begin(), shorter.words.end(), longer.words.begin());
}

}  // namespace

IndexedPages::IndexedPages(std::span<const Page* const> pages, const PixelView& view, const ReducerSettings& settings)
    : pages_(pages.begin(), pages.end()), view_(view), settings_(settings) {
  for (const Page* page : pages_) plans_.push_back(Examine(*page));
  if (!KeepTogether() && !Unite()) KeepApart();
}

IndexedPages::Plan IndexedPages::Examine(const Page& page) const {
  if (IsIndexed(page)) return ExamineIndexed(page);
  Plan plan;
  ColorIndex colors;
  std::vector<std::uint32_t> words(static_cast<std::size_t>(page.width));
  const auto height = static_cast<std::uint32_t>(page.height);
  bool fits = true;
  for (std::uint32_t y = 0; y < height && (fits || !plan.holes); ++y) {
    ReadWordRow(page, y, view_, {}, words.data());
    fits = fits && AddRow(words, settings_.maxEntries, colors);
    plan.holes = plan.holes || std::find(words.begin(), words.end(), kTransparent) != words.end();
    if (page.bits == 24 && !fits) break;
  }
  if (fits) {
    plan.way = Way::kByColor;
    plan.colors = TransparentFirst(colors);
  }
  return plan;
}

IndexedPages::Plan IndexedPages::ExamineIndexed(const Page& page) const {
  std::array<bool, 256> used{};
  std::vector<std::uint8_t> row(static_cast<std::size_t>(page.width));
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    ReadIndexRow(page, y, row.data());
    for (const std::uint8_t index : row) used[index] = true;
  }
  const auto entries = EntryWords(page, view_);
  Plan plan;
  ColorIndex colors;
  bool fits = true;
  for (std::uint32_t i = 0; i < 256; ++i) {
    if (!used[i]) continue;
    plan.highest = i;
    fits = fits && colors.Add(entries[i], settings_.maxEntries);
    if (entries[i] != kTransparent) continue;
    plan.holes = true;
    if (plan.transparent < 0) plan.transparent = static_cast<int>(i);
  }
  // The transparent index of the settings stays with a page that is stored as it is, also where no pixel has it.
  const int wanted = view_.transparentIndex;
  if (wanted >= 0 && wanted <= static_cast<int>(plan.highest)) plan.transparent = wanted;
  if (!fits) return plan;
  plan.colors = TransparentFirst(colors);
  plan.way = Way::kByColor;
  if (plan.highest < settings_.maxEntries) {
    plan.way = Way::kAsItIs;
    plan.palette.resize(plan.highest + 1);
    for (std::uint32_t i = 0; i <= plan.highest; ++i) {
      // What is transparent keeps its colour, so that the table stays what it was.
      plan.palette[i] = (entries[i] == kTransparent ? page.palette[i] : entries[i]) | kOpaque;
    }
  }
  return plan;
}

// One table for pages that are all stored with their indices and whose palettes agree as far as they go.
bool IndexedPages::KeepTogether() {
  ColorTable longest;
  for (const Plan& plan : plans_) {
    if (plan.way != Way::kAsItIs) return false;
    if (plan.palette.size() > longest.words.size()) longest.words = plan.palette;
  }
  for (const Plan& plan : plans_) {
    if (!IsPrefix({plan.palette}, longest)) return false;
  }
  tables_.push_back(longest);
  return true;
}

// One table for all colours of all pages, those of the pages with the fewest colours first: such pages then have short
// codes.
bool IndexedPages::Unite() {
  std::vector<std::size_t> order(plans_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return plans_[a].colors.size() < plans_[b].colors.size(); });
  ColorIndex all;
  const bool anyHoles = std::any_of(plans_.begin(), plans_.end(), [](const Plan& plan) { return plan.holes; });
  if (anyHoles) all.Add(kTransparent, settings_.maxEntries);
  for (const std::size_t i : order) {
    Plan& plan = plans_[i];
    if (plan.way == Way::kReduced) return false;
    for (const std::uint32_t word : plan.colors) {
      if (!all.Add(word, settings_.maxEntries)) return false;
    }
  }
  std::vector<std::uint32_t> words = all.Words();
  if (settings_.changesOnly) {
    std::vector<std::uint32_t> colors(words.begin() + (anyHoles ? 1 : 0), words.end());
    OrderForChanges(pages_, view_, glib::ColorMeasure::kBalanced, colors);
    std::copy(colors.begin(), colors.end(), words.begin() + (anyHoles ? 1 : 0));
  }
  tables_.push_back(TableOf(words));
  for (Plan& plan : plans_) {
    plan.way = Way::kByColor;
    plan.transparent = plan.holes ? 0 : -1;
  }
  return true;
}

// The adaptive palette is the global table, if a page needs it; pages with other colours have tables of their own.
void IndexedPages::KeepApart() {
  std::vector<const Page*> reduced;
  bool holes = false;
  for (std::size_t i = 0; i < plans_.size(); ++i) {
    if (plans_[i].way != Way::kReduced) continue;
    reduced.push_back(pages_[i]);
    holes = holes || plans_[i].holes;
  }
  if (!reduced.empty()) {
    reducer_ = std::make_unique<ColorReducer>(reduced, view_, settings_, holes);
    tables_.push_back({reducer_->Entries()});
  }
  for (Plan& plan : plans_) {
    if (plan.way == Way::kReduced) {
      plan.transparent = plan.holes ? 0 : -1;
      continue;
    }
    if (plan.way == Way::kByColor) plan.transparent = plan.holes ? 0 : -1;
    const ColorTable own = plan.way == Way::kAsItIs ? ColorTable{plan.palette} : TableOf(plan.colors);
    // The newest table is the likeliest to serve again.
    if (!tables_.empty() && IsPrefix(own, tables_.front())) {
      plan.table = 0;
    } else if (!tables_.empty() && IsPrefix(own, tables_.back())) {
      plan.table = tables_.size() - 1;
    } else {
      plan.table = tables_.size();
      tables_.push_back(own);
    }
  }
}

void IndexedPages::Index(std::size_t page, const std::uint8_t* held, std::uint8_t* indices) const {
  switch (plans_[page].way) {
    case Way::kAsItIs:
      return IndexAsItIs(page, indices);
    case Way::kByColor:
      return IndexByColor(page, indices);
    case Way::kReduced:
      return reducer_->Map(*pages_[page], held, indices);
  }
}

void IndexedPages::IndexAsItIs(std::size_t number, std::uint8_t* indices) const {
  const Page& page = *pages_[number];
  const Plan& plan = plans_[number];
  const auto width = static_cast<std::size_t>(page.width);
  const auto entries = EntryWords(page, view_);
  std::array<std::uint8_t, 256> map{};
  bool moved = false;
  for (std::uint32_t i = 0; i < 256; ++i) {
    const bool other = i <= plan.highest && entries[i] == kTransparent && plan.transparent >= 0 &&
                       static_cast<int>(i) != plan.transparent;
    map[i] = static_cast<std::uint8_t>(other ? static_cast<std::uint32_t>(plan.transparent) : i);
    moved = moved || other;
  }
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    std::uint8_t* row = indices + y * width;
    ReadIndexRow(page, y, row);
    if (moved) std::transform(row, row + width, row, [&](std::uint8_t index) { return map[index]; });
  }
}

void IndexedPages::IndexByColor(std::size_t number, std::uint8_t* indices) const {
  const Page& page = *pages_[number];
  const Plan& plan = plans_[number];
  const std::vector<std::uint32_t>& words = tables_[plan.table].words;
  ColorIndex index;
  std::array<std::uint8_t, 256> place{};  // in the table, of a number of the index
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::uint32_t word = static_cast<int>(i) == plan.transparent ? kTransparent : words[i];
    if (index.Find(word) >= 0) continue;
    place[index.Count()] = static_cast<std::uint8_t>(i);
    index.Add(word, 256);
  }
  const auto find = [&](std::uint32_t word) { return place[static_cast<std::size_t>(std::max(index.Find(word), 0))]; };

  const auto width = static_cast<std::size_t>(page.width);
  const auto entries = EntryWords(page, view_);
  std::vector<std::uint32_t> row(width);
  std::uint32_t last = kTransparent;
  std::uint8_t lastIndex = find(last);
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    ReadWordRow(page, y, view_, entries, row.data());
    for (std::size_t x = 0; x < width; ++x) {
      if (row[x] != last) {
        last = row[x];
        lastIndex = find(last);
      }
      indices[y * width + x] = lastIndex;
    }
  }
}

}  // namespace qgif
