#include "modules/common/dib.h"

#include <algorithm>

#include "glib/module_api/result_values.h"
#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"

namespace modules {
namespace {

constexpr std::uint32_t kCoreHeader = 12;  // sizes in 16 bits, palette entries of three bytes
constexpr std::uint32_t kShortestHeader = 16;
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kMaskHeader = 52;       // with masks for red, green and blue
constexpr std::uint32_t kAlphaMaskHeader = 56;  // and for alpha
constexpr std::uint32_t kLongestOs2Header = 64;
constexpr std::uint32_t kLongestHeader = 124;

enum Compression : std::uint32_t {
  kNone = 0,
  kRle8 = 1,
  kRle4 = 2,
  kBitFields = 3,  // in headers of OS/2: a fax code
  kJpeg = 4,       // in headers of OS/2: runs of 24-bit pixels
  kPng = 5,
  kAlphaBitFields = 6,
};

bool IsOs2(std::uint32_t headerSize) {
  return headerSize <= kLongestOs2Header && headerSize != kInfoHeader && headerSize != kMaskHeader &&
         headerSize != kAlphaMaskHeader;
}

bool HasFields(std::uint32_t compression) { return compression == kBitFields || compression == kAlphaBitFields; }

void SetMasks(DibHeader& header, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  header.mask[0] = red;
  header.mask[1] = green;
  header.mask[2] = blue;
}

void SetUsualMasks(DibHeader& header) {
  if (header.bits == 16) {
    SetMasks(header, 0x7C00, 0x03E0, 0x001F);
  } else {
    SetMasks(header, 0xFF0000, 0x00FF00, 0x0000FF);
  }
}

Verdict SetEncoding(std::uint32_t compression, bool os2, DibHeader& header) {
  constexpr Verdict kWrongDepth{glib::IERR, "The bitmap's depth does not go with its compression"};
  const std::uint32_t bits = header.bits;
  const auto runs = [&](DibEncoding encoding, std::uint32_t depth) {
    header.encoding = encoding;
    return bits == depth ? kFine : kWrongDepth;
  };
  if (compression == kRle8) return runs(DibEncoding::kRuns8, 8);
  if (compression == kRle4) return runs(DibEncoding::kRuns4, 4);
  if (os2 && compression == kJpeg) return runs(DibEncoding::kRuns24, 24);
  if (compression != kNone && (os2 || !HasFields(compression))) {
    return {glib::NSUP, "The bitmap's compression is not supported"};
  }
  switch (bits) {
    case 1:
    case 2:
    case 4:
    case 8:
      return HasFields(compression) ? kWrongDepth : kFine;
    case 16:
    case 24:
    case 32:
      if (HasFields(compression) || bits == 16) header.encoding = DibEncoding::kFields;
      return kFine;
    default:
      return {glib::IERR, "The bitmap has no known depth"};
  }
}

// The masks stand at the same place whether the header counts them or not: behind its first 40 bytes.
void ReadMasks(std::span<const std::uint8_t> dib, std::uint32_t headerSize, std::uint32_t compression,
               DibHeader& header) {
  SetUsualMasks(header);
  if (!HasFields(compression)) return;
  const bool alpha = compression == kAlphaBitFields || headerSize >= kAlphaMaskHeader;
  const std::uint32_t behindMasks = alpha ? kAlphaMaskHeader : kMaskHeader;
  ByteReader fields(dib.first(std::min<std::size_t>(dib.size(), behindMasks)));
  fields.Seek(std::min<std::size_t>(kInfoHeader, fields.Size()));
  std::uint32_t mask[4] = {};
  for (std::uint32_t& one : mask) one = fields.Long();
  header.paletteOffset = std::max<std::size_t>(headerSize, behindMasks);
  if ((mask[0] | mask[1] | mask[2]) == 0) return;
  std::copy(std::begin(mask), std::end(mask), header.mask);
}

bool IsRuns(DibEncoding encoding) { return encoding != DibEncoding::kRows && encoding != DibEncoding::kFields; }

// The fourth byte of plain 32-bit pixels is unused by the letter, yet many programs keep an alpha there.
bool HasFourthBytes(std::span<const std::uint8_t> data) {
  constexpr std::size_t kBlock = 4096;
  for (std::size_t begin = 0; begin < data.size(); begin += kBlock) {
    const auto block = data.subspan(begin, std::min(kBlock, data.size() - begin));
    std::uint8_t any = 0;
    for (std::size_t i = 3; i < block.size(); i += 4) any = static_cast<std::uint8_t>(any | block[i]);
    if (any != 0) return true;
  }
  return false;
}

}  // namespace

Verdict ReadDibHeader(std::span<const std::uint8_t> dib, DibForm form, DibHeader& header) {
  const std::uint32_t size = ByteReader(dib).Long();
  if (dib.size() < sizeof(size) || size > dib.size()) return {glib::IERR, "The bitmap's header is cut off"};
  if (size != kCoreHeader && (size < kShortestHeader || size > kLongestHeader)) {
    return {glib::NSUP, "The bitmap's header is of an unknown kind"};
  }
  ByteReader fields(dib.first(size));  // what a short header leaves out reads as 0
  fields.Skip(4);
  std::int64_t width = 0;
  std::int64_t height = 0;
  if (size == kCoreHeader) {
    width = fields.Word();
    height = fields.Word();
  } else {
    width = fields.SignedLong();
    height = fields.SignedLong();
  }
  fields.Skip(2);  // planes
  header.bits = fields.Word();
  const std::uint32_t compression = fields.Long();
  fields.Long();  // bytes of the data, which are often wrong
  header.dpiX = DpiFromMetre(fields.SignedLong());
  header.dpiY = DpiFromMetre(fields.SignedLong());
  header.paletteEntries = fields.Long();
  header.paletteOffset = size;
  header.entryBytes = size == kCoreHeader ? 3 : 4;
  header.topDown = height < 0;
  if (header.topDown) height = -height;
  if (form == DibForm::kPictureAndMask) height /= 2;

  const Verdict known = SetEncoding(compression, IsOs2(size), header);
  if (known.result != glib::RCOK) return known;
  if (width <= 0 || height == 0) return {glib::IERR, "The bitmap has no pixels"};
  if (!SizeAllowed(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height))) {
    return {glib::NSUP, "The bitmap is too large"};
  }
  header.width = static_cast<std::uint32_t>(width);
  header.height = static_cast<std::uint32_t>(height);
  if (header.bits <= 8) {
    if (header.paletteEntries == 0) header.paletteEntries = 1U << header.bits;
  } else {
    ReadMasks(dib, size, compression, header);
  }
  return kFine;
}

