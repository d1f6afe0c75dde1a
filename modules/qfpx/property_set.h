#ifndef MODULES_QFPX_PROPERTY_SET_H_
#define MODULES_QFPX_PROPERTY_SET_H_

#include <cstdint>
#include <optional>
#include <span>

#include "modules/common/byte_reader.h"

namespace qfpx {

// A stream of numbered properties, each with a type.
class PropertySet {
 public:
  explicit PropertySet(std::span<const std::uint8_t> stream);

  // What a property is, if it is there and of that type.
  std::optional<std::uint32_t> Number(std::uint32_t id) const;
  std::span<const std::uint8_t> Blob(std::uint32_t id) const;
  // The first one of a list of numbers.
  std::optional<std::uint32_t> FirstNumber(std::uint32_t id) const;

 private:
  // At the property's type; nothing if there is no such property.
  std::optional<modules::ByteReader> Find(std::uint32_t id) const;

  std::span<const std::uint8_t> section_;  // offsets count from its start
};

}  // namespace qfpx

#endif  // MODULES_QFPX_PROPERTY_SET_H_
