#ifndef MODULES_COMMON_POPPLER_READER_H_
#define MODULES_COMMON_POPPLER_READER_H_

#include <cstddef>
#include <cstdint>

// The helper around the PDF library. Its entries are called in a child process only, and answer through a descriptor.

namespace modules {

// What comes first.
struct PdfHead {
  std::uint32_t result;  // RCOK, IERR or NSUP; nothing follows but for RCOK
  std::uint32_t pages;
};

// Before the rows of each page: `height` rows of `width` pixels of 3 bytes, blue first, without padding.
struct PdfPageHead {
  std::uint32_t width;
  std::uint32_t height;
};

}  // namespace modules

extern "C" {
// Writes a PdfHead and then each page with its PdfPageHead. Ends at the first page that is over the limits.
void PopplerDraw(const std::uint8_t* bytes, std::size_t size, double dpiX, double dpiY, int output);
// Writes a PdfHead and a PdfPageHead with the size of the first page in points.
void PopplerSummarize(const std::uint8_t* bytes, std::size_t size, int output);
}

#endif  // MODULES_COMMON_POPPLER_READER_H_
