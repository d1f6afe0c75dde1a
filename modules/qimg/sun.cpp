#include "modules/qimg/sun.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "modules/common/byte_reader.h"

namespace qimg {
namespace {

constexpr std::uint32_t kMagic = 0x59A66A95;

// Rows of whole words, plain or with runs that may cross their ends.
class SunRows {
 public:
  SunRows(std::span<const std::uint8_t> data, bool packed) : in_(data), packed_(packed) {}

  // False if the data end before the row does.
  bool Read(std::span<std::uint8_t> row) {
    if (!packed_) return in_.Read(row.data(), row.size()) == row.size();
    for (std::size_t filled = 0; filled < row.size();) {
      if (left_ == 0 && !NextRun()) return false;
      const std::size_t count = std::min(left_, row.size() - filled);
      std::memset(row.data() + filled, value_, count);
      filled += count;
      left_ -= count;
    }
    return true;
  }

 private:
  // The escape is followed by a count and a value, or by nothing for itself.
  bool NextRun() {
    constexpr std::uint8_t kEscape = 0x80;
    value_ = in_.Byte();
    left_ = 1;
    if (value_ != kEscape) return !in_.Failed();
    left_ = in_.Byte() + std::size_t{1};
    if (left_ > 1) value_ = in_.Byte();
    return !in_.Failed();
  }

  modules::ByteReader in_;
  bool packed_;
  std::uint8_t value_ = 0;
  std::size_t left_ = 0;
};

void SetPalette(const SunHeader& header, std::span<const std::uint8_t> map, modules::Page& page) {
  if (header.bits > 8) return;
  const std::uint32_t highest = header.bits == 1 ? 2 : 256;
  const std::size_t count = std::min<std::size_t>(map.size() / 3, highest);
  if (header.mapped && count != 0) {  // all reds, all greens, all blues
    const std::size_t third = map.size() / 3;
    for (std::size_t i = 0; i < count; ++i) {
      modules::SetEntry(page, static_cast<std::uint32_t>(i), map[i], map[third + i], map[2 * third + i]);
    }
    page.paletteEntries = static_cast<std::uint32_t>(count);
  } else if (header.bits == 1) {
    modules::SetInkOnPaper(page);
  } else {
    modules::SetGrayRamp(page, 256);
  }
}

// Blue, green, red is the order of pages as well; the first of four bytes is filling or alpha.
void PutRow(const SunHeader& header, std::span<const std::uint8_t> row, std::uint8_t* target) {
  if (header.bits <= 8 || (header.bits == 24 && !header.redFirst)) {
    const std::size_t bytes = (std::size_t{header.width} * header.bits + 7) / 8;
    std::memcpy(target, row.data(), bytes);
    return;
  }
  const std::size_t step = header.bits / 8;
  const std::size_t red = header.redFirst ? 0 : 2;
  for (std::uint32_t x = 0; x < header.width; ++x, target += step) {
    const std::uint8_t* source = row.data() + x * step;
    if (step == 4) target[3] = *source++;
    target[0] = source[2 - red];
    target[1] = source[1];
    target[2] = source[red];
  }
}

}  // namespace

modules::Verdict ReadSunHeader(std::span<const std::uint8_t> file, SunHeader& header) {
  enum Kind : std::uint32_t { kOld, kStandard, kPacked, kRedFirst };
  enum Map : std::uint32_t { kNoMap, kColours, kRaw };
  modules::ByteReader in(file);
  const std::uint32_t magic = in.BigLong();
  header.width = in.BigLong();
  header.height = in.BigLong();
  header.bits = in.BigLong();
  in.Skip(4);  // the length, which old files have as 0
  const std::uint32_t kind = in.BigLong();
  const std::uint32_t map = in.BigLong();
  header.mapLength = in.BigLong();
  if (in.Failed()) return {glib::IERR, "The file ends within its header"};
  if (magic != kMagic || map > kRaw) return {glib::IERR, "The header makes no sense"};
  if (kind > kRedFirst) return {glib::NSUP, "The kind of raster is unusual"};
  if (header.bits != 1 && header.bits != 8 && header.bits != 24 && header.bits != 32) {
    return {glib::NSUP, "The number of bits is unusual"};
  }
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  header.packed = kind == kPacked;
  header.redFirst = kind == kRedFirst;
  header.mapped = map == kColours;
  return modules::kFine;
}

std::uint32_t LoadSun(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  SunHeader header;
  const modules::Verdict verdict = ReadSunHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  modules::ByteReader in(file.subspan(kSunHeader));
  const auto map = in.Take(header.mapLength);
  const auto data = in.Take(in.Left());
  if (!modules::SizeBelievable(header.width, header.height, data.size() * 8)) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, header.bits);
  if (page == nullptr) return glib::NSUP;
  SetPalette(header, map, *page);
  SunRows rows(data, header.packed);
  std::vector<std::uint8_t> row((std::size_t{header.width} * header.bits + 15) / 16 * 2);
  std::uint32_t y = 0;
  for (; y < header.height && rows.Read(row); ++y) PutRow(header, row, modules::Row(*page, y));
  if (header.bits == 32) modules::MakeOpaqueIfEmpty(*page, 0, y);
  return modules::EndOfRows(exchange, y, header.height);
}

}  // namespace qimg
