#include "modules/qbmp/bmp.h"

#include <algorithm>

#include "modules/common/byte_reader.h"

namespace qbmp {
namespace {

constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kDataOffsetAt = 10;

}  // namespace

BmpFile OpenBmp(std::span<const std::uint8_t> file) {
  modules::ByteReader in(file);
  if (in.Byte() != 'B' || in.Byte() != 'M') return {file, 0};
  in.Seek(std::min(kDataOffsetAt, file.size()));
  const std::size_t dataOffset = in.Long();
  return {file.subspan(std::min(kFileHeader, file.size())), dataOffset > kFileHeader ? dataOffset - kFileHeader : 0};
}

std::uint32_t LoadBmp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  const BmpFile bmp = OpenBmp(file);
  return modules::LoadDib(bmp.dib, bmp.dataOffset, exchange);
}

}  // namespace qbmp
