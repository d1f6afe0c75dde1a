#include "modules/helpers/tiff_reader/entries.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Exchange exchange;
  exchange.sourceSize = static_cast<std::uint32_t>(size);
  exchange.Check(ReadTiff(reinterpret_cast<const char*>(data), &exchange));
  return 0;
}
