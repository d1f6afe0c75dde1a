#ifndef TESTS_SUPPORT_PLAIN_DITHER_H_
#define TESTS_SUPPORT_PLAIN_DITHER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Slow forms of colour search and error diffusion, one step after the other, to hold the product's forms against. They
// share no code with the product.
namespace plain {

using Channels = std::array<std::int32_t, 3>;

// The three channels of a palette word or 32-bit pixel in the order of its bytes.
Channels ChannelsOf(std::uint32_t word);

// Full search; the first of equally near entries. Distances wrap as signed 32-bit numbers do.
std::uint32_t NearestEntry(const Channels& colour, const std::uint32_t* palette, std::uint32_t count);

// Diffusion against a palette, left to right in every row. `pixel` gives the channels of a position. The result has
// `stride` bytes a row; bytes behind `width` stay 0.
std::vector<std::uint8_t> DitherToPalette(std::uint32_t width, std::uint32_t height, std::size_t stride,
                                          const std::uint32_t* palette, std::uint32_t count,
                                          const std::function<Channels(std::uint32_t x, std::uint32_t y)>& pixel);

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_DITHER_H_
