#include "modules/qpsd/planes.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "modules/common/limits.h"
#include "modules/common/pack_bits.h"
#include "modules/qpsd/srgb_curve.h"

namespace qpsd {
namespace {

std::uint32_t BigWordAt(const std::uint8_t* at) { return static_cast<std::uint32_t>(at[0]) << 8 | at[1]; }

float FloatAt(const std::uint8_t* at) { return std::bit_cast<float>(BigWordAt(at) << 16 | BigWordAt(at + 2)); }

std::uint8_t ToByte(float value) {
  return value > 0.0F ? static_cast<std::uint8_t>(std::min(value, 1.0F) * 255 + 0.5F) : std::uint8_t{0};
}

void HalveSamples(const std::uint8_t* wide, std::uint8_t* samples, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    samples[x] = static_cast<std::uint8_t>((BigWordAt(wide + 2 * x) * 255 + 32767) / 65535);
  }
}

}  // namespace

PlaneReader::PlaneReader(std::span<const std::uint8_t> data, const PlaneShape& shape)
    : shape_(shape), in_(data), encoding_(in_.BigWord()), lengths_({}) {
  if (encoding_ == kRuns) lengths_ = modules::ByteReader(in_.Take(std::size_t{2} * shape.height * shape.count));
  if (encoding_ == kZip || encoding_ == kPredicted) zip_.emplace(in_.Take(in_.Left()));
  if (shape.depth > 8) wide_.resize(shape.RowBytes());
  if (shape.depth == 32) curve_ = SrgbCurve();
  if (shape.depth == 32 && encoding_ == kPredicted) apart_.resize(shape.RowBytes());
}

bool PlaneReader::Believable() const {
  const std::uint64_t bytes = std::uint64_t{shape_.RowBytes()} * shape_.height;
  if (bytes <= modules::kHarmlessPixels) return true;
  const std::uint64_t present = in_.Size();
  return zip_ ? modules::InflatedSizeBelievable(bytes, present) : bytes / modules::kMaxRunPixelsPerByte <= present;
}

bool PlaneReader::Next(std::uint8_t* samples, bool light) {
  const std::size_t rowBytes = shape_.RowBytes();
  std::uint8_t* row = shape_.depth > 8 ? wide_.data() : samples;
  if (zip_) {
    if (zip_->Read(row, rowBytes) != rowBytes) return false;
  } else if (encoding_ == kRuns) {
    if (!NextRuns(row)) return false;
  } else if (in_.Left() < rowBytes || in_.Read(row, rowBytes) != rowBytes) {
    return false;
  }
  if (encoding_ == kPredicted) UndoPrediction(row);
  if (shape_.depth == 16) HalveSamples(row, samples, shape_.width);
  if (shape_.depth == 32) {
    for (std::size_t x = 0; x < shape_.width; ++x) {
      const float value = FloatAt(row + 4 * x);
      samples[x] = light ? OnCurve(curve_, value) : ToByte(value);
    }
  }
  return true;
}

// A row that says less than it should is filled up with zeros: its length leads to the next one all the same.
bool PlaneReader::NextRuns(std::uint8_t* row) {
  if (lengths_.Left() < 2 || in_.AtEnd()) return false;
  modules::ByteReader runs(in_.Take(lengths_.BigWord()));
  const std::span<std::uint8_t> target(row, shape_.RowBytes());
  const std::size_t done = modules::UnpackBits(runs, target);
  std::fill(target.begin() + static_cast<std::ptrdiff_t>(done), target.end(), std::uint8_t{0});
  return true;
}

// Each sample was stored as its difference from the one on its left; of 32 bits, each of their bytes, which stand apart
// by their rank.
void PlaneReader::UndoPrediction(std::uint8_t* row) {
  const std::size_t bytes = shape_.RowBytes();
  if (shape_.depth == 16) {
    for (std::size_t i = 2; i + 1 < bytes; i += 2) {
      const std::uint32_t sample = BigWordAt(row + i - 2) + BigWordAt(row + i);
      row[i] = static_cast<std::uint8_t>(sample >> 8);
      row[i + 1] = static_cast<std::uint8_t>(sample);
    }
    return;
  }
  if (shape_.depth == 1) return;
  for (std::size_t i = 1; i < bytes; ++i) row[i] = static_cast<std::uint8_t>(row[i] + row[i - 1]);
  if (shape_.depth != 32) return;
  std::memcpy(apart_.data(), row, bytes);
  for (std::size_t x = 0; x < shape_.width; ++x) {
    for (std::size_t rank = 0; rank < 4; ++rank) row[4 * x + rank] = apart_[rank * shape_.width + x];
  }
}

}  // namespace qpsd
