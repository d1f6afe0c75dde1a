#ifndef TESTS_MODULES_QTIF_TIFF_FILES_H_
#define TESTS_MODULES_QTIF_TIFF_FILES_H_

#include <tiffio.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace tests {

using Bytes = std::vector<std::uint8_t>;

struct TiffOptions {
  std::uint32_t width = 37;
  std::uint32_t height = 29;
  std::uint32_t bits = 8;
  std::uint32_t samples = 1;
  int photometric = PHOTOMETRIC_MINISBLACK;
  int compression = COMPRESSION_NONE;
  int predictor = 0;
  int format = 0;
  bool separate = false;
  std::uint32_t rowsPerStrip = 8;
  std::uint32_t tile = 0;  // side; 0: strips
  int orientation = 0;
  std::vector<std::uint16_t> extra{};  // kinds of the samples behind the colours
  int fillOrder = 0;
  int resolutionUnit = 0;  // with 120 and 60
  int subfile = -1;
  bool bytesInMap = false;  // colour map entries of 8 bits
  Bytes profile = {};       // ICC
};

// Sample as the file has it; floats are made of its low 16 bits.
inline std::uint32_t TiffSample(const TiffOptions& o, std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  std::uint32_t mixed = x * 2654435761U + y * 40503U * 257U + channel * 7919U * 65537U;
  mixed ^= mixed >> 15;
  const std::uint32_t bits = o.bits < 32 ? o.bits : 32;
  return bits == 32 ? mixed : mixed & ((1U << bits) - 1);
}

inline std::uint16_t MapValue(const TiffOptions& o, std::uint32_t index, std::uint32_t channel) {
  const std::uint32_t value = (index * (37 + 54 * channel) + 11 * channel) & 0xFF;
  return static_cast<std::uint16_t>(o.bytesInMap ? value : value * 257);
}

inline double FloatSample(const TiffOptions& o, std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  return static_cast<double>(TiffSample(o, x, y, channel) & 0xFFFF) / 49152.0 - 1.0 / 6;  // some below 0, some above 1
}

// Samples first to last of a row, packed as in the file.
inline Bytes PackRow(const TiffOptions& o, std::uint32_t x0, std::uint32_t count, std::uint32_t y,
                     std::uint32_t plane) {
  const std::uint32_t channels = o.separate ? 1 : o.samples;
  Bytes row((std::size_t{count} * channels * o.bits + 7) / 8);
  for (std::uint32_t i = 0; i < count * channels; ++i) {
    const std::uint32_t x = x0 + i / channels;
    const std::uint32_t channel = o.separate ? plane : i % channels;
    if (o.format == SAMPLEFORMAT_IEEEFP) {
      const double value = FloatSample(o, x, y, channel);
      const auto single = static_cast<float>(value);
      if (o.bits == 64) std::memcpy(row.data() + std::size_t{i} * 8, &value, 8);
      if (o.bits == 32) std::memcpy(row.data() + std::size_t{i} * 4, &single, 4);
      continue;
    }
    const std::uint32_t sample = TiffSample(o, x, y, channel);
    if (o.bits == 16 || o.bits == 32) {
      std::memcpy(row.data() + std::size_t{i} * (o.bits / 8), &sample, o.bits / 8);
      continue;
    }
    for (std::uint32_t b = 0; b < o.bits; ++b) {
      const std::uint32_t bit = i * o.bits + b;
      row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | (sample >> (o.bits - 1 - b) & 1) << (7 - bit % 8));
    }
  }
  return row;
}

inline void WritePage(TIFF* tiff, const TiffOptions& o) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, o.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, o.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, o.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, o.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, o.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, o.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, o.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  if (o.predictor != 0) TIFFSetField(tiff, TIFFTAG_PREDICTOR, o.predictor);
  if (o.format != 0) TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, o.format);
  if (o.orientation != 0) TIFFSetField(tiff, TIFFTAG_ORIENTATION, o.orientation);
  if (o.fillOrder != 0) TIFFSetField(tiff, TIFFTAG_FILLORDER, o.fillOrder);
  if (!o.profile.empty()) {
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(o.profile.size()), o.profile.data());
  }
  if (o.subfile >= 0) TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, o.subfile);
  if (!o.extra.empty()) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(o.extra.size()), o.extra.data());
  if (o.compression == COMPRESSION_JPEG && o.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  } else if (o.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
  }
  if (o.resolutionUnit != 0) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 120.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 60.0);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, o.resolutionUnit);
  }
  if (o.photometric == PHOTOMETRIC_PALETTE) {
    std::vector<std::uint16_t> maps[3];
    for (std::uint32_t i = 0; i < 1U << o.bits; ++i) {
      for (std::uint32_t c = 0; c < 3; ++c) maps[c].push_back(MapValue(o, i, c));
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
  }
  const std::uint32_t planes = o.separate ? o.samples : 1;
  if (o.tile == 0) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, o.rowsPerStrip);
    for (std::uint32_t plane = 0; plane < planes; ++plane) {
      for (std::uint32_t y = 0; y < o.height; ++y) {
        Bytes row = PackRow(o, 0, o.width, y, plane);
        TIFFWriteScanline(tiff, row.data(), y, static_cast<std::uint16_t>(plane));
      }
    }
  } else {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, o.tile);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, o.tile);
    for (std::uint32_t plane = 0; plane < planes; ++plane) {
      for (std::uint32_t y0 = 0; y0 < o.height; y0 += o.tile) {
        for (std::uint32_t x0 = 0; x0 < o.width; x0 += o.tile) {
          Bytes tile;
          for (std::uint32_t y = y0; y < y0 + o.tile; ++y) {
            const Bytes row = PackRow(o, x0, o.tile, y, plane);
            tile.insert(tile.end(), row.begin(), row.end());
          }
          TIFFWriteTile(tiff, tile.data(), x0, y0, 0, static_cast<std::uint16_t>(plane));
        }
      }
    }
  }
  TIFFWriteDirectory(tiff);
}

// `mode` as for TIFFOpen: "w", with "b" big-endian, with "8" for large files.
inline Bytes MakeTiff(const std::vector<TiffOptions>& pages, const char* mode = "w") {
  const test_support::TemporaryFolder folder;
  TIFF* tiff = TIFFOpen((folder.path() / "file").c_str(), mode);
  for (const TiffOptions& page : pages) WritePage(tiff, page);
  TIFFClose(tiff);
  const std::string file = folder.Read("file");
  return Bytes(file.begin(), file.end());
}

}  // namespace tests

#endif  // TESTS_MODULES_QTIF_TIFF_FILES_H_
