#ifndef MODULES_QWMF_WMF_TEXT_H_
#define MODULES_QWMF_WMF_TEXT_H_

#include <cstdint>
#include <span>
#include <string>

namespace qwmf {

// Bytes of a font's character set in UTF-16, one unit a byte. Sets of more than one byte to a character, and what the
// system has no table for, are read as Western.
std::u16string DecodeText(std::span<const std::uint8_t> bytes, std::uint8_t charset);

}  // namespace qwmf

#endif  // MODULES_QWMF_WMF_TEXT_H_
