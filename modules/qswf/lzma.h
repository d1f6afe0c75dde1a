#ifndef MODULES_QSWF_LZMA_H_
#define MODULES_QSWF_LZMA_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qswf {

// The whole of a movie packed by LZMA, behind its length: the packed length, five bytes of settings, the data. At most
// `limit` bytes, fewer if they break off.
std::vector<std::uint8_t> UnpackLzma(std::span<const std::uint8_t> body, std::size_t limit);

}  // namespace qswf

#endif  // MODULES_QSWF_LZMA_H_
