#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "modules/common/dib.h"
#include "modules/common/dib_runs.h"

namespace modules {
namespace {

constexpr std::uint32_t kUsualMasks[3] = {0xFF0000, 0x00FF00, 0x0000FF};

// 32-bit pixels without their fourth byte. Each store but the last writes one byte too many, which the next one mends.
void DropFourthBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count) {
  for (std::size_t x = 0; x + 1 < count; ++x) std::memcpy(target + 3 * x, source + 4 * x, 4);
  std::memcpy(target + 3 * (count - 1), source + 4 * (count - 1), 3);
}

// Indices of two bits to indices of four.
void WidenPairs(const std::uint8_t* source, std::uint8_t* target, std::size_t count) {
  for (std::size_t x = 0; x < count; x += 2) {
    const unsigned four = source[x / 4];
    const unsigned pair = x % 4 == 0 ? four >> 4 : four & 15U;
    const unsigned second = x + 1 < count ? pair & 3U : 0;
    target[x / 2] = static_cast<std::uint8_t>((pair >> 2) << 4 | second);
  }
}

// Where a colour lies in a pixel, and what its values mean in eight bits.
class Channel {
 public:
  explicit Channel(std::uint32_t mask) : mask_(mask) {
    if (mask == 0) return;
    shift_ = static_cast<std::uint32_t>(std::countr_zero(mask));
    max_ = mask >> shift_;
    for (std::uint32_t value = 0; value < levels_.size() && value <= max_; ++value) levels_[value] = Scale(value);
  }

  std::uint32_t Of(std::uint32_t pixel) const {
    const std::uint32_t value = (pixel & mask_) >> shift_;
    return max_ < levels_.size() ? levels_[value] : Scale(value);
  }

 private:
  std::uint8_t Scale(std::uint32_t value) const {
    return static_cast<std::uint8_t>((std::uint64_t{value} * 255 + max_ / 2) / max_);
  }

  std::uint32_t mask_;
  std::uint32_t shift_ = 0;
  std::uint32_t max_ = 0;
  std::array<std::uint8_t, 256> levels_{};
};

template <std::size_t kBytes>
std::uint32_t PixelOf(const std::uint8_t* at) {
  std::uint32_t pixel = at[0] | static_cast<std::uint32_t>(at[1]) << 8;
  if constexpr (kBytes > 2) pixel |= static_cast<std::uint32_t>(at[2]) << 16;
  if constexpr (kBytes > 3) pixel |= static_cast<std::uint32_t>(at[3]) << 24;
  return pixel;
}

// Rows with masks, to 24 bits, or to 32 if there is a mask for alpha.
class FieldRows {
 public:
  explicit FieldRows(const DibHeader& header)
      : bytes_(header.bits / 8),
        alphaWanted_(header.mask[3] != 0),
        red_(header.mask[0]),
        green_(header.mask[1]),
        blue_(header.mask[2]),
        alpha_(header.mask[3]) {}

  void Convert(const std::uint8_t* source, std::uint8_t* target, std::size_t count) const {
    if (bytes_ == 2) return ConvertAs<2>(source, target, count);
    if (bytes_ == 3) return ConvertAs<3>(source, target, count);
    ConvertAs<4>(source, target, count);
  }

 private:
  template <std::size_t kBytes>
  void ConvertAs(const std::uint8_t* source, std::uint8_t* target, std::size_t count) const {
    const std::size_t step = alphaWanted_ ? 4 : 3;
    for (std::size_t x = 0; x < count; ++x, target += step) {
      const std::uint32_t pixel = PixelOf<kBytes>(source + kBytes * x);
      target[0] = static_cast<std::uint8_t>(blue_.Of(pixel));
      target[1] = static_cast<std::uint8_t>(green_.Of(pixel));
      target[2] = static_cast<std::uint8_t>(red_.Of(pixel));
      if (alphaWanted_) target[3] = static_cast<std::uint8_t>(alpha_.Of(pixel));
    }
  }

  std::size_t bytes_;
  bool alphaWanted_;
  Channel red_;
  Channel green_;
  Channel blue_;
  Channel alpha_;
};

// Whether masks say what the pixels of a page are anyway.
bool HasPageLayout(const DibHeader& header) {
  return header.bits == 32 && std::equal(std::begin(kUsualMasks), std::end(kUsualMasks), header.mask) &&
         (header.mask[3] == 0 || header.mask[3] == 0xFF000000U);
}

std::uint32_t ReadPlainRows(std::span<const std::uint8_t> data, const DibHeader& header, const DibPlan& plan,
                            Page& page) {
  // The padding of the last row is often left out.
  const std::size_t rowBytes = glib::PackedStride(header.width, header.bits);
  const std::size_t padding = plan.stride - rowBytes;
  const auto rows =
      static_cast<std::uint32_t>(std::min<std::size_t>((data.size() + padding) / plan.stride, header.height));
  const auto target = [&](std::uint32_t y) { return Row(page, header.topDown ? y : header.height - 1 - y); };

  const FieldRows fields(header);
  const bool masked = header.encoding == DibEncoding::kFields && !HasPageLayout(header);
  for (std::uint32_t y = 0; y < rows; ++y) {
    const std::uint8_t* source = data.data() + y * plan.stride;
    if (masked) {
      fields.Convert(source, target(y), header.width);
    } else if (header.bits == 2) {
      WidenPairs(source, target(y), header.width);
    } else if (header.bits == 32 && page.bits == 24) {
      DropFourthBytes(source, target(y), header.width);
    } else {
      std::memcpy(target(y), source, rowBytes);
    }
  }
  if (page.bits == 32) MakeOpaqueIfEmpty(page, header.topDown ? 0 : header.height - rows, rows);
  return rows;
}

}  // namespace

std::uint32_t ReadDibRows(std::span<const std::uint8_t> dib, const DibHeader& header, const DibPlan& plan, Page& page) {
  const auto data = dib.subspan(plan.dataOffset);
  if (plan.stride != 0) return ReadPlainRows(data, header, plan, page);
  return ReadDibRuns(data, header, page);
}

}  // namespace modules
