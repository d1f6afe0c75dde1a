#include "tests/support/psp_writer.h"

#include <algorithm>
#include <bit>

#include "tests/support/byte_writer.h"
#include "tests/support/deflate.h"

namespace tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kOld = 3;

std::uint32_t Length(const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); }

// The old headers tell the length of the fields, which new ones begin with their own.
Bytes Block(const PspSpec& spec, std::uint32_t id, const Bytes& fields, const Bytes& rest) {
  ByteWriter out;
  out.Text("~BK").Byte(0).Word(id);
  const std::uint32_t size = Length(fields) + Length(rest);
  if (spec.version == kOld) return out.Long(Length(fields)).Long(size).Bytes(fields).Bytes(rest).bytes;
  return out.Long(size + 4).Long(Length(fields) + 4).Bytes(fields).Bytes(rest).bytes;
}

// A bank of layers begins with no fields.
Bytes Bank(const PspSpec& spec, std::uint32_t id, const Bytes& blocks) {
  ByteWriter out;
  out.Text("~BK").Byte(0).Word(id);
  if (spec.version == kOld) out.Long(0);
  return out.Long(Length(blocks)).Bytes(blocks).bytes;
}

Bytes RowsOf(const PspSpec& spec, const PspChannel& channel, std::uint32_t width, std::uint32_t height) {
  ByteWriter out;
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint32_t bits = 0;
    std::uint32_t count = 0;
    const std::size_t begin = out.bytes.size();
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t value = channel.value(x, y);
      if (channel.depth == 16) out.Word(value);
      if (channel.depth == 8) out.Byte(value);
      if (channel.depth >= 8) continue;
      bits = bits << channel.depth | value;
      count += channel.depth;
      if (count == 8) out.Byte(bits);
      count %= 8;
    }
    if (count != 0) out.Byte(bits << (8 - count));
    while ((channel.depth < 8 || spec.padded) && (out.bytes.size() - begin) % 4 != 0) out.Byte(0xEE);
  }
  return out.bytes;
}

// Runs from two on, which go on across the ends of rows; other bytes two by two.
Bytes Runs(const Bytes& rows) {
  ByteWriter out;
  for (std::size_t i = 0; i < rows.size();) {
    std::size_t run = 1;
    while (i + run < rows.size() && run < 127 && rows[i + run] == rows[i]) ++run;
    if (run >= 2) {
      out.Byte(static_cast<std::uint32_t>(128 + run)).Byte(rows[i]);
      i += run;
      continue;
    }
    const std::size_t count = std::min<std::size_t>(2, rows.size() - i);
    out.Byte(static_cast<std::uint32_t>(count));
    for (const std::size_t end = i + count; i < end; ++i) out.Byte(rows[i]);
  }
  return out.bytes;
}

Bytes ChannelBlock(const PspSpec& spec, const PspChannel& channel, std::uint32_t width, std::uint32_t height) {
  Bytes data = channel.value == nullptr ? Bytes() : RowsOf(spec, channel, width, height);
  const std::uint32_t plain = Length(data);
  if (spec.compression == 1) data = Runs(data);
  if (spec.compression == 2) data = Deflate(data);
  ByteWriter fields;
  fields.Long(Length(data)).Long(plain).Word(channel.bitmap).Word(channel.channel);
  return Block(spec, 5, fields.bytes, data);
}

void PutBox(ByteWriter& out, const PspBox& box) {
  for (const std::int32_t side : {box.left, box.top, box.right, box.bottom}) out.Long(static_cast<std::uint32_t>(side));
}

