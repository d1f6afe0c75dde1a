#include "modules/common/page_builder.h"

#include <algorithm>
#include <cmath>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "platform/metafile/metafile.h"
#include "platform/source_file.h"

namespace modules {
namespace {

constexpr std::uint32_t kOpaqueBlack = 0xFF000000;
constexpr const char* kTooManyPages = "The file has too many pages";

std::uint64_t PixelsSoFar(const glib::ImageDataExchange& exchange) {
  std::uint64_t pixels = 0;
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
    const Page* page = exchange.pages.At(i);
    if (page->bits > 0) pixels += static_cast<std::uint64_t>(page->width) * static_cast<std::uint64_t>(page->height);
  }
  return pixels;
}

std::uint64_t BytesSoFar(const glib::ImageDataExchange& exchange) {
  std::uint64_t bytes = 0;
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
    const Page* page = exchange.pages.At(i);
    if (page->bits > 0) bytes += page->Stride() * static_cast<std::uint64_t>(page->height);
  }
  return bytes;
}

bool FrameAllowed(const platform::Metafile& metafile) {
  platform::EnhMetaHeader header;
  if (!platform::GetEnhMetaFileHeader(&metafile, header)) return false;
  constexpr double kDotsPerUnit = 72.0 / 2540;
  const double width = (static_cast<double>(header.frameRight) - header.frameLeft) * kDotsPerUnit;
  const double height = (static_cast<double>(header.frameBottom) - header.frameTop) * kDotsPerUnit;
  return std::abs(width * height) <= static_cast<double>(kMaxDrawingPixels);
}

// Without raster, appended to the exchange.
Page* NewPage(glib::ImageDataExchange& exchange) {
  auto* page = new Page;
  page->background = exchange.background;
  std::fill(std::begin(page->palette), std::end(page->palette), kOpaqueBlack);
  exchange.pages.Append(page);
  return page;
}

}  // namespace

std::uint32_t Fail(glib::ImageDataExchange& exchange, std::uint32_t result, const char* cause) {
  if (exchange.message != nullptr) exchange.message->Assign(cause);
  return result;
}

bool SizeAllowed(std::uint64_t width, std::uint64_t height) {
  return width != 0 && height != 0 && width <= kMaxSide && height <= kMaxSide && width * height <= kMaxPagePixels;
}

bool SizeBelievable(std::uint64_t width, std::uint64_t height, std::uint64_t bytes) {
  const std::uint64_t pixels = width * height;
  return pixels <= kHarmlessPixels || pixels / kMaxRunPixelsPerByte <= bytes;
}

bool PagesBelievable(const glib::ImageDataExchange& exchange, std::uint64_t bytes) {
  const std::uint64_t soFar = BytesSoFar(exchange);
  return soFar <= kHarmlessSourceBytes || soFar / kMaxPageBytesPerByte <= bytes;
}

Page* AddPage(glib::ImageDataExchange& exchange, std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  if (!SizeAllowed(width, height) || std::uint64_t{width} * height > kMaxPageBytes / PageBytesPerPixel(bits)) {
    Fail(exchange, glib::NSUP, "The picture has no pixels or too many");
    return nullptr;
  }
  if (exchange.pages.count >= kMaxPages || PixelsSoFar(exchange) + std::uint64_t{width} * height > kMaxSourcePixels) {
    Fail(exchange, glib::NSUP, kTooManyPages);
    return nullptr;
  }
  std::uint8_t* pixels = exchange.AllocateRaster(width, height, bits);
  if (pixels == nullptr) {
    Fail(exchange, glib::IERR, "There is no memory for the picture");
    return nullptr;
  }
  Page* page = NewPage(exchange);
  page->bits = static_cast<std::int32_t>(bits);
  page->width = static_cast<std::int32_t>(width);
  page->height = static_cast<std::int32_t>(height);
  page->pixels = pixels;
  return page;
}

Page* AddMetafilePage(glib::ImageDataExchange& exchange, std::span<const std::uint8_t> records) {
  if (exchange.pages.count >= kMaxPages) {
    Fail(exchange, glib::NSUP, kTooManyPages);
    return nullptr;
  }
  platform::Metafile* metafile = platform::SetEnhMetaFileBits(records.data(), records.size());
  if (metafile == nullptr) {
    Fail(exchange, glib::IERR, "The metafile has no header");
    return nullptr;
  }
  if (!FrameAllowed(*metafile)) {
    platform::DeleteEnhMetaFile(metafile);
    Fail(exchange, glib::NSUP, "The drawing is too large");
    return nullptr;
  }
  Page* page = NewPage(exchange);
  page->SetMetafile(metafile, -1, -1, false);
  return page;
}

std::uint32_t EndOfRows(glib::ImageDataExchange& exchange, std::uint32_t rows, std::uint32_t height) {
  if (rows >= height) return glib::RCOK;
  if (rows != 0) return Fail(exchange, glib::RCOK, "The file is cut off");
  DropLastPage(exchange);
  return Fail(exchange, glib::IERR, "The file is cut off before its first row");
}

void DropLastPage(glib::ImageDataExchange& exchange) {
  if (exchange.pages.count != 0) delete exchange.pages.Remove(exchange.pages.count - 1);
}

void MakeOpaqueIfEmpty(Page& page, std::uint32_t firstRow, std::uint32_t rows) {
  std::uint8_t* pixels = Row(page, firstRow);
  const std::size_t bytes = page.Stride() * rows;
  std::uint8_t any = 0;
  for (std::size_t i = 3; i < bytes && any == 0; i += 4) any = pixels[i];
  if (any != 0) return;
  for (std::size_t i = 3; i < bytes; i += 4) pixels[i] = 255;
}

void DropPages(glib::ImageDataExchange& exchange, std::uint32_t keep) {
  while (exchange.pages.count > keep) DropLastPage(exchange);
}

void SetInkOnPaper(Page& page) {
  SetEntry(page, 0, 255, 255, 255);
  SetEntry(page, 1, 0, 0, 0);
  page.paletteEntries = 2;
}

void SetGrayRamp(Page& page, std::uint32_t levels) {
  for (std::uint32_t i = 0; i < levels && i < 256; ++i) {
    const auto grey = static_cast<std::uint8_t>(levels > 1 ? i * 255 / (levels - 1) : 0);
    SetEntry(page, i, grey, grey, grey);
  }
  page.paletteEntries = levels;
  page.grayscale = 1;
}

double CheckedDpi(double dpi) { return dpi >= 1.0 && dpi <= 10000.0 ? dpi : 72.0; }

glib::FileInfo* NewFileInfo(const char* path, std::uint32_t id, std::int32_t width, std::int32_t height,
                            std::int32_t bits, std::int32_t pages, double dpiX, double dpiY) {
  auto* info = new glib::FileInfo(id);
  info->width = width;
  info->height = height;
  info->bits() = bits;
  info->pages = pages;
  info->size = static_cast<std::int32_t>(std::clamp<std::int64_t>(platform::SourceSize(path), 0, 0x7FFFFFFF));
  info->dpiX = dpiX;
  info->dpiY = dpiY;
  return info;
}

}  // namespace modules
