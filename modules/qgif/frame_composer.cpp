#include "modules/qgif/frame_composer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "modules/common/limits.h"
#include "modules/qgif/lzw_decoder.h"

namespace qgif {
namespace {

using modules::Page;
using Used = std::array<bool, 256>;

bool SameTable(TableBytes a, TableBytes b) {
  return a.size() == b.size() && (a.data() == b.data() || std::equal(a.begin(), a.end(), b.begin()));
}

void MarkUsed(const std::uint8_t* row, std::size_t count, Used& used) {
  for (std::size_t i = 0; i < count; ++i) used[row[i]] = true;
}

// Rows that stand one behind the other move apart to the stride of the page, from the last one back.
void SpreadRows(Page& page, std::uint32_t rows) {
  const auto width = static_cast<std::size_t>(page.width);
  const std::size_t stride = page.Stride();
  if (stride == width) return;
  for (std::uint32_t y = rows; y-- > 0;) {
    std::uint8_t* row = page.pixels + y * stride;
    std::memmove(row, page.pixels + y * width, width);
    std::memset(row + width, 0, stride - width);
  }
}

std::uint32_t EntryWord(TableBytes table, std::uint32_t index) {
  if (std::size_t{index} * 3 + 2 >= table.size()) return 0xFF000000U;
  const std::uint8_t* rgb = table.data() + std::size_t{index} * 3;
  return 0xFF000000U | std::uint32_t{rgb[0]} << 16 | std::uint32_t{rgb[1]} << 8 | rgb[2];
}

}  // namespace

template <typename Draw>
void FrameComposer::ForEachRow(const FrameHeader& frame, const FrameArea& area, Draw draw) const {
  for (std::uint32_t i = 0; i < rows_; ++i) {
    const std::uint32_t row = frame.interlaced ? InterlacedRow(i, frame.height) : i;
    if (row < area.height) draw(area.top + row, scratch_.data() + std::size_t{i} * frame.width);
  }
}

bool FrameComposer::Add(const FrameHeader& frame) {
  FrameArea area;
  area.left = dropsPosition_ ? 0 : std::min(frame.left, width_);
  area.top = dropsPosition_ ? 0 : std::min(frame.top, height_);
  area.width = std::min(frame.width, width_ - area.left);
  area.height = std::min(frame.height, height_ - area.top);
  if (!modules::SizeAllowed(frame.width, frame.height) || !modules::SizeAllowed(width_, height_)) {
    modules::Fail(exchange_, 0, "The picture has too many pixels");
    return false;
  }
  if (!GatherCodes(bytes_, frame.dataPosition, codes_)) incomplete_ = true;

  const bool covers = area.width == width_ && area.height == height_;
  const bool alone = frame.transparent < 0 || below_.page == nullptr;
  if (covers && alone && !frame.interlaced && CanFillPage(frame)) return DecodeIntoPage(frame);
  DecodeIntoScratch(frame);
  if (rows_ < frame.height) incomplete_ = true;
  return rows_ == 0 || Compose(frame, area);
}

// Whether the codes can be enough for the page: without any, thousands of frames would each cost a large one.
bool FrameComposer::CanFillPage(const FrameHeader& frame) const {
  constexpr std::uint64_t kMaxPixelsPerCode = 4096;
  const std::uint64_t codes = (codes_.size() - kCodePadding) * 8 / (frame.codeSize + 1U);
  return codes * kMaxPixelsPerCode >= std::uint64_t{width_} * height_;
}

// The frame is the whole page: no copy of its pixels is made.
bool FrameComposer::DecodeIntoPage(const FrameHeader& frame) {
  Page* page = modules::AddPage(exchange_, width_, height_, 8);
  if (page == nullptr) return false;
  const std::size_t count = std::size_t{width_} * height_;
  const std::size_t decoded =
      DecodeLzw({codes_.data(), codes_.size() - kCodePadding}, frame.codeSize, page->pixels, count);
  const FrameArea area{0, 0, width_, height_};
  if (decoded == count) {
    SpreadRows(*page, height_);
    FinishPage(*page, frame, frame.transparent);
    Dispose(frame, area, {page, frame.table, frame.transparent, {}});
    return true;
  }
  incomplete_ = true;
  rows_ = static_cast<std::uint32_t>(decoded / width_);
  scratch_.assign(page->pixels, page->pixels + std::size_t{rows_} * width_);
  modules::DropLastPage(exchange_);
  return rows_ == 0 || Compose(frame, area);
}

void FrameComposer::DecodeIntoScratch(const FrameHeader& frame) {
  const std::size_t count = std::size_t{frame.width} * frame.height;
  if (scratch_.size() < count) scratch_.resize(count);
  const std::size_t decoded =
      DecodeLzw({codes_.data(), codes_.size() - kCodePadding}, frame.codeSize, scratch_.data(), count);
  rows_ = static_cast<std::uint32_t>(decoded / frame.width);
}

bool FrameComposer::Compose(const FrameHeader& frame, const FrameArea& area) {
  int transparent = -1;
  return ChooseTransparent(frame, area, transparent) ? ComposeIndexed(frame, area, transparent)
                                                     : ComposeTrueColor(frame, area);
}

// Whether the page can have 8 bits, and with which index for what nothing was drawn on.
bool FrameComposer::ChooseTransparent(const FrameHeader& frame, const FrameArea& area, int& transparent) const {
  Used used{};
  ForEachRow(frame, area, [&](std::uint32_t, const std::uint8_t* row) { MarkUsed(row, area.width, used); });
  const bool holes = frame.transparent >= 0 && used[static_cast<std::uint8_t>(frame.transparent)];
  if (frame.transparent >= 0) used[static_cast<std::uint8_t>(frame.transparent)] = false;

  const bool covers = area.width == width_ && area.height == height_ && rows_ == frame.height && !holes;
  const bool nothingBelow = below_.page == nullptr;
  if (covers || (nothingBelow && frame.transparent >= 0)) {
    transparent = frame.transparent;
    return true;
  }
  if (!nothingBelow) {
    if (below_.page->bits != 8 || !SameTable(below_.table, frame.table)) return false;
    transparent = below_.transparent;
    if (transparent >= 0 && !used[static_cast<std::uint8_t>(transparent)]) return true;
    Used usedBelow{};
    for (std::uint32_t y = 0; y < height_; ++y) {
      MarkUsed(below_.page->pixels + y * below_.page->Stride(), width_, usedBelow);
    }
    // Pixels below would have to get another index.
    if (transparent >= 0 && usedBelow[static_cast<std::uint8_t>(transparent)]) return false;
    transparent = -1;
    if (below_.cleared.Empty()) return true;
    for (std::size_t i = 0; i < 256; ++i) used[i] = used[i] || usedBelow[i];
  }
  if (frame.transparent >= 0 && !used[static_cast<std::uint8_t>(frame.transparent)]) {
    transparent = frame.transparent;
    return true;
  }
  // An index behind the table first, so that no colour of it is lost.
  const std::size_t entries = frame.table.size() / 3;
  for (std::size_t i = 0; i < 256; ++i) {
    const std::size_t index = (entries + i) % 256;
    if (used[index]) continue;
    transparent = static_cast<int>(index);
    return true;
  }
  return false;
}

bool FrameComposer::ComposeIndexed(const FrameHeader& frame, const FrameArea& area, int transparent) {
  Page* page = modules::AddPage(exchange_, width_, height_, 8);
  if (page == nullptr) return false;
  const std::size_t stride = page->Stride();
  const auto nothing = static_cast<std::uint8_t>(std::max(transparent, 0));
  const FrameArea& cleared = below_.cleared;
  for (std::uint32_t y = 0; y < height_; ++y) {
    std::uint8_t* row = page->pixels + y * stride;
    if (below_.page == nullptr) {
      std::memset(row, nothing, width_);
      continue;
    }
    std::memcpy(row, below_.page->pixels + y * stride, width_);
    if (y - cleared.top < cleared.height) std::memset(row + cleared.left, nothing, cleared.width);
  }
  ForEachRow(frame, area, [&](std::uint32_t y, const std::uint8_t* indices) {
    std::uint8_t* row = page->pixels + y * stride + area.left;
    if (frame.transparent < 0) {
      std::memcpy(row, indices, area.width);
      return;
    }
    const auto hole = static_cast<std::uint8_t>(frame.transparent);
    for (std::uint32_t x = 0; x < area.width; ++x) row[x] = indices[x] == hole ? row[x] : indices[x];
  });
  FinishPage(*page, frame, transparent);
  Dispose(frame, area, {page, frame.table, transparent, {}});
  return true;
}

bool FrameComposer::ComposeTrueColor(const FrameHeader& frame, const FrameArea& area) {
  Page* page = modules::AddPage(exchange_, width_, height_, 32);
  if (page == nullptr) return false;
  const auto rowOf = [&](std::uint32_t y) {
    return reinterpret_cast<std::uint32_t*>(page->pixels) + std::size_t{y} * width_;
  };
  for (std::uint32_t y = 0; below_.page != nullptr && y < height_; ++y) {
    const std::uint8_t* from = below_.page->pixels + y * below_.page->Stride();
    std::uint32_t* row = rowOf(y);
    if (below_.page->bits == 32) {
      std::memcpy(row, from, std::size_t{width_} * 4);
    } else {
      for (std::uint32_t x = 0; x < width_; ++x) row[x] = below_.page->palette[from[x]];
    }
    if (y - below_.cleared.top < below_.cleared.height) {
      std::fill_n(row + below_.cleared.left, below_.cleared.width, 0U);
    }
  }
  std::uint32_t words[256];
  for (std::uint32_t i = 0; i < 256; ++i) words[i] = EntryWord(frame.table, i);
  ForEachRow(frame, area, [&](std::uint32_t y, const std::uint8_t* indices) {
    std::uint32_t* row = rowOf(y) + area.left;
    for (std::uint32_t x = 0; x < area.width; ++x) {
      row[x] = indices[x] == frame.transparent ? row[x] : words[indices[x]];
    }
  });
  FinishPage(*page, frame, -1);
  Dispose(frame, area, {page, {}, -1, {}});
  return true;
}

void FrameComposer::FinishPage(Page& page, const FrameHeader& frame, int transparent) {
  if (page.bits == 8) {
    for (std::uint32_t i = 0; i < 256; ++i) page.palette[i] = EntryWord(frame.table, i);
    page.paletteEntries = static_cast<std::uint32_t>(frame.table.size() / 3);
    if (transparent >= 0) {
      page.palette[transparent] &= 0x00FFFFFFU;
      page.paletteEntries = std::max(page.paletteEntries, static_cast<std::uint32_t>(transparent) + 1);
    }
  }
  if (frame.hasDelay) page.delay = frame.delay;
  last_ = &page;
}

void FrameComposer::Dispose(const FrameHeader& frame, const FrameArea& area, const Picture& shown) {
  if (frame.disposal == Disposal::kRestore) return;
  below_ = shown;
  if (frame.disposal != Disposal::kClear) return;
  const bool all = area.width == width_ && area.height == height_;
  below_ = all ? Picture{} : below_;
  if (!all) below_.cleared = area;
}

}  // namespace qgif
