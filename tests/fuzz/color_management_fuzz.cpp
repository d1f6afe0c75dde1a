#include <memory>
#include <vector>

#include "modules/helpers/color_management/entries.h"

// The first two bytes choose the samples and the way, the profile follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const modules::SampleForm form{static_cast<modules::Samples>(data[0] % 4), data[0] >= 128};
  const std::uint64_t pixels = data[1] % 2 == 0 ? 1 : 1 << 20;
  const std::unique_ptr<modules::ColorConversion> conversion(OpenConversion(data + 2, size - 2, &form, pixels));
  if (conversion == nullptr) return 0;
  constexpr std::size_t kPixels = 64;
  std::vector<std::uint8_t> from(4 * kPixels);
  std::vector<std::uint8_t> to(4 * kPixels);
  for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<std::uint8_t>(37 * i);
  conversion->Convert(from.data(), to.data(), kPixels);
  return 0;
}
