#include "modules/common/entries.h"

#include <algorithm>
#include <vector>

#include "glib/module_api/format_rows.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qswf/movie.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qswf", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qswf::LoadMovie(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  constexpr std::size_t kStart = 1024;
  constexpr std::size_t kHeader = 64;
  const modules::Source start(path, kStart);
  if (!start.Ok()) return glib::IERR;
  std::vector<std::uint8_t> movie;
  modules::Verdict verdict = qswf::UnpackMovie(start.Bytes(), kHeader, movie);
  qswf::MovieHeader header;
  if (verdict.result == glib::RCOK) verdict = qswf::ReadMovieHeader(movie, header);
  if (verdict.result != glib::RCOK) return verdict.result;
  const std::uint32_t pages = std::clamp(header.frames, std::uint32_t{1}, modules::kMaxPages);
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width), static_cast<std::int32_t>(header.height),
                           24, static_cast<std::int32_t>(pages), 72.0, 72.0);
  return glib::RCOK;
}
