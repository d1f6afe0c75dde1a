#include "modules/qhpg/plotter.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Exchange exchange;
  exchange.Check(qhpg::LoadPlot({data, size}, exchange));
  return 0;
}
