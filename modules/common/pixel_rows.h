#ifndef MODULES_COMMON_PIXEL_ROWS_H_
#define MODULES_COMMON_PIXEL_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace modules {

// Rows of samples and of pixels of bytes. Rows need no alignment; nothing is written behind the last pixel, and nothing
// is read there. The `...Plain` forms take one pixel after the other; the others equal them.

// Samples of three or four rows to pixels, in the order of the arguments. The pixels may not overlap with the samples.
void JoinThree(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, std::size_t count,
               std::uint8_t* pixels);
void JoinThreePlain(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, std::size_t count,
                    std::uint8_t* pixels);
void JoinFour(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third,
              const std::uint8_t* fourth, std::size_t count, std::uint8_t* pixels);
void JoinFourPlain(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third,
                   const std::uint8_t* fourth, std::size_t count, std::uint8_t* pixels);

// The first and third byte of pixels of three change places; `from` and `to` may be the same, but not overlap in part.
void SwapOuterBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
void SwapOuterBytesPlain(const std::uint8_t* from, std::size_t count, std::uint8_t* to);

// Samples of 16 bits, in the processor's order of bytes or with the high one first, to bytes: divided by 257, rounded.
void RoundWords(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes);
void RoundWordsPlain(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes);
void RoundBigWords(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes);
void RoundBigWordsPlain(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes);

}  // namespace modules

#endif  // MODULES_COMMON_PIXEL_ROWS_H_
