#include "tests/modules_fixture/script.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "platform/metafile/metafile.h"
#include "platform/native_path.h"

namespace modules_fixture {
namespace {

using modules::Page;

struct Command {
  std::string word;
  std::string rest;

  std::string Text(const std::string& key, const std::string& otherwise) const {
    std::istringstream words(rest);
    for (std::string pair; words >> pair;) {
      if (pair.rfind(key + "=", 0) == 0) return pair.substr(key.size() + 1);
    }
    return otherwise;
  }
  std::int32_t Number(const std::string& key, std::int32_t otherwise) const {
    const std::string text = Text(key, "");
    return text.empty() ? otherwise : std::stoi(text);
  }
};

std::uint32_t Letters(const std::string& text) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(i < text.size() ? text[i] : ' ');
  return value;
}

std::vector<Command> Commands(const modules::Source& source) {
  std::istringstream lines(std::string(source.Bytes().begin(), source.Bytes().end()));
  std::vector<Command> commands;
  std::string line;
  std::getline(lines, line);  // the signature
  while (std::getline(lines, line)) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    commands.push_back({line.substr(0, blank), line.substr(std::min(blank + 1, line.size()))});
  }
  return commands;
}

platform::Metafile* MetafileWithFrame(const std::string& frame) {
  int right = 0;
  int bottom = 0;
  if (std::sscanf(frame.c_str(), "%dx%d", &right, &bottom) != 2) return nullptr;
  std::uint32_t header[27] = {1, sizeof(header)};
  header[8] = static_cast<std::uint32_t>(right);
  header[9] = static_cast<std::uint32_t>(bottom);
  std::memcpy(&header[10], " EMF", 4);
  return platform::SetEnhMetaFileBits(reinterpret_cast<const std::uint8_t*>(header), sizeof(header));
}

void AppendPage(const Command& command, glib::ImageDataExchange& exchange) {
  static std::uint8_t unownedPixels[1U << 16];

  auto* page = new Page;
  exchange.pages.Append(page);
  page->bits = command.Number("bits", 8);
  page->width = command.Number("width", 2);
  page->height = command.Number("height", 2);
  page->owned = static_cast<std::uint8_t>(command.Number("owned", 1));
  page->visible = static_cast<std::uint8_t>(command.Number("visible", 1));
  page->grayscale = static_cast<std::uint8_t>(command.Number("gray", 0));
  page->paletteEntries = static_cast<std::uint32_t>(command.Number("entries", 256));
  page->slideNumber = command.Number("slide", -1);
  page->x = command.Number("x", 0);
  page->y = command.Number("y", 0);
  page->delay = static_cast<std::uint32_t>(command.Number("delay", 10));
  page->dpiX = std::stod(command.Text("dpix", "72"));
  page->dpiY = std::stod(command.Text("dpiy", "72"));
  page->name.Assign(command.Text("name", "").c_str());
  page->background = exchange.background;
  if (const std::string colour = command.Text("background", ""); !colour.empty()) {
    const auto value = static_cast<std::uint32_t>(std::stoul(colour, nullptr, 16));
    page->background = glib::RGB32(static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
                                   static_cast<std::uint8_t>(value), 0);
  }
  for (std::uint32_t i = 0; i < 256; ++i) {
    const auto level = static_cast<std::uint8_t>(i);
    modules::SetEntry(*page, i, level, static_cast<std::uint8_t>(255 - level), level);
  }
  if (page->bits == 0) page->metafile = MetafileWithFrame(command.Text("frame", ""));
  if (page->bits <= 0) return;

  const std::size_t size = page->Stride() * static_cast<std::size_t>(page->height);
  page->pixels =
      command.Number("static", 0) != 0 && size <= sizeof(unownedPixels)
          ? unownedPixels
          : exchange.AllocateRaster(static_cast<std::uint32_t>(page->width), static_cast<std::uint32_t>(page->height),
                                    static_cast<std::uint32_t>(page->bits));
  if (page->pixels == nullptr) return;
  const std::string fill = command.Text("fill", "0");
  for (std::size_t i = 0; i < size; ++i) {
    page->pixels[i] = static_cast<std::uint8_t>(fill == "count" ? i : std::stoul(fill));
  }
}

std::uint32_t Rgb(const glib::RGB32& colour) { return glib::ToPixel(colour) & 0xFFFFFF; }

void Show(glib::ImageDataExchange& exchange, const glib::BaseFormatDesc* loadWord) {
  char word[16] = "none";
  if (loadWord != nullptr) std::snprintf(word, sizeof(word), "%08x", loadWord->id);
  gen::Format(*exchange.message, "id=%08x size=%08x word=%s film=%d callback=%d background=%06x raster=%d", exchange.id,
              exchange.sourceSize, word, exchange.film != nullptr, exchange.callback != nullptr,
              Rgb(exchange.background), exchange.AllocateRaster != nullptr && exchange.FreeRaster != nullptr);
}

bool Report(const Command& command, const glib::ImageDataExchange& exchange) {
  glib::ProgressInfo info;
  std::istringstream(command.rest) >> info.current >> info.total;
  info.userValue = exchange.userValue;
  info.text.Assign("Loading");
  return exchange.callback == nullptr || exchange.callback(&info) != 0;
}

void WriteHex(std::ostream& out, const std::uint8_t* bytes, std::size_t count) {
  char digits[3];
  for (std::size_t i = 0; i < count; ++i) {
    std::snprintf(digits, sizeof(digits), "%02x", bytes[i]);
    out << digits;
  }
}

