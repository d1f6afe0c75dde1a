#include "modules/qeps/pdf.h"

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/common/poppler_reader.h"
#include "platform/child_process.h"

namespace qeps {
namespace {

constexpr const char* kHelper = "poppler_reader";
constexpr const char* kLocked = "The document is locked by a password";
constexpr const char* kDamaged = "The document is damaged";

// Each page may take as long as ChildLimits gives by itself, all pages together so many milliseconds.
constexpr std::uint32_t kAllPages = 30000;

template <typename Record>
bool ReadRecord(platform::ChildProcess& child, Record& record) {
  return child.Read(&record, sizeof(record)) == sizeof(record);
}

// One page of the stream into the exchange; false at its end.
bool AppendPage(platform::ChildProcess& child, const Resolution& dpi, glib::ImageDataExchange& exchange) {
  modules::PdfPageHead head;
  if (!ReadRecord(child, head)) return false;
  modules::Page* page = modules::AddPage(exchange, head.width, head.height, 24);
  if (page == nullptr) return false;
  page->dpiX = dpi.x;
  page->dpiY = dpi.y;
  const std::size_t rowBytes = std::size_t{3} * head.width;
  for (std::uint32_t y = 0; y < head.height; ++y) {
    if (child.Read(modules::Row(*page, y), rowBytes) == rowBytes) continue;
    modules::DropLastPage(exchange);
    return false;
  }
  return true;
}

}  // namespace

std::uint32_t LoadPdf(std::span<const std::uint8_t> file, const Resolution& dpi, glib::ImageDataExchange& exchange) {
  auto* draw = modules::HelperFunction<decltype(PopplerDraw)>(kHelper, "PopplerDraw");
  if (draw == nullptr) return modules::MissingHelper(exchange, kHelper);
  auto child =
      platform::ChildProcess::Copy([&](int output) { draw(file.data(), file.size(), dpi.x, dpi.y, output); }, {});
  modules::PdfHead head;
  if (!ReadRecord(child, head)) return modules::Fail(exchange, glib::IERR, kDamaged);
  if (head.result == glib::NSUP) return modules::Fail(exchange, glib::NSUP, kLocked);
  if (head.result != glib::RCOK) return modules::Fail(exchange, glib::IERR, kDamaged);
  while (AppendPage(child, dpi, exchange)) child.ExtendTime(kAllPages);
  const std::uint32_t found = exchange.pages.count;
  const std::uint32_t result = found != 0 ? glib::RCOK : glib::IERR;
  if (child.TimedOut()) return modules::Fail(exchange, result, "The document takes too long to draw");
  if (found < head.pages) return modules::Fail(exchange, result, "Not all pages can be drawn");
  return result;
}

std::uint32_t SummarizePdf(std::span<const std::uint8_t> file, PdfSummary& summary) {
  auto* summarize = modules::HelperFunction<decltype(PopplerSummarize)>(kHelper, "PopplerSummarize");
  if (summarize == nullptr) return glib::NSUP;
  auto child = platform::ChildProcess::Copy([&](int output) { summarize(file.data(), file.size(), output); }, {});
  modules::PdfHead head;
  if (!ReadRecord(child, head)) return glib::IERR;
  if (head.result != glib::RCOK) return head.result == glib::NSUP ? glib::NSUP : glib::IERR;
  modules::PdfPageHead first;
  if (!ReadRecord(child, first)) return glib::IERR;
  summary = {first.width, first.height, head.pages};
  return glib::RCOK;
}

}  // namespace qeps
