#ifndef TESTS_SUPPORT_ICC_PROFILES_H_
#define TESTS_SUPPORT_ICC_PROFILES_H_

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tests/support/module_host.h"

// ICC profiles made on the spot, and what the colour library's plain floating-point way makes of their colours.

namespace tests {

using IccBytes = std::vector<std::uint8_t>;

// A profile of red, green, blue with the white of sRGB. `gamma` 0 is the curve of sRGB; with `swapped` primaries, red
// and blue have changed places.
IccBytes RgbProfile(double gamma, bool swapped);
// sRGB with its curve as a table of so many entries.
IccBytes SrgbTableProfile(std::uint32_t entries);
IccBytes GreyProfile(double gamma);
// A press whose inks darken each other in a way of their own.
IccBytes InkProfile();

class IccReference {
 public:
  explicit IccReference(std::span<const std::uint8_t> profile);
  ~IccReference();
  IccReference(const IccReference&) = delete;
  IccReference& operator=(const IccReference&) = delete;

  // The word of a pixel, for a profile of greys or colours; alpha stays.
  std::uint32_t Converted(std::uint32_t pixel) const;
  // Opaque, of inks from 0 to 255 for full.
  std::uint32_t OfInks(const std::uint8_t (&inks)[4]) const;

 private:
  struct Transform;
  std::unique_ptr<Transform> transform_;
};

// Whether two pixels differ by at most one step in each byte.
bool OneStepApart(std::uint32_t left, std::uint32_t right);

// That each pixel of `converted` is what the profile makes of the one in `plain`, loaded from the same file without it.
void ExpectConverted(const Loaded& plain, const Loaded& converted, std::span<const std::uint8_t> profile);
// That all pixels are equal.
void ExpectUnchanged(const Loaded& plain, const Loaded& other);

}  // namespace tests

#endif  // TESTS_SUPPORT_ICC_PROFILES_H_
