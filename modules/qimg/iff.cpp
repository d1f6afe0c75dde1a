#include "modules/qimg/iff.h"

#include <algorithm>
#include <cstring>

#include "modules/common/byte_reader.h"
#include "modules/qimg/planes.h"

namespace qimg {
namespace {

// Gives the bytes of a body one after the other, whatever rows its runs cross.
class BodyReader {
 public:
  BodyReader(std::span<const std::uint8_t> body, bool packed) : in_(body), packed_(packed) {}

  // False if the data end before the row does.
  bool ReadRow(std::span<std::uint8_t> row) {
    if (!packed_) return in_.Read(row.data(), row.size()) == row.size();
    std::size_t filled = 0;
    while (filled < row.size()) {
      if (left_ == 0 && !NextRun()) return false;
      const std::size_t count = std::min(left_, row.size() - filled);
      if (repeats_) {
        std::memset(row.data() + filled, value_, count);
      } else if (in_.Read(row.data() + filled, count) != count) {
        return false;
      }
      filled += count;
      left_ -= count;
    }
    return true;
  }

 private:
  bool NextRun() {
    constexpr std::uint8_t kNothing = 128;
    std::uint8_t code = kNothing;
    while (code == kNothing && !in_.AtEnd()) code = in_.Byte();
    if (code == kNothing) return false;
    repeats_ = code > kNothing;
    left_ = repeats_ ? 257U - code : code + 1U;
    if (repeats_) value_ = in_.Byte();
    return !in_.Failed();
  }

  modules::ByteReader in_;
  bool packed_;
  bool repeats_ = false;
  std::uint8_t value_ = 0;
  std::size_t left_ = 0;
};

// The picture's colours as pixel words.
void SetPalette(const IffPicture& picture, modules::Page& page) {
  const std::uint32_t count = 1U << std::min(picture.planes, 8U);
  if (picture.colours.empty()) {
    modules::SetGrayRamp(page, count);
  } else {
    modules::ByteReader in(picture.colours);
    const auto next = [&] {
      const std::uint8_t value = in.Byte();
      return static_cast<std::uint8_t>(picture.shortColours ? value | value >> 4 : value);
    };
    const auto present = static_cast<std::uint32_t>(std::min<std::size_t>(picture.colours.size() / 3, count));
    for (std::uint32_t i = 0; i < present; ++i) {
      const std::uint8_t red = next();
      const std::uint8_t green = next();
      modules::SetEntry(page, i, red, green, next());
    }
    page.paletteEntries = count;
  }
  if (picture.halfBrite) {
    for (std::uint32_t i = 0; i < 32; ++i) page.palette[32 + i] = 0xFF000000U | (page.palette[i] >> 1 & 0x7F7F7FU);
  }
  if (picture.transparent >= 0 && picture.transparent < static_cast<std::int32_t>(count)) {
    page.palette[picture.transparent] &= 0xFFFFFFU;
  }
}

// Colours of one row, as pixel words without alpha.
class RowColours {
 public:
  RowColours(const IffPicture& picture, const modules::Page& page, const std::uint8_t* row, std::size_t planeBytes)
      : picture_(picture), palette_(page.palette), row_(row), planeBytes_(planeBytes), last_(palette_[0]) {}

  std::uint32_t At(std::uint32_t x) {
    if (picture_.planes >= 24) return Sample(x, 0) << 16 | Sample(x, 8) << 8 | Sample(x, 16);
    const std::uint32_t value = PlaneValue(row_, planeBytes_, picture_.planes, x);
    return picture_.holdAndModify ? Modified(value) : palette_[value];
  }
  std::uint32_t Sample(std::uint32_t x, std::uint32_t firstPlane) const {
    return PlaneValue(row_ + firstPlane * planeBytes_, planeBytes_, 8, x);
  }

 private:
  // The two upper bits say which of the last pixel's samples the others replace.
  std::uint32_t Modified(std::uint32_t value) {
    const std::uint32_t bits = picture_.planes > 6 ? 6 : 4;
    const std::uint32_t low = value & ((1U << bits) - 1);
    const std::uint32_t sample = bits == 4 ? low * 17 : low << 2 | low >> 4;
    constexpr std::uint32_t kShift[] = {0, 0, 16, 8};  // blue, red, green
    const std::uint32_t what = value >> bits & 3U;
    if (what == 0) {
      last_ = palette_[low];
    } else {
      last_ = (last_ & ~(0xFFU << kShift[what])) | sample << kShift[what];
    }
    return last_;
  }

