#include "modules/qeps/postscript.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "glib/module_api/result_values.h"
#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"
#include "modules/qeps/pixmap_stream.h"
#include "platform/child_process.h"

namespace qeps {
namespace {

constexpr const char* kInterpreter = "gs";
// Each page that a script announces may take as long as ChildLimits gives by itself, all together so many milliseconds.
constexpr std::uint32_t kAllPages = 30000;
constexpr std::uint32_t kDosMark = 0xC6D3D0C5;  // as a little-endian number

std::span<const std::uint8_t> Part(std::span<const std::uint8_t> file, std::size_t offset, std::size_t length) {
  if (offset > file.size()) return {};
  return file.subspan(offset, std::min(length, file.size() - offset));
}

// The rest of a comment line that begins with `key`, or nothing.
std::string_view Rest(std::string_view line, std::string_view key) {
  return line.substr(0, key.size()) == key ? line.substr(key.size()) : std::string_view();
}

// Up to four numbers of a comment; how many there were.
int Numbers(std::string_view text, double (&numbers)[4]) {
  const std::string copy(text.substr(0, 128));
  const char* at = copy.c_str();
  int count = 0;
  while (count < 4) {
    char* end = nullptr;
    numbers[count] = std::strtod(at, &end);
    if (end == at) break;
    at = end;
    ++count;
  }
  return count;
}

// How many samples a pixel has in each direction: the interpreter's own smoothing leaves seams between shapes that
// abut, so small pages are drawn without it, larger, and averaged.
std::uint32_t SamplesFor(const Resolution& dpi) {
  const double most = std::max(dpi.x, dpi.y);
  if (most <= 100) return 4;
  return most <= 300 ? 2 : 1;
}

std::vector<std::string> Arguments(const Resolution& dpi, std::uint32_t samples) {
  char resolution[64];
  std::snprintf(resolution, sizeof(resolution), "-r%.3fx%.3f", dpi.x * samples, dpi.y * samples);
  std::vector<std::string> arguments = {
      kInterpreter, "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dNOPROMPT", "-dEPSCrop", "-sDEVICE=ppmraw",
      "-sstdout=%stderr", "-sOutputFile=%stdout",
      // Pages are drawn whole in memory: bands would wait in files, which the process can't make.
      "-dMaxBitmap=2000000000", resolution};
  if (samples == 1) arguments.insert(arguments.end(), {"-dTextAlphaBits=4", "-dGraphicsAlphaBits=4"});
  arguments.emplace_back("-");
  return arguments;
}

void ReadLines(std::string_view text, ScriptComments& found) {
  constexpr std::string_view kLater = " (atend)";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::string_view box = Rest(line, "%%BoundingBox:");
    const std::string_view pages = Rest(line, "%%Pages:");
    double numbers[4] = {};
    if (Numbers(box, numbers) == 4) {
      std::copy(std::begin(numbers), std::end(numbers), std::begin(found.box));
      found.width = std::ceil(std::clamp(numbers[2] - numbers[0], 0.0, 65535.0));
      found.height = std::ceil(std::clamp(numbers[3] - numbers[1], 0.0, 65535.0));
    } else if (Numbers(pages, numbers) >= 1) {
      found.pages = static_cast<std::uint32_t>(std::clamp(numbers[0], 1.0, static_cast<double>(modules::kMaxPages)));
    }
    found.boxAtEnd = found.boxAtEnd || box.substr(0, kLater.size()) == kLater;
  }
}

// By the comments that begin each; 1 without any.
std::uint32_t CountPages(std::string_view text) {
  constexpr std::string_view kPage = "%%Page:";
  std::uint32_t pages = 0;
  for (std::size_t at = text.find(kPage); at != std::string_view::npos; at = text.find(kPage, at + kPage.size())) {
    const bool beginsLine = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
    if (beginsLine && ++pages == modules::kMaxPages) break;
  }
  return std::max(pages, 1U);
}

// The interpreter looks for the box at the beginning only.
std::vector<std::uint8_t> WithBox(const ScriptComments& comments, std::span<const std::uint8_t> script) {
  char header[200];
  std::snprintf(header, sizeof(header),
                "%%!PS-Adobe-3.0 EPSF-3.0\n%%%%BoundingBox: %.6g %.6g %.6g %.6g\n%%%%EndComments\n", comments.box[0],
                comments.box[1], comments.box[2], comments.box[3]);
  std::vector<std::uint8_t> boxed(header, header + std::strlen(header));
  boxed.insert(boxed.end(), script.begin(), script.end());
  return boxed;
}

// From where the language begins: before it may stand what switches a printer to it.
std::span<const std::uint8_t> WithoutPrologue(std::span<const std::uint8_t> script) {
  constexpr std::size_t kFarthest = 4096;
  const std::string_view text(reinterpret_cast<const char*>(script.data()), std::min(script.size(), kFarthest));
  const std::size_t start = text.find("%!PS");
  return start == std::string_view::npos ? script : script.subspan(start);
}

}  // namespace

EpsParts SplitEps(std::span<const std::uint8_t> file) {
  modules::ByteReader in(file);
  if (in.Long() != kDosMark) return {WithoutPrologue(file), {}};
  const std::size_t script = in.Long();
  const std::size_t scriptBytes = in.Long();
  in.Skip(8);
  const std::size_t tiff = in.Long();
  const std::size_t tiffBytes = in.Long();
  if (in.Failed()) return {};
  return {Part(file, script, scriptBytes), Part(file, tiff, tiffBytes)};
}

ScriptComments ReadComments(std::span<const std::uint8_t> script) {
  constexpr std::size_t kBeginning = 65536;
  constexpr std::size_t kEnd = 8192;
  const std::string_view text(reinterpret_cast<const char*>(script.data()), script.size());
  ScriptComments found;
  const std::size_t header = std::min(text.size(), kBeginning);
  ReadLines(text.substr(0, header), found);
  // What the header leaves to the end stands in its last lines.
  if (found.boxAtEnd || found.pages == 0)
    ReadLines(text.substr(std::max(header, text.size() - std::min(text.size(), kEnd))), found);
  if (found.pages == 0) found.pages = CountPages(text);
  return found;
}

bool HasInterpreter() { return platform::ProgramExists(kInterpreter); }

std::uint32_t LoadPostScript(std::span<const std::uint8_t> script, const Resolution& dpi,
                             glib::ImageDataExchange& exchange) {
  const std::uint32_t samples = SamplesFor(dpi);
  const ScriptComments comments = ReadComments(script);
  std::vector<std::uint8_t> boxed;
  if (comments.boxAtEnd && comments.width > 0 && comments.height > 0) {
    boxed = WithBox(comments, script);
    script = boxed;
  }
  auto child = platform::ChildProcess::Program(Arguments(dpi, samples), script, {});
  if (!child.Started()) return modules::Fail(exchange, glib::NSUP, "Ghostscript can't be started");
  PixmapStream pages(child);
  while (pages.AppendPage(samples, exchange)) {
    modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
    page.dpiX = dpi.x;
    page.dpiY = dpi.y;
    // A script may show pages for ever, but not more than it says.
    if (exchange.pages.count < comments.pages) child.ExtendTime(kAllPages);
  }
  const std::uint32_t result = exchange.pages.count != 0 ? glib::RCOK : glib::IERR;
  if (child.TimedOut()) return modules::Fail(exchange, result, "The script takes too long");
  if (!child.EndedWell() && exchange.message->count <= 1)
    return modules::Fail(exchange, result, "The script is damaged");
  if (result != glib::RCOK) return modules::Fail(exchange, result, "The script shows no page");
  return result;
}

}  // namespace qeps
