#ifndef MODULES_COMMON_VIDEO_DECODER_H_
#define MODULES_COMMON_VIDEO_DECODER_H_

#include <cstddef>
#include <cstdint>
#include <span>

// The helper around the video library. Its entry is called in a child process only, and answers through a descriptor.

namespace modules {

enum class VideoCodec : std::uint32_t { kSorenson, kScreen, kVp6, kVp6Alpha, kScreen2 };

// Before the rows of each frame: `height` rows of `width` pixels of 4 bytes, blue first and straight alpha last. A
// frame that can't be decoded, or that repeats the one before it, has no size and no rows.
struct VideoFrameHead {
  std::uint32_t width;
  std::uint32_t height;
};

// A frame as the file holds it.
using VideoPacket = std::span<const std::uint8_t>;

}  // namespace modules

extern "C" {
// Writes a VideoFrameHead with its rows for each packet, in their order.
void DecodeVideo(modules::VideoCodec codec, const modules::VideoPacket* packets, std::size_t count, int output);
}

#endif  // MODULES_COMMON_VIDEO_DECODER_H_
