#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qppm/pnm.h"

namespace {

// Headers are some twenty bytes long, unless there are comments in them.
constexpr std::size_t kUsualStart = 1024;

std::int32_t CountPictures(std::span<const std::uint8_t> file) {
  std::int32_t count = 0;
  qppm::PnmHeader header;
  while (!file.empty() && qppm::ReadPnmHeader(file, header) == qppm::HeaderState::kWhole &&
         file.size() - header.size >= qppm::PnmRasterBytes(header) &&
         count < static_cast<std::int32_t>(modules::kMaxPages)) {
    ++count;
    file = file.subspan(qppm::NextPnm(file, header.size + qppm::PnmRasterBytes(header)));
  }
  return count;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qppm", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qppm::LoadPnm(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  modules::Source file(path, kUsualStart);
  if (!file.Ok()) return glib::IERR;
  qppm::PnmHeader header;
  qppm::HeaderState state = qppm::ReadPnmHeader(file.Bytes(), header);
  if (state == qppm::HeaderState::kCut) {
    file = modules::Source(path);
    state = qppm::ReadPnmHeader(file.Bytes(), header);
  }
  if (state != qppm::HeaderState::kWhole) return qppm::VerdictOf(state).result;
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width), static_cast<std::int32_t>(header.height),
                           static_cast<std::int32_t>(qppm::PnmPageBits(header.kind)), 1, 72.0, 72.0);
  const bool moreFollows =
      !header.text && static_cast<std::uint64_t>((*info)->size) > header.size + qppm::PnmRasterBytes(header);
  if (moreFollows) (*info)->pages = std::max(1, CountPictures(modules::Source(path).Bytes()));
  return glib::RCOK;
}