Bytes LayerBlock(const PspSpec& spec, const PspLayer& layer) {
  ByteWriter fields;
  const auto nameLength = static_cast<std::uint32_t>(layer.name.size());
  if (spec.version != kOld) fields.Word(nameLength);
  fields.Text(layer.name);
  if (spec.version == kOld) fields.Zeros(256 - nameLength);
  fields.Byte(layer.kind);
  PutBox(fields, layer.whole);
  PutBox(fields, layer.saved);
  fields.Byte(layer.opacity).Byte(0).Byte(layer.visible).Zeros(2);
  PutBox(fields, layer.mask);
  PutBox(fields, {0, 0, layer.mask.right - layer.mask.left, layer.mask.bottom - layer.mask.top});
  fields.Byte(1).Byte(layer.maskDisabled).Byte(0).Word(0).Zeros(40);
  const auto channels = static_cast<std::uint32_t>(layer.channels.size());
  ByteWriter rest;
  if (layer.members != 0) rest.Bytes(Block(spec, 25, ByteWriter().Long(layer.members).Byte(0).bytes, {}));
  spec.version == kOld ? fields.Word(1).Word(channels) : rest.Long(8).Word(1).Word(channels);
  for (const PspChannel& channel : layer.channels) {
    const PspBox& box = channel.bitmap == 2 ? layer.mask : layer.saved;
    rest.Bytes(ChannelBlock(spec, channel, static_cast<std::uint32_t>(box.right - box.left),
                            static_cast<std::uint32_t>(box.bottom - box.top)));
  }
  return Block(spec, 4, fields.bytes, rest.bytes);
}

Bytes PaletteBlock(const PspSpec& spec) {
  ByteWriter entries;
  for (const std::uint32_t entry : spec.palette) entries.Long(entry);
  return Block(spec, 2, ByteWriter().Long(static_cast<std::uint32_t>(spec.palette.size())).bytes, entries.bytes);
}

Bytes CompositeAttributes(const PspSpec& spec, std::uint32_t side, std::uint32_t compression, std::uint32_t kind) {
  ByteWriter fields;
  fields.Long(side == 0 ? spec.width : side).Long(side == 0 ? spec.height : side).Word(spec.depth);
  return Block(spec, 17, fields.Word(compression).Word(1).Long(0).Word(kind).bytes, {});
}

Bytes CompositeBank(const PspSpec& spec) {
  ByteWriter blocks;
  blocks.Bytes(CompositeAttributes(spec, 1, 3, 1)).Bytes(CompositeAttributes(spec, 0, spec.compression, 0));
  blocks.Bytes(Block(spec, 18, ByteWriter().Long(3).Long(0).Word(5).bytes, {1, 2, 3}));
  ByteWriter channels;
  if (!spec.palette.empty()) channels.Bytes(PaletteBlock(spec));
  for (const PspChannel& channel : spec.composite) channels.Bytes(ChannelBlock(spec, channel, spec.width, spec.height));
  blocks.Bytes(Block(spec, 9, ByteWriter().Word(1).Word(1).bytes, channels.bytes));
  return Block(spec, 16, ByteWriter().Long(2).bytes, blocks.bytes);
}

}  // namespace

std::vector<std::uint8_t> MakePsp(const PspSpec& spec) {
  ByteWriter out;
  out.Text("Paint Shop Pro Image File\n\x1A").Zeros(5).Word(spec.version).Word(0);
  ByteWriter fields;
  const auto resolution = std::bit_cast<std::uint64_t>(spec.resolution);
  fields.Long(spec.width).Long(spec.height);
  fields.Long(static_cast<std::uint32_t>(resolution)).Long(static_cast<std::uint32_t>(resolution >> 32));
  fields.Byte(spec.unit).Word(spec.compression).Word(spec.depth).Word(1).Long(0).Byte(spec.grey ? 1 : 0).Zeros(14);
  out.Bytes(Block(spec, 0, fields.bytes, {}));
  out.Bytes(Block(spec, 1, {}, {'x'}));
  if (!spec.palette.empty()) out.Bytes(PaletteBlock(spec));
  if (!spec.composite.empty()) out.Bytes(CompositeBank(spec));
  ByteWriter layers;
  for (const PspLayer& layer : spec.layers) layers.Bytes(LayerBlock(spec, layer));
  return out.Bytes(Bank(spec, 3, layers.bytes)).bytes;
}

}  // namespace tests
