#include "modules/qjp2/boxes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "modules/common/byte_reader.h"
#include "modules/common/icc_profile.h"
#include "modules/common/page_builder.h"

namespace qjp2 {
namespace {

constexpr std::uint32_t kHeader = 0x6A703268;             // "jp2h"
constexpr std::uint32_t kColours = 0x636F6C72;            // "colr"
constexpr std::uint32_t kPalette = 0x70636C72;            // "pclr"
constexpr std::uint32_t kResolution = 0x72657320;         // "res "
constexpr std::uint32_t kCaptureResolution = 0x72657363;  // "resc"
constexpr std::uint32_t kDisplayResolution = 0x72657364;  // "resd"

struct Box {
  std::uint32_t kind;
  std::span<const std::uint8_t> data;
};

// False at the end. A box that says it is longer than what is left is what is left.
bool NextBox(modules::ByteReader& in, Box& box) {
  constexpr std::uint32_t kToTheEnd = 0;
  constexpr std::uint32_t kLongLength = 1;
  if (in.Left() < 8) return false;
  const std::uint32_t length = in.BigLong();
  box.kind = in.BigLong();
  std::uint64_t bytes = length;
  std::uint64_t header = 8;
  if (length == kLongLength) {
    bytes = static_cast<std::uint64_t>(in.BigLong()) << 32;
    bytes |= in.BigLong();
    header = 16;
  }
  if (length != kToTheEnd && bytes < header) return false;
  const std::uint64_t left = in.Left();
  box.data = in.Take(static_cast<std::size_t>(length == kToTheEnd ? left : std::min(bytes - header, left)));
  return true;
}

void ReadPalette(std::span<const std::uint8_t> data, Boxes& boxes) {
  modules::ByteReader in(data);
  const std::uint32_t count = in.BigWord();
  boxes.paletteColumns = in.Byte();
  bool bytes = boxes.paletteColumns == 3 || boxes.paletteColumns == 4;
  for (std::uint32_t i = 0; i < boxes.paletteColumns; ++i) bytes = in.Byte() == 7 && bytes;
  if (!bytes || count == 0 || count > 256 || in.Left() < std::size_t{count} * boxes.paletteColumns) return;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t colour = 0;
    for (int sample = 0; sample < 3; ++sample) colour = colour << 8 | in.Byte();
    // Of an entry with alpha only "not to be seen" can be kept.
    const bool seen = boxes.paletteColumns == 3 || in.Byte() != 0;
    boxes.palette.push_back(colour | (seen ? 0xFF000000U : 0U));
  }
}

// Dots a metre as a fraction with a power of ten.
void ReadResolution(std::span<const std::uint8_t> data, Boxes& boxes) {
  modules::ByteReader in(data);
  double fraction[2];
  for (double& value : fraction) {
    const double numerator = in.BigWord();
    const double denominator = in.BigWord();
    value = denominator > 0 ? numerator / denominator : 0;
  }
  const auto scale = [&] { return std::pow(10.0, static_cast<std::int8_t>(in.Byte())); };
  boxes.dpiY = modules::DpiFromMetre(fraction[0] * scale());
  boxes.dpiX = modules::DpiFromMetre(fraction[1] * scale());
}

// Of several descriptions the first one counts.
void ReadColours(std::span<const std::uint8_t> data, Boxes& boxes) {
  enum : std::uint8_t { kByNumber = 1, kMatrixProfile = 2, kAnyProfile = 3 };
  constexpr std::uint32_t kInks = 12;
  modules::ByteReader in(data);
  const std::uint8_t method = in.Byte();
  in.Skip(2);
  if (method == kByNumber && in.BigLong() == kInks) boxes.inks = true;
  if (method != kMatrixProfile && method != kAnyProfile) return;
  boxes.profile = in.Take(in.Left());
  if (modules::IsIccProfileOf(boxes.profile, modules::IccSpace::kCmyk)) boxes.inks = true;
}

void ReadHeaderBox(std::span<const std::uint8_t> data, Boxes& boxes) {
  modules::ByteReader in(data);
  bool coloursRead = false;
  for (Box box{}; NextBox(in, box);) {
    if (box.kind == kColours && !std::exchange(coloursRead, true)) ReadColours(box.data, boxes);
    if (box.kind == kPalette) ReadPalette(box.data, boxes);
    if (box.kind != kResolution) continue;
    modules::ByteReader inner(box.data);
    for (Box resolution{}; NextBox(inner, resolution);) {
      const bool known = resolution.kind == kCaptureResolution || resolution.kind == kDisplayResolution;
      if (known && resolution.data.size() >= 10) ReadResolution(resolution.data, boxes);
    }
  }
}

}  // namespace

bool IsCodeStream(std::span<const std::uint8_t> file) { return file.size() >= 2 && file[0] == 0xFF && file[1] == 0x4F; }

Boxes ReadBoxes(std::span<const std::uint8_t> file) {
  Boxes boxes;
  if (IsCodeStream(file)) return boxes;
  modules::ByteReader in(file);
  for (Box box{}; NextBox(in, box);) {
    if (box.kind == kHeader) {
      ReadHeaderBox(box.data, boxes);
      break;
    }
  }
  return boxes;
}

}  // namespace qjp2
