#ifndef MODULES_QWMF_EMF_H_
#define MODULES_QWMF_EMF_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qwmf {

// Whether the bytes are an enhanced metafile from its header to its end record.
bool IsWholeEmf(std::span<const std::uint8_t> bytes);

// Adds the metafile as a page. Refuses what has no record behind its header and what only newer drawing commands in
// comments could draw.
std::uint32_t LoadEmf(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qwmf

#endif  // MODULES_QWMF_EMF_H_
