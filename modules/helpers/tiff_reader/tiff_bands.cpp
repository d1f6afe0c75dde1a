#include "modules/helpers/tiff_reader/tiff_bands.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace modules {
namespace {

// A file that declares millions of blocks which aren't there is given up after so many.
constexpr std::uint32_t kMaxBadBlocks = 1000;

}  // namespace

TiffBands::TiffBands(TiffFile& file, const TiffLayout& layout)
    : file_(file), tiff_(file.Get()), layout_(layout), tiled_(TIFFIsTiled(tiff_) != 0), rowBytes_(layout.RowBytes()) {
  if (tiled_) {
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth_);
    TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &rowsPerBand_);
    const std::uint64_t rowBits = std::uint64_t{tileWidth_} * layout.bits * (layout.separate ? 1 : layout.samples);
    tileRowBytes_ = static_cast<std::size_t>((rowBits + 7) / 8);
    // Tiles side by side must join at whole bytes.
    if (tileWidth_ == 0 || rowsPerBand_ == 0 || (tileWidth_ < layout.width && rowBits % 8 != 0)) return;
    if (static_cast<std::uint64_t>(TIFFTileRowSize64(tiff_)) != tileRowBytes_) return;
    if (tileRowBytes_ > kMaxTiffBlock / rowsPerBand_) return;
  } else {
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &rowsPerBand_);
    rowsPerBand_ = std::min(rowsPerBand_, layout.height);
    if (rowsPerBand_ == 0 || static_cast<std::uint64_t>(TIFFScanlineSize64(tiff_)) != rowBytes_) return;
  }
  planeBytes_ = rowBytes_ * std::min(rowsPerBand_, layout.height);
  usable_ = planeBytes_ <= kMaxTiffBlock / layout.Planes();
  direct_ = !tiled_ && layout.Planes() == 1 && IsPlain();
}

// No compression, and bytes and bits in our own order.
bool TiffBands::IsPlain() const {
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff_, TIFFTAG_COMPRESSION, &compression);
  TIFFGetFieldDefaulted(tiff_, TIFFTAG_FILLORDER, &fillOrder);
  const bool ownOrder = TIFFIsByteSwapped(tiff_) == 0 || layout_.bits <= 8;
  return compression == COMPRESSION_NONE && fillOrder == FILLORDER_MSB2LSB && ownOrder;
}

// Null if the strip is cut off or says that it is shorter than its rows.
const std::uint8_t* TiffBands::WholeStripInFile(std::uint32_t firstRow) const {
  const std::uint32_t strip = TIFFComputeStrip(tiff_, firstRow, 0);
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_, strip);
  const std::uint64_t size = std::uint64_t{BandRows(firstRow)} * rowBytes_;
  const auto bytes = file_.Bytes();
  const bool whole = offset != 0 && offset <= bytes.size() && bytes.size() - offset >= size;
  return whole && TIFFGetStrileByteCount(tiff_, strip) >= size ? bytes.data() + offset : nullptr;
}

std::uint32_t TiffBands::BandRows(std::uint32_t firstRow) const {
  return std::min(rowsPerBand_, layout_.height - firstRow);
}

std::uint32_t TiffBands::Read(std::uint32_t firstRow, std::uint8_t* target) {
  if (badBlocks_ > kMaxBadBlocks) return 0;
  if (direct_ && target == nullptr) {
    firstPlane_ = WholeStripInFile(firstRow);
    if (firstPlane_ != nullptr) return BandRows(firstRow);
  }
  if (target == nullptr) {
    if (band_ == nullptr) band_.reset(new (std::nothrow) std::uint8_t[planeBytes_ * layout_.Planes()]);
    if (band_ == nullptr) {
      badBlocks_ = kMaxBadBlocks + 1;
      return 0;
    }
    target = band_.get();
    firstPlane_ = target;
  }
  std::uint32_t rows = BandRows(firstRow);
  for (std::uint32_t plane = 0; plane < layout_.Planes(); ++plane) {
    std::uint8_t* planeTarget = target + plane * planeBytes_;
    const auto planeNumber = static_cast<std::uint16_t>(plane);
    rows = std::min(
        rows, tiled_ ? ReadTiles(firstRow, planeNumber, planeTarget) : ReadStrip(firstRow, planeNumber, planeTarget));
  }
  return rows;
}