std::uint32_t DibPageBits(const DibHeader& header) {
  if (header.bits <= 8) return header.bits == 2 ? 4 : header.bits;
  if (header.encoding == DibEncoding::kFields) return header.mask[3] != 0 ? 32 : 24;
  return header.bits;
}

Verdict PlanDib(std::span<const std::uint8_t> dib, const DibHeader& header, std::size_t dataOffset, DibPlan& plan) {
  const std::size_t afterHeader = std::min(header.paletteOffset, dib.size());
  if (dataOffset < header.paletteOffset) {
    // In 64 bits: the count is any number that the file gives.
    const std::uint64_t palette = std::uint64_t{header.paletteEntries} * header.entryBytes;
    dataOffset = afterHeader + static_cast<std::size_t>(std::min<std::uint64_t>(palette, dib.size() - afterHeader));
  }
  plan.dataOffset = std::min(dataOffset, dib.size());
  if (header.bits <= 8) {
    const std::size_t present = (plan.dataOffset - afterHeader) / header.entryBytes;
    plan.paletteEntries = static_cast<std::uint32_t>(
        std::min<std::size_t>({present, header.paletteEntries, std::size_t{1} << header.bits}));
  }

  const auto data = dib.subspan(plan.dataOffset);
  plan.pageBits = DibPageBits(header);
  if (IsRuns(header.encoding)) {
    plan.maskOffset = dib.size();
  } else {
    plan.stride = glib::PaddedStride(header.width, header.bits);
    const std::size_t wanted = plan.stride * header.height;
    plan.maskOffset = plan.dataOffset + std::min(wanted, data.size());
    if (header.encoding == DibEncoding::kRows && header.bits == 32 &&
        !HasFourthBytes(data.first(std::min(wanted, data.size())))) {
      plan.pageBits = 24;
    }
  }
  if (!SizeBelievable(header.width, header.height, data.size())) {
    return {glib::IERR, "The bitmap is larger than its data can be"};
  }
  return kFine;
}

void FillDibPage(std::span<const std::uint8_t> dib, const DibHeader& header, const DibPlan& plan, Page& page) {
  page.dpiX = header.dpiX;
  page.dpiY = header.dpiY;
  if (plan.pageBits > 8) return;
  if (plan.paletteEntries == 0) {
    SetGrayRamp(page, 1U << header.bits);
    return;
  }
  ByteReader entries(dib.subspan(header.paletteOffset));
  for (std::uint32_t i = 0; i < plan.paletteEntries; ++i) {
    const std::uint8_t blue = entries.Byte();
    const std::uint8_t green = entries.Byte();
    SetEntry(page, i, entries.Byte(), green, blue);
    entries.Skip(header.entryBytes - 3);
  }
  page.paletteEntries = plan.paletteEntries;
}

std::uint32_t LoadDib(std::span<const std::uint8_t> dib, std::size_t dataOffset, glib::ImageDataExchange& exchange) {
  DibHeader header;
  DibPlan plan;
  Verdict verdict = ReadDibHeader(dib, DibForm::kPicture, header);
  if (verdict.result == glib::RCOK) verdict = PlanDib(dib, header, dataOffset, plan);
  if (verdict.result != glib::RCOK) return Fail(exchange, verdict);
  Page* page = AddPage(exchange, header.width, header.height, plan.pageBits);
  if (page == nullptr) return glib::NSUP;
  FillDibPage(dib, header, plan, *page);
  return EndOfRows(exchange, ReadDibRows(dib, header, plan, *page), header.height);
}

}  // namespace modules
