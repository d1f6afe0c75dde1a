#include "modules/qpsp/psp_file.h"

#include <algorithm>
#include <bit>

namespace qpsp {
namespace {

constexpr std::uint8_t kSignature[] = "Paint Shop Pro Image File\n\x1A";
constexpr std::size_t kSignatureBytes = 32;
constexpr std::uint32_t kOldestVersion = 3;

double DpiOf(double resolution, std::uint32_t unit) {
  if (unit == 1) return modules::CheckedDpi(resolution);
  if (unit == 2) return modules::DpiFromCentimetre(resolution);
  return modules::CheckedDpi(0);
}

modules::Verdict ReadAttributes(std::span<const std::uint8_t> chunk, PspFile& psp) {
  modules::ByteReader in(chunk);
  const std::uint32_t width = in.Long();
  const std::uint32_t height = in.Long();
  const std::uint64_t low = in.Long();
  const auto resolution = std::bit_cast<double>(low | std::uint64_t{in.Long()} << 32);
  psp.dpiX = DpiOf(resolution, in.Byte());
  psp.kind.compression = static_cast<Compression>(in.Word());
  psp.kind.depth = in.Word();
  in.Skip(2 + 4);  // planes, colours
  psp.kind.grey = in.Byte() != 0;
  if (in.Failed() || width == 0 || height == 0) return {glib::IERR, "The attributes of the picture are damaged"};
  if (!modules::SizeAllowed(width, height)) return {glib::NSUP, "The picture is too large"};
  psp.width = width;
  psp.height = height;
  return modules::kFine;
}

}  // namespace

modules::Verdict ReadPspFile(std::span<const std::uint8_t> file, PspFile& psp) {
  modules::ByteReader in(file);
  const auto signature = in.Take(kSignatureBytes);
  psp.version = in.Word();
  in.Skip(2);
  if (in.Failed() || !std::equal(kSignature, std::end(kSignature) - 1, signature.begin())) {
    return {glib::IERR, "The file has no header of this format"};
  }
  if (psp.version < kOldestVersion) return {glib::NSUP, "The file is of a version that is too old"};

  BlockList blocks(in.Take(in.Left()), psp.version);
  Block block;
  if (!blocks.Next(block) || block.id != BlockId::kAttributes) return {glib::IERR, "The file has no attributes"};
  const modules::Verdict verdict = ReadAttributes(block.chunk, psp);
  if (verdict.result != glib::RCOK) return verdict;
  while (blocks.Next(block)) {
    if (block.id == BlockId::kPalette) ReadPalette(block, psp.version, psp.kind);
    if (block.id == BlockId::kCompositeBank) psp.compositeBank = block.rest;
    if (block.id == BlockId::kLayerBank) psp.layerBank = block.content;
  }
  return modules::kFine;
}

modules::Verdict CheckKind(const PictureKind& kind) {
  switch (kind.depth) {
    case 1:
    case 4:
    case 8:
    case 16:
    case 24:
    case 48:
      break;
    default:
      return {glib::NSUP, "The picture's depth is not supported"};
  }
  if (kind.compression > Compression::kLz77) return {glib::NSUP, "The picture's compression is not supported"};
  return modules::kFine;
}

void ReadPalette(const Block& block, std::uint32_t version, PictureKind& kind) {
  constexpr std::size_t kCountBytes = 4;
  const std::uint32_t count = modules::ByteReader(block.chunk).Long();
  // The oldest files aren't of one mind on whether the entries are part of the chunk.
  const auto entries =
      version == kOldestVersion ? block.content.subspan(std::min(kCountBytes, block.content.size())) : block.rest;
  modules::ByteReader in(entries);
  kind.paletteEntries = std::min<std::uint32_t>(count, static_cast<std::uint32_t>(kind.palette.size()));
  for (std::uint32_t i = 0; i < kind.paletteEntries; ++i) kind.palette[i] = in.Long() | 0xFF000000U;
}

std::uint32_t OpaqueBits(const PictureKind& kind) {
  if (kind.depth <= 8) return kind.depth;
  return kind.depth == 16 ? 8 : 24;
}

}  // namespace qpsp
