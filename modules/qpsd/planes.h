#ifndef MODULES_QPSD_PLANES_H_
#define MODULES_QPSD_PLANES_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/inflate.h"

namespace qpsd {

// What a plane looks like: `height` rows of `width` samples.
struct PlaneShape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t depth = 0;

  std::size_t RowBytes() const { return (std::size_t{width} * depth + 7) / 8; }
};

enum class Encoding : std::uint32_t { kRaw = 0, kRuns = 1, kZip = 2, kPredicted = 3 };

// The rows of a plane, in any of the four encodings.
class PlaneReader {
 public:
  // `data` begins with the number of the encoding.
  PlaneReader(std::span<const std::uint8_t> data, const PlaneShape& shape);
  // `lengths` are those of the rows, for runs.
  PlaneReader(Encoding encoding, std::span<const std::uint8_t> lengths, std::span<const std::uint8_t> data,
              const PlaneShape& shape);

  bool Known() const { return encoding_ <= Encoding::kPredicted; }
  // Whether the data can hold so many samples.
  bool Believable() const;

  // The next row, as 8-bit samples (or packed bits where a sample is one bit). False: there is no more. Samples of 32
  // bits are linear: amounts of light, or else of cover.
  bool Next(std::uint8_t* samples, bool light);

  // Passes over the rows of another plane in front.
  void SkipPlane();

 private:
  bool ReadRow(std::uint8_t* row);
  bool NextRuns(std::uint8_t* row);
  void UndoPrediction(std::uint8_t* row);

  PlaneShape shape_;
  Encoding encoding_;
  modules::ByteReader lengths_;  // of the rows, for runs
  modules::ByteReader in_;
  std::unique_ptr<modules::Inflater> zip_;
  std::vector<std::uint8_t> wide_;   // a row as it is in the file, where samples are wider than 8 bits
  std::vector<std::uint8_t> apart_;  // the same with the bytes of samples far from each other
  std::vector<std::uint8_t> curve_;  // from linear light to samples
};

// Planes that follow each other in one encoding, to be read side by side.
class PlaneSplitter {
 public:
  // `data` begins with the number of the encoding; it has `count` planes.
  PlaneSplitter(std::span<const std::uint8_t> data, const PlaneShape& shape, std::uint32_t count);

  bool Known() const { return encoding_ <= Encoding::kPredicted; }
  // Whether the data can hold the first `planes` planes, and their rows be had in a bearable time.
  bool Believable(std::uint32_t planes) const;
  PlaneReader Plane(std::uint32_t index) const;

 private:
  PlaneShape shape_;
  Encoding encoding_;
  std::span<const std::uint8_t> lengths_;
  std::span<const std::uint8_t> data_;
};

}  // namespace qpsd

#endif  // MODULES_QPSD_PLANES_H_
