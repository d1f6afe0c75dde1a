#ifndef MODULES_HELPERS_DXF_READER_TEXT_CODES_H_
#define MODULES_HELPERS_DXF_READER_TEXT_CODES_H_

#include <string>
#include <string_view>
#include <vector>

namespace dxf {

// The text without its signs of the "%%" kind; those of characters become the characters, in UTF-8.
std::string PlainText(std::string_view text);

// The lines of a text with its own marks for fonts, fractions and lines, without these marks.
std::vector<std::string> LinesOfMText(std::string_view text);

// The same text with lines broken at spaces where they are longer than `most` ems.
std::vector<std::string> Wrapped(const std::vector<std::string>& lines, double most);

// UTF-8 where it is, else Latin 1.
std::u16string Wide(std::string_view text);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_TEXT_CODES_H_
