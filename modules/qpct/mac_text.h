#ifndef MODULES_QPCT_MAC_TEXT_H_
#define MODULES_QPCT_MAC_TEXT_H_

#include <cstdint>
#include <span>
#include <string>

namespace qpct {

std::u16string FromMacRoman(std::span<const std::uint8_t> text);

// A font of today for one of the numbers that pictures name without a name.
std::u16string FontOfNumber(std::uint32_t number);

}  // namespace qpct

#endif  // MODULES_QPCT_MAC_TEXT_H_
