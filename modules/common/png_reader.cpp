#include "modules/common/png_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "modules/common/color_conversion.h"

namespace modules {
namespace {

// A chunk beside the picture's data that needs more memory than this, or more chunks than that, is an attack.
constexpr png_alloc_size_t kMaxChunkBytes = 8 << 20;
constexpr png_uint_32 kMaxChunks = 1000;

// Two bits a pixel to four, from the last byte back, as the two share their memory.
void SpreadQuarters(std::uint8_t* row, std::uint32_t width) {
  for (std::size_t i = (std::size_t{width} + 3) / 4; i-- != 0;) {
    const unsigned four = row[i];
    if (i * 4 + 2 < width) row[i * 2 + 1] = static_cast<std::uint8_t>((four >> 2 & 3) << 4 | (four & 3));
    row[i * 2] = static_cast<std::uint8_t>(four >> 6 << 4 | (four >> 4 & 3));
  }
}

constexpr std::size_t kChunkHeaderBytes = 8;

// A chunk of picture data that reaches past the end is made to end there: of one that it can't have whole, the library
// would drop what there is.
void ShortenData(std::uint8_t* header, std::size_t left) {
  if (std::memcmp(header + 4, "IDAT", 4) != 0 || png_get_uint_32(header) <= left) return;
  png_save_uint_32(header, static_cast<png_uint_32>(left));
}

}  // namespace

PngReader::PngReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
  png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, Leave, Note);
  if (png_ != nullptr) info_ = png_create_info_struct(png_);
}

PngReader::~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

void PngReader::Leave(png_structp png, png_const_charp text) {
  auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
  std::snprintf(reader->text_, sizeof(reader->text_), "%s", text);
  std::longjmp(reader->jump_, 1);
}

void PngReader::Note(png_structp png, png_const_charp) { ++static_cast<PngReader*>(png_get_error_ptr(png))->warnings_; }

void PngReader::Give(png_structp png, png_bytep target, std::size_t count) {
  auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
  const std::size_t left = reader->bytes_.size() - reader->position_;
  if (count > left) {
    reader->endsEarly_ = true;
    png_error(png, "The file ends early");
  }
  std::memcpy(target, reader->bytes_.data() + reader->position_, count);
  reader->position_ += count;
  if (count == kChunkHeaderBytes) ShortenData(target, left - count);
}

bool PngReader::ReadHeader(bool withProfile) {
  if (info_ == nullptr) return false;
  if (setjmp(jump_) != 0) return false;
  png_set_read_fn(png_, this, Give);
  // Sides have limits of their own, checked by whoever makes the page.
  png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_chunk_malloc_max(png_, kMaxChunkBytes);
  png_set_chunk_cache_max(png_, kMaxChunks);
  png_set_benign_errors(png_, 1);
  // Chunks that a picture can do without, of which more than these don't matter.
  static constexpr png_byte kUseful[] = {'p', 'H', 'Y', 's', 0, 'i', 'C', 'C', 'P', 0};
  png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_AS_DEFAULT, kUseful, withProfile ? 2 : 1);
  png_read_info(png_, info_);
  return true;
}

std::uint32_t PngReader::Bits() const {
  const std::uint32_t depth = png_get_bit_depth(png_, info_);
  const bool transparent = png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
  switch (png_get_color_type(png_, info_)) {
    case PNG_COLOR_TYPE_PALETTE:
      return depth == 2 ? 4 : depth;
    case PNG_COLOR_TYPE_GRAY:
      if (transparent) return 32;
      return depth == 2 ? 4 : depth == 16 ? 8 : depth;
    case PNG_COLOR_TYPE_RGB:
      return transparent ? 32 : 24;
    default:
      return 32;
  }
}

void PngReader::FillPalette(Page& page) const {
  if (png_get_color_type(png_, info_) != PNG_COLOR_TYPE_PALETTE) {
    if (page.bits <= 8) SetGrayRamp(page, std::min(256U, 1U << png_get_bit_depth(png_, info_)));
    return;
  }
  png_colorp colours = nullptr;
  int colourCount = 0;
  png_bytep alphas = nullptr;
  int alphaCount = 0;
  png_get_PLTE(png_, info_, &colours, &colourCount);
  png_get_tRNS(png_, info_, &alphas, &alphaCount, nullptr);
  for (int i = 0; i < colourCount; ++i) {
    SetEntry(page, static_cast<std::uint32_t>(i), colours[i].red, colours[i].green, colours[i].blue,
             i < alphaCount ? alphas[i] : std::uint8_t{255});
  }
  page.paletteEntries = static_cast<std::uint32_t>(colourCount);
}

void PngReader::ChooseOutput() {
  const int type = png_get_color_type(png_, info_);
  if (png_get_bit_depth(png_, info_) == 16) png_set_scale_16(png_);
  if (type == PNG_COLOR_TYPE_PALETTE) return;
  if (png_get_valid(png_, info_, PNG_INFO_tRNS) != 0) png_set_tRNS_to_alpha(png_);
  if (Bits() == 32 && (type & PNG_COLOR_MASK_COLOR) == 0) png_set_gray_to_rgb(png_);
  png_set_bgr(png_);
}

bool PngReader::ReadRows(Page& page) {
  const bool whole = DecodeRows(page);
  if (png_get_bit_depth(png_, info_) == 2 && page.bits == 4) {
    for (std::uint32_t y = 0; y < Height(); ++y) SpreadQuarters(Row(page, y), Width());
  }
  ConvertColours(page);
  return whole;
}

void PngReader::ConvertColours(Page& page) const {
  png_charp name = nullptr;
  int compression = 0;
  png_bytep profile = nullptr;
  png_uint_32 size = 0;
  if (png_get_iCCP(png_, info_, &name, &compression, &profile, &size) == 0) return;
  const bool colours = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) != 0;
  ConvertPage({profile, size}, colours ? Samples::kColours : Samples::kGrey, page);
}

bool PngReader::DecodeRows(Page& page) {
  if (setjmp(jump_) != 0) return false;
  ChooseOutput();
  const int passes = png_set_interlace_handling(png_);
  png_start_read_image(png_);
  const std::uint32_t height = Height();
  for (int pass = 0; pass < passes; ++pass) {
    for (std::uint32_t y = 0; y < height; ++y) {
      // As a "display" row the early passes of an interlaced picture fill their blocks, which later passes refine.
      if (passes == 1) {
        png_read_row(png_, Row(page, y), nullptr);
      } else {
        png_read_row(png_, nullptr, Row(page, y));
      }
      ++rowsRead_;
    }
  }
  return true;
}

}  // namespace modules
