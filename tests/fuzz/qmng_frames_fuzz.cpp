#include <cstdlib>

#include "modules/qmng/frames.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t frames = 0;
  qmng::ForEachFrame({data, size}, [&](const qmng::Frame& frame) {
    if (frame.file.size() < 8) std::abort();
    return ++frames < 4096;
  });
  return 0;
}
