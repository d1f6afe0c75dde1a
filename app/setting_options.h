#ifndef APP_SETTING_OPTIONS_H_
#define APP_SETTING_OPTIONS_H_

#include <cstdint>

#include "app/option_word.h"
#include "app/value_reader.h"

namespace app {

// Options that set a field. A value that can't be read leaves the field as it was unless told otherwise.

void SetSource(ParseState& state, const OptionWord& word);
void SetDestFolder(ParseState& state, const OptionWord& word);
void SetDestFile(ParseState& state, const OptionWord& word);
void SetDepth(ParseState& state, const OptionWord& word);
void SetSeparatePages(ParseState& state, const OptionWord& word);
void SetQuantize(ParseState& state, const OptionWord& word);
void SetDpiX(ParseState& state, const OptionWord& word);  // 0.0 if it can't be read
void SetDpiY(ParseState& state, const OptionWord& word);
void SetBackground(ParseState& state, const OptionWord& word);
void SetBackgroundHex(ParseState& state, const OptionWord& word);
void SetBackgroundBytes(ParseState& state, const OptionWord& word);
void SetUnite(ParseState& state, const OptionWord& word);
void SetCollage(ParseState& state, const OptionWord& word);

// Colours of `byteCount` numbers with ";" between them: the low byte of each, the first one lowest. Numbers that can't
// be read are 0.
std::uint32_t ReadColorBytes(ValueReader reader, int byteCount);

}  // namespace app

#endif  // APP_SETTING_OPTIONS_H_
