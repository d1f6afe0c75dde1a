#include "modules/qpsp/channel_reader.h"

#include <algorithm>
#include <cstring>

#include "modules/common/limits.h"

namespace qpsp {
namespace {

constexpr std::size_t kMaxChannels = 256;

// Pixels below 8 bits lie in rows of whole 4 bytes; others are packed, but uncompressed rows are found padded as well,
// which their number of bytes shows.
std::size_t StrideOf(std::size_t bytes, Compression compression, std::size_t width, std::size_t height,
                     std::size_t depth) {
  const std::size_t padded = glib::PaddedStride(width, depth);
  if (depth < 8 || (compression == Compression::kNone && bytes == padded * height)) return padded;
  return glib::PackedStride(width, depth);
}

}  // namespace

std::vector<ChannelData> ReadChannels(std::span<const std::uint8_t> blocks, std::uint32_t version) {
  std::vector<ChannelData> channels;
  BlockList list(blocks, version);
  Block block;
  while (list.Next(block) && channels.size() < kMaxChannels) {
    if (block.id != BlockId::kChannel) continue;
    modules::ByteReader fields(block.chunk);
    const std::size_t length = fields.Long();
    fields.Skip(4);  // the length in memory, which follows no rule
    ChannelData channel;
    channel.bitmap = fields.Word();
    channel.channel = fields.Word();
    channel.bytes = block.rest.first(std::min(length, block.rest.size()));
    if (!fields.Failed()) channels.push_back(channel);
  }
  return channels;
}

ChannelReader::ChannelReader(const ChannelData& channel, Compression compression, std::uint32_t width,
                             std::uint32_t height, std::uint32_t depth)
    : in_(channel.bytes),
      compression_(compression),
      width_(width),
      height_(height),
      depth_(depth),
      stride_(StrideOf(channel.bytes.size(), compression, width, height, depth)),
      row_(stride_) {
  if (compression == Compression::kLz77) inflater_.emplace(channel.bytes);
}

bool ChannelReader::Believable() const {
  const std::uint64_t bytes = std::uint64_t{stride_} * height_;
  if (bytes <= modules::kHarmlessPixels) return true;
  const std::uint64_t present = in_.Size();
  return inflater_ ? modules::InflatedSizeBelievable(bytes, present) : bytes / modules::kMaxRunPixelsPerByte <= present;
}

bool ChannelReader::Next(std::uint8_t* row) {
  const std::size_t present = Fill(row_.data(), stride_);
  if (present < glib::PackedStride(width_, depth_)) return false;
  if (depth_ == 16) {
    for (std::size_t x = 0; x < width_; ++x) {
      const std::uint32_t sample = row_[2 * x] | static_cast<std::uint32_t>(row_[2 * x + 1]) << 8;
      row[x] = static_cast<std::uint8_t>((sample * 255 + 32767) / 65535);
    }
    return true;
  }
  std::memcpy(row, row_.data(), glib::PackedStride(width_, depth_));
  return true;
}

std::size_t ChannelReader::Fill(std::uint8_t* target, std::size_t count) {
  if (inflater_) return inflater_->Read(target, count);
  if (compression_ == Compression::kRuns) return FillRuns(target, count);
  return in_.Read(target, count);
}

// A count above 128 stands before a byte that is meant that many times more than 128; any other before so many bytes.
std::size_t ChannelReader::FillRuns(std::uint8_t* target, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    if (runLeft_ == 0) {
      if (in_.Left() < 2) return done;
      runLeft_ = in_.Byte();
      runIsLiteral_ = runLeft_ <= 128;
      if (runIsLiteral_) continue;
      runLeft_ -= 128;
      runValue_ = in_.Byte();
    }
    const std::size_t length = std::min(runLeft_, count - done);
    if (!runIsLiteral_) {
      std::memset(target + done, runValue_, length);
    } else if (in_.Read(target + done, length) != length) {
      return done;
    }
    runLeft_ -= length;
    done += length;
  }
  return done;
}

}  // namespace qpsp
