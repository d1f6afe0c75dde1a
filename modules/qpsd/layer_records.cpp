#include "modules/qpsd/layer_records.h"

#include <cstdlib>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"

namespace qpsd {
namespace {

constexpr std::uint32_t kMaxPlanes = 60;  // all channels, transparency and two masks
constexpr std::uint32_t kHidden = 2;      // of the flags
constexpr std::uint32_t kMaskDisabled = 2;
constexpr std::uint32_t kSectionDivider = 0x6C736374;  // "lsct"

std::int32_t SignedBigLong(modules::ByteReader& in) { return static_cast<std::int32_t>(in.BigLong()); }

Box ReadBox(modules::ByteReader& in) {
  Box box;
  box.top = SignedBigLong(in);
  box.left = SignedBigLong(in);
  box.bottom = SignedBigLong(in);
  box.right = SignedBigLong(in);
  return box;
}

void ReadMask(std::span<const std::uint8_t> data, LayerMask& mask) {
  if (data.size() < 18) return;
  modules::ByteReader in(data);
  mask.box = ReadBox(in);
  mask.outside = in.Byte();
  mask.used = (in.Byte() & kMaskDisabled) == 0;
}

// What follows the fixed part of a record.
void ReadExtra(std::span<const std::uint8_t> data, LayerRecord& record) {
  modules::ByteReader in(data);
  ReadMask(in.Take(in.BigLong()), record.mask);
  in.Skip(in.BigLong());  // blending ranges
  const std::size_t nameLength = in.Byte();
  const auto name = in.Take(nameLength);
  record.name.assign(name.begin(), name.end());
  in.Skip(std::min((4 - (nameLength + 1) % 4) % 4, in.Left()));
  while (in.Left() >= 12) {
    in.Skip(4);
    const std::uint32_t key = in.BigLong();
    const std::size_t size = in.BigLong();
    modules::ByteReader block(in.Take(size + size % 2));
    if (key != kSectionDivider) continue;
    const std::uint32_t kind = block.BigLong();
    if (kind == 1 || kind == 2) record.kind = LayerKind::kGroup;
    if (kind == 3) record.kind = LayerKind::kGroupEnd;
  }
}

// `lengths` gets those of the planes, whose data stand behind all records.
bool ReadRecord(modules::ByteReader& in, LayerRecord& record, std::vector<std::size_t>& lengths) {
  record.box = ReadBox(in);
  const std::uint32_t planes = in.BigWord();
  if (planes > kMaxPlanes) return false;
  for (std::uint32_t i = 0; i < planes; ++i) {
    record.planes.push_back({in.SignedBigWord(), {}});
    lengths.push_back(in.BigLong());
  }
  in.Skip(8);  // signature, blend mode
  record.opacity = in.Byte();
  in.Skip(1);  // clipping
  record.visible = (in.Byte() & kHidden) == 0;
  in.Skip(1);
  ReadExtra(in.Take(in.BigLong()), record);
  return !in.Failed();
}

}  // namespace

std::vector<LayerRecord> ReadLayerRecords(const PsdFile& psd) {
  modules::ByteReader in(psd.layers);
  const auto count = static_cast<std::uint32_t>(std::abs(std::int32_t{in.SignedBigWord()}));
  std::vector<LayerRecord> records;
  std::vector<std::size_t> lengths;
  for (std::uint32_t i = 0; i < count && i < modules::kMaxPages; ++i) {
    LayerRecord record;
    if (!ReadRecord(in, record, lengths)) return {};
    records.push_back(std::move(record));
  }
  std::size_t next = 0;
  for (LayerRecord& record : records) {
    for (auto& plane : record.planes) plane.data = in.Take(lengths[next++]);
  }
  return records;
}

}  // namespace qpsd
