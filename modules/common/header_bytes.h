#ifndef MODULES_COMMON_HEADER_BYTES_H_
#define MODULES_COMMON_HEADER_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/source.h"

namespace modules {

// Gives the beginning of a file to `read`, and the whole file if that answers false because it needs more. A file that
// can't be read is not given at all.
template <typename Read>
void ReadHeaderBytes(const char* path, Read read) {
  // Holds the headers of nearly all files, but for those with large profiles or previews in front.
  constexpr std::size_t kBeginning = std::size_t{64} << 10;
  const Source beginning(path, kBeginning);
  if (!beginning.Ok() || read(beginning.Bytes()) || beginning.Bytes().size() < kBeginning) return;
  const Source whole(path);
  if (whole.Ok()) read(whole.Bytes());
}

}  // namespace modules

#endif  // MODULES_COMMON_HEADER_BYTES_H_
