#include "modules/qpsp/layers.h"

#include <algorithm>
#include <string>
#include <vector>

#include "modules/common/layer_alpha.h"
#include "modules/common/limits.h"
#include "modules/qpsp/channel_picture.h"

namespace qpsp {
namespace {

constexpr BitmapPair kLayerBitmaps{0, 1};
constexpr std::uint32_t kMaskBitmap = 2;
constexpr std::uint32_t kGroupLayer = 5;
constexpr std::size_t kOldNameBytes = 256;
constexpr std::uint32_t kNamesOfAnyLength = 4;  // the first version that has them
// Layers of a few bytes each may be large; together they get the memory of the largest picture that may be alone.
constexpr std::uint64_t kMaxLayerPixels = modules::kMaxPagePixels;

struct Box {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  std::int64_t Width() const { return std::int64_t{right} - left; }
  std::int64_t Height() const { return std::int64_t{bottom} - top; }
};

// Pixels are stored for `saved`, which counts from the corner of `whole`.
struct Place {
  Box whole;
  Box saved;

  // What leaves 32 bits is no place that anybody meant.
  std::int32_t X() const { return Sum(whole.left, saved.left); }
  std::int32_t Y() const { return Sum(whole.top, saved.top); }

 private:
  static std::int32_t Sum(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{left} + right, INT32_MIN, INT32_MAX));
  }
};

struct Layer {
  std::string name;
  std::uint32_t kind = 0;
  Place place;
  std::uint32_t opacity = 255;
  bool visible = true;
  Place mask;
  bool maskUsed = false;
  std::span<const std::uint8_t> blocks;
};

// What a group makes of the layers in it, and how many of those are still to come.
struct Group {
  std::uint32_t left;
  std::uint32_t opacity;
  bool visible;
};

Box ReadBox(modules::ByteReader& in) {
  Box box;
  box.left = in.SignedLong();
  box.top = in.SignedLong();
  box.right = in.SignedLong();
  box.bottom = in.SignedLong();
  return box;
}

Layer ReadLayer(const Block& block, std::uint32_t version) {
  modules::ByteReader in(block.chunk);
  Layer layer;
  const auto name = in.Take(version < kNamesOfAnyLength ? kOldNameBytes : in.Word());
  layer.name.assign(name.begin(), std::find(name.begin(), name.end(), std::uint8_t{0}));
  layer.kind = in.Byte();
  layer.place.whole = ReadBox(in);
  layer.place.saved = ReadBox(in);
  layer.opacity = in.Byte();
  in.Skip(1);  // blend mode
  layer.visible = in.Byte() != 0;
  in.Skip(2);  // protection, link
  layer.mask.whole = ReadBox(in);
  layer.mask.saved = ReadBox(in);
  in.Skip(1);  // whether the mask moves with the layer
  layer.maskUsed = in.Byte() == 0 && !in.Failed();
  layer.blocks = block.rest;
  return layer;
}

// How many layers are in a group, by the block that says so.
std::uint32_t MembersOf(const Layer& layer, std::uint32_t version) {
  BlockList blocks(layer.blocks, version);
  Block block;
  while (blocks.Next(block)) {
    if (block.id == BlockId::kGroup) return modules::ByteReader(block.chunk).Long();
  }
  return 0;
}

// Where there is no mask, nothing is hidden.
void ReadMask(const Layer& layer, const ChannelData& channel, Compression compression, modules::Page& page) {
  const Box& saved = layer.mask.saved;
  const std::int64_t width = saved.Width();
  const std::int64_t height = saved.Height();
  if (!layer.maskUsed || width <= 0 || height <= 0 ||
      !modules::SizeAllowed(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height))) {
    return;
  }
  ChannelReader reader(channel, compression, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), 8);
  if (!reader.Believable()) return;
  const modules::MaskPlace place{std::int64_t{layer.mask.X()} - layer.place.X(),
                                 std::int64_t{layer.mask.Y()} - layer.place.Y(), static_cast<std::uint32_t>(width),
                                 static_cast<std::uint32_t>(height), 255};
  modules::LayMask(
      place, [&](std::uint8_t* row) { return reader.Next(row); }, page);
}

