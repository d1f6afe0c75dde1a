#ifndef MODULES_QGIF_FRAME_COMPOSER_H_
#define MODULES_QGIF_FRAME_COMPOSER_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "glib/module_api/exchange.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/gif_structure.h"

namespace qgif {

// Lays the frames of a file out to whole pages, one page a frame. A page has 8 bits as long as one colour table serves
// all that is seen on it, otherwise 32.
//
// The picture below a frame needs no canvas of its own: it is always an earlier page with at most one rectangle
// cleared.
class FrameComposer {
 public:
  // `bytes` is the whole file that the headers were read from.
  FrameComposer(glib::ImageDataExchange& exchange, std::span<const std::uint8_t> bytes, const CanvasSize& canvas)
      : exchange_(exchange),
        bytes_(bytes),
        width_(canvas.Width()),
        height_(canvas.Height()),
        dropsPosition_(canvas.DropsPosition()) {}

  // Appends the page of the next frame, unless no row of it could be decoded. False: the page can't be had (limits or
  // memory), and the exchange's message says why.
  bool Add(const FrameHeader& frame);

  // Something was missing or damaged in a frame.
  bool Incomplete() const { return incomplete_; }
  modules::Page* LastPage() { return last_; }

 private:
  // What stands on the canvas: a page (null: nothing does) with an area made transparent.
  struct Picture {
    const modules::Page* page = nullptr;
    TableBytes table;      // of an 8-bit page
    int transparent = -1;  // index of such a page that means nothing; -1: all of it is opaque
    FrameArea cleared;
  };

  bool CanFillPage(const FrameHeader& frame) const;
  bool DecodeIntoPage(const FrameHeader& frame);
  void DecodeIntoScratch(const FrameHeader& frame);
  bool Compose(const FrameHeader& frame, const FrameArea& area);
  bool ComposeIndexed(const FrameHeader& frame, const FrameArea& area, int transparent);
  bool ComposeTrueColor(const FrameHeader& frame, const FrameArea& area);
  bool ChooseTransparent(const FrameHeader& frame, const FrameArea& area, int& transparent) const;
  template <typename Draw>
  void ForEachRow(const FrameHeader& frame, const FrameArea& area, Draw draw) const;
  void FinishPage(modules::Page& page, const FrameHeader& frame, int transparent);
  void Dispose(const FrameHeader& frame, const FrameArea& area, const Picture& shown);

  glib::ImageDataExchange& exchange_;
  std::span<const std::uint8_t> bytes_;
  std::uint32_t width_;
  std::uint32_t height_;
  bool dropsPosition_;
  bool incomplete_ = false;
  Picture below_;
  modules::Page* last_ = nullptr;
  std::vector<std::uint8_t> codes_;
  std::vector<std::uint8_t> scratch_;  // indices of a frame in the order of the file
  std::uint32_t rows_ = 0;             // whole rows in it, or in the page that was decoded into
};

}  // namespace qgif

#endif  // MODULES_QGIF_FRAME_COMPOSER_H_
