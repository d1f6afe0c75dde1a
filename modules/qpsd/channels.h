#ifndef MODULES_QPSD_CHANNELS_H_
#define MODULES_QPSD_CHANNELS_H_

#include <cstdint>

#include "modules/common/page_builder.h"
#include "modules/qpsd/psd_file.h"

// How the rows of channels become the pixels of a page.

namespace qpsd {

enum class Channel {
  kNone,   // not shown
  kIndex,  // the pixel itself, of pages with at most 8 bits
  kGrey,
  kRed,
  kGreen,
  kBlue,
  kBlack,  // after the other inks: darkens them
  kAlpha,
};

// What channel `index` of the merged picture, or of a layer, is for. Lab has its three in the places of red, green and
// blue until FinishColours. Inks are stored inverted, as the colours that they leave.
Channel ChannelAt(const PsdFile& psd, std::uint32_t index, std::uint32_t pageBits);

void PutRow(Channel channel, const std::uint8_t* samples, modules::Page& page, std::uint32_t y);

// The last step, for modes whose channels aren't those of a page.
void FinishColours(const PsdFile& psd, modules::Page& page);

// The merged picture was laid on white; this takes the white back out of half transparent pixels.
void TakeWhiteOut(modules::Page& page);

// An alpha that is 0 everywhere was never filled in.
void MakeOpaqueIfEmpty(modules::Page& page);

void SetAlpha(modules::Page& page, std::uint8_t alpha);

}  // namespace qpsd

#endif  // MODULES_QPSD_CHANNELS_H_
