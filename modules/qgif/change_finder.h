#ifndef MODULES_QGIF_CHANGE_FINDER_H_
#define MODULES_QGIF_CHANGE_FINDER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "modules/common/page_builder.h"
#include "modules/qgif/gif_blocks.h"
#include "modules/qgif/indexed_pages.h"
#include "modules/qgif/page_pixels.h"

namespace qgif {

// A frame that shows only what changes.
struct ChangedFrame {
  FrameArea area;
  bool clears = false;   // the area has to become transparent when the time of the frame is over
  int transparent = -1;  // index that leaves what is shown, or -1: every pixel is drawn
  bool choices = false;  // some pixels may be stored as either index
  std::uint32_t highest = 0;
  // Rows of the area in the order of the file, with all pixels drawn that may be, and with as few drawn as there can
  // be. Where the two differ, either serves.
  std::vector<std::uint8_t> drawn;
  std::vector<std::uint8_t> sparse;
};

// Follows what is on the screen from page to page and finds the frames that bring about the next page.
class ChangeFinder {
 public:
  // A pixel whose colour is at most `loss` away from what is shown counts as unchanged.
  ChangeFinder(const std::vector<const modules::Page*>& pages, const PixelView& view, const IndexedPages& indexed,
               std::uint32_t width, std::uint32_t height, bool interlaced, std::uint32_t loss);

  // The frame of page `page`; to be called for one page after the other, from the first.
  const ChangedFrame& Next(std::size_t page);

 private:
  void FindHeld(std::size_t page);
  FrameArea FindVanishing(std::size_t page);
  void FindChanges(std::size_t page, const FrameArea& vanishing);
  void FillFrame(std::size_t page);
  static bool NeedsDrawing(std::uint32_t shown, std::uint32_t word, std::uint8_t held);
  std::array<std::uint32_t, 256> WordsOf(std::size_t page) const;
  void ReadWords(std::size_t page, std::uint32_t y, std::vector<std::uint32_t>& words) const;
  std::uint32_t* ShownRow(std::uint32_t y) { return shown_.data() + std::size_t{y} * width_; }

  const std::vector<const modules::Page*>& pages_;
  PixelView view_;
  const IndexedPages& indexed_;
  std::uint32_t width_;
  bool interlaced_;
  std::uint32_t loss_;

  std::vector<std::uint32_t> shown_;  // words of the screen
  std::vector<std::uint8_t> plane_;   // indices of the last page
  std::vector<std::uint8_t> held_;    // of its pixels: 1 where what is shown may stay
  std::vector<std::uint32_t> row_;
  std::vector<std::uint32_t> rowBefore_;
  std::array<bool, 256> needed_{};  // indices that pixels have that must be drawn
  ChangedFrame frame_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_CHANGE_FINDER_H_
