#include <dl_dxf.h>

#include <exception>
#include <sstream>
#include <string>

#include "modules/helpers/dxf_reader/collector.h"
#include "modules/helpers/dxf_reader/painter.h"

// The library with what takes its findings, without the process around them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    dxf::Drawing drawing;
    dxf::Collector collector(drawing);
    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    DL_Dxf().in(stream, &collector);
    collector.Finish();
    dxf::RecordDrawing(drawing);
  } catch (const std::exception&) {
  }
  return 0;
}
