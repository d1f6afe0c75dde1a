#include "tests/fuzz/load_entry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t kIds[] = {0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x1C, 0x20};
  return fuzz::LoadOneOf(kIds, data, size);
}
