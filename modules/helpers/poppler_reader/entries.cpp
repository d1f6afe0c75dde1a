#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <string>

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/poppler_reader.h"
#include "platform/child_process.h"

namespace {

using modules::PdfHead;
using modules::PdfPageHead;

void Ignore(const std::string&, void*) {}

std::unique_ptr<poppler::document> Open(const std::uint8_t* bytes, std::size_t size, PdfHead& head) {
  head = {glib::IERR, 0};
  if (size > INT_MAX) return nullptr;
  poppler::set_debug_error_function(Ignore, nullptr);
  const auto* text = reinterpret_cast<const char*>(bytes);
  std::unique_ptr<poppler::document> document(poppler::document::load_from_raw_data(text, static_cast<int>(size)));
  if (document == nullptr) return nullptr;
  if (document->is_locked()) {
    head.result = glib::NSUP;
    return nullptr;
  }
  head.pages = static_cast<std::uint32_t>(std::max(document->pages(), 0));
  if (head.pages == 0) return nullptr;
  head.result = glib::RCOK;
  return document;
}

struct Size {
  double width;
  double height;
};

// Points, upright.
Size SizeOf(const poppler::page& page) {
  const poppler::rectf box = page.page_rect();
  const auto turn = page.orientation();
  if (turn == poppler::page::landscape || turn == poppler::page::seascape) return {box.height(), box.width()};
  return {box.width(), box.height()};
}

// Whole pixels or points of a side; 0 for a senseless one.
std::uint32_t Whole(double length) {
  return length > 0 && length <= modules::kMaxSide ? static_cast<std::uint32_t>(std::ceil(length)) : 0;
}

bool WritePage(const poppler::image& image, int output) {
  const PdfPageHead head{static_cast<std::uint32_t>(image.width()), static_cast<std::uint32_t>(image.height())};
  if (!platform::WriteAll(output, &head, sizeof(head))) return false;
  const std::size_t rowBytes = std::size_t{3} * head.width;
  for (std::uint32_t y = 0; y < head.height; ++y) {
    const char* row = image.const_data() + static_cast<std::size_t>(image.bytes_per_row()) * y;
    if (!platform::WriteAll(output, row, rowBytes)) return false;
  }
  return true;
}

}  // namespace

ZEFA_HELPER_ENTRY(void)
PopplerDraw(const std::uint8_t* bytes, std::size_t size, double dpiX, double dpiY, int output) {
  PdfHead head;
  const auto document = Open(bytes, size, head);
  if (!platform::WriteAll(output, &head, sizeof(head)) || document == nullptr) return;
  poppler::page_renderer renderer;
  renderer.set_image_format(poppler::image::format_bgr24);
  renderer.set_paper_color(0xFFFFFFFF);
  for (const auto hint : {poppler::page_renderer::antialiasing, poppler::page_renderer::text_antialiasing}) {
    renderer.set_render_hint(hint, true);
  }
  for (std::uint32_t i = 0; i < head.pages && i < modules::kMaxPages; ++i) {
    const std::unique_ptr<poppler::page> page(document->create_page(static_cast<int>(i)));
    if (page == nullptr) continue;
    const Size points = SizeOf(*page);
    const std::uint32_t width = Whole(points.width * dpiX / 72.0);
    const std::uint32_t height = Whole(points.height * dpiY / 72.0);
    if (!modules::SizeAllowed(width, height)) return;
    const poppler::image image = renderer.render_page(page.get(), dpiX, dpiY);
    if (!image.is_valid() || image.format() != poppler::image::format_bgr24) continue;
    if (!WritePage(image, output)) return;
  }
}

ZEFA_HELPER_ENTRY(void) PopplerSummarize(const std::uint8_t* bytes, std::size_t size, int output) {
  PdfHead head;
  const auto document = Open(bytes, size, head);
  if (!platform::WriteAll(output, &head, sizeof(head)) || document == nullptr) return;
  const std::unique_ptr<poppler::page> page(document->create_page(0));
  const Size points = page != nullptr ? SizeOf(*page) : Size{0, 0};
  const PdfPageHead first{Whole(points.width), Whole(points.height)};
  platform::WriteAll(output, &first, sizeof(first));
}
