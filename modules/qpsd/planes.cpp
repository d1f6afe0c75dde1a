#include "modules/qpsd/planes.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "modules/common/limits.h"
#include "modules/common/pack_bits.h"
#include "modules/common/pixel_rows.h"
#include "modules/qpsd/srgb_curve.h"

namespace qpsd {
namespace {

std::uint32_t BigWordAt(const std::uint8_t* at) { return static_cast<std::uint32_t>(at[0]) << 8 | at[1]; }

float FloatAt(const std::uint8_t* at) { return std::bit_cast<float>(BigWordAt(at) << 16 | BigWordAt(at + 2)); }

std::uint8_t ToByte(float value) {
  return value > 0.0F ? static_cast<std::uint8_t>(std::min(value, 1.0F) * 255 + 0.5F) : std::uint8_t{0};
}

bool IsZip(Encoding encoding) { return encoding == Encoding::kZip || encoding == Encoding::kPredicted; }

// Whether `present` bytes can hold planes of so many.
bool SizeBelievable(Encoding encoding, std::uint64_t bytes, std::uint64_t present) {
  if (bytes <= modules::kHarmlessPixels) return true;
  return IsZip(encoding) ? modules::InflatedSizeBelievable(bytes, present)
                         : bytes / modules::kMaxRunPixelsPerByte <= present;
}

Encoding EncodingOf(std::span<const std::uint8_t> data) {
  return static_cast<Encoding>(modules::ByteReader(data).BigWord());
}

// Behind the number of the encoding.
std::span<const std::uint8_t> Body(std::span<const std::uint8_t> data) {
  return data.subspan(std::min<std::size_t>(2, data.size()));
}

// The table of row lengths in front of `planes` planes of runs.
std::size_t LengthsSize(Encoding encoding, std::span<const std::uint8_t> body, const PlaneShape& shape,
                        std::uint32_t planes) {
  return encoding == Encoding::kRuns ? std::min(body.size(), std::size_t{2} * shape.height * planes) : 0;
}

}  // namespace

PlaneReader::PlaneReader(Encoding encoding, std::span<const std::uint8_t> lengths, std::span<const std::uint8_t> data,
                         const PlaneShape& shape)
    : shape_(shape), encoding_(encoding), lengths_(lengths), in_(data) {
  if (IsZip(encoding)) zip_ = std::make_unique<modules::Inflater>(data);
  if (shape.depth > 8) wide_.resize(shape.RowBytes());
  if (shape.depth == 32) curve_ = SrgbCurve();
  if (shape.depth == 32 && encoding == Encoding::kPredicted) apart_.resize(shape.RowBytes());
}

PlaneReader::PlaneReader(std::span<const std::uint8_t> data, const PlaneShape& shape)
    : PlaneReader(PlaneSplitter(data, shape, 1).Plane(0)) {}

bool PlaneReader::Believable() const {
  return SizeBelievable(encoding_, std::uint64_t{shape_.RowBytes()} * shape_.height, in_.Size());
}

bool PlaneReader::ReadRow(std::uint8_t* row) {
  const std::size_t rowBytes = shape_.RowBytes();
  if (zip_ != nullptr) return zip_->Read(row, rowBytes) == rowBytes;
  if (encoding_ == Encoding::kRuns) return NextRuns(row);
  return in_.Left() >= rowBytes && in_.Read(row, rowBytes) == rowBytes;
}

void PlaneReader::SkipPlane() {
  std::vector<std::uint8_t> row(shape_.RowBytes());
  for (std::uint32_t y = 0; y < shape_.height && ReadRow(row.data()); ++y) {
  }
}

bool PlaneReader::Next(std::uint8_t* samples, bool light) {
  std::uint8_t* row = shape_.depth > 8 ? wide_.data() : samples;
  if (!ReadRow(row)) return false;
  if (encoding_ == Encoding::kPredicted) UndoPrediction(row);
  if (shape_.depth == 16) modules::RoundBigWords(row, shape_.width, samples);
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

PlaneSplitter::PlaneSplitter(std::span<const std::uint8_t> data, const PlaneShape& shape, std::uint32_t count)
    : shape_(shape), encoding_(EncodingOf(data)) {
  const auto body = Body(data);
  const std::size_t table = LengthsSize(encoding_, body, shape, count);
  lengths_ = body.first(table);
  data_ = body.subspan(table);
}

bool PlaneSplitter::Believable(std::uint32_t planes) const {
  // Each plane of a zip is inflated with all in front of it.
  constexpr std::uint64_t kMaxInflated = std::uint64_t{3} << 29;
  const std::uint64_t plane = std::uint64_t{shape_.RowBytes()} * shape_.height;
  if (IsZip(encoding_) && plane * planes * (planes + 1) / 2 > kMaxInflated) return false;
  return SizeBelievable(encoding_, plane, data_.size());
}

PlaneReader PlaneSplitter::Plane(std::uint32_t index) const {
  if (encoding_ == Encoding::kRuns) {
    const std::size_t tableBytes = std::size_t{2} * shape_.height;
    modules::ByteReader lengths(lengths_);
    std::size_t start = 0;
    for (std::size_t row = 0; row < std::size_t{index} * shape_.height; ++row) start += lengths.BigWord();
    return {encoding_, lengths.Take(std::min(tableBytes, lengths.Left())), data_.subspan(std::min(start, data_.size())),
            shape_};
  }
  const std::size_t planeBytes = shape_.RowBytes() * shape_.height;
  const std::size_t start = encoding_ == Encoding::kRaw ? std::min(planeBytes * index, data_.size()) : 0;
  PlaneReader plane(encoding_, {}, data_.subspan(start), shape_);
  for (std::uint32_t i = 0; i < index && IsZip(encoding_); ++i) plane.SkipPlane();
  return plane;
}

}  // namespace qpsd
