#include "modules/helpers/tiff_reader/tiff_page.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/color_conversion.h"
#include "modules/common/page_builder.h"
#include "modules/common/pixel_rows.h"
#include "modules/common/upright_rows.h"
#include "modules/helpers/tiff_reader/tiff_bands.h"
#include "modules/helpers/tiff_reader/tiff_samples.h"

namespace modules {
namespace {

using PaletteWords = std::array<std::uint32_t, 256>;

constexpr char kCutOff[] = "The picture's data are damaged or cut off";

// Palette words of a colour map. Some writers left bytes in its 16-bit numbers.
bool ReadColourMap(TIFF* tiff, std::uint32_t bits, PaletteWords& words) {
  std::uint16_t* maps[3] = {};
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) == 0) return false;
  const std::uint32_t entries = 1U << bits;
  bool bytes = true;
  for (const std::uint16_t* map : maps)
    bytes &= std::all_of(map, map + entries, [](std::uint16_t v) { return v < 256; });
  for (std::uint32_t i = 0; i < entries; ++i) {
    std::uint32_t word = 0xFF;
    for (const std::uint16_t* map : maps) word = word << 8 | (bytes ? map[i] : (map[i] * 255U + 32767) / 65535);
    words[i] = word;
  }
  return true;
}

void FillGray(Page& page, std::uint32_t levels, bool zeroIsWhite) {
  SetGrayRamp(page, levels);
  if (zeroIsWhite) std::reverse(page.palette, page.palette + levels);
}

std::span<const std::uint8_t> ProfileOf(TIFF* tiff) {
  std::uint32_t size = 0;
  const std::uint8_t* bytes = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &bytes) == 0) return {};
  return {bytes, size};
}

// A row as the file has it, to a row of the page.
class RowMaker {
 public:
  // Only inks are made to colours by the `profile` here; other pages are converted when they are whole.
  RowMaker(const TiffLayout& layout, const PaletteWords& palette, std::span<const std::uint8_t> profile)
      : layout_(layout), palette_(palette), pageBits_(layout.PageBits()) {
    if (layout.IsIndexed() || IsPlainRgb()) return;
    samples_.resize(std::size_t{layout.width} * layout.samples);
    bytes_.resize(samples_.size());
    if (layout.colours != TiffColours::kInks) return;
    conversion_ =
        ConversionToSrgb(profile, {Samples::kInks, pageBits_ == 32}, std::uint64_t{layout.width} * layout.height);
    if (conversion_ != nullptr) inks_.resize(std::size_t{layout.width} * kInkCount);
  }

  void Make(const TiffBands& bands, std::uint32_t rowInBand, std::uint8_t* target) {
    const std::uint8_t* row = bands.PlaneRow(0, rowInBand);
    if (layout_.IsIndexed()) {
      if (layout_.bits == 2) return SpreadQuarters(row, target);
      std::memcpy(target, row, layout_.RowBytes());
    } else if (IsPlainRgb()) {
      SwapColours(row, target);
    } else {
      Unpack(bands, rowInBand);
      Colour(target);
    }
  }

  // Rows that already stand in the page, as the file has them.
  void MakeInPlace(std::uint8_t* row) const {
    if (!layout_.IsIndexed()) SwapColours(row, row);
  }
  // Whether the file's rows, but for the order of colours, are those of the page.
  bool FitsInPlace() const { return (layout_.IsIndexed() && layout_.bits != 2) || IsPlainRgb(); }

 private:
  // Samples in an order that is that of the page but for red and blue.
  bool HasPageSamples() const {
    if (layout_.colours != TiffColours::kRgb) return false;
    if (layout_.alpha == TiffAlpha::kNone) return layout_.samples == 3;
    return layout_.samples == 4 && layout_.alphaSample == 3;
  }

  bool IsPlainRgb() const {
    const bool bytes = layout_.format == SAMPLEFORMAT_UINT || layout_.format == SAMPLEFORMAT_VOID;
    return HasPageSamples() && bytes && layout_.bits == 8 && !layout_.separate &&
           layout_.alpha != TiffAlpha::kMultiplied;
  }

  void SwapColours(const std::uint8_t* from, std::uint8_t* to) const {
    if (layout_.samples == 3) return SwapOuterBytes(from, layout_.width, to);
    for (std::uint32_t x = 0; x < layout_.width; ++x, from += 4, to += 4) {
      std::uint32_t pixel;
      std::memcpy(&pixel, from, 4);
      pixel = (pixel & 0xFF00FF00U) | (pixel >> 16 & 0xFFU) | (pixel & 0xFFU) << 16;
      std::memcpy(to, &pixel, 4);
    }
  }

