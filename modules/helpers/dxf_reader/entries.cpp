#include <exception>

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/helpers/dxf_reader/collector.h"
#include "modules/helpers/dxf_reader/painter.h"
#include "modules/helpers/dxf_reader/reader.h"
#include "modules/vector/child_drawing.h"

ZEFA_HELPER_ENTRY(void) RecordDxf(const std::uint8_t* bytes, std::size_t size, int output) {
  try {
    dxf::Drawing drawing;
    dxf::Collector collector(drawing);
    dxf::ReadDxf({bytes, size}, collector);
    const auto metafile = dxf::RecordDrawing(drawing);
    if (metafile == nullptr) return modules::HandOverFailure(output, glib::IERR, "The drawing shows nothing");
    modules::HandOver(output, metafile->records);
  } catch (const std::exception& error) {
    modules::HandOverFailure(output, glib::IERR, error.what());
  }
}
