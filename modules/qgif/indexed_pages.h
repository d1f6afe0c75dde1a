#ifndef MODULES_QGIF_INDEXED_PAGES_H_
#define MODULES_QGIF_INDEXED_PAGES_H_

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"
#include "modules/qgif/color_index.h"
#include "modules/qgif/color_reducer.h"
#include "modules/qgif/page_pixels.h"

namespace qgif {

// The colours of a page or of a file; opaque words.
struct ColorTable {
  std::vector<std::uint32_t> words;  // entries in use
  bool operator==(const ColorTable&) const = default;
};

// Pages as indices into colour tables.
//
// A page whose colours fit is kept exactly: an indexed one with its indices, if its palette fits up to the highest
// index in use. All other pages share one adaptive palette. Pages with colours of their own have a table of their own
// only if the colours of all pages don't fit into one.
class IndexedPages {
 public:
  // The pages must have pixels and must outlive this object.
  IndexedPages(std::span<const modules::Page* const> pages, const PixelView& view, const ReducerSettings& settings);

  const ColorTable& GlobalTable() const { return tables_[0]; }
  const ColorTable& Table(std::size_t page) const { return tables_[plans_[page].table]; }
  bool HasOwnTable(std::size_t page) const { return plans_[page].table != 0; }
  int Transparent(std::size_t page) const { return plans_[page].transparent; }  // index, or -1

  std::uint32_t MaxEntries() const { return settings_.maxEntries; }

  // Whether any pixel of the page is transparent.
  bool HasTransparentPixels(std::size_t page) const { return plans_[page].holes; }

  // The page as indices, one a byte, rows without padding. Where `held` is not null, a pixel with a byte other than 0
  // there keeps the index that stands in `indices`, if it comes from the adaptive palette.
  void Index(std::size_t page, const std::uint8_t* held, std::uint8_t* indices) const;

  // Whether indices of the two pages mean the same colours.
  bool ShareTable(std::size_t a, std::size_t b) const { return plans_[a].table == plans_[b].table; }

 private:
  enum class Way { kAsItIs, kByColor, kReduced };
  struct Plan {
    Way way = Way::kReduced;
    bool holes = false;
    int transparent = -1;
    std::size_t table = 0;
    std::uint32_t highest = 0;           // index in use, of an indexed page
    std::vector<std::uint32_t> colors;   // in use on a page that fits, kTransparent among them
    std::vector<std::uint32_t> palette;  // of a page that can be stored as it is
  };

  Plan Examine(const modules::Page& page) const;
  Plan ExamineIndexed(const modules::Page& page) const;
  bool KeepTogether();
  bool Unite();
  void KeepApart();
  void IndexByColor(std::size_t page, std::uint8_t* indices) const;
  void IndexAsItIs(std::size_t page, std::uint8_t* indices) const;

  std::vector<const modules::Page*> pages_;
  PixelView view_;
  ReducerSettings settings_;
  std::vector<Plan> plans_;
  std::vector<ColorTable> tables_;
  std::unique_ptr<ColorReducer> reducer_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_INDEXED_PAGES_H_