  const IffPicture& picture_;
  const std::uint32_t* palette_;
  const std::uint8_t* row_;
  std::size_t planeBytes_;
  std::uint32_t last_;
};

void PutColours(const IffPicture& picture, std::span<const std::uint8_t> row, std::size_t planeBytes,
                modules::Page& page, std::uint32_t y) {
  RowColours colours(picture, page, row.data(), planeBytes);
  const std::uint8_t* const mask = row.data() + planeBytes * picture.planes;
  const std::size_t step = page.bits == 32 ? 4 : 3;
  std::uint8_t* target = modules::Row(page, y);
  for (std::uint32_t x = 0; x < picture.width; ++x, target += step) {
    const std::uint32_t colour = colours.At(x);
    target[0] = static_cast<std::uint8_t>(colour);
    target[1] = static_cast<std::uint8_t>(colour >> 8);
    target[2] = static_cast<std::uint8_t>(colour >> 16);
    if (step == 3) continue;
    const std::uint32_t alpha = picture.masked ? PlaneBit(mask, x) * 255 : colours.Sample(x, 24);
    target[3] = static_cast<std::uint8_t>(alpha);
  }
}

void PutIndices(const IffPicture& picture, std::span<const std::uint8_t> row, std::size_t planeBytes,
                modules::Page& page, std::uint32_t y) {
  std::uint8_t* const target = modules::Row(page, y);
  const auto bits = static_cast<std::uint32_t>(page.bits);
  const std::uint32_t highest = (1U << bits) - 1;
  for (std::uint32_t x = 0; x < picture.width; ++x) {
    const std::uint32_t index =
        picture.chunky ? row[x] & highest : PlaneValue(row.data(), planeBytes, picture.planes, x);
    modules::PutIndex(target, bits, x, index);
  }
}

std::uint32_t ReadRows(const IffPicture& picture, modules::Page& page) {
  BodyReader body(picture.body, picture.packed);
  const std::size_t planeBytes = (PlaneBytes(picture.width) + 1) / 2 * 2;
  const std::size_t rowBytes = picture.chunky ? (std::size_t{picture.width} + 1) / 2 * 2
                                              : planeBytes * (picture.planes + (picture.masked ? 1U : 0U));
  std::vector<std::uint8_t> row(rowBytes);
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    if (!body.ReadRow(row)) return y;
    if (page.bits <= 8) {
      PutIndices(picture, row, planeBytes, page, y);
    } else {
      PutColours(picture, row, planeBytes, page, y);
    }
  }
  return picture.height;
}

std::uint32_t LoadOne(const IffPicture& picture, glib::ImageDataExchange& exchange) {
  if (picture.verdict.result != glib::RCOK) return modules::Fail(exchange, picture.verdict);
  if (!modules::SizeBelievable(picture.width, picture.height, picture.body.size() * 8)) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, picture.width, picture.height, IffPageBits(picture));
  if (page == nullptr) return glib::NSUP;
  if (picture.planes <= 8) SetPalette(picture, *page);
  page->dpiX = picture.dpiX;
  page->dpiY = picture.dpiY;
  const std::uint32_t rows = ReadRows(picture, *page);
  if (page->bits > 8) {
    page->paletteEntries = 256;
    page->grayscale = 0;
  }
  return modules::EndOfRows(exchange, rows, picture.height);
}

}  // namespace

std::uint32_t IffPageBits(const IffPicture& picture) {
  if (picture.masked || picture.planes == 32) return 32;
  if (picture.holdAndModify || picture.planes > 8) return 24;
  return modules::IndexBits(std::size_t{1} << picture.planes);
}

std::uint32_t LoadIff(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  const auto pictures = FindIffPictures(file);
  if (pictures.empty()) return modules::Fail(exchange, glib::IERR, "The file holds no picture");
  std::uint32_t last = glib::RCOK;
  for (const IffPicture& picture : pictures) last = LoadOne(picture, exchange);
  return exchange.pages.count != 0 ? glib::RCOK : last;
}

}  // namespace qimg
