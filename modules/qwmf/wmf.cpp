#include "modules/qwmf/wmf.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include "modules/qwmf/emf.h"
#include "modules/qwmf/wmf_translator.h"
#include "platform/metafile/recorder.h"

namespace qwmf {
namespace {

constexpr std::uint32_t kPlaceableKey = 0x9AC6CDD7;
constexpr std::size_t kPlaceableBytes = 22;
constexpr std::size_t kHeadBytes = 6;  // of a record
constexpr std::uint32_t kScreenUnits = 96;

// The enhanced metafile that the comments hold in pieces; empty unless all of it is there.
std::vector<std::uint8_t> EmbeddedEmf(std::span<const std::uint8_t> records) {
  constexpr std::uint16_t kComment = 0x000F;
  constexpr std::uint32_t kIdentifier = 0x43464D57;  // "WMFC"
  constexpr std::uint32_t kEnhancedMetafile = 1;
  std::vector<std::uint8_t> bytes;
  WmfReader reader(records);
  WmfRecord record;
  while (reader.Next(record)) {
    if (record.function != kEscape) continue;
    modules::ByteReader in(record.parameters);
    if (in.Word() != kComment) continue;
    in.Word();
    if (in.Long() != kIdentifier || in.Long() != kEnhancedMetafile) continue;
    in.Skip(4 + 2 + 4 + 4);  // version, checksum, flags, count of pieces
    const std::uint32_t size = in.Long();
    in.Skip(4 + 4);  // what is left, and the whole
    if (in.Failed() || size > in.Left()) return {};
    const auto piece = in.Take(size);
    bytes.insert(bytes.end(), piece.begin(), piece.end());
  }
  if (!IsWholeEmf(bytes)) bytes.clear();
  return bytes;
}

struct Window {
  platform::Point extent;
  bool known = false;
};

Window FirstWindow(std::span<const std::uint8_t> records) {
  Window window;
  WmfReader reader(records);
  WmfRecord record;
  while (!window.known && reader.Next(record)) {
    if (record.function != kSetWindowExt) continue;
    modules::ByteReader in(record.parameters);
    window.extent.y = in.SignedWord();
    window.extent.x = in.SignedWord();
    window.known = window.extent.x != 0 && window.extent.y != 0;
  }
  return window;
}

}  // namespace

bool WmfReader::Next(WmfRecord& record) {
  if (in_.Left() < kHeadBytes) return false;
  const std::size_t bytes = std::size_t{in_.Long()} * 2;
  record.function = in_.Word();
  if (bytes < kHeadBytes || record.function == 0) return false;
  // The last record of a file that is cut off counts with what there is of it.
  record.parameters = in_.Take(bytes - kHeadBytes);
  return true;
}

std::optional<WmfFile> OpenWmf(std::span<const std::uint8_t> file) {
  constexpr std::size_t kMinHeaderWords = 9;
  WmfFile wmf;
  modules::ByteReader in(file);
  if (in.Long() == kPlaceableKey) {
    wmf.placeable = true;
    in.Word();
    wmf.box.left = in.SignedWord();
    wmf.box.top = in.SignedWord();
    wmf.box.right = in.SignedWord();
    wmf.box.bottom = in.SignedWord();
    wmf.unitsPerInch = in.Word();
    if (!in.Seek(kPlaceableBytes)) return {};
    if (wmf.box.left > wmf.box.right) std::swap(wmf.box.left, wmf.box.right);
    if (wmf.box.top > wmf.box.bottom) std::swap(wmf.box.top, wmf.box.bottom);
    // Some writers leave these out.
    if (wmf.unitsPerInch == 0) wmf.unitsPerInch = kScreenUnits;
    if (wmf.box.left == wmf.box.right || wmf.box.top == wmf.box.bottom) wmf.placeable = false;
  } else {
    in.Seek(0);
  }
  const std::size_t start = in.Position();
  const std::uint16_t kind = in.Word();
  const std::size_t headerWords = in.Word();
  if (in.Failed() || kind > 2 || headerWords < kMinHeaderWords || !in.Seek(start + 2 * headerWords)) return {};
  wmf.records = file.subspan(in.Position());
  return wmf;
}

std::uint32_t LoadWmf(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  const std::optional<WmfFile> wmf = OpenWmf(file);
  if (!wmf) return modules::Fail(exchange, glib::IERR, "The metafile has no header");
  WmfRecord first;
  if (!WmfReader(wmf->records).Next(first)) {
    return modules::Fail(exchange, glib::IERR, "The metafile is cut off before its first record");
  }
  if (const auto emf = EmbeddedEmf(wmf->records); !emf.empty() && LoadEmf(emf, exchange) == glib::RCOK) {
    return glib::RCOK;
  }

  const Window window = FirstWindow(wmf->records);
  platform::MetafileRecorder recorder(wmf->placeable ? wmf->unitsPerInch : kScreenUnits);
  if (wmf->placeable || window.known) {
    // The picture is the viewport, whatever window a file lays on it.
    const platform::Point size = wmf->placeable
                                     ? platform::Point{wmf->box.right - wmf->box.left, wmf->box.bottom - wmf->box.top}
                                     : platform::Point{std::abs(window.extent.x), std::abs(window.extent.y)};
    recorder.SetFrame({0, 0, size.x, size.y});
    recorder.SetMapMode(platform::MapMode::kAnisotropic);
    recorder.SetViewportExt(size.x, size.y);
    recorder.SetWindowExt(size.x, size.y);
    if (wmf->placeable) recorder.SetWindowOrg(wmf->box.left, wmf->box.top);
  }
  TranslateRecords(wmf->records, wmf->placeable ? platform::Point{wmf->box.left, wmf->box.top} : platform::Point{},
                   recorder);
  const std::unique_ptr<platform::Metafile> metafile(recorder.Close());
  if (modules::AddMetafilePage(exchange, metafile->records) == nullptr) return glib::IERR;
  return glib::RCOK;
}

}  // namespace qwmf
