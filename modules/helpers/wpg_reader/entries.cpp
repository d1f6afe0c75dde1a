#include <librevenge-stream/librevenge-stream.h>
#include <libwpg/libwpg.h>

#include <climits>
#include <exception>
#include <memory>

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/helpers/wpg_reader/drawing_target.h"
#include "modules/vector/child_drawing.h"

ZEFA_HELPER_ENTRY(void) RecordWpg(const std::uint8_t* bytes, std::size_t size, int output) {
  try {
    if (size == 0 || size > INT_MAX) return modules::HandOverFailure(output, glib::IERR, "The file is no drawing");
    librevenge::RVNGStringStream stream(bytes, static_cast<unsigned>(size));
    wpg::DrawingTarget target;
    // The library calls files that are cut off well read; whether something was drawn tells.
    const bool read = libwpg::WPGraphics::isSupported(&stream) && libwpg::WPGraphics::parse(&stream, &target);
    if (!read || !target.Any()) return modules::HandOverFailure(output, glib::IERR, "The drawing shows nothing");
    if (const auto bitmap = target.OnlyBitmap(); !bitmap.empty()) return modules::HandOverDib(output, bitmap);
    const std::unique_ptr<platform::Metafile> metafile(target.Recorder().Close());
    modules::HandOver(output, metafile->records);
  } catch (const std::exception& error) {
    modules::HandOverFailure(output, glib::IERR, error.what());
  }
}
