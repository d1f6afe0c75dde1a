#include "modules/qimg/cut.h"
#include "tests/fuzz/fuzz_exchange.h"

// The first byte says how much of what follows is the palette, in steps of four bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::span<const std::uint8_t> rest(data + 1, size - 1);
  const std::size_t paletteSize = data[0] * std::size_t{4} < rest.size() ? data[0] * std::size_t{4} : rest.size();
  fuzz::Exchange exchange;
  exchange.Check(qimg::LoadCut(rest.subspan(paletteSize), rest.first(paletteSize), exchange));
  return 0;
}
