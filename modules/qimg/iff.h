#ifndef MODULES_QIMG_IFF_H_
#define MODULES_QIMG_IFF_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"

// Pictures of the Amiga's interchange files: in planes (ILBM) or with a byte a pixel (PBM).

namespace qimg {

// The chunks of one picture, as far as they matter.
struct IffPicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t planes = 0;
  bool chunky = false;  // a byte a pixel instead of planes
  bool packed = false;
  bool masked = false;  // a further plane says what is to be seen
  bool holdAndModify = false;
  bool halfBrite = false;         // the upper half of the indices are the lower half's colours at half their brightness
  std::int32_t transparent = -1;  // index
  double dpiX = 72.0;
  double dpiY = 72.0;
  std::span<const std::uint8_t> colours;  // three bytes each
  bool shortColours = false;              // of which only the upper four bits were stored
  std::span<const std::uint8_t> body;
  modules::Verdict verdict = modules::kFine;  // why it can't be read
};

// All pictures of a file, also those in forms within forms.
std::vector<IffPicture> FindIffPictures(std::span<const std::uint8_t> file);

std::uint32_t IffPageBits(const IffPicture& picture);

// Appends a page for each picture that can be read.
std::uint32_t LoadIff(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_IFF_H_
