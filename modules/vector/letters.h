#ifndef MODULES_VECTOR_LETTERS_H_
#define MODULES_VECTOR_LETTERS_H_

#include <string_view>

// How long texts are, as far as that must be known before they are drawn.

namespace modules {

inline constexpr double kCapitalOfEm = 0.72;
inline constexpr double kMeanLetterOfEm = 0.49;  // of the small letters; what a metafile's fonts count widths by

// To the em.
double TextLength(std::u16string_view text);

}  // namespace modules

#endif  // MODULES_VECTOR_LETTERS_H_
