#include "modules/common/png_page.h"

namespace modules {

std::uint32_t AddPngPage(PngReader& png, glib::ImageDataExchange& exchange) {
  Page* page = AddPage(exchange, png.Width(), png.Height(), png.Bits());
  if (page == nullptr) return glib::NSUP;
  page->dpiX = png.DpiX();
  page->dpiY = png.DpiY();
  png.FillPalette(*page);
  if (png.ReadRows(*page)) return glib::RCOK;
  if (png.AnyRow()) return Fail(exchange, glib::RCOK, "The picture's data are damaged or cut off");
  DropLastPage(exchange);
  return Fail(exchange, glib::IERR, png.Cause());
}

}  // namespace modules
