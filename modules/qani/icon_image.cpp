#include "modules/qani/icon_image.h"

#include <algorithm>
#include <cstring>

#include "modules/common/png_page.h"

namespace qani {
namespace {

constexpr std::uint32_t kAlpha = 0xFF000000;
constexpr std::uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

bool IsPng(std::span<const std::uint8_t> image) {
  return image.size() >= sizeof(kPngSignature) &&
         std::equal(std::begin(kPngSignature), std::end(kPngSignature), image.begin());
}

modules::Verdict CheckSize(const modules::PngReader& png) {
  if (modules::SizeAllowed(png.Width(), png.Height())) return modules::kFine;
  return {glib::NSUP, "The picture is too large"};
}

modules::Verdict SummarizePng(std::span<const std::uint8_t> image, IconSummary& summary) {
  modules::PngReader png(image);
  if (!png.ReadHeader(false)) return {glib::IERR, "The header of a PNG picture is damaged"};
  summary = {png.Width(), png.Height(), png.Bits(), modules::CheckedDpi(png.DpiX()), modules::CheckedDpi(png.DpiY())};
  return CheckSize(png);
}

std::uint32_t LoadPng(std::span<const std::uint8_t> image, glib::ImageDataExchange& exchange, std::size_t& used) {
  modules::PngReader png(image);
  if (!png.ReadHeader(true)) return modules::Fail(exchange, glib::IERR, png.Cause());
  const std::uint32_t result = modules::AddPngPage(png, exchange);
  used = std::max<std::size_t>(png.BytesRead(), 1);
  return result;
}

// The mask of an icon's picture: a bit for each pixel, set where the screen shows through.
struct Mask {
  std::span<const std::uint8_t> rows;
  std::size_t stride = 0;
  bool topDown = false;

  // What isn't there is not transparent.
  const std::uint8_t* RowAt(std::uint32_t y, std::uint32_t height) const {
    const std::size_t begin = stride * (topDown ? y : height - 1 - y);
    return begin + stride <= rows.size() ? rows.data() + begin : nullptr;
  }
};

bool BitAt(const std::uint8_t* row, std::size_t x) { return (row[x / 8] >> (7 - x % 8) & 1) != 0; }

// The bits behind the last pixel of a row mean nothing.
bool AnySet(const Mask& mask, std::uint32_t width, std::uint32_t height) {
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint8_t* row = mask.RowAt(y, height);
    for (std::uint32_t x = 0; row != nullptr && x < width; ++x) {
      if (BitAt(row, x)) return true;
    }
  }
  return false;
}

std::uint32_t ColourAt(const modules::Page& page, const std::uint8_t* row, std::size_t x) {
  switch (page.bits) {
    case 1:
      return page.palette[BitAt(row, x) ? 1 : 0];
    case 4:
      return page.palette[row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15];
    case 8:
      return page.palette[row[x]];
    default:
      return kAlpha | static_cast<std::uint32_t>(row[3 * x + 2]) << 16 |
             static_cast<std::uint32_t>(row[3 * x + 1]) << 8 | row[3 * x];
  }
}

// Makes a page of at most 24 bits one of 32. False if there is no memory, with the page as it was.
bool LayMask(const Mask& mask, glib::ImageDataExchange& exchange, modules::Page& page) {
  const auto width = static_cast<std::uint32_t>(page.width);
  const auto height = static_cast<std::uint32_t>(page.height);
  std::uint8_t* pixels = exchange.AllocateRaster(width, height, 32);
  if (pixels == nullptr) return false;
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint8_t* source = modules::Row(page, y);
    const std::uint8_t* hidden = mask.RowAt(y, height);
    std::uint8_t* target = pixels + std::size_t{4} * width * y;
    for (std::size_t x = 0; x < width; ++x) {
      std::uint32_t pixel = ColourAt(page, source, x);
      if (hidden != nullptr && BitAt(hidden, x)) pixel &= ~kAlpha;
      std::memcpy(target + 4 * x, &pixel, sizeof(pixel));
    }
  }
  exchange.FreeRaster(page.pixels);
  page.pixels = pixels;
  page.bits = 32;
  return true;
}

std::uint32_t LoadBitmap(std::span<const std::uint8_t> dib, glib::ImageDataExchange& exchange, std::size_t& used) {
  modules::DibHeader header;
  modules::DibPlan plan;
  modules::Verdict verdict = modules::ReadDibHeader(dib, modules::DibForm::kPictureAndMask, header);
  if (verdict.result == glib::RCOK) verdict = modules::PlanDib(dib, header, 0, plan);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, plan.pageBits);
  if (page == nullptr) return glib::NSUP;
  modules::FillDibPage(dib, header, plan, *page);
  const std::uint32_t result =
      modules::EndOfRows(exchange, modules::ReadDibRows(dib, header, plan, *page), header.height);
  if (result != glib::RCOK) return result;

  const Mask mask{dib.subspan(plan.maskOffset), glib::PaddedStride(header.width, 1), header.topDown};
  used = plan.maskOffset + std::min(mask.stride * header.height, mask.rows.size());
  const bool ownAlpha = plan.pageBits == 32;
  if (ownAlpha || !AnySet(mask, header.width, header.height) || LayMask(mask, exchange, *page)) return glib::RCOK;
  modules::DropLastPage(exchange);
  return modules::Fail(exchange, glib::IERR, "There is no memory for the picture");
}

}  // namespace

modules::Verdict SummarizeBitmap(std::span<const std::uint8_t> dib, modules::DibForm form, IconSummary& summary) {
  modules::DibHeader header;
  const modules::Verdict verdict = modules::ReadDibHeader(dib, form, header);
  if (verdict.result != glib::RCOK) return verdict;
  summary = {header.width, header.height, modules::DibPageBits(header), header.dpiX, header.dpiY};
  return modules::kFine;
}

modules::Verdict SummarizeIconImage(std::span<const std::uint8_t> image, IconSummary& summary) {
  if (IsPng(image)) return SummarizePng(image, summary);
  return SummarizeBitmap(image, modules::DibForm::kPictureAndMask, summary);
}

std::uint32_t LoadIconImage(std::span<const std::uint8_t> image, glib::ImageDataExchange& exchange, std::size_t& used) {
  used = 1;
  return IsPng(image) ? LoadPng(image, exchange, used) : LoadBitmap(image, exchange, used);
}

}  // namespace qani