  void SpreadQuarters(const std::uint8_t* from, std::uint8_t* to) const {
    for (std::uint32_t x = 0; x < layout_.width; x += 2, ++to) {
      const unsigned two = static_cast<unsigned>(from[x / 4]) >> (x % 4 == 0 ? 4 : 0) & 15U;
      *to = static_cast<std::uint8_t>((two >> 2) << 4 | (two & 3));
    }
  }

  // Sixteen bits that need nothing but to become eight.
  bool IsPlainWords() const {
    const bool simple = layout_.colours == TiffColours::kGray || layout_.colours == TiffColours::kRgb ||
                        layout_.colours == TiffColours::kInks;
    return simple && layout_.bits == 16 && layout_.format == SAMPLEFORMAT_UINT && !layout_.separate &&
           layout_.alpha != TiffAlpha::kMultiplied;
  }

  void Unpack(const TiffBands& bands, std::uint32_t rowInBand) {
    if (IsPlainWords()) return RoundWords(bands.PlaneRow(0, rowInBand), bytes_.size(), bytes_.data());
    if (!layout_.separate) {
      UnpackSamples(bands.PlaneRow(0, rowInBand), samples_.size(), layout_, samples_.data(), 1);
    }
    for (std::uint32_t plane = 0; layout_.separate && plane < layout_.samples; ++plane) {
      UnpackSamples(bands.PlaneRow(plane, rowInBand), layout_.width, layout_, samples_.data() + plane, layout_.samples);
    }
    const bool dividable = layout_.colours == TiffColours::kGray || layout_.colours == TiffColours::kRgb;
    if (layout_.alpha == TiffAlpha::kMultiplied && dividable) DivideByAlpha(samples_.data(), layout_.width, layout_);
    ReduceSamples(samples_.data(), samples_.size(), FullSample(layout_), bytes_.data());
  }

  void ConvertInks(std::uint8_t* target) {
    const std::uint8_t* bytes = bytes_.data();
    for (std::size_t x = 0; x < layout_.width; ++x, bytes += layout_.samples) {
      std::memcpy(&inks_[x * kInkCount], bytes, kInkCount);
      if (pageBits_ == 32) target[x * 4 + 3] = bytes[layout_.alphaSample];
    }
    conversion_->Convert(inks_.data(), target, layout_.width);
  }

  void Colour(std::uint8_t* target) {
    if (HasPageSamples()) return SwapColours(bytes_.data(), target);
    if (conversion_ != nullptr) return ConvertInks(target);
    const std::uint32_t* raw = samples_.data();
    const std::uint8_t* bytes = bytes_.data();
    const std::size_t step = pageBits_ / 8;
    for (std::uint32_t x = 0; x < layout_.width;
         ++x, raw += layout_.samples, bytes += layout_.samples, target += step) {
      ColourPixel(raw, bytes, target);
      if (pageBits_ == 32) target[3] = bytes[layout_.alphaSample];
    }
  }

  void ColourPixel(const std::uint32_t* raw, const std::uint8_t* bytes, std::uint8_t* target) const {
    switch (layout_.colours) {
      case TiffColours::kGray:
        target[0] = layout_.zeroIsWhite ? static_cast<std::uint8_t>(255 - bytes[0]) : bytes[0];
        if (pageBits_ == 32) target[1] = target[2] = target[0];
        break;
      case TiffColours::kPalette:
        if (pageBits_ == 32) {
          std::memcpy(target, &palette_[raw[0] & 255U], 3);
        } else {
          target[0] = static_cast<std::uint8_t>(raw[0]);
        }
        break;
      case TiffColours::kInks:
        InkPixel(bytes, target);
        break;
      case TiffColours::kLab:
      case TiffColours::kIccLab:
        LabPixel(raw, layout_, target);
        break;
      default:
        target[0] = bytes[2];
        target[1] = bytes[1];
        target[2] = bytes[0];
    }
  }

  const TiffLayout& layout_;
  const PaletteWords& palette_;
  std::uint32_t pageBits_;
  std::vector<std::uint32_t> samples_;
  std::vector<std::uint8_t> bytes_;
  static constexpr std::size_t kInkCount = 4;
  std::unique_ptr<ColorConversion> conversion_;
  std::vector<std::uint8_t> inks_;  // of a row, to be converted
};

// Gives the number of rows that could be read.
std::uint32_t ReadUprightInPlace(TiffBands& bands, const TiffLayout& layout, const RowMaker& maker, Page& page) {
  std::uint32_t good = 0;
  for (std::uint32_t first = 0; first < layout.height; first += bands.BandRows(first)) {
    const std::uint32_t rows = bands.Read(first, Row(page, first));
    for (std::uint32_t i = 0; i < rows; ++i) maker.MakeInPlace(Row(page, first + i));
    good += rows;
  }
  return good;
}

