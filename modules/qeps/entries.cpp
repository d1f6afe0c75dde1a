#include "modules/common/entries.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "glib/module_api/format_rows.h"
#include "modules/common/helper.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qeps/pdf.h"
#include "modules/qeps/postscript.h"

namespace {

constexpr std::uint32_t kPdfId = 0x10000023;

qeps::Resolution ResolutionOf(const glib::BaseFormatDesc* settings) {
  if (settings == nullptr) return {};
  return {modules::CheckedDpi(settings->dpiX), modules::CheckedDpi(settings->dpiY)};
}

bool IsPdf(std::span<const std::uint8_t> file, std::uint32_t id) {
  constexpr char kMark[] = {'%', 'P', 'D', 'F'};
  if (file.size() < sizeof(kMark)) return id == kPdfId;
  return std::equal(std::begin(kMark), std::end(kMark), file.begin());
}

// The small picture that stands beside the script, for want of better.
std::uint32_t LoadPreview(std::span<const std::uint8_t> tiff, glib::ImageDataExchange& exchange) {
  constexpr const char* kHelper = "tiff_reader";
  using ReadTiff = std::uint32_t(const char*, glib::ImageDataExchange*);
  auto* read = modules::HelperFunction<ReadTiff>(kHelper, "ReadTiff");
  if (read == nullptr) return modules::MissingHelper(exchange, kHelper);
  const std::uint32_t size = std::exchange(exchange.sourceSize, static_cast<std::uint32_t>(tiff.size()));
  const std::uint32_t result = read(reinterpret_cast<const char*>(tiff.data()), &exchange);
  exchange.sourceSize = size;
  return result;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qeps", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* loadWord) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  const qeps::Resolution dpi = ResolutionOf(loadWord);
  if (IsPdf(file.Bytes(), exchange->id)) return qeps::LoadPdf(file.Bytes(), dpi, *exchange);
  const qeps::EpsParts parts = qeps::SplitEps(file.Bytes());
  if (parts.script.empty()) return modules::Fail(*exchange, glib::IERR, "The file holds no script");
  if (!parts.tiff.empty() && !qeps::HasInterpreter()) return LoadPreview(parts.tiff, *exchange);
  return qeps::LoadPostScript(parts.script, dpi, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  qeps::PdfSummary found;
  if (IsPdf(file.Bytes(), id)) {
    const std::uint32_t result = qeps::SummarizePdf(file.Bytes(), found);
    if (result != glib::RCOK) return result;
  } else {
    const qeps::EpsParts parts = qeps::SplitEps(file.Bytes());
    if (parts.script.empty()) return glib::IERR;
    const qeps::ScriptComments comments = qeps::ReadComments(parts.script);
    found = {static_cast<std::uint32_t>(comments.width), static_cast<std::uint32_t>(comments.height), comments.pages};
  }
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(found.width), static_cast<std::int32_t>(found.height),
                           24, static_cast<std::int32_t>(found.pages), 72.0, 72.0);
  return glib::RCOK;
}
