#ifndef MODULES_QJP2_BOXES_H_
#define MODULES_QJP2_BOXES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qjp2 {

// What the boxes around a code stream say that the library doesn't, or not in this form.
struct Boxes {
  // Pixel words of a palette for pictures of one component; empty: there is none that a page could keep.
  std::vector<std::uint32_t> palette;
  // Colours that a palette of another form gives for each index; 0: no palette.
  std::uint32_t paletteColumns = 0;
  bool inks = false;                      // the first four components are cyan, magenta, yellow and black
  std::span<const std::uint8_t> profile;  // ICC, in the file's bytes
  double dpiX = 72.0;
  double dpiY = 72.0;
};

// Whether a file is a code stream without boxes.
bool IsCodeStream(std::span<const std::uint8_t> file);

Boxes ReadBoxes(std::span<const std::uint8_t> file);

}  // namespace qjp2

#endif  // MODULES_QJP2_BOXES_H_
