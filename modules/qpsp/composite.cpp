#include "modules/qpsp/composite.h"

#include <vector>

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
    if (!composite.found || block.id == BlockId::kJpeg) continue;
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
  const modules::Verdict verdict = CheckKind(composite.kind);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const std::vector<ChannelData> channels = ReadChannels(composite.channels, psp.version);
  const std::uint32_t result =
      AddPicture({&composite.kind, composite.width, composite.height, kCompositeBitmaps}, channels, exchange);
  if (result != glib::RCOK) return result;
  modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
  page.dpiX = page.dpiY = psp.dpiX;
  return glib::RCOK;
}

}  // namespace qpsp
