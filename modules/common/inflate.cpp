#include "modules/common/inflate.h"

#include <algorithm>
#include <limits>

namespace modules {
namespace {

constexpr std::uint64_t kMaxRatio = 1032;
constexpr std::size_t kMaxPiece = std::numeric_limits<uInt>::max();

}  // namespace

bool InflatedSizeBelievable(std::uint64_t inflated, std::uint64_t bytes) { return inflated / kMaxRatio <= bytes; }

Inflater::Inflater(std::span<const std::uint8_t> bytes) : left_(bytes) { ended_ = inflateInit(&stream_) != Z_OK; }

Inflater::~Inflater() { inflateEnd(&stream_); }

std::size_t Inflater::Read(std::uint8_t* target, std::size_t count) {
  std::size_t done = 0;
  while (done < count && !ended_) {
    if (stream_.avail_in == 0) {
      const auto piece = left_.first(std::min(left_.size(), kMaxPiece));
      left_ = left_.subspan(piece.size());
      stream_.next_in = const_cast<Bytef*>(piece.data());  // which the library doesn't change
      stream_.avail_in = static_cast<uInt>(piece.size());
    }
    stream_.next_out = target + done;
    stream_.avail_out = static_cast<uInt>(std::min(count - done, kMaxPiece));
    const std::size_t room = stream_.avail_out;
    // A call that neither takes nor gives is an error, so that this comes to an end.
    ended_ = inflate(&stream_, Z_NO_FLUSH) != Z_OK;
    done += room - stream_.avail_out;
  }
  return done;
}

}  // namespace modules
