#ifndef MODULES_QEPS_PDF_H_
#define MODULES_QEPS_PDF_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qeps {

struct Resolution {
  double x = 72.0;
  double y = 72.0;
};

// A PDF as its first page tells of it.
struct PdfSummary {
  std::uint32_t width = 0;  // points
  std::uint32_t height = 0;
  std::uint32_t pages = 0;
};

// Every page, 24 bits on white. Drawing is done in a process of its own, which is stopped if a page takes too long; the
// pages before it are kept.
std::uint32_t LoadPdf(std::span<const std::uint8_t> file, const Resolution& dpi, glib::ImageDataExchange& exchange);

// NSUP for a locked file and without the helper.
std::uint32_t SummarizePdf(std::span<const std::uint8_t> file, PdfSummary& summary);

}  // namespace qeps

#endif  // MODULES_QEPS_PDF_H_
