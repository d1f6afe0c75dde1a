#include "modules/qimg/gem.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/qimg/planes.h"

namespace qimg {
namespace {

constexpr std::uint32_t kXimg = 0x58494D47;  // "XIMG"
constexpr std::size_t kPlainHeaderWords = 8;
constexpr std::size_t kColourBytes = 6;
constexpr double kMicronsPerInch = 25400.0;

// What the bits of 1 to 4 planes stand for on the screens that these pictures were made on: no bit set is paper, all
// bits set are ink, and between them lie the first of these.
constexpr std::uint32_t kScreenColours[16] = {
    0xFFFFFF, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xBBBBBB,
    0x888888, 0xBB0000, 0x00BB00, 0xBBBB00, 0x0000BB, 0xBB00BB, 0x00BBBB, 0x000000,
};

std::uint8_t FromThousand(std::uint32_t value) {
  return static_cast<std::uint8_t>((std::min(value, 1000U) * 255 + 500) / 1000);
}

void SetPalette(const GemHeader& header, modules::Page& page) {
  const std::uint32_t count = 1U << header.planes;
  page.paletteEntries = count;
  modules::ByteReader colours(header.colours);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!header.colours.empty()) {
      const std::uint8_t red = FromThousand(colours.BigWord());
      const std::uint8_t green = FromThousand(colours.BigWord());
      modules::SetEntry(page, i, red, green, FromThousand(colours.BigWord()));
    } else if (count <= 16) {
      page.palette[i] = 0xFF000000U | (i == count - 1 ? 0U : kScreenColours[i]);
    } else {
      const auto grey = static_cast<std::uint8_t>(255 - i * 255 / (count - 1));
      modules::SetEntry(page, i, grey, grey, grey);
      page.grayscale = 1;
    }
  }
}

// Unpacks the codes of rows.
class GemRows {
 public:
  GemRows(std::span<const std::uint8_t> data, std::uint32_t patternLength) : in_(data), pattern_(patternLength) {}

  // How often the row that follows is to be shown, 1 mostly.
  std::uint32_t Repeats() {
    modules::ByteReader ahead = in_;
    if (ahead.Byte() != 0 || ahead.Byte() != 0 || ahead.Byte() != 0xFF) return 1;
    const std::uint32_t repeats = ahead.Byte();
    if (ahead.Failed()) return 1;
    in_ = ahead;
    return std::max(repeats, 1U);
  }

  // Fills one plane of a row. False if the data end before; codes that go past its end are cut there.
  bool ReadPlane(std::span<std::uint8_t> plane) {
    std::size_t filled = 0;
    while (filled < plane.size()) {
      const std::uint8_t code = in_.Byte();
      if (code == 0) {
        RepeatPattern(plane, filled);
      } else if (code == 0x80) {
        const std::size_t wanted = in_.Byte();
        const auto bytes = in_.Take(wanted);
        Copy(bytes, plane, filled);
      } else {
        const std::size_t count = std::min<std::size_t>(code & 0x7FU, plane.size() - filled);
        std::memset(plane.data() + filled, code >= 0x80 ? 0xFF : 0, count);
        filled += count;
      }
      if (in_.Failed()) return false;
    }
    return true;
  }

 private:
  void RepeatPattern(std::span<std::uint8_t> plane, std::size_t& filled) {
    const std::uint32_t count = in_.Byte();
    const auto bytes = in_.Take(pattern_);
    for (std::uint32_t i = 0; i < count; ++i) Copy(bytes, plane, filled);
  }

  static void Copy(std::span<const std::uint8_t> bytes, std::span<std::uint8_t> plane, std::size_t& filled) {
    const std::size_t count = std::min(bytes.size(), plane.size() - filled);
    if (count != 0) std::memcpy(plane.data() + filled, bytes.data(), count);
    filled += count;
  }

  modules::ByteReader in_;
  std::size_t pattern_;
};

std::uint32_t ReadRows(std::span<const std::uint8_t> data, const GemHeader& header, modules::Page& page) {
  GemRows rows(data, header.patternLength);
  const std::size_t planeBytes = PlaneBytes(header.width);
  std::vector<std::uint8_t> planes(planeBytes * header.planes);
  const auto bits = static_cast<std::uint32_t>(page.bits);
  std::uint32_t y = 0;
  while (y < header.height) {
    const std::uint32_t repeats = rows.Repeats();
    for (std::uint32_t plane = 0; plane < header.planes; ++plane) {
      if (!rows.ReadPlane(std::span(planes).subspan(plane * planeBytes, planeBytes))) return y;
    }
    std::uint8_t* const first = modules::Row(page, y);
    if (header.planes == 1) {
      std::memcpy(first, planes.data(), planeBytes);
    } else {
      for (std::uint32_t x = 0; x < header.width; ++x) {
        modules::PutIndex(first, bits, x, PlaneValue(planes.data(), planeBytes, header.planes, x));
      }
    }
    for (std::uint32_t i = 1; i < repeats && y + i < header.height; ++i) {
      std::memcpy(modules::Row(page, y + i), first, page.Stride());
    }
    y += repeats;
  }
  return y;
}

}  // namespace

modules::Verdict ReadGemHeader(std::span<const std::uint8_t> file, GemHeader& header) {
  modules::ByteReader in(file);
  in.Skip(2);
  const std::size_t words = in.BigWord();
  header.planes = in.BigWord();
  header.patternLength = in.BigWord();
  const double pixelWidth = in.BigWord();
  const double pixelHeight = in.BigWord();
  header.width = in.BigWord();
  header.height = in.BigWord();
  if (in.Failed() || words < kPlainHeaderWords || words * 2 > file.size()) {
    return {glib::IERR, "The file ends within its header"};
  }
  if (header.planes == 0 || header.planes > 8) return {glib::NSUP, "The number of colour planes is unusual"};
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  if (pixelWidth > 0) header.dpiX = modules::CheckedDpi(kMicronsPerInch / pixelWidth);
  if (pixelHeight > 0) header.dpiY = modules::CheckedDpi(kMicronsPerInch / pixelHeight);
  header.size = words * 2;
  if (words > kPlainHeaderWords && in.BigLong() == kXimg && in.BigWord() == 0) {
    const std::size_t colourBytes = kColourBytes << header.planes;
    if (in.Position() + colourBytes <= header.size) header.colours = file.subspan(in.Position(), colourBytes);
  }
  return modules::kFine;
}

std::uint32_t GemPageBits(const GemHeader& header) { return modules::IndexBits(std::size_t{1} << header.planes); }

std::uint32_t LoadGem(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  GemHeader header;
  const modules::Verdict verdict = ReadGemHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  // Bytes of a repeated pattern and repeated rows make more of a byte than runs do elsewhere; a page of one plane is as
  // small as it is quick to fill.
  const auto data = file.subspan(header.size);
  if (!modules::SizeBelievable(header.width, header.height, data.size() * 8)) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, GemPageBits(header));
  if (page == nullptr) return glib::NSUP;
  SetPalette(header, *page);
  page->dpiX = header.dpiX;
  page->dpiY = header.dpiY;
  return modules::EndOfRows(exchange, ReadRows(data, header, *page), header.height);
}

}  // namespace qimg
