#include "modules/qwmf/bitmap16.h"

#include <algorithm>

namespace qwmf {

std::vector<std::uint8_t> DibOfBitmap16(modules::ByteReader& in, Bitmap16Kind kind) {
  constexpr std::size_t kReservedBytes = 18;
  constexpr std::size_t kPointerBytes = 4;
  in.Word();
  const std::int32_t width = in.SignedWord();
  const std::int32_t height = in.SignedWord();
  const std::int32_t rowBytes = in.SignedWord();
  const std::uint8_t planes = in.Byte();
  const std::uint8_t bits = in.Byte();
  if (kind == Bitmap16Kind::kPattern) in.Skip(kPointerBytes + kReservedBytes);
  if (in.Failed() || width <= 0 || height <= 0 || planes != 1 || bits != 1 || rowBytes < (width + 7) / 8) return {};

  std::vector<std::uint8_t> dib;
  const auto put = [&](std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) dib.push_back(static_cast<std::uint8_t>(value >> shift));
  };
  put(40);
  put(static_cast<std::uint32_t>(width));
  put(0U - static_cast<std::uint32_t>(height));
  put(1U | 1U << 16);
  for (int i = 0; i < 4; ++i) put(0);
  put(2);
  put(0);
  put(0);
  put(0xFFFFFF);
  const auto used = static_cast<std::size_t>((width + 7) / 8);
  const auto stride = (used + 3) / 4 * 4;
  for (std::int32_t y = 0; y < height && in.Left() != 0; ++y) {
    const auto row = in.Take(std::min(static_cast<std::size_t>(rowBytes), in.Left()));
    const auto part = row.first(std::min(used, row.size()));
    dib.insert(dib.end(), part.begin(), part.end());
    dib.resize(dib.size() + stride - part.size());
  }
  return dib;
}

std::uint32_t DibBits(std::span<const std::uint8_t> dib) {
  modules::ByteReader in(dib);
  const std::size_t at = in.Long() < 40 ? 10 : 14;
  return in.Seek(at) ? in.Word() : 0U;
}

std::int64_t DibHeight(std::span<const std::uint8_t> dib) {
  modules::ByteReader in(dib);
  const bool core = in.Long() < 40;
  in.Skip(std::min<std::size_t>(core ? 2 : 4, in.Left()));
  return core ? in.SignedWord() : in.SignedLong();
}

}  // namespace qwmf
