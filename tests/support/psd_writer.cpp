#include "tests/support/psd_writer.h"

#include <algorithm>

#include "tests/support/byte_writer.h"
#include "tests/support/deflate.h"

namespace tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Planes {
  std::uint32_t width, height, depth, count, compression;
  PlaneFunction value;
};

std::uint32_t Length(const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); }

Bytes RowOf(const Planes& planes, std::uint32_t plane, std::uint32_t y) {
  ByteWriter out;
  std::uint32_t bits = 0;
  for (std::uint32_t x = 0; x < planes.width; ++x) {
    const std::uint32_t sample = planes.value(plane, x, y);
    if (planes.depth == 1) {
      bits |= sample << (7 - x % 8);
      if (x % 8 == 7 || x + 1 == planes.width) out.Byte(bits);
      if (x % 8 == 7) bits = 0;
    }
    if (planes.depth == 8) out.Byte(sample);
    if (planes.depth == 16) out.BigWord(sample);
    if (planes.depth == 32) out.BigLong(sample);
  }
  return out.bytes;
}

// Runs of equal bytes from three on, literals of at most four bytes between them, and now and then a byte that means
// nothing.
Bytes Pack(const Bytes& row) {
  ByteWriter out;
  for (std::size_t i = 0; i < row.size();) {
    std::size_t run = 1;
    while (i + run < row.size() && run < 128 && row[i + run] == row[i]) ++run;
    if (run >= 3) {
      out.Byte(static_cast<std::uint32_t>(257 - run)).Byte(row[i]);
      i += run;
      continue;
    }
    const std::size_t count = std::min<std::size_t>(4, row.size() - i);
    out.Byte(128).Byte(static_cast<std::uint32_t>(count - 1));
    for (const std::size_t end = i + count; i < end; ++i) out.Byte(row[i]);
  }
  return out.bytes;
}

void Predict(Bytes& row, std::uint32_t depth) {
  if (depth == 32) {
    Bytes apart(row.size());
    const std::size_t width = row.size() / 4;
    for (std::size_t i = 0; i < row.size(); ++i) apart[i % 4 * width + i / 4] = row[i];
    row = apart;
  }
  if (depth != 16) {
    for (std::size_t i = row.size(); i-- > 1;) row[i] = static_cast<std::uint8_t>(row[i] - row[i - 1]);
    return;
  }
  for (std::size_t i = row.size(); i >= 4; i -= 2) {
    const int sample = row[i - 2] << 8 | row[i - 1];
    const int difference = sample - (row[i - 4] << 8 | row[i - 3]);
    row[i - 2] = static_cast<std::uint8_t>(difference >> 8);
    row[i - 1] = static_cast<std::uint8_t>(difference);
  }
}

Bytes EncodePlanes(const Planes& planes) {
  ByteWriter lengths;
  ByteWriter data;
  for (std::uint32_t plane = 0; plane < planes.count; ++plane) {
    for (std::uint32_t y = 0; y < planes.height; ++y) {
      Bytes row = RowOf(planes, plane, y);
      if (planes.compression == 1) row = Pack(row);
      if (planes.compression == 1) lengths.BigWord(Length(row));
      if (planes.compression == 3) Predict(row, planes.depth);
      data.Bytes(row);
    }
  }
  ByteWriter out;
  out.BigWord(planes.compression).Bytes(lengths.bytes);
  return out.Bytes(planes.compression >= 2 ? Deflate(data.bytes) : data.bytes).bytes;
}

Bytes LayerInfo(const PsdSpec& spec) {
  if (spec.layers.empty() && !spec.transparentMerged) return {};
  ByteWriter records;
  ByteWriter data;
  const auto count = static_cast<std::uint32_t>(spec.layers.size());
  records.BigWord(spec.transparentMerged ? 0U - count : count);
  for (const PsdLayerSpec& layer : spec.layers) {
    const auto left = static_cast<std::uint32_t>(layer.left);
    const auto top = static_cast<std::uint32_t>(layer.top);
    records.BigLong(top).BigLong(left).BigLong(top + layer.height).BigLong(left + layer.width);
    records.BigWord(static_cast<std::uint32_t>(layer.planes.size() + (layer.maskPlane.empty() ? 0 : 1)));
    for (std::uint32_t i = 0; i < layer.planes.size(); ++i) {
      const Planes one{
          layer.width,       layer.height,
          spec.depth,        1,
          layer.compression, [&](std::uint32_t, std::uint32_t x, std::uint32_t y) { return layer.value(i, x, y); }};
      const Bytes plane = layer.value == nullptr ? Bytes(2) : EncodePlanes(one);
      records.BigWord(static_cast<std::uint32_t>(layer.planes[i])).BigLong(Length(plane));
      data.Bytes(plane);
    }
    if (!layer.maskPlane.empty()) records.BigWord(0xFFFE).BigLong(Length(layer.maskPlane));
    data.Bytes(layer.maskPlane);
    records.Text("8BIMnorm").Byte(layer.opacity).Byte(0).Byte(layer.flags).Byte(0);
    ByteWriter extra;
    extra.BigLong(Length(layer.mask)).Bytes(layer.mask).BigLong(0);
    extra.Byte(static_cast<std::uint32_t>(layer.name.size())).Text(layer.name);
    extra.Zeros((4 - (layer.name.size() + 1) % 4) % 4);
    if (layer.divider != 0) extra.Text("8BIMlsct").BigLong(4).BigLong(layer.divider);
    records.BigLong(Length(extra.bytes)).Bytes(extra.bytes);
  }
  return records.Bytes(data.bytes).bytes;
}

Bytes LayerSection(const PsdSpec& spec) {
  const Bytes info = LayerInfo(spec);
  if (info.empty()) return {};
  ByteWriter out;
  if (spec.layerBlock == nullptr) return out.BigLong(Length(info)).Bytes(info).BigLong(0).bytes;
  out.BigLong(0).BigLong(0).Text("8BIMPatt").BigLong(2).Zeros(4);
  return out.Text("8BIM").Text(spec.layerBlock).BigLong(Length(info)).Bytes(info).bytes;
}

}  // namespace

std::vector<std::uint8_t> MakePsd(const PsdSpec& spec) {
  ByteWriter resources;
  for (const PsdResource& resource : spec.resources) {
    resources.Text("8BIM").BigWord(resource.id).Byte(2).Text("ab").Byte(0);
    resources.BigLong(Length(resource.data)).Bytes(resource.data).Zeros(resource.data.size() % 2);
  }
  const Bytes layers = LayerSection(spec);
  ByteWriter out;
  out.Text("8BPS").BigWord(spec.version).Zeros(6).BigWord(spec.channels);
  out.BigLong(spec.height).BigLong(spec.width).BigWord(spec.depth).BigWord(spec.mode);
  out.BigLong(Length(spec.palette)).Bytes(spec.palette);
  out.BigLong(Length(resources.bytes)).Bytes(resources.bytes);
  out.BigLong(Length(layers)).Bytes(layers);
  if (spec.value == nullptr) return out.bytes;
  return out.Bytes(EncodePlanes({spec.width, spec.height, spec.depth, spec.channels, spec.compression, spec.value}))
      .bytes;
}

}  // namespace tests
