#include "modules/qfpx/property_set.h"

#include <algorithm>

namespace qfpx {
namespace {

constexpr std::size_t kSectionOffsetAt = 44;  // behind the header and the name of the first section
constexpr std::uint32_t kMaxProperties = 4096;

enum Type : std::uint32_t {
  kUnsigned = 0x13,
  kBlob = 0x41,
  kUnsignedList = 0x1013,
};

}  // namespace

PropertySet::PropertySet(std::span<const std::uint8_t> stream) {
  modules::ByteReader in(stream);
  in.Skip(kSectionOffsetAt);
  const std::size_t offset = in.Long();
  if (!in.Failed()) section_ = stream.subspan(std::min(offset, stream.size()));
}

std::optional<modules::ByteReader> PropertySet::Find(std::uint32_t id) const {
  modules::ByteReader in(section_);
  in.Skip(4);  // bytes of the section
  const std::uint32_t count = std::min(in.Long(), kMaxProperties);
  for (std::uint32_t i = 0; i < count && !in.Failed(); ++i) {
    const std::uint32_t found = in.Long();
    const std::size_t offset = in.Long();
    if (found != id || in.Failed()) continue;
    modules::ByteReader value(section_);
    if (!value.Seek(offset)) return {};
    return value;
  }
  return {};
}

std::optional<std::uint32_t> PropertySet::Number(std::uint32_t id) const {
  auto value = Find(id);
  if (!value || value->Long() != kUnsigned) return {};
  const std::uint32_t number = value->Long();
  return value->Failed() ? std::nullopt : std::optional(number);
}

std::optional<std::uint32_t> PropertySet::FirstNumber(std::uint32_t id) const {
  auto value = Find(id);
  if (!value || value->Long() != kUnsignedList || value->Long() == 0) return {};
  const std::uint32_t number = value->Long();
  return value->Failed() ? std::nullopt : std::optional(number);
}

std::span<const std::uint8_t> PropertySet::Blob(std::uint32_t id) const {
  auto value = Find(id);
  if (!value || value->Long() != kBlob) return {};
  return value->Take(value->Long());
}

}  // namespace qfpx
