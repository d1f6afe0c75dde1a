#ifndef TESTS_MODULES_QJPG_JPEG_FILES_H_
#define TESTS_MODULES_QJPG_JPEG_FILES_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <jpeglib.h>

namespace tests {

using Bytes = std::vector<std::uint8_t>;

struct JpegOptions {
  std::uint32_t width = 45;
  std::uint32_t height = 37;
  J_COLOR_SPACE stored = JCS_YCbCr;
  int sampling = 2;  // of the first component, both ways
  bool progressive = false;
  bool arithmetic = false;
  int restartRows = 0;
  bool adobeMarker = true;  // where the library would write one
  int densityUnit = 0;      // with 300 and 150
  Bytes exif = {};          // body of an APP1 marker
  Bytes profile = {};       // ICC
  std::size_t padding = 0;  // bytes of other markers in front
  bool manyScans = false;   // more than 500 (gray, progressive)
};

// A byte of a picture with edges and slopes.
inline std::uint8_t Sample(std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  const std::uint32_t block = (x / 9 + y / 7) % 3;
  return static_cast<std::uint8_t>(block * 70 + (x * (channel + 1) + y * (3 - channel % 3)) % 110);
}

inline Bytes MakeJpeg(const JpegOptions& options) {
  jpeg_compress_struct cinfo{};
  jpeg_error_mgr errors{};
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_compress(&cinfo);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&cinfo, &memory, &size);
  cinfo.image_width = options.width;
  cinfo.image_height = options.height;
  const bool inks = options.stored == JCS_CMYK || options.stored == JCS_YCCK;
  cinfo.in_color_space = options.stored == JCS_GRAYSCALE ? JCS_GRAYSCALE : inks ? JCS_CMYK : JCS_RGB;
  cinfo.input_components = options.stored == JCS_GRAYSCALE ? 1 : inks ? 4 : 3;
  jpeg_set_defaults(&cinfo);
  jpeg_set_colorspace(&cinfo, options.stored);
  jpeg_set_quality(&cinfo, 80, TRUE);
  cinfo.comp_info[0].h_samp_factor = cinfo.comp_info[0].v_samp_factor = options.sampling;
  if (options.progressive) jpeg_simple_progression(&cinfo);
  cinfo.arith_code = options.arithmetic ? TRUE : FALSE;
  cinfo.restart_in_rows = options.restartRows;
  if (!options.adobeMarker) cinfo.write_Adobe_marker = FALSE;
  cinfo.density_unit = static_cast<UINT8>(options.densityUnit);
  cinfo.X_density = 300;
  cinfo.Y_density = 150;
  std::vector<jpeg_scan_info> scans;
  if (options.manyScans) {
    scans.push_back({1, {0}, 0, 0, 0, 0});
    for (int coefficient = 1; coefficient < 64; ++coefficient) {
      for (int low = 8; low >= 0; --low)
        scans.push_back({1, {0}, coefficient, coefficient, low == 8 ? 0 : low + 1, low});
    }
    cinfo.scan_info = scans.data();
    cinfo.num_scans = static_cast<int>(scans.size());
  }
  jpeg_start_compress(&cinfo, TRUE);
  if (!options.exif.empty()) {
    jpeg_write_marker(&cinfo, JPEG_APP0 + 1, options.exif.data(), static_cast<unsigned>(options.exif.size()));
  }
  if (!options.profile.empty()) {
    jpeg_write_icc_profile(&cinfo, options.profile.data(), static_cast<unsigned>(options.profile.size()));
  }
  const Bytes filling(60000, 0x20);
  for (std::size_t written = 0; written < options.padding; written += filling.size()) {
    jpeg_write_marker(&cinfo, JPEG_APP0 + 9, filling.data(), static_cast<unsigned>(filling.size()));
  }
  const auto channels = static_cast<std::uint32_t>(cinfo.input_components);
  Bytes row(std::size_t{options.width} * channels);
  while (cinfo.next_scanline < cinfo.image_height) {
    for (std::uint32_t x = 0; x < options.width; ++x) {
      for (std::uint32_t c = 0; c < channels; ++c) row[x * channels + c] = Sample(x, cinfo.next_scanline, c);
    }
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&cinfo, &rows, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  Bytes file(memory, memory + size);
  std::free(memory);
  return file;
}

// What the library makes of a good file in the plain way: gray, red green blue, or four inks as stored.
struct PlainPicture {
  std::uint32_t width = 0, height = 0, channels = 0;
  Bytes samples;
  const std::uint8_t* At(std::uint32_t x, std::uint32_t y) const {
    return samples.data() + (std::size_t{y} * width + x) * channels;
  }
};

inline PlainPicture DecodePlainly(const Bytes& file) {
  jpeg_decompress_struct cinfo{};
  jpeg_error_mgr errors{};
  cinfo.err = jpeg_std_error(&errors);
  errors.output_message = [](j_common_ptr) {};
  jpeg_create_decompress(&cinfo);
  jpeg_mem_src(&cinfo, file.data(), file.size());
  jpeg_read_header(&cinfo, TRUE);
  jpeg_start_decompress(&cinfo);
  PlainPicture picture{
      cinfo.output_width, cinfo.output_height, static_cast<std::uint32_t>(cinfo.output_components), {}};
  picture.samples.resize(std::size_t{picture.width} * picture.height * picture.channels);
  while (cinfo.output_scanline < cinfo.output_height) {
    JSAMPROW row = picture.samples.data() + std::size_t{cinfo.output_scanline} * picture.width * picture.channels;
    jpeg_read_scanlines(&cinfo, &row, 1);
  }
  jpeg_finish_decompress(&cinfo);
  jpeg_destroy_decompress(&cinfo);
  return picture;
}

struct ExifEntry {
  std::uint16_t tag, type;
  std::uint32_t count, value;
};

// The body of an APP1 marker. Rationals are found at their value, counted from the byte order mark; `tail` stands
// behind the directory, at 14 + 12 for each entry.
inline Bytes MakeExif(bool big, const std::vector<ExifEntry>& entries, const std::vector<std::uint32_t>& tail = {}) {
  Bytes bytes = {'E', 'x', 'i', 'f', 0, 0};
  const auto put = [&](std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      bytes.push_back(static_cast<std::uint8_t>(value >> (big ? size - 1 - i : i) * 8));
    }
  };
  bytes.insert(bytes.end(), 2, big ? 'M' : 'I');
  put(42, 2);
  put(8, 4);
  put(static_cast<std::uint32_t>(entries.size()), 2);
  for (const ExifEntry& entry : entries) {
    put(entry.tag, 2);
    put(entry.type, 2);
    put(entry.count, 4);
    // Short values stand at the beginning of their 4 bytes.
    put(entry.value, entry.type == 3 ? 2 : 4);
    if (entry.type == 3) put(0, 2);
  }
  put(0, 4);
  for (const std::uint32_t value : tail) put(value, 4);
  return bytes;
}

}  // namespace tests

#endif  // TESTS_MODULES_QJPG_JPEG_FILES_H_
