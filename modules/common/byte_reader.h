#ifndef MODULES_COMMON_BYTE_READER_H_
#define MODULES_COMMON_BYTE_READER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace modules {

// A cursor over the bytes of a file. It can't pass the end: what isn't there reads as zeros, and `Failed` remembers it.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::size_t Size() const { return bytes_.size(); }
  std::size_t Position() const { return position_; }
  std::size_t Left() const { return bytes_.size() - position_; }
  bool AtEnd() const { return position_ == bytes_.size(); }
  bool Failed() const { return failed_; }

  // False, with the cursor at the end, for a position past the end.
  bool Seek(std::size_t position) {
    if (position > bytes_.size()) {
      position_ = bytes_.size();
      failed_ = true;
      return false;
    }
    position_ = position;
    return true;
  }
  bool Skip(std::size_t count) {
    if (count > Left()) return Seek(bytes_.size() + 1);
    position_ += count;
    return true;
  }

  std::uint8_t Byte() { return Has(1) ? bytes_[position_++] : std::uint8_t{0}; }
  std::uint16_t Word() {  // little-endian, as all names without "Big"
    const std::uint32_t low = Byte();
    return static_cast<std::uint16_t>(low | static_cast<std::uint32_t>(Byte()) << 8);
  }
  std::uint16_t BigWord() {
    const std::uint32_t high = Byte();
    return static_cast<std::uint16_t>(high << 8 | Byte());
  }
  std::uint32_t Long() {
    const std::uint32_t low = Word();
    return low | static_cast<std::uint32_t>(Word()) << 16;
  }
  std::uint32_t BigLong() {
    const std::uint32_t high = BigWord();
    return high << 16 | BigWord();
  }
  std::int32_t SignedLong() { return static_cast<std::int32_t>(Long()); }
  std::int16_t SignedWord() { return static_cast<std::int16_t>(Word()); }
  std::int16_t SignedBigWord() { return static_cast<std::int16_t>(BigWord()); }

  // The next `count` bytes, or as many as there are.
  std::span<const std::uint8_t> Take(std::size_t count) {
    if (count > Left()) {
      failed_ = true;
      count = Left();
    }
    const auto taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
  }

  // Copies `count` bytes; what isn't there stays as it is in `target`. Gives the bytes copied.
  std::size_t Read(void* target, std::size_t count) {
    const auto taken = Take(count);
    if (!taken.empty()) std::memcpy(target, taken.data(), taken.size());
    return taken.size();
  }

 private:
  bool Has(std::size_t count) {
    if (count <= Left()) return true;
    failed_ = true;
    position_ = bytes_.size();
    return false;
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

}  // namespace modules

#endif  // MODULES_COMMON_BYTE_READER_H_
