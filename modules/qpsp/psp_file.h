#ifndef MODULES_QPSP_PSP_FILE_H_
#define MODULES_QPSP_PSP_FILE_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"
#include "modules/qpsp/psp_blocks.h"

namespace qpsp {

enum class Compression : std::uint32_t { kNone = 0, kRuns = 1, kLz77 = 2, kJpeg = 3 };

// What a bitmap of channels is like: the whole picture, a layer of it, or a composite.
struct PictureKind {
  std::uint32_t depth = 0;  // bits of a pixel without transparency: 1, 4, 8, 16 (grey), 24 or 48
  Compression compression = Compression::kNone;
  bool grey = false;
  std::uint32_t paletteEntries = 0;
  std::array<std::uint32_t, 256> palette{};  // words as in a page
};

struct PspFile {
  std::uint32_t version = 0;
  std::uint32_t width = 0;  // checked against the limits, as the height
  std::uint32_t height = 0;
  double dpiX = 72.0;
  PictureKind kind;
  std::span<const std::uint8_t> compositeBank;  // both empty where there is none
  std::span<const std::uint8_t> layerBank;
};

// What is cut off behind the attributes is no failure.
modules::Verdict ReadPspFile(std::span<const std::uint8_t> file, PspFile& psp);

// Whether the reader knows pictures of this kind.
modules::Verdict CheckKind(const PictureKind& kind);

void ReadPalette(const Block& block, std::uint32_t version, PictureKind& kind);

// Of a page for such a picture without transparency: 1, 4, 8 or 24.
std::uint32_t OpaqueBits(const PictureKind& kind);

}  // namespace qpsp

#endif  // MODULES_QPSP_PSP_FILE_H_
