#include "modules/common/entries.h"

#include <algorithm>

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qmng/frames.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kJngId = 0x3000001E;
// Pictures that can't be read, until the rest isn't tried any more: a loop would bring them back for ages.
constexpr std::uint32_t kMaxFailures = 64;

modules::MagickOptions OptionsFor(bool photograph, Bytes file) {
  constexpr std::size_t kColourAt = 24;  // in the header of a JNG
  constexpr std::uint8_t kGrey = 8;
  if (!photograph) return {.coder = "PNG"};
  return {.coder = "JNG", .greyIsIndexed = file.size() > kColourAt && file[kColourAt] == kGrey};
}

std::uint32_t LoadAnimation(Bytes file, glib::ImageDataExchange& exchange) {
  std::uint32_t last = modules::Fail(exchange, glib::IERR, "The file has no pictures");
  std::uint32_t failures = 0;
  qmng::ForEachFrame(file, [&](const qmng::Frame& frame) {
    const std::uint32_t before = exchange.pages.count;
    // One that can't be read is left out; why it can't stays in the message.
    const std::uint32_t result =
        modules::LoadWithMagick(frame.file, OptionsFor(frame.photograph, frame.file), exchange);
    if (exchange.pages.count > before) {
      exchange.pages.At(before)->delay = frame.delay;
    } else {
      last = result;
      ++failures;
    }
    return exchange.pages.count < modules::kMaxPages && failures < kMaxFailures;
  });
  if (exchange.pages.count == 0) return last == glib::RCOK ? glib::IERR : last;
  if (exchange.pages.count == 1) exchange.pages.At(0)->delay = qmng::Frame().delay;
  return glib::RCOK;
}

// The library's look at the header misses alpha.
std::uint32_t TellOfPicture(Bytes file, bool photograph, bool alpha, modules::MagickSummary& found) {
  const std::uint32_t result = modules::PingWithMagick(file, OptionsFor(photograph, file), found);
  if (alpha) found.bits = 32;
  return result;
}

std::uint32_t TellOfAnimation(Bytes file, const char* path, std::uint32_t id, glib::FileInfo** info) {
  modules::MagickSummary first;
  std::uint32_t result = glib::IERR;
  std::int32_t pages = 0;
  qmng::ForEachFrame(file, [&](const qmng::Frame& frame) {
    if (pages == 0) {
      result = TellOfPicture(frame.file, frame.photograph, frame.alpha, first);
    }
    ++pages;
    return result == glib::RCOK && pages < static_cast<std::int32_t>(modules::kMaxPages);
  });
  if (result == glib::RCOK) *info = modules::InfoOf(path, id, first, pages);
  return result;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qmng", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  if (exchange->id != kJngId) return LoadAnimation(file.Bytes(), *exchange);
  return modules::LoadWithMagick(file.Bytes(), OptionsFor(true, file.Bytes()), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  if (id != kJngId) return TellOfAnimation(file.Bytes(), path, id, info);
  modules::MagickSummary found;
  const std::uint32_t result = TellOfPicture(file.Bytes(), true, qmng::HeaderHasAlpha(file.Bytes()), found);
  if (result == glib::RCOK) *info = modules::InfoOf(path, id, found, 1);
  return result;
}
