#include "modules/qani/icon.h"

#include <algorithm>

#include "modules/common/byte_reader.h"
#include "modules/qani/icon_image.h"

namespace qani {
namespace {

constexpr std::size_t kDirectoryHead = 6;
constexpr std::size_t kEntryBytes = 16;
constexpr std::size_t kOffsetInEntry = 12;
constexpr modules::Verdict kNoPicture{glib::IERR, "The directory of the icon lists no picture"};

// Where picture `index` of the directory begins; the end of the file if that is nowhere.
std::size_t OffsetOf(std::span<const std::uint8_t> file, std::uint32_t index) {
  modules::ByteReader in(file);
  in.Skip(kDirectoryHead + index * kEntryBytes + kOffsetInEntry);
  const std::size_t offset = in.Long();
  return in.Failed() ? file.size() : offset;
}

}  // namespace

std::uint32_t CountOfIcons(std::span<const std::uint8_t> file) {
  modules::ByteReader in(file);
  const std::uint32_t reserved = in.Word();
  const std::uint32_t kind = in.Word();
  const std::uint32_t count = in.Word();
  return reserved == 0 && (kind == 1 || kind == 2) ? count : 0;
}

modules::Verdict SummarizeIcon(std::span<const std::uint8_t> file, IconSummary& summary) {
  if (CountOfIcons(file) == 0) return kNoPicture;
  return SummarizeIconImage(file.subspan(std::min(OffsetOf(file, 0), file.size())), summary);
}

std::uint32_t LoadIcons(std::span<const std::uint8_t> file, std::uint32_t most, glib::ImageDataExchange& exchange) {
  const std::uint32_t count = std::min(CountOfIcons(file), most);
  if (count == 0) return modules::Fail(exchange, kNoPicture);
  const std::uint32_t before = exchange.pages.count;
  std::uint32_t failure = glib::IERR;
  // Pictures that share their bytes would make any number of pixels out of a short file.
  std::size_t left = file.size();
  for (std::uint32_t i = 0; i < count && left != 0; ++i) {
    const std::size_t offset = OffsetOf(file, i);
    if (offset >= file.size()) {
      failure = modules::Fail(exchange, glib::IERR, "A picture of the icon lies behind the end of the file");
      continue;
    }
    std::size_t used = 0;
    const std::uint32_t result = LoadIconImage(file.subspan(offset), exchange, used);
    if (result != glib::RCOK) failure = result;
    left -= std::min(used, left);
  }
  return exchange.pages.count != before ? glib::RCOK : failure;
}

}  // namespace qani
