// Loads whatever bytes come as one of the three kinds of metafile; what the player makes of the pages is another
// target's business.

#include <cstddef>
#include <cstdint>

#include "modules/qwmf/emf.h"
#include "modules/qwmf/wmf.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  fuzz::Exchange wmf;
  wmf.Check(qwmf::LoadWmf(bytes, wmf));
  fuzz::Exchange emf;
  emf.Check(qwmf::LoadEmf(bytes, emf));
  return 0;
}
