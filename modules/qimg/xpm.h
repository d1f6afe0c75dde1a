#ifndef MODULES_QIMG_XPM_H_
#define MODULES_QIMG_XPM_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"

// What is done around the image library for pixmaps of the X window system.

namespace qimg {

struct XpmHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t colours = 0;
};

// Reads the four numbers that lead a pixmap. Sides are within the limits if they are fine.
modules::Verdict ReadXpmHeader(std::span<const std::uint8_t> file, XpmHeader& header);

// Bits of the page that the whole file becomes.
std::uint32_t XpmPageBits(std::span<const std::uint8_t> file, const XpmHeader& header);

// The library wants the first number of a pixmap right behind its quote. Gives a copy of a file where blanks stand
// between, or nothing for any other.
std::vector<std::uint8_t> WithoutLeadingBlanks(std::span<const std::uint8_t> file);

// The library gives a pixmap with the colour "None" as 32 bits a pixel. Turns the last page, if it is such a one, into
// indices with one transparent entry, in as many bits as `colours` take. More than 256 stay as they are.
void PutBackIntoPalette(std::uint32_t colours, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_XPM_H_
