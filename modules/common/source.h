#ifndef MODULES_COMMON_SOURCE_H_
#define MODULES_COMMON_SOURCE_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"
#include "platform/source_file.h"

namespace modules {

// The bytes of a source, whichever way the host gives it: a file is read whole, a memory block is used where it stands.
class Source {
 public:
  Source(const char* source, const glib::ImageDataExchange& exchange);
  // A file, of which only the first `limit` bytes may be read.
  explicit Source(const char* path, std::size_t limit = static_cast<std::size_t>(-1));

  bool Ok() const { return ok_; }
  std::span<const std::uint8_t> Bytes() const { return bytes_; }

 private:
  platform::FileBytes file_;
  std::span<const std::uint8_t> bytes_;
  bool ok_ = false;
};

}  // namespace modules

#endif  // MODULES_COMMON_SOURCE_H_
