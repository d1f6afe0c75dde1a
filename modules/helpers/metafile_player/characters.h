#ifndef MODULES_HELPERS_METAFILE_PLAYER_CHARACTERS_H_
#define MODULES_HELPERS_METAFILE_PLAYER_CHARACTERS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace metafile_player {

// A half of a surrogate pair that stands alone becomes a question mark.
std::string Utf8(std::u16string_view text);

// The character at `at`, which moves behind it.
char32_t NextCharacter(std::u16string_view text, std::size_t& at);

// What a byte of the font "Symbol", or of "Wingdings", stands for in Unicode.
char32_t SymbolCharacter(std::uint8_t byte);
char32_t DingbatCharacter(std::uint8_t byte);

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_CHARACTERS_H_
