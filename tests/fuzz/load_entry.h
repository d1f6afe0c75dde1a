#ifndef TESTS_FUZZ_LOAD_ENTRY_H_
#define TESTS_FUZZ_LOAD_ENTRY_H_

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "modules/common/entries.h"
#include "tests/fuzz/fuzz_exchange.h"

namespace fuzz {

// A load of the module that is built in: the first byte chooses one of its formats, the file follows.
template <std::size_t kCount>
int LoadOneOf(const std::uint32_t (&ids)[kCount], const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Exchange exchange;
  exchange.id = ids[data[0] % kCount];
  exchange.sourceSize = static_cast<std::uint32_t>(size - 1);
  exchange.Check(LoadImageData(reinterpret_cast<const char*>(data + 1), &exchange, nullptr));
  return 0;
}

}  // namespace fuzz

#endif  // TESTS_FUZZ_LOAD_ENTRY_H_
