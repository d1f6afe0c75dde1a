#include "modules/helpers/tiff_reader/entries.h"

#include <utility>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/common/upright_rows.h"
#include "modules/helpers/tiff_reader/tiff_file.h"
#include "modules/helpers/tiff_reader/tiff_layout.h"
#include "modules/helpers/tiff_reader/tiff_page.h"
#include "platform/source_file.h"

namespace {

using modules::Fail;
using modules::TiffFile;
using modules::TiffLayout;

// Calls `visit` for the directories in their order, with the layout and the cause why it can't be read, or null, until
// it answers false.
template <typename Visit>
void VisitDirectories(TiffFile& file, Visit visit) {
  std::uint32_t visited = 0;
  do {
    TiffLayout layout;
    const char* cause = ReadLayout(file, layout);
    if (!visit(layout, cause)) return;
  } while (++visited < modules::kMaxPages && TIFFReadDirectory(file.Get()) != 0);
}

// Keeps the result of the first page that fails, and its cause, for a file of which nothing can be read.
class Outcome {
 public:
  explicit Outcome(glib::ImageDataExchange& exchange) : exchange_(exchange) {}

  void Add(TiffFile& file, const TiffLayout& layout, const char* cause) {
    // Directories may share their data.
    if (!modules::PagesBelievable(exchange_, file.Bytes().size())) cause = "The file has too many pages for its length";
    const std::uint32_t result =
        cause != nullptr ? Fail(exchange_, glib::NSUP, cause) : ReadTiffPage(file, layout, exchange_);
    if (result == glib::RCOK || failure_ != glib::RCOK) return;
    failure_ = result;
    if (exchange_.message != nullptr) cause_.Assign(*exchange_.message);
  }

  std::uint32_t Result() const {
    if (failure_ == glib::RCOK) return glib::RCOK;
    Fail(exchange_, failure_, cause_.c_str());
    return exchange_.pages.count != 0 ? glib::RCOK : failure_;
  }

 private:
  glib::ImageDataExchange& exchange_;
  std::uint32_t failure_ = glib::RCOK;
  gen::basic_string<char> cause_;
};

}  // namespace

ZEFA_HELPER_ENTRY(std::uint32_t) ReadTiff(const char* path, glib::ImageDataExchange* exchange) {
  const modules::Source source(path, *exchange);
  if (!source.Ok()) return Fail(*exchange, glib::IERR, "The file can't be read");
  TiffFile file(source.Bytes());
  if (!file.Ok()) return Fail(*exchange, glib::IERR, file.Error());

  Outcome outcome(*exchange);
  std::vector<std::uint64_t> reduced;
  bool onlyReduced = true;
  VisitDirectories(file, [&](const TiffLayout& layout, const char* cause) {
    if (layout.reduced) {
      reduced.push_back(TIFFCurrentDirOffset(file.Get()));
    } else {
      onlyReduced = false;
      outcome.Add(file, layout, cause);
    }
    return true;
  });
  for (std::size_t i = 0; onlyReduced && i < reduced.size(); ++i) {
    if (TIFFSetSubDirectory(file.Get(), reduced[i]) == 0) continue;
    TiffLayout layout;
    const char* cause = ReadLayout(file, layout);
    outcome.Add(file, layout, cause);
  }
  return outcome.Result();
}

ZEFA_HELPER_ENTRY(std::uint32_t) ReadTiffInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  TiffFile file(platform::OpenSource(path));
  if (!file.Ok()) return glib::IERR;

  struct Kind {
    TiffLayout first;
    std::int32_t directories = 0;
    std::int32_t pages = 0;
  } whole, reduced;
  VisitDirectories(file, [&](const TiffLayout& layout, const char* cause) {
    Kind& kind = layout.reduced ? reduced : whole;
    ++kind.directories;
    if (cause == nullptr && kind.pages++ == 0) kind.first = layout;
    return true;
  });
  const Kind& kind = whole.directories != 0 ? whole : reduced;
  if (kind.pages == 0) return glib::NSUP;

  std::uint32_t width = kind.first.width;
  std::uint32_t height = kind.first.height;
  double dpiX = kind.first.dpiX;
  double dpiY = kind.first.dpiY;
  if (modules::ExchangesSides(kind.first.orientation)) {
    std::swap(width, height);
    std::swap(dpiX, dpiY);
  }
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
                               static_cast<std::int32_t>(kind.first.PageBits()), kind.pages, dpiX, dpiY);
  return glib::RCOK;
}
