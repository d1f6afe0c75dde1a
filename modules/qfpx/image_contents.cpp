#include "modules/qfpx/image_contents.h"

namespace qfpx {
namespace {

constexpr std::uint32_t kResolutionCount = 0x01000000;
constexpr std::uint32_t kWidth = 0x01000002;
constexpr std::uint32_t kHeight = 0x01000003;
constexpr std::uint32_t kColour = 0x02000002;  // of the lowest resolution; the next ones have 0x10000 more each
constexpr std::uint32_t kFormat = 0x02000003;
constexpr std::uint32_t kTables = 0x03000001;  // for number 0; the others as above
constexpr std::uint32_t kNextOne = 0x10000;

constexpr std::uint32_t kMaxResolutions = 16;  // each halves the sides
constexpr std::uint32_t kBytes = 17;           // of the formats of samples: 8 bits without sign
constexpr std::uint32_t kOpacity = 0x7FFE;
constexpr std::uint32_t kBelowFlag = 0x7FFF;  // the highest bit of either half of a channel's number is a flag

modules::Verdict ReadChannels(std::span<const std::uint8_t> colour, ImageContents& contents) {
  constexpr modules::Verdict kUnknown{glib::NSUP, "The picture's colours are not supported"};
  modules::ByteReader in(colour);
  in.Skip(4);  // pictures, always one
  contents.channels = in.Long();
  if (in.Failed()) return {glib::IERR, "The picture's colours are not told"};
  if (contents.channels == 0 || contents.channels > contents.place.size()) return kUnknown;
  const std::uint32_t colours = contents.channels <= 2 ? 1 : 3;
  std::uint32_t seen = 0;
  for (std::uint32_t i = 0; i < contents.channels; ++i) {
    const std::uint32_t channel = in.Long();
    const std::uint32_t index = channel & kBelowFlag;
    contents.space = static_cast<Space>(channel >> 16 & kBelowFlag);
    const std::uint32_t place = index == kOpacity && contents.HasOpacity() ? 3 : index;
    if (place != 3 && place >= colours) return kUnknown;
    contents.place[i] = static_cast<std::uint8_t>(place);
    seen |= 1U << place;
  }
  const std::uint32_t wanted = ((1U << colours) - 1) | (contents.HasOpacity() ? 8 : 0);
  const bool known =
      colours == 1 ? contents.space == Space::kGrey : contents.space == Space::kRgb || contents.space == Space::kYcc;
  return known && seen == wanted && !in.Failed() ? modules::kFine : kUnknown;
}

}  // namespace

modules::Verdict ReadImageContents(const PropertySet& properties, ImageContents& contents) {
  const std::uint32_t count = properties.Number(kResolutionCount).value_or(0);
  contents.width = properties.Number(kWidth).value_or(0);
  contents.height = properties.Number(kHeight).value_or(0);
  if (count == 0 || count > kMaxResolutions || contents.width == 0 || contents.height == 0) {
    return {glib::IERR, "The file does not say what picture it holds"};
  }
  if (!modules::SizeAllowed(contents.width, contents.height)) return {glib::NSUP, "The picture is too large"};
  contents.resolution = count - 1;
  const std::uint32_t shift = kNextOne * contents.resolution;
  if (properties.FirstNumber(kFormat + shift).value_or(kBytes) != kBytes) {
    return {glib::NSUP, "The picture's samples are not of 8 bits"};
  }
  return ReadChannels(properties.Blob(kColour + shift), contents);
}

std::span<const std::uint8_t> JpegTables(const PropertySet& properties, std::uint32_t number) {
  return number == 0 || number > 255 ? std::span<const std::uint8_t>() : properties.Blob(kTables + kNextOne * number);
}

}  // namespace qfpx
