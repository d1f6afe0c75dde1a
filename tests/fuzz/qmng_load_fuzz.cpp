#include "tests/fuzz/load_entry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t kIds[] = {0x3000001D, 0x3000001E};
  return fuzz::LoadOneOf(kIds, data, size);
}
