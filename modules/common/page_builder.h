#ifndef MODULES_COMMON_PAGE_BUILDER_H_
#define MODULES_COMMON_PAGE_BUILDER_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"

namespace modules {

using Page = glib::ImageDataExchange::Page;

// RCOK, or why not.
struct Verdict {
  std::uint32_t result;
  const char* cause;
};
inline constexpr Verdict kFine{glib::RCOK, ""};

// Leaves a short cause in the exchange's message and gives `result` back.
std::uint32_t Fail(glib::ImageDataExchange& exchange, std::uint32_t result, const char* cause);
inline std::uint32_t Fail(glib::ImageDataExchange& exchange, const Verdict& verdict) {
  return Fail(exchange, verdict.result, verdict.cause);
}

// Whether a page of this size is within the limits.
bool SizeAllowed(std::uint64_t width, std::uint64_t height);

// Whether so many bytes can hold a picture of this size, in a code of runs or as rows of which some are missing. To be
// asked before the raster is allocated.
bool SizeBelievable(std::uint64_t width, std::uint64_t height, std::uint64_t bytes);

// Whether the pages so far may all come from so many bytes. To be asked before each page where pages can share data.
bool PagesBelievable(const glib::ImageDataExchange& exchange, std::uint64_t bytes);

// A page with a zeroed raster, appended to the exchange, which owns it. It is a slide of its own, visible, with the
// film's background, 72 dots per inch and an opaque black palette. Null, with a message: the size is over the limits,
// there are too many pages, or there is no memory.
Page* AddPage(glib::ImageDataExchange& exchange, std::uint32_t width, std::uint32_t height, std::uint32_t bits);

// A page that is a metafile with the size of its frame, from a copy of its records. Null, with a message, if they don't
// begin with the header of an enhanced metafile, the frame is too large to be drawn, or there are too many pages.
Page* AddMetafilePage(glib::ImageDataExchange& exchange, std::span<const std::uint8_t> records);

// The result of a load that found `rows` of the rows of the last page. Missing rows stay zero and are worth a word in
// the message; without any the page is taken back.
std::uint32_t EndOfRows(glib::ImageDataExchange& exchange, std::uint32_t rows, std::uint32_t height);

// Takes the last page back out of the exchange and deletes it with its raster.
void DropLastPage(glib::ImageDataExchange& exchange);

// The same with all pages but the first `keep`, for a load that fails half way.
void DropPages(glib::ImageDataExchange& exchange, std::uint32_t keep = 0);

inline std::uint8_t* Row(Page& page, std::uint32_t y) { return page.pixels + y * page.Stride(); }

// An opaque palette entry; SetEntry with alpha 0 makes a transparent one.
inline void SetEntry(Page& page, std::uint32_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                     std::uint8_t alpha = 255) {
  page.palette[index & 255U] = static_cast<std::uint32_t>(alpha) << 24 | static_cast<std::uint32_t>(red) << 16 |
                               static_cast<std::uint32_t>(green) << 8 | blue;
}

// An alpha that is 0 in all of these rows of a 32-bit page was never filled in: makes them opaque.
void MakeOpaqueIfEmpty(Page& page, std::uint32_t firstRow, std::uint32_t rows);

// Two entries for pages of 1 bit whose set bits are ink: white and black.
void SetInkOnPaper(Page& page);

// Bits of an index into so many entries, of the depths that pages have; 8 for more than 256.
constexpr std::uint32_t IndexBits(std::size_t entries) {
  if (entries <= 2) return 1;
  return entries <= 16 ? 4 : 8;
}

// Puts an index into a row of 1, 4 or 8 bits that is still zero there.
inline void PutIndex(std::uint8_t* row, std::uint32_t bits, std::size_t x, std::uint32_t index) {
  const std::size_t perByte = 8 / bits;
  row[x / perByte] = static_cast<std::uint8_t>(row[x / perByte] | index << (8 - bits - x % perByte * bits));
}

// Grey entries from black to white over the `levels` lowest indices; the page counts as grey.
void SetGrayRamp(Page& page, std::uint32_t levels);

// A resolution in dots per inch as a file gives it: what is missing or senseless becomes 72.
double CheckedDpi(double dpi);
inline double DpiFromMetre(double dotsPerMetre) { return CheckedDpi(dotsPerMetre * 0.0254); }
inline double DpiFromCentimetre(double dotsPerCentimetre) { return CheckedDpi(dotsPerCentimetre * 2.54); }

// A file information record; `size` is the file's length, at most what 31 bits hold.
glib::FileInfo* NewFileInfo(const char* path, std::uint32_t id, std::int32_t width, std::int32_t height,
                            std::int32_t bits, std::int32_t pages, double dpiX, double dpiY);

}  // namespace modules

#endif  // MODULES_COMMON_PAGE_BUILDER_H_