std::uint32_t TiffBands::ReadStrip(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target) {
  const std::uint32_t rows = BandRows(firstRow);
  const auto size = static_cast<tmsize_t>(rows * rowBytes_);
  if (TIFFReadEncodedStrip(tiff_, TIFFComputeStrip(tiff_, firstRow, plane), target, size) == size) return rows;
  ++badBlocks_;
  std::memset(target, 0, rows * rowBytes_);
  std::uint16_t compression = COMPRESSION_NONE;
  TIFFGetFieldDefaulted(tiff_, TIFFTAG_COMPRESSION, &compression);
  return compression == COMPRESSION_NONE ? CopyPlainRows(firstRow, plane, target)
                                         : ReadStripByRows(firstRow, plane, target);
}

std::uint32_t TiffBands::ReadStripByRows(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target) {
  // The first call leaves the library one row further, whatever it gives; only to go back makes it begin the strip
  // anew.
  TIFFReadScanline(tiff_, target, firstRow, plane);
  std::uint32_t row = 0;
  while (row < BandRows(firstRow) && TIFFReadScanline(tiff_, target + row * rowBytes_, firstRow + row, plane) == 1) {
    ++row;
  }
  std::memset(target + row * rowBytes_, 0, (BandRows(firstRow) - row) * rowBytes_);
  return row;
}

// The library gives nothing of a strip that reaches past the file's end.
std::uint32_t TiffBands::CopyPlainRows(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target) {
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_, TIFFComputeStrip(tiff_, firstRow, plane));
  const auto bytes = file_.Bytes();
  if (offset == 0 || offset >= bytes.size()) return 0;
  const std::size_t whole = (bytes.size() - static_cast<std::size_t>(offset)) / rowBytes_;
  const auto rows = static_cast<std::uint32_t>(std::min<std::size_t>(whole, BandRows(firstRow)));
  const std::size_t size = rows * rowBytes_;
  std::memcpy(target, bytes.data() + offset, size);
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff_, TIFFTAG_FILLORDER, &fillOrder);
  if (fillOrder == FILLORDER_LSB2MSB) TIFFReverseBits(target, static_cast<tmsize_t>(size));
  if (TIFFIsByteSwapped(tiff_) != 0 && (layout_.bits == 16 || layout_.bits == 32 || layout_.bits == 64)) {
    const std::size_t sampleBytes = layout_.bits / 8;
    for (std::size_t i = 0; i + sampleBytes <= size; i += sampleBytes)
      std::reverse(target + i, target + i + sampleBytes);
  }
  return rows;
}

std::uint32_t TiffBands::ReadTiles(std::uint32_t firstRow, std::uint16_t plane, std::uint8_t* target) {
  const std::size_t tileBytes = tileRowBytes_ * rowsPerBand_;
  if (tile_ == nullptr) tile_.reset(new (std::nothrow) std::uint8_t[tileBytes]);
  if (tile_ == nullptr) {
    badBlocks_ = kMaxBadBlocks + 1;
    return 0;
  }
  const std::uint32_t rows = BandRows(firstRow);
  std::memset(target, 0, rows * rowBytes_);
  bool any = false;
  for (std::uint64_t x = 0; x < layout_.width && badBlocks_ <= kMaxBadBlocks; x += tileWidth_) {
    const auto tile = TIFFComputeTile(tiff_, static_cast<std::uint32_t>(x), firstRow, 0, plane);
    if (TIFFReadEncodedTile(tiff_, tile, tile_.get(), static_cast<tmsize_t>(tileBytes)) < 0) {
      ++badBlocks_;
      continue;
    }
    any = true;
    const std::size_t from = static_cast<std::size_t>(x / tileWidth_) * tileRowBytes_;
    const std::size_t count = std::min(tileRowBytes_, rowBytes_ - from);
    for (std::uint32_t row = 0; row < rows; ++row) {
      std::memcpy(target + row * rowBytes_ + from, tile_.get() + row * tileRowBytes_, count);
    }
  }
  return any ? rows : 0;
}

}  // namespace modules
