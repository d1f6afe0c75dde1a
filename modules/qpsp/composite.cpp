#include "modules/qpsp/composite.h"

#include <vector>

#include "modules/common/jpeg_reader.h"

namespace qpsp {
namespace {

constexpr BitmapPair kCompositeBitmaps{8, 9};
constexpr std::uint32_t kFullSize = 0;
constexpr std::size_t kMaxComposites = 64;

// False for a thumbnail.
bool ReadAttributes(std::span<const std::uint8_t> chunk, Composite& composite) {
  modules::ByteReader in(chunk);
  composite.width = in.Long();
  composite.height = in.Long();
  composite.kind.depth = in.Word();
  composite.kind.compression = static_cast<Compression>(in.Word());
  in.Skip(2 + 4);  // planes, colours
  return in.Word() == kFullSize && !in.Failed();
}

std::uint32_t LoadJpeg(std::span<const std::uint8_t> jpeg, glib::ImageDataExchange& exchange) {
  modules::JpegReader reader(jpeg);
  if (!reader.ReadHeader()) return modules::Fail(exchange, reader.Result(), reader.Cause());
  modules::Page* page = modules::AddPage(exchange, reader.Width(), reader.Height(), reader.Bits());
  if (page == nullptr) return glib::NSUP;
  if (reader.Bits() == 8) reader.FillGreys(*page);
  std::uint32_t rows = 0;
  if (reader.Start()) {
    while (rows < reader.Height() && reader.ReadRow(modules::Row(*page, rows))) ++rows;
  }
  return modules::EndOfRows(exchange, reader.WithoutRows() ? 0 : rows, reader.Height());
}

std::uint32_t LoadChannels(const PspFile& psp, const Composite& composite, glib::ImageDataExchange& exchange) {
  const modules::Verdict verdict = CheckKind(composite.kind);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const std::vector<ChannelData> channels = ReadChannels(composite.channels, psp.version);
  return AddPicture({&composite.kind, composite.width, composite.height, kCompositeBitmaps}, channels, exchange);
}

}  // namespace

Composite FindComposite(const PspFile& psp) {
  // All descriptions come first, then all pictures in the same order.
  std::vector<Composite> described;
  std::size_t pictures = 0;
  BlockList blocks(psp.compositeBank, psp.version);
  Block block;
  while (blocks.Next(block) && described.size() < kMaxComposites) {
    if (block.id == BlockId::kCompositeAttributes) {
      Composite composite;
      composite.found = ReadAttributes(block.chunk, composite);
      described.push_back(composite);
    }
    if (block.id != BlockId::kComposite && block.id != BlockId::kJpeg) continue;
    if (pictures >= described.size()) break;
    Composite composite = described[pictures++];
    if (!composite.found) continue;
    if (block.id == BlockId::kJpeg) {
      composite.jpeg = block.rest;
      return composite;
    }
    composite.kind.grey = psp.kind.grey;
    composite.channels = block.rest;
    BlockList inside(block.rest, psp.version);
    Block part;
    while (inside.Next(part)) {
      if (part.id == BlockId::kPalette) ReadPalette(part, psp.version, composite.kind);
    }
    return composite;
  }
  return {};
}

std::uint32_t LoadComposite(const PspFile& psp, const Composite& composite, glib::ImageDataExchange& exchange) {
  const std::uint32_t result =
      composite.jpeg.empty() ? LoadChannels(psp, composite, exchange) : LoadJpeg(composite.jpeg, exchange);
  if (result != glib::RCOK) return result;
  modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
  page.dpiX = page.dpiY = psp.dpiX;
  return glib::RCOK;
}

}  // namespace qpsp
