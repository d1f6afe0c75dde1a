#ifndef MODULES_COMMON_CODE_PAGE_H_
#define MODULES_COMMON_CODE_PAGE_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace modules {

// Bytes of a font's character set (the number that logical fonts carry) in UTF-16. Symbol fonts keep their bytes; what
// the system has no table for is read as Western.
//
// `advances`, if there are as many as bytes, become those of the characters: in some sets two bytes make one.
std::u16string DecodeText(std::span<const std::uint8_t> bytes, std::uint8_t charset,
                          std::vector<std::int32_t>* advances = nullptr);

}  // namespace modules

#endif  // MODULES_COMMON_CODE_PAGE_H_
