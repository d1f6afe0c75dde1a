#include "modules/qimg/sgi.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Exchange exchange;
  exchange.Check(qimg::LoadSgi({data, size}, exchange));
  return 0;
}
