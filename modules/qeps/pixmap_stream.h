#ifndef MODULES_QEPS_PIXMAP_STREAM_H_
#define MODULES_QEPS_PIXMAP_STREAM_H_

#include <cstdint>
#include <memory>

#include "modules/common/page_builder.h"
#include "platform/child_process.h"

namespace qeps {

// Portable pixmaps that a child writes one after the other.
class PixmapStream {
 public:
  explicit PixmapStream(platform::ChildProcess& child) : child_(child) {}

  // The next pixmap as a page of 24 bits, each pixel the mean of `samples` x `samples` of the stream. False at the end
  // of the stream, or with a message in the exchange for a pixmap that can't become a page.
  bool AppendPage(std::uint32_t samples, glib::ImageDataExchange& exchange);

 private:
  bool Fill();
  int Next();  // -1 at the end
  bool Take(std::uint8_t* target, std::size_t count);
  bool ReadNumber(std::uint32_t& number);
  bool ReadHeader(std::uint32_t& width, std::uint32_t& height);

  static constexpr std::size_t kBuffer = std::size_t{1} << 16;

  platform::ChildProcess& child_;
  std::unique_ptr<std::uint8_t[]> buffer_{new std::uint8_t[kBuffer]};
  std::size_t at_ = 0;
  std::size_t end_ = 0;
};

}  // namespace qeps

#endif  // MODULES_QEPS_PIXMAP_STREAM_H_
