#ifndef MODULES_QPSP_COMPOSITE_H_
#define MODULES_QPSP_COMPOSITE_H_

#include <cstdint>
#include <span>

#include "modules/qpsp/channel_picture.h"
#include "modules/qpsp/psp_file.h"

namespace qpsp {

// The picture that a file keeps of all its layers together.
struct Composite {
  PictureKind kind;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const std::uint8_t> channels;  // the blocks, or
  std::span<const std::uint8_t> jpeg;      // a file of that format
  bool found = false;
};

// The one in full size.
Composite FindComposite(const PspFile& psp);

std::uint32_t LoadComposite(const PspFile& psp, const Composite& composite, glib::ImageDataExchange& exchange);

}  // namespace qpsp

#endif  // MODULES_QPSP_COMPOSITE_H_
