#ifndef MODULES_QPSD_PLANES_H_
#define MODULES_QPSD_PLANES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/inflate.h"

namespace qpsd {

// What planes look like: `count` of them follow each other, each with `height` rows of `width` samples.
struct PlaneShape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t depth = 0;
  std::uint32_t count = 1;

  std::size_t RowBytes() const { return (std::size_t{width} * depth + 7) / 8; }
};

// Rows of planes in any of the four encodings, one after the other.
class PlaneReader {
 public:
  // `data` begins with the number of the encoding.
  PlaneReader(std::span<const std::uint8_t> data, const PlaneShape& shape);

  bool Known() const { return encoding_ <= kPredicted; }
  // Whether the data can hold so many samples.
  bool Believable() const;

  // The next row, as 8-bit samples (or packed bits where a sample is one bit). False: there is no more. Samples of 32
  // bits are linear: amounts of light, or else of cover.
  bool Next(std::uint8_t* samples, bool light);

 private:
  enum Encoding : std::uint32_t { kRaw = 0, kRuns = 1, kZip = 2, kPredicted = 3 };

  bool NextRuns(std::uint8_t* row);
  void UndoPrediction(std::uint8_t* row);

  PlaneShape shape_;
  modules::ByteReader in_;
  std::uint32_t encoding_;
  modules::ByteReader lengths_;  // of the rows, for runs
  std::optional<modules::Inflater> zip_;
  std::vector<std::uint8_t> wide_;   // a row as it is in the file, where samples are wider than 8 bits
  std::vector<std::uint8_t> apart_;  // the same with the bytes of samples far from each other
  std::vector<std::uint8_t> curve_;  // from linear light to samples
};

}  // namespace qpsd

#endif  // MODULES_QPSD_PLANES_H_