std::uint32_t ReadByRows(TiffBands& bands, const TiffLayout& layout, RowMaker& maker, Page& page) {
  UprightRows upright(page, layout.orientation);
  const std::size_t rowBytes = glib::PackedStride(layout.width, layout.PageBits());
  std::uint32_t good = 0;
  for (std::uint32_t first = 0; first < layout.height; first += bands.BandRows(first)) {
    const std::uint32_t rows = bands.Read(first);
    for (std::uint32_t i = 0; i < bands.BandRows(first); ++i) {
      std::uint8_t* target = upright.NextRow();
      if (i < rows) {
        maker.Make(bands, i, target);
      } else {
        std::memset(target, 0, rowBytes);
      }
      upright.RowDone();
    }
    good += rows;
  }
  upright.Finish();
  return good;
}

std::uint32_t ReadOwn(TiffFile& file, const TiffLayout& layout, TiffBands& bands, Page& page) {
  PaletteWords palette{};
  if (layout.colours == TiffColours::kGray && page.bits <= 8) {
    const std::uint32_t levels = layout.IsIndexed() ? 1U << layout.bits : 256U;
    FillGray(page, levels, layout.zeroIsWhite && layout.IsIndexed());
  }
  if (layout.colours == TiffColours::kPalette) {
    if (!ReadColourMap(file.Get(), layout.bits, palette)) return 0;
    if (page.bits <= 8) {
      page.paletteEntries = 1U << layout.bits;
      std::copy_n(palette.begin(), page.paletteEntries, page.palette);
    }
  }
  RowMaker maker(layout, palette, ProfileOf(file.Get()));
  const bool inPlace =
      layout.orientation == 1 && !bands.Direct() && maker.FitsInPlace() && page.Stride() == layout.RowBytes();
  return inPlace ? ReadUprightInPlace(bands, layout, maker, page) : ReadByRows(bands, layout, maker, page);
}

std::uint32_t ReadThroughLibrary(TiffFile& file, const TiffLayout& layout, Page& page) {
  const std::size_t pixels = std::size_t{layout.width} * layout.height;
  const std::unique_ptr<std::uint32_t[]> raster(new (std::nothrow) std::uint32_t[pixels]());
  // Asked for the orientation that the file has, the library turns nothing.
  if (raster == nullptr || TIFFReadRGBAImageOriented(file.Get(), layout.width, layout.height, raster.get(),
                                                     static_cast<int>(layout.orientation), 0) == 0) {
    return 0;
  }
  UprightRows upright(page, layout.orientation);
  for (const std::uint32_t* from = raster.get(); from != raster.get() + pixels;) {
    std::uint8_t* to = upright.NextRow();
    for (std::uint32_t x = 0; x < layout.width; ++x, ++from, to += 3) {
      to[0] = static_cast<std::uint8_t>(TIFFGetB(*from));
      to[1] = static_cast<std::uint8_t>(TIFFGetG(*from));
      to[2] = static_cast<std::uint8_t>(TIFFGetR(*from));
    }
    upright.RowDone();
  }
  upright.Finish();
  return layout.height;
}

void ConvertToSrgb(TiffFile& file, const TiffLayout& layout, Page& page) {
  switch (layout.colours) {
    case TiffColours::kGray:
      return ConvertPage(ProfileOf(file.Get()), Samples::kGrey, page);
    case TiffColours::kPalette:
    case TiffColours::kRgb:
    case TiffColours::kLibrary:
      return ConvertPage(ProfileOf(file.Get()), Samples::kColours, page);
    default:
      return;  // inks were converted row by row, Lab has its own meaning
  }
}

}  // namespace

std::uint32_t ReadTiffPage(TiffFile& file, const TiffLayout& layout, glib::ImageDataExchange& exchange) {
  TiffBands bands(file, layout);
  const bool library = layout.colours == TiffColours::kLibrary;
  if (!library && !bands.Usable()) return Fail(exchange, glib::NSUP, "The picture's blocks are not supported");
  char cause[1024] = {};
  if (library && TIFFRGBAImageOK(file.Get(), cause) == 0) return Fail(exchange, glib::NSUP, cause);

  const bool turned = ExchangesSides(layout.orientation);
  Page* page = AddPage(exchange, turned ? layout.height : layout.width, turned ? layout.width : layout.height,
                       layout.PageBits());
  if (page == nullptr) return glib::NSUP;
  page->dpiX = turned ? layout.dpiY : layout.dpiX;
  page->dpiY = turned ? layout.dpiX : layout.dpiY;

  file.ForgetError();
  const std::uint32_t rows = library ? ReadThroughLibrary(file, layout, *page) : ReadOwn(file, layout, bands, *page);
  if (rows == 0) {
    DropLastPage(exchange);
    return Fail(exchange, glib::IERR, file.Error());
  }
  ConvertToSrgb(file, layout, *page);
  if (rows < layout.height || bands.Damaged() || (library && file.HadError())) Fail(exchange, glib::RCOK, kCutOff);
  return glib::RCOK;
}

}  // namespace modules
