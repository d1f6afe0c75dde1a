#ifndef MODULES_HELPERS_COLOR_MANAGEMENT_ENTRIES_H_
#define MODULES_HELPERS_COLOR_MANAGEMENT_ENTRIES_H_

#include <cstddef>
#include <cstdint>

#include "modules/common/color_conversion.h"

// The entry of the helper. From the colours of an ICC profile to sRGB; null: the profile is broken or not one of such
// samples. The caller deletes it.
extern "C" modules::ColorConversion* OpenConversion(const std::uint8_t* profile, std::size_t size,
                                                    const modules::SampleForm* form, std::uint64_t pixels);

#endif  // MODULES_HELPERS_COLOR_MANAGEMENT_ENTRIES_H_
