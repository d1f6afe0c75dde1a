#include "modules/qeps/pixmap_stream.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace qeps {
namespace {

bool IsBlank(int byte) { return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t'; }

std::uint32_t PixelsOf(std::uint32_t sampleCount, std::uint32_t samples) {
  return std::max((sampleCount + samples / 2) / samples, std::uint32_t{1});
}

// Adds a row of samples, red first, to the sums of the pixels that they lie in, blue first.
void AddSamples(const std::uint8_t* row, std::uint32_t sampleCount, std::uint32_t samples,
                std::vector<std::uint32_t>& sums) {
  const std::size_t end = std::min<std::size_t>(sampleCount, sums.size() / 3 * samples);
  for (std::size_t i = 0; i < end; ++i) {
    std::uint32_t* sum = &sums[i / samples * 3];
    sum[0] += row[3 * i + 2];
    sum[1] += row[3 * i + 1];
    sum[2] += row[3 * i];
  }
}

// Pixels at the right edge may have fewer samples than the others.
void WriteMeans(std::vector<std::uint32_t>& sums, std::uint32_t sampleCount, std::uint32_t samples, std::uint32_t rows,
                std::uint8_t* row) {
  for (std::size_t i = 0; i < sums.size(); ++i) {
    const std::size_t first = i / 3 * samples;
    const auto columns = static_cast<std::uint32_t>(std::min<std::size_t>(samples, sampleCount - first));
    const std::uint32_t count = columns * rows;
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): every mean has a sample
    row[i] = static_cast<std::uint8_t>((sums[i] + count / 2) / count);
    sums[i] = 0;
  }
}

}  // namespace

bool PixmapStream::Fill() {
  // What comes at once: to wait for a whole buffer would keep the page behind it from its reader.
  at_ = 0;
  end_ = child_.ReadSome(buffer_.get(), kBuffer);
  return end_ != 0;
}

int PixmapStream::Next() {
  if (at_ == end_ && !Fill()) return -1;
  return buffer_[at_++];
}

bool PixmapStream::Take(std::uint8_t* target, std::size_t count) {
  while (count != 0) {
    if (at_ == end_ && !Fill()) return false;
    const std::size_t part = std::min(count, end_ - at_);
    std::memcpy(target, &buffer_[at_], part);
    at_ += part;
    target += part;
    count -= part;
  }
  return true;
}

bool PixmapStream::ReadNumber(std::uint32_t& number) {
  int byte = Next();
  while (IsBlank(byte) || byte == '#') {
    if (byte == '#') {
      while (byte != '\n' && byte >= 0) byte = Next();
    }
    byte = Next();
  }
  number = 0;
  bool any = false;
  for (; byte >= '0' && byte <= '9'; byte = Next()) {
    number = std::min(number * 10 + static_cast<std::uint32_t>(byte - '0'), std::uint32_t{1} << 24);
    any = true;
  }
  return any && IsBlank(byte);
}

bool PixmapStream::ReadHeader(std::uint32_t& width, std::uint32_t& height) {
  if (Next() != 'P' || Next() != '6') return false;
  std::uint32_t highest = 0;
  return ReadNumber(width) && ReadNumber(height) && ReadNumber(highest) && highest == 255 && width != 0 && height != 0;
}

bool PixmapStream::AppendPage(std::uint32_t samples, glib::ImageDataExchange& exchange) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  if (!ReadHeader(width, height)) return false;
  modules::Page* page = modules::AddPage(exchange, PixelsOf(width, samples), PixelsOf(height, samples), 24);
  if (page == nullptr) return false;
  const auto pixels = static_cast<std::uint32_t>(page->width);
  const auto rows = static_cast<std::uint32_t>(page->height);
  std::vector<std::uint8_t> row(std::size_t{3} * width);
  std::vector<std::uint32_t> sums(std::size_t{3} * pixels);
  for (std::uint32_t y = 0; y < height; ++y) {
    if (!Take(row.data(), row.size())) {
      modules::DropLastPage(exchange);
      return false;
    }
    if (y / samples >= rows) continue;
    AddSamples(row.data(), width, samples, sums);
    const std::uint32_t done = y % samples + 1;
    if (done == samples || y + 1 == height) {
      WriteMeans(sums, width, samples, done, modules::Row(*page, y / samples));
    }
  }
  return true;
}

}  // namespace qeps
