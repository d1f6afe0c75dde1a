#include "modules/qpct/operations.h"

namespace qpct {
namespace {

// Bytes of data of the operations below 0x30; those that are read, or that say their length themselves, count 0 here.
constexpr std::uint8_t kSmall[0x30] = {
    0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
    8, 1, 0, 0, 0, 2, 2, 0, 0, 0, 0, 0, 0, 6, 0, 6,  // text ratio, version, fractions, highlight colours
};

void SkipShort(modules::ByteReader& in) { in.Skip(in.BigWord()); }
void SkipLong(modules::ByteReader& in) { in.Skip(in.BigLong()); }

}  // namespace

void SkipOperation(modules::ByteReader& in, std::uint32_t operation) {
  if (operation < 0x24) {
    in.Skip(kSmall[operation]);
  } else if (operation < 0x30 || (operation >= 0x92 && operation <= 0x9F)) {
    SkipShort(in);
  } else if (operation == 0xA0) {
    in.Skip(2);
  } else if (operation == 0xA1) {
    in.Skip(2);
    SkipShort(in);
  } else if (operation >= 0xA2 && operation <= 0xAF) {
    SkipShort(in);
  } else if (operation >= 0xD0 && operation <= 0xFE) {
    SkipLong(in);
  } else if (operation >= 0x0100 && operation <= 0x7FFF) {
    in.Skip(std::size_t{operation >> 8} * 2);
  } else if (operation >= 0x8100) {
    SkipLong(in);
  }
}

}  // namespace qpct
