#include <librevenge-stream/librevenge-stream.h>
#include <libwpg/libwpg.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

#include "modules/helpers/wpg_reader/drawing_target.h"

// The library with what takes its findings, without the process around them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    librevenge::RVNGStringStream stream(data, static_cast<unsigned>(size));
    wpg::DrawingTarget target;
    if (size == 0 || !libwpg::WPGraphics::isSupported(&stream) || !libwpg::WPGraphics::parse(&stream, &target)) {
      return 0;
    }
    if (target.OnlyBitmap().empty()) std::unique_ptr<platform::Metafile>(target.Recorder().Close());
  } catch (const std::exception&) {
  }
  return 0;
}
