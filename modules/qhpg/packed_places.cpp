#include "modules/qhpg/packed_places.h"

#include <algorithm>
#include <cstdint>

namespace qhpg {
namespace {

class Unpacker {
 public:
  explicit Unpacker(std::string_view text) : text_(text) {}

  std::vector<PackedStep> Run() {
    std::vector<PackedStep> steps;
    PackedStep step;
    while (at_ < text_.size()) {
      switch (text_[at_]) {
        case ':': {
          ++at_;
          std::int64_t pen = 0;
          if (!Number(pen)) return steps;
          PackedStep choice;
          choice.kind = PackedStep::Kind::kPen;
          choice.pen = static_cast<int>(std::clamp<std::int64_t>(pen, 0, 255));
          steps.push_back(choice);
          break;
        }
        case '<':
          ++at_;
          step.down = false;
          break;
        case '=':
          ++at_;
          step.absolute = true;
          break;
        case '>': {
          ++at_;
          std::int64_t bits = 0;
          if (!Number(bits)) return steps;
          fraction_ = 1.0 / static_cast<double>(std::int64_t{1} << std::clamp<std::int64_t>(bits, 0, 26));
          break;
        }
        case '7':
          ++at_;
          base_ = 32;
          break;
        default: {
          if (!IsDigit(text_[at_])) {
            ++at_;
            break;
          }
          std::int64_t x = 0;
          std::int64_t y = 0;
          if (!Number(x) || !Number(y)) return steps;
          step.x = static_cast<double>(x) * fraction_;
          step.y = static_cast<double>(y) * fraction_;
          steps.push_back(step);
          step = {};
        }
      }
    }
    return steps;
  }

 private:
  static constexpr std::int64_t kLargest = std::int64_t{1} << 40;

  // In base 32 digits lie within seven bits.
  std::uint32_t Value(char c) const {
    const auto byte = static_cast<unsigned char>(c);
    return base_ == 32 ? byte & 127U : byte;
  }
  bool IsDigit(char c) const { return Value(c) >= 63 && Value(c) != 127 && Value(c) != 255; }

  bool Number(std::int64_t& number) {
    std::int64_t value = 0;
    std::int64_t place = 1;
    const std::uint32_t last = base_ == 64 ? 191 : 95;  // from here on a digit is a number's last one
    for (; at_ < text_.size(); ++at_) {
      if (!IsDigit(text_[at_])) continue;
      const std::uint32_t c = Value(text_[at_]);
      const std::uint32_t digit = c >= last ? c - last : c - 63;
      value = std::min(value + place * std::min(digit, base_ - 1), kLargest);
      place = std::min(place * base_, kLargest / 64);
      if (c < last) continue;
      ++at_;
      number = (value & 1) != 0 ? -(value >> 1) : value >> 1;
      return true;
    }
    return false;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::uint32_t base_ = 64;
  double fraction_ = 1;
};

}  // namespace

std::vector<PackedStep> UnpackPlaces(std::string_view text) { return Unpacker(text).Run(); }

}  // namespace qhpg
