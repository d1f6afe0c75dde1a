#include "modules/common/entries.h"

#include <string>

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qimg/cut.h"
#include "modules/qimg/gem.h"
#include "modules/qimg/iff.h"
#include "modules/qimg/sgi.h"
#include "modules/qimg/sun.h"
#include "modules/qimg/xbm.h"
#include "modules/qimg/xpm.h"

namespace {

enum Format : std::uint32_t {
  kGem = 0x13,
  kIff = 0x14,
  kSun = 0x15,
  kSgi = 0x16,
  kXbm = 0x17,
  kXpm = 0x18,
  kUtah = 0x1C,
  kCut = 0x20,
};

using Bytes = std::span<const std::uint8_t>;

constexpr modules::MagickOptions kXpmCoder{.coder = "XPM"};
constexpr std::size_t kUtahStart = 14;

// A file of one sample a pixel without colours of its own is grey.
modules::MagickOptions UtahCoder(Bytes file) {
  constexpr std::size_t kSamplesAt = 11;
  constexpr std::size_t kMapsAt = 13;
  return {.coder = "RLE", .greyIsIndexed = file.size() > kMapsAt && file[kSamplesAt] == 1 && file[kMapsAt] == 0};
}

std::uint32_t LoadPixmap(Bytes file, glib::ImageDataExchange& exchange) {
  qimg::XpmHeader header;
  const modules::Verdict verdict = qimg::ReadXpmHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  if (!modules::SizeBelievable(header.width, header.height, file.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  const auto moved = qimg::WithoutLeadingBlanks(file);
  const std::uint32_t result = modules::LoadWithMagick(moved.empty() ? file : moved, kXpmCoder, exchange);
  qimg::PutBackIntoPalette(header.colours, exchange);
  return result;
}

// The colours of a cut lie beside it, under its name.
modules::Source PaletteBeside(const char* source, const glib::ImageDataExchange& exchange) {
  if (exchange.sourceSize != glib::kSourceIsPath) return modules::Source("");
  std::string path = source;
  const std::size_t dot = path.find_last_of(".\\/");
  if (dot != std::string::npos && path[dot] == '.') path.resize(dot);
  modules::Source palette((path + ".pal").c_str());
  return palette.Ok() ? std::move(palette) : modules::Source((path + ".PAL").c_str());
}

// What a header says of a page, as far as own readers give it.
struct Told {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;
  std::int32_t pages = 1;
  double dpiX = 72.0;
  double dpiY = 72.0;
};

modules::Verdict TellGem(Bytes file, Told& told) {
  qimg::GemHeader header;
  const modules::Verdict verdict = qimg::ReadGemHeader(file, header);
  told = {header.width, header.height, qimg::GemPageBits(header), 1, header.dpiX, header.dpiY};
  return verdict;
}

modules::Verdict TellIff(Bytes file, Told& told) {
  modules::Verdict verdict{glib::IERR, "The file holds no picture"};
  std::int32_t pages = 0;
  for (const qimg::IffPicture& picture : qimg::FindIffPictures(file)) {
    if (picture.verdict.result == glib::RCOK && pages++ == 0) {
      told = {picture.width, picture.height, qimg::IffPageBits(picture), 1, picture.dpiX, picture.dpiY};
    }
    if (pages == 0) verdict = picture.verdict;
  }
  told.pages = pages;
  return pages != 0 ? modules::kFine : verdict;
}

modules::Verdict TellSun(Bytes file, Told& told) {
  qimg::SunHeader header;
  const modules::Verdict verdict = qimg::ReadSunHeader(file, header);
  told = {.width = header.width, .height = header.height, .bits = header.bits};
  return verdict;
}

modules::Verdict TellSgi(Bytes file, Told& told) {
  qimg::SgiHeader header;
  const modules::Verdict verdict = qimg::ReadSgiHeader(file, header);
  told = {.width = header.width, .height = header.height, .bits = header.PageBits()};
  return verdict;
}

modules::Verdict TellXbm(Bytes file, Told& told) {
  qimg::XbmHeader header;
  const modules::Verdict verdict = qimg::ReadXbmHeader(file, header);
  told = {.width = header.width, .height = header.height, .bits = 1};
  return verdict;
}

modules::Verdict TellCut(Bytes file, Told& told) {
  qimg::CutHeader header;
  const modules::Verdict verdict = qimg::ReadCutHeader(file, header);
  told = {.width = header.width, .height = header.height, .bits = 8};
  return verdict;
}

modules::Verdict TellXpm(Bytes file, Told& told) {
  qimg::XpmHeader header;
  const modules::Verdict verdict = qimg::ReadXpmHeader(file, header);
  told = {.width = header.width, .height = header.height, .bits = qimg::XpmPageBits(file, header)};
  return verdict;
}

std::uint32_t Tell(const char* path, std::uint32_t id, modules::Verdict (*tell)(Bytes, Told&), std::size_t start,
                   glib::FileInfo** info) {
  const modules::Source file(path, start);
  if (!file.Ok()) return glib::IERR;
  Told told;
  const modules::Verdict verdict = tell(file.Bytes(), told);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(told.width), static_cast<std::int32_t>(told.height),
                               static_cast<std::int32_t>(told.bits), told.pages, told.dpiX, told.dpiY);
  return glib::RCOK;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qimg", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  switch (exchange->id) {
    case kGem:
      return qimg::LoadGem(file.Bytes(), *exchange);
    case kIff:
      return qimg::LoadIff(file.Bytes(), *exchange);
    case kSun:
      return qimg::LoadSun(file.Bytes(), *exchange);
    case kSgi:
      return qimg::LoadSgi(file.Bytes(), *exchange);
    case kXbm:
      return qimg::LoadXbm(file.Bytes(), *exchange);
    case kXpm:
      return LoadPixmap(file.Bytes(), *exchange);
    case kUtah:
      return modules::LoadWithMagick(file.Bytes(), UtahCoder(file.Bytes()), *exchange);
    case kCut:
      return qimg::LoadCut(file.Bytes(), PaletteBeside(source, *exchange).Bytes(), *exchange);
    default:
      return modules::Fail(*exchange, glib::NSUP, "The format isn't read here");
  }
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  constexpr auto kWhole = static_cast<std::size_t>(-1);
  switch (id) {
    case kGem:
      return Tell(path, id, TellGem, qimg::kGemStart, info);
    case kIff:
      return Tell(path, id, TellIff, kWhole, info);
    case kSun:
      return Tell(path, id, TellSun, qimg::kSunHeader, info);
    case kSgi:
      return Tell(path, id, TellSgi, qimg::kSgiHeader, info);
    case kXbm:
      return Tell(path, id, TellXbm, qimg::kXbmStart, info);
    case kXpm:
      return Tell(path, id, TellXpm, kWhole, info);
    case kUtah:
      return modules::InfoWithMagick(path, id, UtahCoder(modules::Source(path, kUtahStart).Bytes()), info);
    case kCut:
      return Tell(path, id, TellCut, qimg::kCutHeader, info);
    default:
      return glib::NSUP;
  }
}
