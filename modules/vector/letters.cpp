#include "modules/vector/letters.h"

#include <cstdint>
#include <iterator>

namespace modules {
namespace {

// Thousandths of the em, from the space on; those of the sans serif face that stands in for most fonts of drawings.
constexpr std::uint16_t kWidths[] = {278,  278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333, 278, 278,
                                     556,  556, 556, 556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556,
                                     1015, 667, 667, 722, 722, 667, 611, 778, 722, 278, 500, 667, 556, 833, 722, 778,
                                     667,  778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278, 278, 278, 469, 556,
                                     333,  556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,
                                     556,  556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};
constexpr std::uint32_t kOtherWidth = 600;
constexpr std::uint32_t kWideWidth = 1000;
constexpr char16_t kFirstWide = 0x2E80;  // Chinese and its neighbours

}  // namespace

double TextLength(std::u16string_view text) {
  std::uint64_t length = 0;
  for (const char16_t c : text) {
    if (c >= ' ' && c - u' ' < static_cast<int>(std::size(kWidths))) {
      length += kWidths[c - u' '];
    } else {
      length += c >= kFirstWide ? kWideWidth : kOtherWidth;
    }
  }
  return static_cast<double>(length) / 1000;
}

}  // namespace modules
