#include "modules/common/entries.h"

#include <cstdio>
#include <utility>

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/jpeg_reader.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/common/upright_rows.h"

namespace {

using modules::Fail;
using modules::JpegReader;

struct Upright {
  std::uint32_t width, height;
  double dpiX, dpiY;
};

Upright UprightSizes(const JpegReader& reader) {
  Upright sizes{reader.Width(), reader.Height(), modules::CheckedDpi(reader.DpiX()),
                modules::CheckedDpi(reader.DpiY())};
  if (modules::ExchangesSides(reader.Orientation())) {
    std::swap(sizes.width, sizes.height);
    std::swap(sizes.dpiX, sizes.dpiY);
  }
  return sizes;
}

// Rows up to the first that can't be had.
void ReadRows(JpegReader& reader, modules::UprightRows& rows) {
  while (rows.RowsDone() < rows.StoredHeight() && reader.ReadRow(rows.NextRow())) rows.RowDone();
  rows.Finish();
}

std::uint32_t ReadPage(JpegReader& reader, glib::ImageDataExchange& exchange) {
  const Upright sizes = UprightSizes(reader);
  modules::Page* page = modules::AddPage(exchange, sizes.width, sizes.height, reader.Bits());
  if (page == nullptr) return glib::NSUP;
  page->dpiX = sizes.dpiX;
  page->dpiY = sizes.dpiY;
  if (reader.Bits() == 8) reader.FillGreys(*page);

  modules::UprightRows rows(*page, reader.Orientation());
  if (reader.Start()) ReadRows(reader, rows);
  if (rows.RowsDone() == 0 || reader.WithoutRows()) {
    modules::DropLastPage(exchange);
    return Fail(exchange, reader.Result(), *reader.Cause() != '\0' ? reader.Cause() : "The picture has no data");
  }
  if (rows.RowsDone() < rows.StoredHeight() || reader.Warnings() != 0) {
    char text[96];
    std::snprintf(text, sizeof(text), "The picture's data are damaged or cut off (%ld warnings)", reader.Warnings());
    Fail(exchange, glib::RCOK, text);
  }
  return glib::RCOK;
}

std::uint32_t Load(JpegReader& reader, glib::ImageDataExchange& exchange, bool reduced) {
  if (!reader.ReadHeader()) return Fail(exchange, reader.Result(), reader.Cause());
  if (!modules::SizeAllowed(reader.Width(), reader.Height())) {
    return Fail(exchange, glib::NSUP, "The picture has too many pixels");
  }
  if (reduced) {
    std::uint32_t width = exchange.thumbnailWidth;
    std::uint32_t height = exchange.thumbnailHeight;
    if (modules::ExchangesSides(reader.Orientation())) std::swap(width, height);
    reader.ReduceTo(width, height);
  }
  return ReadPage(reader, exchange);
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qjpg", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* path, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source source(path, *exchange);
  if (!source.Ok()) return Fail(*exchange, glib::IERR, "The file can't be read");
  JpegReader reader(source.Bytes());
  return Load(reader, *exchange, false);
}

ZEFA_ENTRY LoadImageThumbnail(const char* path, glib::ImageDataExchange* exchange) {
  const modules::Source source(path);
  if (!source.Ok()) return Fail(*exchange, glib::IERR, "The file can't be read");
  JpegReader reader(source.Bytes());
  return Load(reader, *exchange, true);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  std::uint32_t result = glib::IERR;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> bytes) {
    JpegReader reader(bytes);
    if (!reader.ReadHeader()) {
      result = reader.Result();
      return !reader.EndsEarly();
    }
    const Upright sizes = UprightSizes(reader);
    *info =
        modules::NewFileInfo(path, id, static_cast<std::int32_t>(sizes.width), static_cast<std::int32_t>(sizes.height),
                             static_cast<std::int32_t>(reader.Bits()), 1, sizes.dpiX, sizes.dpiY);
    result = glib::RCOK;
    return true;
  });
  return result;
}
