#include "modules/common/color_conversion.h"

#include <array>

#include "modules/common/helper.h"
#include "modules/common/icc_profile.h"
#include "modules/helpers/color_management/entries.h"

namespace modules {
namespace {

constexpr const char* kHelper = "color_management";
constexpr std::size_t kLevels = 256;

IccSpace SpaceOf(Samples samples) {
  switch (samples) {
    case Samples::kGrey:
      return IccSpace::kGrey;
    case Samples::kColours:
      return IccSpace::kRgb;
    default:
      return IccSpace::kCmyk;
  }
}

using Greys = std::array<std::uint8_t, kLevels>;

// False: greys stay as they are.
bool ReadGreys(std::span<const std::uint8_t> profile, Greys& greys) {
  const auto conversion = ConversionToSrgb(profile, {Samples::kGrey}, kLevels);
  if (conversion == nullptr) return false;
  std::array<std::uint8_t, kLevels> from{};
  std::array<std::uint8_t, 3 * kLevels> to{};
  for (std::size_t i = 0; i < kLevels; ++i) from[i] = static_cast<std::uint8_t>(i);
  conversion->Convert(from.data(), to.data(), kLevels);
  for (std::size_t i = 0; i < kLevels; ++i) greys[i] = to[3 * i + 1];
  return true;
}

void MapGreys(const Greys& greys, Page& page) {
  if (page.bits <= 8) {
    for (std::uint32_t& entry : page.palette) {
      entry = (entry & 0xFF000000U) | greys[entry & 0xFFU] * 0x010101U;
    }
    return;
  }
  const std::size_t step = static_cast<std::size_t>(page.bits) / 8;
  for (std::int32_t y = 0; y < page.height; ++y) {
    std::uint8_t* pixel = Row(page, static_cast<std::uint32_t>(y));
    for (std::int32_t x = 0; x < page.width; ++x, pixel += step) pixel[0] = pixel[1] = pixel[2] = greys[pixel[0]];
  }
}

void ConvertColours(std::span<const std::uint8_t> profile, Page& page) {
  if (page.bits <= 8) {
    const auto conversion = ConversionToSrgb(profile, {Samples::kColours, true}, kLevels);
    auto* entries = reinterpret_cast<std::uint8_t*>(page.palette);
    if (conversion != nullptr) conversion->Convert(entries, entries, page.paletteEntries);
    return;
  }
  const auto width = static_cast<std::size_t>(page.width);
  const auto conversion =
      ConversionToSrgb(profile, {Samples::kColours, page.bits == 32}, width * static_cast<std::size_t>(page.height));
  if (conversion == nullptr) return;
  for (std::int32_t y = 0; y < page.height; ++y) {
    std::uint8_t* row = Row(page, static_cast<std::uint32_t>(y));
    conversion->Convert(row, row, width);
  }
}

}  // namespace

std::unique_ptr<ColorConversion> ConversionToSrgb(std::span<const std::uint8_t> profile, const SampleForm& form,
                                                  std::uint64_t pixels) {
  if (!IsIccProfileOf(profile, SpaceOf(form.samples)) || IsSrgb(profile)) return nullptr;
  auto* open = HelperFunction<decltype(OpenConversion)>(kHelper, "OpenConversion");
  return std::unique_ptr<ColorConversion>(open == nullptr ? nullptr
                                                          : open(profile.data(), profile.size(), &form, pixels));
}

void ConvertPage(std::span<const std::uint8_t> profile, Samples samples, Page& page) {
  if (samples != Samples::kGrey) return ConvertColours(profile, page);
  Greys greys;
  if (ReadGreys(profile, greys)) MapGreys(greys, page);
}

}  // namespace modules
