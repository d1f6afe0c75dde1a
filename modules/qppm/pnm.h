#ifndef MODULES_QPPM_PNM_H_
#define MODULES_QPPM_PNM_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Portable bitmaps, graymaps and pixmaps. All six kinds are the same but for what a sample is; which of the three names
// a file goes by changes nothing.

namespace qppm {

enum class PnmKind { kBits, kGrey, kColour };

struct PnmHeader {
  PnmKind kind = PnmKind::kBits;
  bool text = false;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t highest = 1;  // value of a sample, which stands for full brightness
  std::size_t size = 0;       // bytes of this header, the one that ends it included
};

enum class HeaderState {
  kWhole,
  kCut,  // the data end within it
  kWrong,
  kTooLarge,
};

// The result value that a state stands for, with its cause.
modules::Verdict VerdictOf(HeaderState state);

// Sides are within the limits if the header is whole.
HeaderState ReadPnmHeader(std::span<const std::uint8_t> file, PnmHeader& header);

std::uint32_t PnmPageBits(PnmKind kind);

// Bytes of a row, and of all rows, of a picture that isn't text.
std::size_t PnmRowBytes(const PnmHeader& header);
std::size_t PnmRasterBytes(const PnmHeader& header);

// Where the next picture begins behind one that took the first `position` bytes; the file's size if there is none. Only
// pictures that aren't text have a next one.
std::size_t NextPnm(std::span<const std::uint8_t> file, std::size_t position);

// Every picture of the file becomes a page. Damage behind the first one is told in the message alone.
std::uint32_t LoadPnm(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qppm

#endif  // MODULES_QPPM_PNM_H_
