#include "modules/qbmp/clp.h"

#include <algorithm>
#include <iterator>

#include "glib/module_api/result_values.h"
#include "modules/common/byte_reader.h"
#include "modules/common/dib.h"

namespace qbmp {
namespace {

constexpr std::uint32_t kMaxEntries = 256;  // the clipboard holds some ten forms; more is no directory
constexpr std::size_t kNameBytes = 79;      // of an entry, behind kind, length and offset

// Best first: the newest bitmap keeps its alpha, drawings come after all bitmaps.
constexpr ClipKind kByMerit[] = {ClipKind::kDibV5, ClipKind::kDib, ClipKind::kEnhancedMetafile,
                                 ClipKind::kMetafilePicture};

std::size_t MeritOf(ClipKind kind) {
  return static_cast<std::size_t>(std::find(std::begin(kByMerit), std::end(kByMerit), kind) - std::begin(kByMerit));
}

}  // namespace

std::optional<Clip> FindClip(std::span<const std::uint8_t> file) {
  modules::ByteReader in(file);
  in.Skip(2);
  const std::uint32_t count = in.Word();
  if (count > kMaxEntries) return {};
  std::optional<Clip> best;
  std::size_t bestMerit = std::size(kByMerit);
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto kind = static_cast<ClipKind>(in.Word());
    const std::size_t length = in.Long();
    const std::size_t offset = in.Long();
    in.Skip(kNameBytes);
    if (in.Failed()) break;
    if (offset >= file.size() || MeritOf(kind) >= bestMerit) continue;
    bestMerit = MeritOf(kind);
    const auto data = file.subspan(offset);
    best = Clip{kind, data.first(std::min(length, data.size()))};
  }
  return best;
}

std::uint32_t LoadClp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  const std::optional<Clip> clip = FindClip(file);
  if (!clip) return modules::Fail(exchange, glib::NSUP, "The clipboard file holds no picture");
  switch (clip->kind) {
    case ClipKind::kEnhancedMetafile:
      return modules::AddMetafilePage(exchange, clip->data) != nullptr ? glib::RCOK : glib::IERR;
    case ClipKind::kMetafilePicture:
      return modules::Fail(exchange, glib::NSUP, "The clipboard file holds an old metafile only");
    default:
      return modules::LoadDib(clip->data, 0, exchange);
  }
}

}  // namespace qbmp
