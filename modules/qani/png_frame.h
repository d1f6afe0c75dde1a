#ifndef MODULES_QANI_PNG_FRAME_H_
#define MODULES_QANI_PNG_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"
#include "modules/qani/icon.h"

// PNG files as pictures of icons.

namespace qani {

bool IsPng(std::span<const std::uint8_t> image);
modules::Verdict SummarizePng(std::span<const std::uint8_t> image, IconSummary& summary);

// Appends the picture as a page with the depth that SummarizePng tells, or 32 bits where a colour counts as
// transparent. `used` gets the bytes of the file that were read.
std::uint32_t LoadPng(std::span<const std::uint8_t> image, glib::ImageDataExchange& exchange, std::size_t& used);

}  // namespace qani

#endif  // MODULES_QANI_PNG_FRAME_H_
