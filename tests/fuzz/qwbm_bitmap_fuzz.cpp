#include "modules/qwbm/bitmap.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  fuzz::Exchange exchange;
  auto& header = data[0] % 2 == 0 ? qwbm::ReadOtbHeader : qwbm::ReadWbmpHeader;
  exchange.Check(qwbm::LoadBitmap({data + 1, size - 1}, header, exchange));
  return 0;
}
