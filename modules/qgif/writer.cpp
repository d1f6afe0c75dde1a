#include "modules/qgif/writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/block_output.h"
#include "modules/qgif/change_finder.h"
#include "modules/qgif/frame_packer.h"
#include "modules/qgif/gif_blocks.h"
#include "modules/qgif/indexed_pages.h"
#include "modules/qgif/lzw_encoder.h"
#include "platform/output_file.h"

namespace qgif {
namespace {

using modules::Page;
using PageList = std::vector<const Page*>;

struct WriteSettings {
  PixelView view;
  ReducerSettings reducer;
  bool interlaced = false;
  bool changesOnly = false;
  std::uint32_t loss = 0;  // how far a colour may be off before it counts as changed
};

constexpr int kMaxLoss = 25;

WriteSettings ReadSettings(const glib::BaseFormatDesc& desc) {
  const glib::GIFSave defaults;
  const auto* gif = dynamic_cast<const glib::GIFSave*>(&desc);
  if (gif == nullptr) gif = &defaults;
  WriteSettings settings;
  settings.view.grayscale = desc.grayscale != 0;
  settings.view.transparentIndex = gif->transparentIndex;
  // 0 is a number that nobody set.
  const std::int32_t items = gif->paletteItems == 0 ? 256 : gif->paletteItems;
  settings.reducer.maxEntries = static_cast<std::uint32_t>(std::clamp(items, 2, 256));
  settings.reducer.level = std::max(desc.quantize, 0) % 10;
  settings.reducer.dither = desc.dither != 0;
  settings.interlaced = gif->interlace != 0;
  settings.changesOnly = gif->nfi != 0;
  settings.reducer.changesOnly = settings.changesOnly;
  settings.loss = static_cast<std::uint32_t>(std::clamp(desc.quantize / 10, 0, kMaxLoss));
  return settings;
}

// The byte that tells how wide a pixel is: 0 when it is as wide as high, or when a resolution makes no sense.
std::uint8_t AspectByte(double dpiX, double dpiY) {
  if (!(dpiX > 0) || !(dpiY > 0) || dpiX == dpiY) return 0;
  return static_cast<std::uint8_t>(std::clamp(std::floor(64 * (dpiY / dpiX) - 15 + 0.5), 1.0, 255.0));
}

bool CanBeWritten(const Page& page) {
  const bool depth = page.bits == 1 || page.bits == 4 || page.bits == 8 || page.bits == 24 || page.bits == 32;
  return depth && page.pixels != nullptr && page.width > 0 && page.height > 0 &&
         static_cast<std::uint32_t>(page.width) <= modules::kMaxSide &&
         static_cast<std::uint32_t>(page.height) <= modules::kMaxSide;
}

class FileSink : public ByteSink {
 public:
  bool Open(const char* path) { return file_.Open(path); }
  bool Close() { return file_.Close(); }
  bool Take(std::span<const std::uint8_t> bytes) override { return file_.Write(bytes.data(), bytes.size()); }

 private:
  platform::OutputFile file_;
};

// The highest index in use, which is at most `last`: most often that one, and looking for a value is quicker than
// comparing all.
std::uint32_t HighestIndex(std::span<const std::uint8_t> indices, std::size_t last) {
  if (std::memchr(indices.data(), static_cast<int>(last), indices.size()) != nullptr) {
    return static_cast<std::uint32_t>(last);
  }
  return *std::max_element(indices.begin(), indices.end());
}

// The frames of one file. Pages are turned into indices one at a time.
class FrameWriter {
 public:
  FrameWriter(const PageList& pages, const WriteSettings& settings, BlockOutput& output)
      : pages_(pages),
        settings_(settings),
        indexed_(pages, settings.view, settings.reducer),
        output_(output),
        packer_(output) {
    for (const Page* page : pages) {
      width_ = std::max(width_, static_cast<std::uint32_t>(page->width));
      height_ = std::max(height_, static_cast<std::uint32_t>(page->height));
    }
  }

