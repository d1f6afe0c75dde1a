#ifndef MODULES_QPSP_CHANNEL_PICTURE_H_
#define MODULES_QPSP_CHANNEL_PICTURE_H_

#include <cstdint>
#include <span>

#include "modules/qpsp/channel_reader.h"
#include "modules/qpsp/psp_file.h"

namespace qpsp {

// Which bitmaps of a list of channels make a picture.
struct BitmapPair {
  std::uint32_t picture;
  std::uint32_t transparency;
};

struct PicturePlan {
  const PictureKind* kind;
  std::uint32_t width;
  std::uint32_t height;
  BitmapPair bitmaps;
  bool alphaWanted = false;  // even if no channel has it
};

// Appends the picture as a page, with 32 bits if one of its channels is transparency. Others in the list are ignored.
std::uint32_t AddPicture(const PicturePlan& plan, std::span<const ChannelData> channels,
                         glib::ImageDataExchange& exchange);

}  // namespace qpsp

#endif  // MODULES_QPSP_CHANNEL_PICTURE_H_
