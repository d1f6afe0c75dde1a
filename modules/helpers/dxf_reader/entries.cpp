#include <dl_dxf.h>

#include <exception>
#include <istream>
#include <streambuf>

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/helpers/dxf_reader/collector.h"
#include "modules/helpers/dxf_reader/painter.h"
#include "modules/vector/child_drawing.h"

namespace {

// Bytes in memory as a stream, without a copy.
class MemoryBuffer : public std::streambuf {
 public:
  MemoryBuffer(const std::uint8_t* bytes, std::size_t size) {
    auto* from = const_cast<char*>(reinterpret_cast<const char*>(bytes));
    setg(from, from, from + size);
  }
};

}  // namespace

ZEFA_HELPER_ENTRY(void) RecordDxf(const std::uint8_t* bytes, std::size_t size, int output) {
  try {
    dxf::Drawing drawing;
    dxf::Collector collector(drawing);
    MemoryBuffer buffer(bytes, size);
    std::istream stream(&buffer);
    DL_Dxf().in(stream, &collector);
    collector.Finish();
    const auto metafile = dxf::RecordDrawing(drawing);
    if (metafile == nullptr) return modules::HandOverFailure(output, glib::IERR, "The drawing shows nothing");
    modules::HandOver(output, metafile->records);
  } catch (const std::exception& error) {
    modules::HandOverFailure(output, glib::IERR, error.what());
  }
}
