#include <exception>

#include "modules/helpers/dxf_reader/collector.h"
#include "modules/helpers/dxf_reader/painter.h"
#include "modules/helpers/dxf_reader/reader.h"

// The library with what takes its findings, without the process around them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    dxf::Drawing drawing;
    dxf::Collector collector(drawing);
    dxf::ReadDxf({data, size}, collector);
    dxf::RecordDrawing(drawing);
  } catch (const std::exception&) {
  }
  return 0;
}
