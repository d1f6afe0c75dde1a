#ifndef MODULES_COMMON_JPEG_READER_H_
#define MODULES_COMMON_JPEG_READER_H_

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

#include <jpeglib.h>

#include "modules/common/color_conversion.h"
#include "modules/common/exif.h"

namespace modules {

// One JPEG file in memory. The library reports errors by jumping; every jump ends in the method that called it, in a
// frame without objects. Nothing is printed.
class JpegReader {
 public:
  // `bytes` must stay during the reader's life.
  explicit JpegReader(std::span<const std::uint8_t> bytes);
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  ~JpegReader();

  // Everything before the first scan's data. False: Result() and Cause() say why, and only EndsEarly() is of use.
  bool ReadHeader();

  // Lets the decoder make a smaller picture, an eighth to seven eighths of the size, that still has at least these
  // sides; 0 for a side asks nothing of it. Between ReadHeader and Start.
  void ReduceTo(std::uint32_t width, std::uint32_t height);

  // The picture as stored, before it is turned by `Orientation`.
  std::uint32_t Width() const { return cinfo_.output_width; }
  std::uint32_t Height() const { return cinfo_.output_height; }
  std::uint32_t Bits() const { return cinfo_.out_color_space == JCS_GRAYSCALE ? 8 : 24; }
  std::uint32_t Orientation() const { return exif_.orientation; }
  double DpiX() const;
  double DpiY() const;

  // The grey ramp of a picture of 8 bits, as its profile means it.
  void FillGreys(Page& page) const;

  // After Start, each call gives one row: gray bytes, or blue, green, red of sRGB. False: the rest can't be had.
  bool Start();
  bool ReadRow(std::uint8_t* row);

  std::uint32_t Result() const;
  const char* Cause() const { return errors_.text; }
  long Warnings() const { return errors_.base.num_warnings; }
  bool EndsEarly() const { return source_.endsEarly; }
  // The data end before the first row of blocks is whole: whatever the decoder gives is no part of the picture.
  bool WithoutRows() const { return errors_.withoutRows; }

 private:
  struct Errors {
    jpeg_error_mgr base;  // first: the library knows this part
    std::jmp_buf jump;
    bool withoutRows;
    char text[JMSG_LENGTH_MAX];
  };
  struct MemorySource {
    jpeg_source_mgr base;  // first: the library knows this part
    bool endsEarly;
  };

  static void Leave(j_common_ptr cinfo);
  static void Note(j_common_ptr cinfo, int level);
  static boolean EndInput(j_decompress_ptr cinfo);
  static void SkipInput(j_decompress_ptr cinfo, long count);
  static void LimitScans(j_common_ptr cinfo);

  std::span<const std::uint8_t> Profile() const { return {profile_, profileSize_}; }
  bool DecodeRow(std::uint8_t* row);
  void ChooseOutput();
  void ReadNotes();
  void ReadProfile();

  jpeg_decompress_struct cinfo_;
  Errors errors_;
  MemorySource source_;
  jpeg_progress_mgr progress_;
  bool created_ = false;
  Exif exif_;
  JOCTET* profile_ = nullptr;  // owned; a plain pointer, as a jump may pass
  unsigned profileSize_ = 0;
  std::unique_ptr<ColorConversion> conversion_;
  std::unique_ptr<std::uint8_t[]> inkRow_;  // one row of cyan, magenta, yellow, black
};

}  // namespace modules

#endif  // MODULES_COMMON_JPEG_READER_H_
