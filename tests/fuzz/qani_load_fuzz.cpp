#include "modules/qani/ani.h"
#include "modules/qani/icon.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Exchange icon;
  icon.Check(qani::LoadIcons({data, size}, qani::kAllIcons, icon));
  fuzz::Exchange animation;
  animation.Check(qani::LoadAnimation({data, size}, animation));
  return 0;
}
