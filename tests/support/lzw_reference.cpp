#include "tests/support/lzw_reference.h"

#include <map>
#include <string>

namespace support {
namespace {

constexpr unsigned kTableEnd = 4096;

struct Bits {
  std::vector<std::uint8_t> bytes;
  std::size_t count = 0;

  void Put(unsigned code, unsigned width) {
    for (unsigned i = 0; i < width; ++i, ++count) {
      if (count % 8 == 0) bytes.push_back(0);
      bytes.back() = static_cast<std::uint8_t>(bytes.back() | (code >> i & 1U) << (count % 8));
    }
  }
  bool Get(unsigned width, unsigned& code) {
    if (count + width > bytes.size() * 8) return false;
    code = 0;
    for (unsigned i = 0; i < width; ++i, ++count) code |= (bytes[count / 8] >> (count % 8) & 1U) << i;
    return true;
  }
};

}  // namespace

std::vector<std::uint8_t> EncodeLzwPlainly(const std::vector<std::uint8_t>& pixels, unsigned codeSize) {
  const unsigned clear = 1U << codeSize;
  Bits bits;
  std::map<std::string, unsigned> table;
  unsigned next = 0;
  unsigned width = codeSize + 1;
  const auto start = [&] {
    bits.Put(clear, width);
    table.clear();
    for (unsigned i = 0; i < clear; ++i) table[std::string(1, static_cast<char>(i))] = i;
    next = clear + 2;
    width = codeSize + 1;
  };
  start();
  std::string string;
  for (const std::uint8_t pixel : pixels) {
    const std::string longer = string + static_cast<char>(pixel);
    if (table.count(longer) != 0) {
      string = longer;
      continue;
    }
    bits.Put(table[string], width);
    if (next < kTableEnd) {
      table[longer] = next;
      if (next == 1U << width) ++width;
      ++next;
    } else {
      start();
    }
    string = static_cast<char>(pixel);
  }
  if (!string.empty()) bits.Put(table[string], width);
  if (next == 1U << width && next < kTableEnd) ++width;
  bits.Put(clear + 1, width);
  return bits.bytes;
}

std::vector<std::uint8_t> DecodeLzwPlainly(const std::vector<std::uint8_t>& codes, unsigned codeSize,
                                           std::size_t pixelCount) {
  const unsigned clear = 1U << codeSize;
  Bits bits{codes};
  std::vector<std::string> table;
  std::string before;
  unsigned width = 0;
  const auto start = [&] {
    table.clear();
    for (unsigned i = 0; i < clear + 2; ++i) table.emplace_back(1, static_cast<char>(i));
    before.clear();
    width = codeSize + 1;
  };
  start();
  std::string pixels;
  for (unsigned code = 0; pixels.size() < pixelCount && bits.Get(width, code);) {
    if (code == clear) {
      start();
      continue;
    }
    if (code == clear + 1) break;
    const bool known = code < table.size();
    if (!known && (before.empty() || code != table.size())) break;
    const std::string string = known ? table[code] : before + before[0];
    pixels += string;
    if (!before.empty() && table.size() < kTableEnd) table.push_back(before + string[0]);
    if (table.size() == 1U << width && width < 12) ++width;
    before = string;
  }
  if (pixels.size() > pixelCount) pixels.resize(pixelCount);
  return {pixels.begin(), pixels.end()};
}

std::vector<std::uint8_t> JoinBlocks(const std::vector<std::uint8_t>& file, std::size_t position) {
  std::vector<std::uint8_t> joined;
  while (position < file.size() && file[position] != 0) {
    const std::size_t end = position + 1 + file[position];
    for (std::size_t i = position + 1; i < end && i < file.size(); ++i) joined.push_back(file[i]);
    position = end;
  }
  return joined;
}

}  // namespace support