void WriteWord(std::ostream& out, std::uint32_t value, int digits) {
  char text[9];
  std::snprintf(text, sizeof(text), "%0*x", digits, value);
  out << text;
}

void WriteSettings(std::ostream& out, const glib::BaseFormatDesc& settings) {
  out << "settings id=";
  WriteWord(out, settings.id, 8);
  out << " width=" << settings.width << " height=" << settings.height << " depth=" << settings.depth
      << " first=" << settings.firstSlide << " count=" << settings.slideCount << " dither=" << int{settings.dither}
      << " grayscale=" << int{settings.grayscale} << " quantize=" << settings.quantize;
  if (const auto* gif = dynamic_cast<const glib::GIFSave*>(&settings)) {
    out << " paletteItems=" << gif->paletteItems << " transparentIndex=" << gif->transparentIndex
        << " interlace=" << int{gif->interlace} << " nfi=" << int{gif->nfi};
  }
  out << " dpi=" << settings.dpiX << "x" << settings.dpiY << "\n";
}

void WritePage(std::ostream& out, const Page& page) {
  out << "page bits=" << page.bits << " width=" << page.width << " height=" << page.height
      << " owned=" << int{page.owned} << " aligned=" << int{page.rowsAligned} << " slide=" << page.slideNumber
      << " x=" << page.x << " y=" << page.y << " delay=" << page.delay << " dpi=" << page.dpiX << "x" << page.dpiY
      << " visible=" << int{page.visible} << " name=" << page.name.c_str() << " background=";
  WriteWord(out, Rgb(page.background), 6);
  out << " entries=" << page.paletteEntries;
  if (page.bits == 0) {
    platform::EnhMetaHeader header;
    if (platform::GetEnhMetaFileHeader(page.metafile, header)) {
      out << " frame=" << header.frameRight << "x" << header.frameBottom;
    }
  }
  if (page.bits > 0 && page.pixels != nullptr) {
    out << " pixels=";
    const auto width = static_cast<std::size_t>(page.width);
    for (std::int32_t y = 0; y < page.height; ++y) {
      WriteHex(out, page.pixels + static_cast<std::size_t>(y) * page.Stride(),
               glib::PackedStride(width, static_cast<std::size_t>(page.bits)));
    }
  }
  if (page.bits > 0 && page.bits <= 8) {
    out << " palette=";
    for (std::uint32_t i = 0; i < std::min(page.paletteEntries, 4U); ++i) WriteWord(out, page.palette[i], 8);
  }
  out << "\n";
}

}  // namespace

std::uint32_t Load(const char* source, glib::ImageDataExchange& exchange, const glib::BaseFormatDesc* loadWord) {
  const modules::Source bytes(source, exchange);
  if (!bytes.Ok()) return glib::IERR;
  std::uint32_t result = glib::RCOK;
  for (const Command& command : Commands(bytes)) {
    if (command.word == "page") {
      for (std::int32_t i = command.Number("count", 1); i > 0; --i) AppendPage(command, exchange);
    } else if (command.word == "message") {
      exchange.message->Assign(command.rest.c_str());
    } else if (command.word == "show") {
      Show(exchange, loadWord);
    } else if (command.word == "report") {
      if (!Report(command, exchange)) return Letters("STOP");
    } else if (command.word == "result") {
      result = Letters(command.rest);
    }
  }
  return result;
}

std::uint32_t LoadThumbnail(const char* path, glib::ImageDataExchange& exchange) {
  const modules::Source bytes(path);
  if (!bytes.Ok()) return glib::IERR;
  std::uint32_t result = glib::RCOK;
  for (const Command& command : Commands(bytes)) {
    if (command.word == "thumbnail") result = Letters(command.rest);
  }
  Page* page = modules::AddPage(exchange, exchange.thumbnailWidth, exchange.thumbnailHeight, 8);
  if (page != nullptr) page->name.Assign(exchange.thumbnailFlag != 0 ? "flagged thumbnail" : "thumbnail");
  return result;
}

std::uint32_t Info(const char* path, std::uint32_t id, glib::FileInfo*& info) {
  const modules::Source bytes(path);
  if (!bytes.Ok()) return glib::IERR;
  Command last;
  for (const Command& command : Commands(bytes)) {
    if (command.word == "info") last = command;
  }
  const std::uint32_t result = Letters(last.Text("result", "RCOK"));
  if (result == glib::RCOK) {
    info = modules::NewFileInfo(path, id, last.Number("width", 2), last.Number("height", 2), last.Number("bits", 8),
                                last.Number("pages", 1), std::stod(last.Text("dpix", "72")),
                                std::stod(last.Text("dpiy", "72")));
  }
  return result;
}

std::uint32_t Save(const char* path, const glib::ImageDataExchange& exchange, const glib::BaseFormatDesc& settings) {
  constexpr const char* kRefuse = "refuse-";
  if (const char* refusal = std::strstr(path, kRefuse)) return Letters(refusal + std::strlen(kRefuse));

  std::ofstream out(platform::NativePath(path), std::ios::binary);
  WriteSettings(out, settings);
  out << "exchange id=";
  WriteWord(out, exchange.id, 8);
  out << " size=";
  WriteWord(out, exchange.sourceSize, 8);
  out << " pages=" << exchange.pages.count << " film=" << (exchange.film != nullptr)
      << " callback=" << (exchange.callback != nullptr)
      << " raster=" << (exchange.AllocateRaster != nullptr && exchange.FreeRaster != nullptr) << "\n";
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) WritePage(out, *exchange.pages.At(i));
  return out.flush() ? glib::RCOK : glib::IERR;
}

}  // namespace modules_fixture
