#ifndef MODULES_QANI_ICON_IMAGE_H_
#define MODULES_QANI_ICON_IMAGE_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/dib.h"
#include "modules/common/page_builder.h"
#include "modules/qani/icon.h"

namespace qani {

// One picture of an icon; `image` begins with it and may go on behind it.
modules::Verdict SummarizeIconImage(std::span<const std::uint8_t> image, IconSummary& summary);

// A bitmap, with or without a mask.
modules::Verdict SummarizeBitmap(std::span<const std::uint8_t> dib, modules::DibForm form, IconSummary& summary);

// Appends it as a page. Pictures keep their depth where nothing in them is transparent; else the page has 32 bits, with
// the alpha of the picture itself or that of its mask. `used` gets the bytes that the picture takes, at least 1.
std::uint32_t LoadIconImage(std::span<const std::uint8_t> image, glib::ImageDataExchange& exchange, std::size_t& used);

}  // namespace qani

#endif  // MODULES_QANI_ICON_IMAGE_H_
