#ifndef MODULES_QPSD_CHANNELS_H_
#define MODULES_QPSD_CHANNELS_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "modules/common/color_conversion.h"
#include "modules/common/page_builder.h"
#include "modules/qpsd/planes.h"
#include "modules/qpsd/psd_file.h"

// How channels become the pixels of a page.

namespace qpsd {

// Places of channels. A grey one and an index stand in the first. Lab has its three in the places of red, green and
// blue until FinishLab. Inks are stored inverted, as the colours that they leave.
enum class Channel : std::size_t { kRed, kGreen, kBlue, kBlack, kAlpha, kNone };
inline constexpr std::size_t kChannels = 5;

// What channel `index` of the merged picture, or of a layer, is for; kNone: it isn't shown.
Channel ChannelAt(const PsdFile& psd, std::uint32_t index, std::uint32_t pageBits);

struct ChannelPlane {
  Channel channel;
  PlaneReader rows;
};

// Reads all planes side by side into a page. A channel without a plane, or where its rows end, is 0, but full for black
// and alpha. Gives the number of rows of the shortest and the longest plane.
struct RowCounts {
  std::uint32_t fewest;
  std::uint32_t most;
};
RowCounts ReadPlanes(const PsdFile& psd, std::vector<ChannelPlane>& planes, modules::Page& page);

// The merged picture was laid on white; this takes the white back out of half transparent pixels.
void TakeWhiteOut(modules::Page& page);

// Turns the page's Lab colours, if it has such, into sRGB.
void FinishLab(const PsdFile& psd, modules::Page& page);

// The last step: colours and greys become those of sRGB. Inks were converted as they were read.
void ApplyProfile(const PsdFile& psd, modules::Page& page);

}  // namespace qpsd

#endif  // MODULES_QPSD_CHANNELS_H_
