#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/png_page.h"
#include "modules/common/source.h"
#include "modules/qmng/frames.h"
#include "modules/qmng/jng.h"

namespace {

using qmng::Bytes;

constexpr std::uint32_t kJngId = 0x3000001E;
// Pictures that can't be read, until the rest isn't tried any more: a loop would bring them back for ages.
constexpr std::uint32_t kMaxFailures = 64;
// Of all frames, from which on none is repeated: their pixels have nothing to do with the file's length.
constexpr std::uint64_t kMaxRepeatedPixels = std::uint64_t{1} << 25;

std::uint32_t LoadPng(Bytes file, glib::ImageDataExchange& exchange) {
  modules::PngReader png(file);
  if (!png.ReadHeader(true)) return modules::Fail(exchange, glib::IERR, png.Cause());
  return modules::AddPngPage(png, exchange);
}

std::uint32_t LoadAnimation(Bytes file, glib::ImageDataExchange& exchange) {
  std::uint32_t last = modules::Fail(exchange, glib::IERR, "The file has no pictures");
  std::uint32_t failures = 0;
  std::uint64_t pixels = 0;
  qmng::ForEachFrame(file, [&](const qmng::Frame& frame) {
    if (frame.repeated && pixels > kMaxRepeatedPixels) return true;
    const std::uint32_t before = exchange.pages.count;
    // One that can't be read is left out; why it can't stays in the message.
    const std::uint32_t result = frame.photograph ? qmng::LoadJng(frame.file, exchange) : LoadPng(frame.file, exchange);
    if (exchange.pages.count > before) {
      modules::Page& page = *exchange.pages.At(before);
      page.delay = frame.delay;
      pixels += static_cast<std::uint64_t>(page.width) * static_cast<std::uint64_t>(page.height);
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

struct Told {
  std::uint32_t result = glib::IERR;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;
  double dpiX = 72.0;
  double dpiY = 72.0;
  std::int32_t pages = 0;
};

void TellOfJng(Bytes file, Told& told) {
  qmng::JngHeader header;
  told.result = qmng::ReadJngHeader(file, header).result;
  told.width = header.width;
  told.height = header.height;
  told.bits = header.PageBits();
  told.dpiX = header.dpiX;
  told.dpiY = header.dpiY;
}

void TellOfPng(Bytes file, Told& told) {
  modules::PngReader png(file);
  if (!png.ReadHeader(false)) return;
  told.result = modules::SizeAllowed(png.Width(), png.Height()) ? glib::RCOK : glib::NSUP;
  told.width = png.Width();
  told.height = png.Height();
  told.bits = png.Bits();
  told.dpiX = png.DpiX();
  told.dpiY = png.DpiY();
}

void TellOfAnimation(Bytes file, Told& told) {
  qmng::ForEachFrame(file, [&](const qmng::Frame& frame) {
    if (told.pages++ == 0) frame.photograph ? TellOfJng(frame.file, told) : TellOfPng(frame.file, told);
    return told.result == glib::RCOK && told.pages < static_cast<std::int32_t>(modules::kMaxPages);
  });
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qmng", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return exchange->id == kJngId ? qmng::LoadJng(file.Bytes(), *exchange) : LoadAnimation(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  Told told{.pages = id == kJngId ? 1 : 0};
  id == kJngId ? TellOfJng(file.Bytes(), told) : TellOfAnimation(file.Bytes(), told);
  if (told.result != glib::RCOK) return told.result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(told.width), static_cast<std::int32_t>(told.height),
                               static_cast<std::int32_t>(told.bits), told.pages, told.dpiX, told.dpiY);
  return glib::RCOK;
}
