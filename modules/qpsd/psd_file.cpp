#include "modules/qpsd/psd_file.h"

#include <algorithm>

#include "modules/common/byte_reader.h"

namespace qpsd {
namespace {

constexpr std::uint32_t kSignature = 0x38425053;  // "8BPS"
constexpr std::uint32_t kBlock = 0x3842494D;      // "8BIM"
constexpr std::uint32_t kMaxChannels = 56;
constexpr std::uint32_t kMaxPaletteEntries = 256;

enum Resource : std::uint32_t {
  kResolution = 0x03ED,
  kChannelNames = 0x03EE,
  kProfile = 0x040F,
  kColourCount = 0x0416,
  kTransparentIndex = 0x0417,
  kVersion = 0x0421,
};

bool DepthFits(std::uint32_t depth, ColourMode mode) {
  if (mode == ColourMode::kBitmap) return depth == 1;
  if (mode == ColourMode::kIndexed) return depth == 8;
  return depth == 8 || depth == 16 || depth == 32;
}

modules::Verdict ReadHeader(modules::ByteReader& in, PsdFile& psd) {
  const std::uint32_t signature = in.BigLong();
  const std::uint32_t version = in.BigWord();
  in.Skip(6);
  psd.channels = in.BigWord();
  psd.height = in.BigLong();
  psd.width = in.BigLong();
  psd.depth = in.BigWord();
  psd.mode = static_cast<ColourMode>(in.BigWord());
  if (in.Failed() || signature != kSignature) return {glib::IERR, "The file has no header of this format"};
  if (version != 1) return {glib::NSUP, "The file is of another version than 1"};
  switch (psd.mode) {
    case ColourMode::kBitmap:
    case ColourMode::kGrey:
    case ColourMode::kIndexed:
    case ColourMode::kRgb:
    case ColourMode::kCmyk:
    case ColourMode::kInks:
    case ColourMode::kDuotone:
    case ColourMode::kLab:
      break;
    default:
      return {glib::NSUP, "The picture's colour mode is not supported"};
  }
  if (!DepthFits(psd.depth, psd.mode)) return {glib::NSUP, "The picture's depth does not go with its colour mode"};
  if (psd.channels > kMaxChannels || psd.channels < ColourChannels(psd)) {
    return {glib::IERR, "The picture has too few channels for its colours, or too many"};
  }
  if (psd.width == 0 || psd.height == 0) return {glib::IERR, "The picture has no pixels"};
  if (!modules::SizeAllowed(psd.width, psd.height)) return {glib::NSUP, "The picture is too large"};
  return modules::kFine;
}

// Dots per inch in 16.16 bits, whatever unit they are shown in.
double ReadFixed(modules::ByteReader& in) { return modules::CheckedDpi(in.BigLong() / 65536.0); }

void ReadResource(std::uint32_t id, std::span<const std::uint8_t> data, PsdFile& psd) {
  modules::ByteReader in(data);
  switch (id) {
    case kResolution:
      psd.dpiX = ReadFixed(in);
      in.Skip(4);  // units
      psd.dpiY = ReadFixed(in);
      break;
    case kChannelNames:
      psd.channelsNamed = !data.empty();
      break;
    case kProfile:
      psd.profile = data;
      break;
    case kColourCount:
      psd.paletteEntries = std::clamp<std::uint32_t>(in.BigWord(), 1, kMaxPaletteEntries);
      break;
    case kTransparentIndex:
      psd.transparentIndex = in.BigWord();
      break;
    case kVersion:
      in.Skip(4);
      psd.hasMerged = in.Byte() != 0 || in.Failed();
      break;
    default:
      break;
  }
}

void ReadResources(std::span<const std::uint8_t> bytes, PsdFile& psd) {
  modules::ByteReader in(bytes);
  while (!in.AtEnd() && in.BigLong() == kBlock) {
    const std::uint32_t id = in.BigWord();
    const std::size_t nameLength = in.Byte();
    in.Skip(nameLength + (nameLength + 1) % 2);
    const std::size_t length = in.BigLong();
    const auto data = in.Take(length);
    if (in.Failed()) return;
    ReadResource(id, data, psd);
    if (length % 2 != 0 && !in.AtEnd()) in.Skip(1);
  }
}

// Layers of 16 and 32 bits stand in a block of their own behind the section that has them else.
std::span<const std::uint8_t> FindLayers(std::span<const std::uint8_t> section) {
  constexpr std::uint32_t kWideBlock = 0x38423634;  // "8B64"
  constexpr std::uint32_t kLayers16 = 0x4C723136;   // "Lr16"
  constexpr std::uint32_t kLayers32 = 0x4C723332;   // "Lr32"
  modules::ByteReader in(section);
  const std::size_t length = in.BigLong();
  if (length != 0) return in.Take(length);
  in.Skip(in.BigLong());  // the mask that all layers share
  while (in.Left() >= 12) {
    const std::uint32_t mark = in.BigLong();
    const std::uint32_t key = in.BigLong();
    const std::size_t size = in.BigLong();
    if (mark != kBlock && mark != kWideBlock) break;
    const auto data = in.Take(size);
    if (key == kLayers16 || key == kLayers32) return data;
    in.Skip(std::min((4 - size % 4) % 4, in.Left()));
  }
  return {};
}

}  // namespace

modules::Verdict ReadPsdFile(std::span<const std::uint8_t> file, PsdFile& psd) {
  modules::ByteReader in(file);
  const modules::Verdict verdict = ReadHeader(in, psd);
  if (verdict.result != glib::RCOK) return verdict;
  psd.palette = in.Take(in.BigLong());
  ReadResources(in.Take(in.BigLong()), psd);
  const std::size_t sectionLength = in.BigLong();
  psd.whole = !in.Failed() && in.Left() >= std::min<std::size_t>(sectionLength, 6);
  psd.layers = FindLayers(in.Take(sectionLength));
  psd.layerCount = psd.layers.size() < 2 ? 0 : modules::ByteReader(psd.layers).SignedBigWord();
  psd.merged = in.Take(in.Left());
  return modules::kFine;
}

std::uint32_t ColourChannels(const PsdFile& psd) {
  switch (psd.mode) {
    case ColourMode::kRgb:
    case ColourMode::kLab:
      return 3;
    case ColourMode::kCmyk:
      return 4;
    case ColourMode::kInks:
      return psd.channels >= 4 ? 4 : psd.channels == 3 ? 3 : 1;
    default:
      return 1;
  }
}

bool MergedHasAlpha(const PsdFile& psd) {
  if (psd.mode == ColourMode::kBitmap || psd.mode == ColourMode::kIndexed || psd.mode == ColourMode::kInks)
    return false;
  const std::uint32_t colours = ColourChannels(psd);
  if (psd.channels <= colours) return false;
  // Programs that only know one channel besides the colours don't name it.
  return psd.layerCount < 0 || (!psd.channelsNamed && psd.channels == colours + 1);
}

std::uint32_t MergedBits(const PsdFile& psd) {
  if (psd.mode == ColourMode::kBitmap) return 1;
  if (MergedHasAlpha(psd)) return 32;
  return ColourChannels(psd) == 1 ? 8 : 24;
}

}  // namespace qpsd
