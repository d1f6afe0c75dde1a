#ifndef MODULES_QTGA_TGA_ROWS_H_
#define MODULES_QTGA_TGA_ROWS_H_

#include <algorithm>
#include <cstring>

#include "modules/common/byte_reader.h"
#include "modules/qtga/tga.h"

namespace qtga {

// Gives the pixels of a file row by row. Packets may go on in the next row.
class TgaRows {
 public:
  TgaRows(std::span<const std::uint8_t> data, bool packed, std::size_t pixelBytes)
      : in_(data), packed_(packed), pixelBytes_(pixelBytes) {}

  // `row` takes whole pixels. False if the data end before the row does.
  bool Read(std::span<std::uint8_t> row) {
    if (!packed_) return in_.Read(row.data(), row.size()) == row.size();
    for (std::size_t filled = 0; filled < row.size();) {
      if (left_ == 0 && !NextPacket()) return false;
      const std::size_t bytes = std::min(left_ * pixelBytes_, row.size() - filled);
      if (repeats_) {
        for (std::size_t i = 0; i < bytes; i += pixelBytes_) std::memcpy(row.data() + filled + i, pixel_, pixelBytes_);
      } else if (in_.Read(row.data() + filled, bytes) != bytes) {
        return false;
      }
      filled += bytes;
      left_ -= bytes / pixelBytes_;
    }
    return true;
  }

 private:
  bool NextPacket() {
    const std::uint8_t code = in_.Byte();
    left_ = (code & 0x7FU) + std::size_t{1};
    repeats_ = (code & 0x80U) != 0;
    if (repeats_) in_.Read(pixel_, pixelBytes_);
    return !in_.Failed();
  }

  modules::ByteReader in_;
  bool packed_;
  bool repeats_ = false;
  std::size_t pixelBytes_;
  std::size_t left_ = 0;
  std::uint8_t pixel_[4] = {};
};

}  // namespace qtga

#endif  // MODULES_QTGA_TGA_ROWS_H_
