#include "tests/support/dib_writer.h"

#include <algorithm>
#include <cstdlib>

#include "tests/support/byte_writer.h"

namespace tests {
namespace {

// Up to the data.
std::vector<std::uint8_t> Head(const DibSpec& spec) {
  ByteWriter out;
  out.Long(spec.headerSize);
  if (spec.headerSize == 12) {
    out.Word(static_cast<std::uint32_t>(spec.width)).Word(static_cast<std::uint32_t>(spec.height));
  } else {
    out.Long(static_cast<std::uint32_t>(spec.width)).Long(static_cast<std::uint32_t>(spec.height));
  }
  out.Word(1).Word(spec.bits);
  out.Long(spec.compression).Long(static_cast<std::uint32_t>(spec.data.size()));
  out.Long(spec.perMetreX).Long(spec.perMetreY).Long(spec.declaredColours).Long(0);
  out.bytes.erase(out.bytes.begin() + std::min<std::ptrdiff_t>(spec.headerSize, 40), out.bytes.end());
  for (const std::uint32_t mask : spec.masks) out.Long(mask);
  while (out.bytes.size() < spec.headerSize) out.Byte(0);
  for (const std::uint32_t entry : spec.palette) {
    out.Byte(entry).Byte(entry >> 8).Byte(entry >> 16);
    if (spec.headerSize != 12) out.Byte(0);
  }
  return out.bytes;
}

}  // namespace

std::vector<std::uint8_t> MakeDib(const DibSpec& spec) {
  ByteWriter out;
  return out.Bytes(Head(spec)).Bytes(spec.data).bytes;
}

std::vector<std::uint8_t> MakeBmp(const DibSpec& spec) {
  const auto head = Head(spec);
  const auto offset = static_cast<std::uint32_t>(14 + head.size());
  ByteWriter out;
  out.Text("BM").Long(offset + static_cast<std::uint32_t>(spec.data.size())).Long(0).Long(offset);
  return out.Bytes(head).Bytes(spec.data).bytes;
}

std::vector<std::uint8_t> DibRows(std::int32_t width, std::int32_t height, std::uint32_t bits,
                                  const std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>& value) {
  ByteWriter out;
  const auto rows = static_cast<std::uint32_t>(std::abs(height));
  for (std::uint32_t i = 0; i < rows; ++i) {
    const std::uint32_t y = height < 0 ? i : rows - 1 - i;
    std::uint32_t pending = 0;  // bits of pixels that don't fill a byte yet
    std::uint32_t pendingBits = 0;
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(width); ++x) {
      const std::uint32_t pixel = value(x, y);
      for (std::uint32_t shift = 0; bits >= 8 && shift < bits; shift += 8) out.Byte(pixel >> shift);
      if (bits >= 8) continue;
      pending = pending << bits | pixel;
      pendingBits += bits;
      if (pendingBits == 8) out.Byte(pending);
      if (pendingBits == 8) pending = pendingBits = 0;
    }
    if (pendingBits != 0) out.Byte(pending << (8 - pendingBits));
    while (out.bytes.size() % 4 != 0) out.Byte(0);
  }
  return out.bytes;
}

}  // namespace tests
