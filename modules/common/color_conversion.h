#ifndef MODULES_COMMON_COLOR_CONVERSION_H_
#define MODULES_COMMON_COLOR_CONVERSION_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "modules/common/page_builder.h"

// Colours as the profile in a file means them, turned into sRGB. A profile that is broken, made for other samples or
// sRGB itself is no conversion and costs nothing; the colour library loads at the first that is one.

namespace modules {

enum class Samples : std::uint32_t {
  kGrey,          // one byte
  kColours,       // blue, green, red
  kInks,          // cyan, magenta, yellow, black; 255 is full ink
  kInvertedInks,  // the same; 255 is no ink
};

// What is converted becomes blue, green, red, and a fourth byte with `alpha`, which is never written. Only kColours
// have that byte before as well.
struct SampleForm {
  Samples samples;
  bool alpha = false;
};

class ColorConversion {
 public:
  virtual ~ColorConversion() = default;
  // `from` and `to` may be the same for kColours, and else may not overlap.
  virtual void Convert(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const = 0;
};

// Null if there is nothing to convert. `pixels` is how many there will be about.
std::unique_ptr<ColorConversion> ConversionToSrgb(std::span<const std::uint8_t> profile, const SampleForm& form,
                                                  std::uint64_t pixels);

// Converts a page of 1 to 32 bits whose pixels are still as the file means them: its palette where it has one. Samples
// are kGrey, also where a grey stands as three equal bytes, or kColours.
void ConvertPage(std::span<const std::uint8_t> profile, Samples samples, Page& page);

}  // namespace modules

#endif  // MODULES_COMMON_COLOR_CONVERSION_H_