std::uint32_t LoadLayer(const PspFile& psp, const Layer& layer, std::span<const ChannelData> channels,
                        glib::ImageDataExchange& exchange) {
  const auto mask = std::find_if(channels.begin(), channels.end(),
                                 [](const ChannelData& channel) { return channel.bitmap == kMaskBitmap; });
  const bool masked = mask != channels.end();
  const std::uint32_t result = AddPicture(
      {&psp.kind, static_cast<std::uint32_t>(layer.place.saved.Width()),
       static_cast<std::uint32_t>(layer.place.saved.Height()), kLayerBitmaps, masked || layer.opacity != 255},
      channels, exchange);
  if (result != glib::RCOK) return result;
  modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
  page.slideNumber = 0;
  page.x = layer.place.X();
  page.y = layer.place.Y();
  page.visible = layer.visible ? 1 : 0;
  page.name.Assign(layer.name.c_str());
  page.dpiX = page.dpiY = psp.dpiX;
  if (masked) ReadMask(layer, *mask, psp.kind.compression, page);
  modules::FadePage(static_cast<std::uint8_t>(layer.opacity), page);
  return glib::RCOK;
}

// All layers in the order of the file, which is lowest first, with what their groups make of them.
std::vector<Layer> ReadLayers(const PspFile& psp) {
  std::vector<Layer> layers;
  std::vector<Group> groups;
  BlockList blocks(psp.layerBank, psp.version);
  Block block;
  while (blocks.Next(block) && layers.size() < modules::kMaxPages) {
    if (block.id != BlockId::kLayer) continue;
    Layer layer = ReadLayer(block, psp.version);
    while (!groups.empty() && groups.back().left == 0) groups.pop_back();
    if (!groups.empty()) {
      --groups.back().left;
      layer.visible = layer.visible && groups.back().visible;
      layer.opacity = modules::Share(layer.opacity, groups.back().opacity);
    }
    if (layer.kind == kGroupLayer && psp.version >= kNamesOfAnyLength) {
      groups.push_back({MembersOf(layer, psp.version), layer.opacity, layer.visible});
    }
    layers.push_back(std::move(layer));
  }
  return layers;
}

bool HasSize(const Layer& layer) {
  const std::int64_t width = layer.place.saved.Width();
  const std::int64_t height = layer.place.saved.Height();
  return width > 0 && height > 0 &&
         modules::SizeAllowed(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
}

}  // namespace

std::uint32_t LoadLayers(const PspFile& psp, glib::ImageDataExchange& exchange) {
  const modules::Verdict verdict = CheckKind(psp.kind);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  std::uint32_t failure = glib::RCOK;
  std::uint64_t pixels = 0;
  for (const Layer& layer : ReadLayers(psp)) {
    if (!HasSize(layer)) continue;
    const std::vector<ChannelData> channels = ReadChannels(layer.blocks, psp.version);
    const bool hasPixels = std::any_of(channels.begin(), channels.end(), [](const ChannelData& channel) {
      return channel.bitmap == kLayerBitmaps.picture;
    });
    if (!hasPixels) continue;
    pixels += static_cast<std::uint64_t>(layer.place.saved.Width() * layer.place.saved.Height());
    if (pixels > kMaxLayerPixels) {
      modules::DropPages(exchange);
      return modules::Fail(exchange, glib::NSUP, "The layers have too many pixels");
    }
    const std::uint32_t result = LoadLayer(psp, layer, channels, exchange);
    if (result != glib::RCOK) failure = result;
  }
  if (exchange.pages.count != 0) return glib::RCOK;
  if (failure != glib::RCOK) return failure;
  return modules::Fail(exchange, glib::IERR, "The file has no layers with pixels");
}

}  // namespace qpsp
