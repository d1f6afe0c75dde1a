#ifndef MODULES_QSWF_VIDEO_H_
#define MODULES_QSWF_VIDEO_H_

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "modules/common/video_decoder.h"
#include "modules/vector/picture.h"
#include "platform/child_process.h"

namespace qswf {

// What all films of a movie may cost together.
struct VideoBudget {
  std::uint32_t starts = 16;  // to show frames before the one that is shown, all is decoded anew
  std::uint64_t pixels = std::uint64_t{1} << 28;
};

// A film within the movie. Its frames stand in tags of their own, and are decoded in a process of their own, in their
// order as far as they are asked for.
class Video {
 public:
  // `data` is the defining tag behind its identifier.
  Video(std::span<const std::uint8_t> data, VideoBudget& budget);

  // Of the film on the stage, in pixels.
  std::uint32_t Width() const { return width_; }
  std::uint32_t Height() const { return height_; }

  // A tag of a frame behind its identifier. What comes after the first Show doesn't count.
  void AddFrame(std::span<const std::uint8_t> data);
  // The latest picture at frame `number`; null if there is none yet, or none that can be decoded.
  const modules::Picture* Show(std::uint32_t number);

 private:
  void Start();
  bool Advance();

  VideoBudget& budget_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::uint32_t codec_ = 0;
  std::map<std::uint16_t, modules::VideoPacket> frames_;
  std::vector<modules::VideoPacket> packets_;
  std::map<std::uint16_t, modules::VideoPacket>::const_iterator next_ = frames_.cend();
  std::optional<platform::ChildProcess> decoder_;
  std::uint32_t shown_ = 0;  // number of the frame that was read last
  bool any_ = false;
  modules::Picture picture_;
};

}  // namespace qswf

#endif  // MODULES_QSWF_VIDEO_H_