  void Write(std::uint8_t aspect) {
    WriteHeader(width_, height_, aspect, indexed_.GlobalTable().words, output_);
    if (pages_.size() > 1) WriteEndlessLoop(output_);
    if (pages_.size() > 1 && settings_.changesOnly) {
      WriteChanges();
    } else {
      WriteWholePages();
    }
    WriteTrailer(output_);
  }

 private:
  void WriteWholePages() {
    std::vector<std::uint8_t> plane;
    for (std::size_t i = 0; i < pages_.size() && output_.Ok(); ++i) {
      const auto width = static_cast<std::uint32_t>(pages_[i]->width);
      const auto height = static_cast<std::uint32_t>(pages_[i]->height);
      plane.resize(std::size_t{width} * height);
      indexed_.Index(i, nullptr, plane.data());
      const Disposal disposal = ShowsThrough(i) ? Disposal::kClear : Disposal::kKeep;
      WriteFrameHeader({pages_[i]->delay, pages_.size() > 1 ? disposal : Disposal::kNone, indexed_.Transparent(i)},
                       {0, 0, width, height}, settings_.interlaced, OwnTable(i), output_);
      const std::uint32_t highest = HighestIndex(plane, indexed_.Table(i).words.size() - 1);
      packer_.PackPage({plane.data(), width, width, height, settings_.interlaced}, CodeSizeFor(highest));
    }
  }

  void WriteChanges() {
    ChangeFinder finder(pages_, settings_.view, indexed_, width_, height_, settings_.interlaced, settings_.loss);
    for (std::size_t i = 0; i < pages_.size() && output_.Ok(); ++i) {
      const ChangedFrame& frame = finder.Next(i);
      WriteFrameHeader({pages_[i]->delay, frame.clears ? Disposal::kClear : Disposal::kKeep, frame.transparent},
                       frame.area, settings_.interlaced, OwnTable(i), output_);
      packer_.PackChanges(frame, CodeSizeFor(frame.highest));
    }
  }

  // Whether something of the page could be seen through the one that follows it; after the last comes the first.
  bool ShowsThrough(std::size_t page) const {
    const std::size_t next = page + 1 < pages_.size() ? page + 1 : 0;
    return indexed_.HasTransparentPixels(next) || pages_[next]->width < pages_[page]->width ||
           pages_[next]->height < pages_[page]->height;
  }

  TableWords OwnTable(std::size_t page) const {
    return indexed_.HasOwnTable(page) ? TableWords(indexed_.Table(page).words) : TableWords();
  }

  const PageList& pages_;
  const WriteSettings& settings_;
  IndexedPages indexed_;
  BlockOutput& output_;
  FramePacker packer_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
};

void Explain(const glib::ImageDataExchange& exchange, const char* cause) {
  if (exchange.message != nullptr) exchange.message->Assign(cause);
}

}  // namespace

std::uint32_t SaveGif(const char* path, const glib::ImageDataExchange& exchange, const glib::BaseFormatDesc& settings) {
  PageList pages;
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) pages.push_back(exchange.pages.At(i));
  if (pages.empty()) {
    Explain(exchange, "There is no page to write");
    return glib::IERR;
  }
  if (!std::all_of(pages.begin(), pages.end(), [](const Page* page) { return CanBeWritten(*page); })) {
    Explain(exchange, "A GIF can't hold a page of this kind or size");
    return glib::NSUP;
  }
  FileSink file;
  if (!file.Open(path)) {
    Explain(exchange, "The file can't be written");
    return glib::IERR;
  }
  const double dpiX = settings.dpiX != 0.0 ? settings.dpiX : pages[0]->dpiX;
  const double dpiY = settings.dpiY != 0.0 ? settings.dpiY : pages[0]->dpiY;
  BlockOutput output(file);
  FrameWriter(pages, ReadSettings(settings), output).Write(AspectByte(dpiX, dpiY));
  const bool written = output.Flush();
  if (!file.Close() || !written) {
    Explain(exchange, "The file could not be written to its end");
    return glib::IERR;
  }
  return glib::RCOK;
}

}  // namespace qgif
