#ifndef MODULES_COMMON_INFLATE_H_
#define MODULES_COMMON_INFLATE_H_

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace modules {

// Whether so many bytes of Deflate can become `inflated` ones: no code of the format says more than 258 bytes in two
// bits.
bool InflatedSizeBelievable(std::uint64_t inflated, std::uint64_t bytes);

// Inflates a zlib stream piece by piece, into memory of the caller's: however much the stream says, nobody takes more
// than there is room for.
class Inflater {
 public:
  explicit Inflater(std::span<const std::uint8_t> bytes);
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater();

  // The next `count` bytes, or fewer if the stream ends or is damaged.
  std::size_t Read(std::uint8_t* target, std::size_t count);

 private:
  z_stream stream_{};
  std::span<const std::uint8_t> left_;
  bool ended_ = false;
};

}  // namespace modules

#endif  // MODULES_COMMON_INFLATE_H_
