#ifndef MODULES_QGIF_CODE_STREAM_H_
#define MODULES_QGIF_CODE_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "modules/qgif/block_output.h"
#include "modules/qgif/lzw_dictionary.h"

namespace qgif {

// When a full table is cleared: kAtOnce serves pictures that are short against its filling, or that change their
// character; kWhenBehind pays in long ones.
enum class ClearTable { kAtOnce, kWhenBehind };

// The codes of one frame on their way into blocks: their width, which grows with the table, and the decision when a
// full table is worth clearing.
class CodeStream {
 public:
  // `buffer` belongs to the caller only so that the next frame can use it again.
  CodeStream(std::uint32_t codeSize, std::uint64_t pixels, ClearTable clear, std::vector<std::uint8_t>& buffer,
             BlockOutput& output)
      : buffer_(buffer),
        output_(output),
        codeSize_(codeSize),
        left_(pixels),
        clearsWhenFull_(clear == ClearTable::kAtOnce) {
    if (buffer_.size() < kPiece + kSlack) buffer_.resize(kPiece + kSlack);
    next_ = buffer_.data();
    output_.Byte(codeSize);
    StartTable();
    Append(1U << codeSize_);
  }

  // Writes the code of a string of `length` pixels. True: the table is to be cleared, and the stream says so already.
  // Otherwise, unless the table is full, an entry is due.
  bool Put(std::uint32_t code, std::uint32_t length) {
    Append(code);
    bits_ += width_;
    pixels_ += length;
    left_ -= length;
    recent_ += ((std::int64_t{length} << kFraction) - recent_) >> kWindow;
    if (!Full()) return false;
    wasFull_ = true;
    if (!clearsWhenFull_ && (left_ < pixels_ / kWorthATable || !FellBehind())) return false;
    Append(1U << codeSize_);
    StartTable();
    return true;
  }

  // Whether a table was ever full, so that the choice of ClearTable made a difference.
  bool WasFull() const { return wasFull_; }

  bool Full() const { return entries_ == kMaxEntries; }

  // What NewEntry will give.
  std::uint32_t NextEntry() const { return entries_; }

  // The code of the entry that is due.
  std::uint32_t NewEntry() {
    const std::uint32_t entry = entries_++;
    width_ += entry >> width_;  // 1 for the first entry that needs one bit more
    return entry;
  }

  // Writes the last string, the end code and the end of blocks.
  void End(std::uint32_t code) {
    Append(code);
    // A decoder counts an entry for this string too, and that may widen the codes.
    if (!Full()) NewEntry();
    Append((1U << codeSize_) + 1);
    std::size_t size = static_cast<std::size_t>(next_ - buffer_.data());
    if (heldBits_ != 0) buffer_[size++] = static_cast<std::uint8_t>(held_);
    output_.DataBlocks({buffer_.data(), size});
    output_.Byte(0);
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{255} * 256;
  static constexpr std::size_t kSlack = 16;
  // The mean length of recent strings, moving over some 128 of them, with 16 bits behind the point.
  static constexpr int kWindow = 7;
  // A new table isn't filled for the sake of less than this part of what the one before took.
  static constexpr std::uint64_t kWorthATable = 4;
  static constexpr int kFraction = 16;
  static constexpr std::uint64_t kMaxWidth = 12;

  void StartTable() {
    width_ = codeSize_ + 1;
    entries_ = (1U << codeSize_) + 2;
    bits_ = 0;
    pixels_ = 0;
    recent_ = 0;
  }

  // Whether recent codes cost more bits a pixel than all since the table was begun, its filling with short codes
  // included: then a new one is the better bargain. (Against the mean length of strings, with 5 % in hand for the full
  // table, 32 colours came out 5 % larger than with a clear at once.) A string has at most 4096 pixels and a frame less
  // than 2^32, so that nothing overflows: 2^28 * 2^32 and 2^4 * 2^48.
  bool FellBehind() const { return static_cast<std::uint64_t>(recent_) * bits_ < kMaxWidth * (pixels_ << kFraction); }

  void Append(std::uint32_t code) {
    held_ |= std::uint64_t{code} << heldBits_;
    heldBits_ += width_;
    // Eight bytes are stored, whole ones of them count: cheaper than asking whether there are any.
    std::memcpy(next_, &held_, sizeof(held_));
    next_ += heldBits_ / 8;
    held_ >>= heldBits_ & ~7U;
    heldBits_ &= 7U;
    if (next_ >= buffer_.data() + kPiece) Flush();
  }

  void Flush() {
    output_.DataBlocks({buffer_.data(), kPiece});
    const auto left = static_cast<std::size_t>(next_ - buffer_.data()) - kPiece;
    std::memcpy(buffer_.data(), buffer_.data() + kPiece, left);
    next_ = buffer_.data() + left;
  }

  std::vector<std::uint8_t>& buffer_;
  BlockOutput& output_;
  std::uint8_t* next_ = nullptr;
  std::uint64_t held_ = 0;
  std::uint32_t heldBits_ = 0;
  std::uint32_t codeSize_;
  std::uint64_t left_;  // pixels to come
  std::uint32_t width_ = 0;
  std::uint32_t entries_ = 0;  // codes taken, pixels and the two control codes included
  bool clearsWhenFull_;
  bool wasFull_ = false;
  std::uint64_t bits_ = 0;  // since the table was begun
  std::uint64_t pixels_ = 0;
  std::int64_t recent_ = 0;
};

}  // namespace qgif

#endif  // MODULES_QGIF_CODE_STREAM_H_
