#include "modules/common/entries.h"

#include <new>

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qgif/reader.h"
#include "modules/qgif/writer.h"

namespace {

// No exception passes the border of the module.
template <typename Work>
std::uint32_t WithMemory(glib::ImageDataExchange* exchange, Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return exchange != nullptr ? modules::Fail(*exchange, glib::IERR, "There is no memory for the picture")
                               : glib::IERR;
  }
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qgif", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* /*loadWord*/) {
  return WithMemory(exchange, [&] {
    const modules::Source file(source, *exchange);
    if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
    return qgif::LoadGif(file.Bytes(), *exchange);
  });
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  return WithMemory(nullptr, [&] {
    const modules::Source file(path);
    return file.Ok() ? qgif::ReadGifInfo(path, file.Bytes(), id, info) : glib::IERR;
  });
}

ZEFA_ENTRY SaveImageData(const char* path, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* settings) {
  return WithMemory(exchange, [&] { return qgif::SaveGif(path, *exchange, *settings); });
}
