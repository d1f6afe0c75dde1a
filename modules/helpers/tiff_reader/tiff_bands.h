#ifndef MODULES_HELPERS_TIFF_READER_TIFF_BANDS_H_
#define MODULES_HELPERS_TIFF_READER_TIFF_BANDS_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "modules/helpers/tiff_reader/tiff_file.h"
#include "modules/helpers/tiff_reader/tiff_layout.h"

namespace modules {

// The decoded rows of a picture, a band at a time: the rows of a strip or of a row of tiles, samples in the processor's
// byte order.
class TiffBands {
 public:
  TiffBands(TiffFile& file, const TiffLayout& layout);

  // False: the picture's blocks are larger than what we give them memory for, or don't fit its rows.
  bool Usable() const { return usable_; }
  std::uint32_t BandRows(std::uint32_t firstRow) const;

  // Whether rows stand in the file as Read gives them, so that PlaneRow points there and nothing is copied.
  bool Direct() const { return direct_; }

  // Decodes the band that begins with `firstRow` for PlaneRow, or with one plane into `target`,
  // whose rows must follow each other without a gap and hold zeros. Gives the number of rows that could be read; what
  // is missing of the others is zero.
  std::uint32_t Read(std::uint32_t firstRow, std::uint8_t* target = nullptr);
  const std::uint8_t* PlaneRow(std::uint32_t plane, std::uint32_t rowInBand) const {
    return firstPlane_ + plane * planeBytes_ + rowInBand * rowBytes_;
  }

  bool Damaged() const { return badBlocks_ != 0; }

 private:
  std::uint32_t ReadStrip(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target);
  std::uint32_t ReadStripByRows(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target);
  bool IsPlain() const;
  const std::uint8_t* WholeStripInFile(std::uint32_t firstRow) const;
  std::uint32_t CopyPlainRows(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target);
  std::uint32_t ReadTiles(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target);

  TiffFile& file_;
  TIFF* tiff_;
  const TiffLayout& layout_;
  bool usable_ = false;
  bool tiled_;
  bool direct_ = false;
  std::uint32_t rowsPerBand_ = 0;
  std::uint32_t tileWidth_ = 0;
  std::size_t tileRowBytes_ = 0;
  std::size_t rowBytes_;
  std::size_t planeBytes_ = 0;
  std::uint32_t badBlocks_ = 0;
  const std::uint8_t* firstPlane_ = nullptr;  // of the band: in the file, or the own memory
  std::unique_ptr<std::uint8_t[]> band_;
  std::unique_ptr<std::uint8_t[]> tile_;
};

}  // namespace modules

#endif  // MODULES_HELPERS_TIFF_READER_TIFF_BANDS_H_
