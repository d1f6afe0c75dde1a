#include "modules/qani/png_frame.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"

namespace qani {
namespace {

constexpr std::uint8_t kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kHeaderAt = 16;  // behind the signature and the head of the first chunk
constexpr png_alloc_size_t kMaxChunk = 1 << 23;
constexpr png_uint_32 kMaxChunks = 128;

// The state of one decoding. All that the library's errors jump over lives here, in the frame of LoadPng.
struct Decoding {
  modules::ByteReader in;
  png_structp png = nullptr;
  png_infop info = nullptr;
  modules::Page* page = nullptr;
  std::vector<png_bytep> rows;
  std::uint32_t rowsRead = 0;
  std::uint32_t result = glib::IERR;
};

void ReadBytes(png_structp png, png_bytep target, png_size_t count) {
  auto& in = *static_cast<modules::ByteReader*>(png_get_io_ptr(png));
  if (in.Read(target, count) != count) png_error(png, "cut off");
}

[[noreturn]] void Escape(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void Ignore(png_structp, png_const_charp) {}

// Bits of the page: those of the file, but 2 become 8, and 16 become 8 a channel.
std::uint32_t PageBits(std::uint32_t depth, std::uint32_t colourType, bool transparentColour) {
  if (colourType == PNG_COLOR_TYPE_PALETTE) return depth == 2 ? 8 : depth;
  if ((colourType & PNG_COLOR_MASK_ALPHA) != 0 || transparentColour) return 32;
  if ((colourType & PNG_COLOR_MASK_COLOR) != 0) return 24;
  return depth == 1 ? 1 : 8;
}

void FillPalette(Decoding& decoding) {
  png_colorp colours = nullptr;
  int count = 0;
  if (png_get_PLTE(decoding.png, decoding.info, &colours, &count) == 0) return;
  png_bytep alphas = nullptr;
  int alphaCount = 0;
  png_get_tRNS(decoding.png, decoding.info, &alphas, &alphaCount, nullptr);
  for (int i = 0; i < count; ++i) {
    const png_color& colour = colours[i];
    const png_byte alpha = alphas != nullptr && i < alphaCount ? alphas[i] : png_byte{255};
    modules::SetEntry(*decoding.page, static_cast<std::uint32_t>(i), colour.red, colour.green, colour.blue, alpha);
  }
  decoding.page->paletteEntries = static_cast<std::uint32_t>(count);
}

// Adds the page and asks the library for rows as the page has them. False if the page is refused.
bool Prepare(Decoding& decoding, glib::ImageDataExchange& exchange) {
  png_structp png = decoding.png;
  const std::uint32_t colourType = png_get_color_type(png, decoding.info);
  const std::uint32_t depth = png_get_bit_depth(png, decoding.info);
  const bool palette = colourType == PNG_COLOR_TYPE_PALETTE;
  const bool transparentColour = !palette && png_get_valid(png, decoding.info, PNG_INFO_tRNS) != 0;
  const std::uint32_t bits = PageBits(depth, colourType, transparentColour);
  const std::uint32_t height = png_get_image_height(png, decoding.info);
  decoding.page = modules::AddPage(exchange, png_get_image_width(png, decoding.info), height, bits);
  if (decoding.page == nullptr) return false;

  if (depth == 16) png_set_scale_16(png);
  if (bits == 8 && depth < 8) palette ? png_set_packing(png) : png_set_expand_gray_1_2_4_to_8(png);
  if (bits >= 24) {
    if (transparentColour) png_set_tRNS_to_alpha(png);
    png_set_gray_to_rgb(png);
    png_set_bgr(png);
  }
  if (palette) {
    FillPalette(decoding);
  } else if (bits <= 8) {
    modules::SetGrayRamp(*decoding.page, 1U << bits);
  }
  decoding.page->dpiX = modules::DpiFromMetre(png_get_x_pixels_per_meter(png, decoding.info));
  decoding.page->dpiY = modules::DpiFromMetre(png_get_y_pixels_per_meter(png, decoding.info));
  decoding.rows.resize(height);
  for (std::uint32_t y = 0; y < height; ++y) decoding.rows[y] = modules::Row(*decoding.page, y);
  return true;
}

// Free of objects with destructors: an error of the library jumps back to its first line.
void Decode(Decoding& decoding, glib::ImageDataExchange& exchange) {
  if (setjmp(png_jmpbuf(decoding.png)) != 0) return;
  png_set_user_limits(decoding.png, modules::kMaxSide, modules::kMaxSide);
  png_set_chunk_malloc_max(decoding.png, kMaxChunk);
  png_set_chunk_cache_max(decoding.png, kMaxChunks);
  png_set_benign_errors(decoding.png, 1);
  png_set_read_fn(decoding.png, &decoding.in, ReadBytes);
  png_read_info(decoding.png, decoding.info);
  if (!Prepare(decoding, exchange)) {
    decoding.result = glib::NSUP;
    return;
  }
  const int passes = png_set_interlace_handling(decoding.png);
  png_read_update_info(decoding.png, decoding.info);
  const std::size_t height = decoding.rows.size();
  for (int pass = 0; pass < passes; ++pass) {
    for (std::size_t y = 0; y < height; ++y) {
      png_read_row(decoding.png, decoding.rows[y], nullptr);
      if (pass + 1 == passes) ++decoding.rowsRead;
    }
  }
}

}  // namespace

bool IsPng(std::span<const std::uint8_t> image) {
  return image.size() >= sizeof(kSignature) && std::equal(std::begin(kSignature), std::end(kSignature), image.begin());
}

modules::Verdict SummarizePng(std::span<const std::uint8_t> image, IconSummary& summary) {
  modules::ByteReader in(image);
  in.Skip(kHeaderAt);
  summary.width = in.BigLong();
  summary.height = in.BigLong();
  const std::uint32_t depth = in.Byte();
  const std::uint32_t colourType = in.Byte();
  if (in.Failed() || summary.width == 0 || summary.height == 0) return {glib::IERR, "The header of the PNG is damaged"};
  if (!modules::SizeAllowed(summary.width, summary.height)) return {glib::NSUP, "The picture is too large"};
  summary.bits = PageBits(depth, colourType, false);
  return modules::kFine;
}

std::uint32_t LoadPng(std::span<const std::uint8_t> image, glib::ImageDataExchange& exchange, std::size_t& used) {
  Decoding decoding{.in = modules::ByteReader(image), .rows = {}};
  decoding.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Escape, Ignore);
  if (decoding.png == nullptr) return modules::Fail(exchange, glib::IERR, "There is no memory to decode the PNG");
  decoding.info = png_create_info_struct(decoding.png);
  if (decoding.info != nullptr) Decode(decoding, exchange);
  png_destroy_read_struct(&decoding.png, &decoding.info, nullptr);
  used = std::max<std::size_t>(decoding.in.Position(), 1);
  if (decoding.result == glib::NSUP) return glib::NSUP;
  if (decoding.page == nullptr) return modules::Fail(exchange, glib::IERR, "The header of the PNG is damaged");
  return modules::EndOfRows(exchange, decoding.rowsRead, static_cast<std::uint32_t>(decoding.page->height));
}

}  // namespace qani
