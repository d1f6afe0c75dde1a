#ifndef APP_CHAIN_OPTIONS_H_
#define APP_CHAIN_OPTIONS_H_

#include "app/option_word.h"

namespace app {

// Options that append a step to the chain, or gather what the steps that are filled last need.

void AddWidth(ParseState& state, const OptionWord& word);
void AddHeight(ParseState& state, const OptionWord& word);
void AddRotation(ParseState& state, const OptionWord& word);
void AddSmoothRotation(ParseState& state, const OptionWord& word);
void AddCrop(ParseState& state, const OptionWord& word);
void AddCropPercent(ParseState& state, const OptionWord& word);
void AddCropMargins(ParseState& state, const OptionWord& word);
void AddCropMarginsPercent(ParseState& state, const OptionWord& word);
void SetSmooth(ParseState& state, const OptionWord& word);
void SetStretchCondition(ParseState& state, const OptionWord& word);
void AddFilter(ParseState& state, const OptionWord& word);
void AddColorEffect(ParseState& state, const OptionWord& word);
void AddMirror(ParseState& state, const OptionWord& word);
void AddPalette(ParseState& state, const OptionWord& word);
void AddTransparentColor(ParseState& state, const OptionWord& word);
void AddTransparentColorHex(ParseState& state, const OptionWord& word);
void AddTransparentColorBytes(ParseState& state, const OptionWord& word);
void AddAutoCrop(ParseState& state, const OptionWord& word);
void AddAutoCropHex(ParseState& state, const OptionWord& word);
void AddAutoCropBytes(ParseState& state, const OptionWord& word);

// Behind the last word: fills the stretch, and appends the step for the transparent colours.
void CompleteChain(ParseState& state);

}  // namespace app

#endif  // APP_CHAIN_OPTIONS_H_
