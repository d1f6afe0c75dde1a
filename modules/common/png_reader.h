#ifndef MODULES_COMMON_PNG_READER_H_
#define MODULES_COMMON_PNG_READER_H_

#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace modules {

// One PNG file in memory. The library reports errors by jumping; every jump ends in the method that called it, in a
// frame without objects. Nothing is printed.
class PngReader {
 public:
  // `bytes` must stay during the reader's life.
  explicit PngReader(std::span<const std::uint8_t> bytes);
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader();

  // Everything before the picture's data; a profile only if it is wanted, as that may be long. False: Cause() says why,
  // and only EndsEarly() is of use besides.
  bool ReadHeader(bool withProfile);

  std::uint32_t Width() const { return png_get_image_width(png_, info_); }
  std::uint32_t Height() const { return png_get_image_height(png_, info_); }
  // Of a page for this picture: 1, 4 and 8 for a palette or gray, 24, and 32 with any transparency outside a palette.
  std::uint32_t Bits() const;
  double DpiX() const { return DpiFromMetre(png_get_x_pixels_per_meter(png_, info_)); }
  double DpiY() const { return DpiFromMetre(png_get_y_pixels_per_meter(png_, info_)); }

  void FillPalette(Page& page) const;

  // Decodes into a page of this picture's size and of Bits(), with its palette filled. Colours become those of sRGB.
  // False: the rest of the rows couldn't be read; AnyRow()
  // tells whether there are some.
  bool ReadRows(Page& page);
  bool AnyRow() const { return rowsRead_ != 0; }

  const char* Cause() const { return text_; }
  std::size_t BytesRead() const { return position_; }
  unsigned Warnings() const { return warnings_; }
  bool EndsEarly() const { return endsEarly_; }

 private:
  static void Leave(png_structp png, png_const_charp text);
  static void Note(png_structp png, png_const_charp text);
  static void Give(png_structp png, png_bytep target, std::size_t count);

  void ChooseOutput();
  bool DecodeRows(Page& page);
  void ConvertColours(Page& page) const;

  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
  bool endsEarly_ = false;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  std::jmp_buf jump_;
  unsigned warnings_ = 0;
  std::uint64_t rowsRead_ = 0;  // of all passes
  char text_[96] = {};
};

}  // namespace modules

#endif  // MODULES_COMMON_PNG_READER_H_
