#ifndef TESTS_MODULES_QSWF_SWF_WRITER_H_
#define TESTS_MODULES_QSWF_SWF_WRITER_H_

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "tests/support/byte_writer.h"

namespace tests {

// Bytes with fields of bits between, highest bit first.
class BitWriter {
 public:
  BitWriter& Bits(std::uint32_t count, std::int64_t value) {
    while (count-- != 0) {
      if (left_ == 0) {
        out_.Byte(0);
        left_ = 8;
      }
      --left_;
      if ((value >> count & 1) != 0) out_.bytes.back() = static_cast<std::uint8_t>(out_.bytes.back() | 1U << left_);
    }
    return *this;
  }
  BitWriter& Byte(std::uint32_t value) {
    Whole().Byte(value);
    return *this;
  }
  BitWriter& Word(std::uint32_t value) {
    Whole().Word(value);
    return *this;
  }
  BitWriter& Bytes(std::span<const std::uint8_t> more) {
    Whole().Bytes(more);
    return *this;
  }
  BitWriter& Color(std::initializer_list<std::uint32_t> values) {
    for (const std::uint32_t value : values) Byte(value);
    return *this;
  }
  BitWriter& Rect(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
    Whole();
    Bits(5, 20).Bits(20, left).Bits(20, right).Bits(20, top).Bits(20, bottom);
    left_ = 0;
    return *this;
  }
  // Factors in 65536ths, places in twips.
  BitWriter& Matrix(std::int32_t scaleX, std::int32_t scaleY, std::int32_t x, std::int32_t y) {
    Whole();
    Bits(1, 1).Bits(5, 31).Bits(31, scaleX).Bits(31, scaleY).Bits(1, 0).Bits(5, 20).Bits(20, x).Bits(20, y);
    left_ = 0;
    return *this;
  }
  // A closed polygon with `fill` on its right or left and a line, each 0 for none; other styles follow if `more`.
  BitWriter& Polygon(std::initializer_list<std::initializer_list<std::int32_t>> points, std::uint32_t left,
                     std::uint32_t right, std::uint32_t line) {
    std::vector<std::vector<std::int32_t>> list(points.begin(), points.end());
    Bits(6, 0b001111).Bits(5, 20).Bits(20, list[0][0]).Bits(20, list[0][1]);
    Bits(2, left).Bits(2, right).Bits(2, line);
    for (std::size_t i = 0; i < list.size(); ++i) {
      const auto& from = list[i];
      const auto& to = list[(i + 1) % list.size()];
      Bits(2, 3).Bits(4, 15).Bits(1, 1).Bits(17, to[0] - from[0]).Bits(17, to[1] - from[1]);
    }
    return *this;
  }
  BitWriter& StyleBits() { return Byte(0x22); }  // two bits a fill, two a line
  BitWriter& EndShape() { return Bits(6, 0); }

  const std::vector<std::uint8_t>& Result() const { return out_.bytes; }

 private:
  ByteWriter& Whole() {
    left_ = 0;
    return out_;
  }

  ByteWriter out_;
  std::uint32_t left_ = 0;
};

// A movie of ten frames a second.
class SwfWriter {
 public:
  SwfWriter(std::int32_t width, std::int32_t height) {
    BitWriter head;
    head.Rect(0, 0, width * 20, height * 20).Word(10 << 8).Word(1);
    body_.Bytes(head.Result());
  }
  SwfWriter& Tag(std::uint32_t code, std::span<const std::uint8_t> data) {
    if (data.size() < 63) {
      body_.Word(code << 6 | static_cast<std::uint32_t>(data.size()));
    } else {
      body_.Word(code << 6 | 63).Long(static_cast<std::uint32_t>(data.size()));
    }
    body_.Bytes(data);
    return *this;
  }
  SwfWriter& Tag(std::uint32_t code, const BitWriter& data) { return Tag(code, data.Result()); }
  SwfWriter& Show() { return Tag(1, std::span<const std::uint8_t>()); }
  SwfWriter& Place(std::uint32_t character, std::uint32_t depth, std::int32_t x = 0, std::int32_t y = 0,
                   std::uint32_t clipDepth = 0) {
    BitWriter data;
    data.Byte(clipDepth != 0 ? 0x46 : 0x06).Word(depth).Word(character).Matrix(65536, 65536, x * 20, y * 20);
    if (clipDepth != 0) data.Word(clipDepth);
    return Tag(26, data);
  }
  // A box of one colour, in pixels.
  SwfWriter& Box(std::uint32_t number, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
                 std::initializer_list<std::uint32_t> color) {
    BitWriter data;
    data.Word(number).Rect(left * 20, top * 20, right * 20, bottom * 20);
    data.Byte(1).Byte(0).Color(color).Byte(0).StyleBits();
    data.Polygon({{left * 20, top * 20}, {right * 20, top * 20}, {right * 20, bottom * 20}, {left * 20, bottom * 20}},
                 0, 1, 0);
    data.EndShape();
    return Tag(color.size() == 4 ? 32 : 2, data);
  }
  std::vector<std::uint8_t> File() const {
    ByteWriter out;
    out.Text("FWS").Byte(8).Long(static_cast<std::uint32_t>(8 + body_.bytes.size() + 2)).Bytes(body_.bytes);
    return out.Word(0).bytes;
  }

 private:
  ByteWriter body_;
};

}  // namespace tests

#endif  // TESTS_MODULES_QSWF_SWF_WRITER_H_
