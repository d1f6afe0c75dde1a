#include "modules/helpers/graphicsmagick/pages.h"

#include <cstring>

#include "glib/module_api/result_values.h"
#include "modules/common/page_builder.h"

namespace magick {
namespace {

// The library works with 16 bits a sample.
// Rounded, and without a division, so that loops over it become vectors.
std::uint8_t ToByte(Quantum value) { return static_cast<std::uint8_t>((std::uint32_t{value} * 255 + 32895) >> 16); }

bool IsGrey(const PixelPacket& pixel) { return pixel.red == pixel.green && pixel.green == pixel.blue; }

bool HasMap(const Image& image) {
  return image.storage_class == PseudoClass && image.colormap != nullptr && image.colors != 0;
}

bool HasGreyMap(const Image& image) {
  for (unsigned i = 0; i < image.colors; ++i) {
    if (!IsGrey(image.colormap[i])) return false;
  }
  return true;
}

// Whether the map runs from black to white in equal steps, which no palette chosen for a picture does by chance.
bool IsRamp(const Image& image) {
  if (image.colors < 4) return false;
  for (unsigned i = 0; i < image.colors; ++i) {
    const std::uint32_t step = (i * 65535U + (image.colors - 1) / 2) / (image.colors - 1);
    if (!IsGrey(image.colormap[i]) || ToByte(image.colormap[i].red) != ToByte(static_cast<Quantum>(step))) return false;
  }
  return true;
}

enum class Form { kIndices, kGrey, kColour, kAlpha };

Form FormOf(const Image& image, const modules::MagickOptions& options, bool pixelsKnown) {
  if (image.matte != MagickFalse) return Form::kAlpha;
  if (HasMap(image)) {
    if (image.colors <= 256) return Form::kIndices;
    return HasGreyMap(image) ? Form::kGrey : Form::kColour;
  }
  if (!options.greyIsIndexed || !pixelsKnown) return options.greyIsIndexed ? Form::kGrey : Form::kColour;
  // Not the picture's own mark, which some coders never set.
  ExceptionInfo exception;
  GetExceptionInfo(&exception);
  const bool grey = IsGrayImage(&image, &exception) != MagickFail;
  DestroyExceptionInfo(&exception);
  return grey ? Form::kGrey : Form::kColour;
}

void WriteIndices(const IndexPacket* indices, std::uint32_t bits, std::uint8_t* row, unsigned long width) {
  const unsigned mask = (1U << bits) - 1;
  for (unsigned long x = 0; x < width; ++x) modules::PutIndex(row, bits, x, indices[x] & mask);
}

void WriteGrey(const PixelPacket* pixels, std::uint8_t* row, unsigned long width) {
  for (unsigned long x = 0; x < width; ++x) row[x] = ToByte(pixels[x].red);
}

void WriteColours(const PixelPacket* pixels, std::uint8_t* row, unsigned long width) {
  for (unsigned long x = 0; x < width; ++x) {
    row[3 * x] = ToByte(pixels[x].blue);
    row[3 * x + 1] = ToByte(pixels[x].green);
    row[3 * x + 2] = ToByte(pixels[x].red);
  }
}

void WriteColoursWithAlpha(const PixelPacket* pixels, std::uint8_t* row, unsigned long width) {
  for (unsigned long x = 0; x < width; ++x) {
    row[4 * x] = ToByte(pixels[x].blue);
    row[4 * x + 1] = ToByte(pixels[x].green);
    row[4 * x + 2] = ToByte(pixels[x].red);
    row[4 * x + 3] = static_cast<std::uint8_t>(255 - ToByte(pixels[x].opacity));
  }
}

bool WriteRows(Image& image, Form form, modules::Page& page) {
  for (unsigned long y = 0; y < image.rows; ++y) {
    const PixelPacket* pixels = AcquireImagePixels(&image, 0, static_cast<long>(y), image.columns, 1, &image.exception);
    if (pixels == nullptr) return false;
    std::uint8_t* row = modules::Row(page, static_cast<std::uint32_t>(y));
    if (form == Form::kIndices) {
      const IndexPacket* indices = AccessImmutableIndexes(&image);
      if (indices == nullptr) return false;
      WriteIndices(indices, static_cast<std::uint32_t>(page.bits), row, image.columns);
    } else if (form == Form::kGrey) {
      WriteGrey(pixels, row, image.columns);
    } else if (form == Form::kAlpha) {
      WriteColoursWithAlpha(pixels, row, image.columns);
    } else {
      WriteColours(pixels, row, image.columns);
    }
  }
  return true;
}

void FillPage(const Image& image, Form form, modules::Page& page) {
  if (form == Form::kIndices) {
    for (unsigned i = 0; i < image.colors; ++i) {
      const PixelPacket& entry = image.colormap[i];
      modules::SetEntry(page, i, ToByte(entry.red), ToByte(entry.green), ToByte(entry.blue));
    }
    page.paletteEntries = image.colors;
    page.grayscale = IsRamp(image) ? 1 : 0;
  } else if (form == Form::kGrey) {
    modules::SetGrayRamp(page, 256);
  }
  page.dpiX = DpiOf(image.x_resolution, image.units);
  page.dpiY = DpiOf(image.y_resolution, image.units);
  if (image.delay != 0) page.delay = static_cast<std::uint32_t>(image.delay);
}

}  // namespace

std::uint32_t PageBits(const Image& image, const modules::MagickOptions& options, bool pixelsKnown) {
  switch (FormOf(image, options, pixelsKnown)) {
    case Form::kIndices:
      return modules::IndexBits(image.colors);
    case Form::kGrey:
      return 8;
    case Form::kColour:
      return 24;
    default:
      return 32;
  }
}

double DpiOf(double resolution, ResolutionType units) {
  return units == PixelsPerCentimeterResolution ? modules::DpiFromCentimetre(resolution)
                                                : modules::CheckedDpi(resolution);
}

bool AppendPage(Image& image, const modules::MagickOptions& options, glib::ImageDataExchange& exchange) {
  const bool plain = IsRGBCompatibleColorspace(image.colorspace);
  if (!plain && TransformColorspace(&image, RGBColorspace) == MagickFail) {
    modules::Fail(exchange, glib::IERR, "The picture's colours can't be converted");
    return false;
  }
  const Form form = FormOf(image, options, true);
  // A size that is too large for 32 bits is too large for a page as well.
  const auto side = [](unsigned long length) {
    return static_cast<std::uint32_t>(length > 0xFFFFFFFFU ? 0xFFFFFFFFU : length);
  };
  modules::Page* page =
      modules::AddPage(exchange, side(image.columns), side(image.rows), PageBits(image, options, true));
  if (page == nullptr) return false;
  FillPage(image, form, *page);
  if (WriteRows(image, form, *page)) return true;
  modules::DropLastPage(exchange);
  modules::Fail(exchange, glib::IERR, "The picture's pixels can't be read");
  return false;
}

}  // namespace magick
