#include "modules/common/exif.h"

#include <cstring>

#include "modules/common/byte_reader.h"

namespace modules {
namespace {

constexpr char kIntroduction[] = {'E', 'x', 'i', 'f', 0, 0};

enum Tag : std::uint16_t { kOrientation = 0x0112, kResolutionX = 0x011A, kResolutionY = 0x011B, kUnit = 0x0128 };
enum FieldType : std::uint16_t { kByte = 1, kShort = 3, kLong = 4, kRational = 5 };

// Numbers in the byte order that the notes announce.
class Fields {
 public:
  Fields(std::span<const std::uint8_t> bytes, bool big) : bytes_(bytes), reader_(bytes), big_(big) {}

  bool Seek(std::size_t position) { return reader_.Seek(position); }
  std::uint32_t Short() { return big_ ? reader_.BigWord() : reader_.Word(); }
  std::uint32_t Long() { return big_ ? reader_.BigLong() : reader_.Long(); }

  // The value of a field whose cursor stands at its 4 bytes of value or position.
  double Value(std::uint32_t type) {
    if (type == kByte) return reader_.Byte();
    if (type == kShort) return Short();
    if (type == kLong) return Long();
    if (type != kRational) return 0.0;
    Fields elsewhere(bytes_, big_);
    if (!elsewhere.Seek(Long())) return 0.0;
    const std::uint32_t numerator = elsewhere.Long();
    const std::uint32_t denominator = elsewhere.Long();
    return denominator == 0 ? 0.0 : static_cast<double>(numerator) / denominator;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  ByteReader reader_;
  bool big_;
};

}  // namespace

Exif ReadExif(std::span<const std::uint8_t> marker) {
  Exif exif;
  if (marker.size() < sizeof(kIntroduction) + 8 ||
      std::memcmp(marker.data(), kIntroduction, sizeof(kIntroduction)) != 0) {
    return exif;
  }
  const auto notes = marker.subspan(sizeof(kIntroduction));
  const bool big = notes[0] == 'M' && notes[1] == 'M';
  if (!big && (notes[0] != 'I' || notes[1] != 'I')) return exif;

  Fields fields(notes, big);
  fields.Seek(2);
  const std::uint32_t mark = fields.Short();
  const std::size_t directory = fields.Long();
  if (mark != 42 || !fields.Seek(directory)) return exif;
  const std::uint32_t count = fields.Short();
  double unit = 1.0;  // inches
  for (std::uint32_t i = 0; i < count && fields.Seek(directory + 2 + std::size_t{i} * 12); ++i) {
    const std::uint32_t tag = fields.Short();
    const std::uint32_t type = fields.Short();
    if (fields.Long() == 0) continue;
    const double value =
        tag == kOrientation || tag == kResolutionX || tag == kResolutionY || tag == kUnit ? fields.Value(type) : 0.0;
    if (tag == kOrientation && value >= 1 && value <= 8) exif.orientation = static_cast<std::uint32_t>(value);
    if (tag == kResolutionX) exif.dpiX = value;
    if (tag == kResolutionY) exif.dpiY = value;
    if (tag == kUnit && value == 3) unit = 2.54;  // centimetres
  }
  exif.dpiX *= unit;
  exif.dpiY *= unit;
  return exif;
}

}  // namespace modules
