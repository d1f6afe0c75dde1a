#ifndef MODULES_QANI_ANI_H_
#define MODULES_QANI_ANI_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"

// Animated cursors: icons in a RIFF file, with the order and the times in which they are shown.

namespace qani {

struct Animation {
  std::uint32_t declaredFrames = 0;
  bool framesAreIcons = true;  // else bitmaps without a mask
  std::vector<std::span<const std::uint8_t>> frames;
  struct Step {
    std::uint32_t frame;  // may be past the frames that are there
    std::uint32_t delay;  // hundredths of a second
  };
  std::vector<Step> steps;
  // Whether bytes behind those that were read can't change the steps.
  bool settled = false;
};

// The spans lie in `file`, which may be cut off anywhere behind the header.
modules::Verdict ReadAnimation(std::span<const std::uint8_t> file, Animation& animation);

// Every step becomes a page, with the first picture of its icon.
std::uint32_t LoadAnimation(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qani

#endif  // MODULES_QANI_ANI_H_
