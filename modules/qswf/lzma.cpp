#include "modules/qswf/lzma.h"

#include <lzma.h>

#include <algorithm>

namespace qswf {
namespace {

constexpr std::size_t kPackedLength = 4;
constexpr std::size_t kSettings = 5;
constexpr std::uint64_t kMaxMemory = std::uint64_t{128} << 20;

}  // namespace

std::vector<std::uint8_t> UnpackLzma(std::span<const std::uint8_t> body, std::size_t limit) {
  constexpr std::size_t kStep = std::size_t{1} << 16;
  std::vector<std::uint8_t> bytes;
  if (body.size() < kPackedLength + kSettings) return bytes;
  // The library wants a length behind the settings: all ones stand for a length that the data tell.
  std::vector<std::uint8_t> head(body.begin() + kPackedLength, body.begin() + kPackedLength + kSettings);
  head.resize(kSettings + 8, 0xFF);
  const auto data = body.subspan(kPackedLength + kSettings);
  lzma_stream stream = LZMA_STREAM_INIT;
  if (lzma_alone_decoder(&stream, kMaxMemory) != LZMA_OK) return bytes;
  stream.next_in = head.data();
  stream.avail_in = head.size();
  bool inHead = true;
  lzma_ret result = LZMA_OK;
  while (result == LZMA_OK && bytes.size() < limit) {
    if (inHead && stream.avail_in == 0) {
      inHead = false;
      stream.next_in = data.data();
      stream.avail_in = data.size();
    }
    const std::size_t done = bytes.size();
    bytes.resize(std::min(limit, done + std::max(kStep, done)));
    stream.next_out = bytes.data() + done;
    stream.avail_out = bytes.size() - done;
    result = lzma_code(&stream, LZMA_RUN);
    const bool stuck = !inHead && stream.avail_in == 0 && stream.avail_out != 0;
    bytes.resize(bytes.size() - stream.avail_out);
    if (stuck) break;
  }
  lzma_end(&stream);
  return bytes;
}

}  // namespace qswf
