#include "app/first_pass.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "app/chain_options.h"
#include "app/option_word.h"
#include "app/setting_options.h"

namespace app {
namespace {

using Text = gen::basic_string<char>;

// What happens to a word in lower case before its value is read.
enum class Commas {
  kKept,
  kAsPoints,               // "," becomes "."
  kAsPointsWithoutEquals,  // the same, and "=" goes
  kAsSemicolons,           // "," becomes ";"
};

struct Option {
  const char* text;
  Commas commas;
  void (*apply)(ParseState& state, const OptionWord& word);
};

template <bool ConvertSettings::*kField>
void Switch(ParseState& state, const OptionWord&) {
  state.settings.*kField = true;
}

template <std::uint8_t glib::BaseFormatDesc::*kField>
void SwitchFormat(ParseState& state, const OptionWord&) {
  state.format->*kField = 1;
}

template <std::int32_t kOrder>
void SortSources(ParseState& state, const OptionWord&) {
  state.settings.sortOrder = kOrder;
}

template <std::int32_t kFill>
void KeepProportions(ParseState& state, const OptionWord&) {
  state.size.proportional = 1;
  if (kFill != 0) state.size.fill = kFill;
}

// An option that is the beginning of another stands behind it.
constexpr Option kOptions[] = {
    {"s=", Commas::kKept, SetSource},
    {"d=", Commas::kKept, SetDestFolder},
    {"df=", Commas::kKept, SetDestFile},
    {"-cd", Commas::kKept, SetDepth},
    {"-w", Commas::kAsPointsWithoutEquals, AddWidth},
    {"-h", Commas::kAsPointsWithoutEquals, AddHeight},
    {"-prop&fill", Commas::kKept, KeepProportions<1>},
    {"-prop", Commas::kKept, KeepProportions<0>},
    {"-sep", Commas::kAsSemicolons, SetSeparatePages},
    {"-ov", Commas::kKept, Switch<&ConvertSettings::overwrite>},
    {"-sf", Commas::kKept, Switch<&ConvertSettings::recurse>},
    {"-g", Commas::kKept, SwitchFormat<&glib::BaseFormatDesc::grayscale>},
    {"-roti", Commas::kAsPoints, AddSmoothRotation},
    {"-rot", Commas::kAsPoints, AddRotation},
    {"-cropm%", Commas::kAsSemicolons, AddCropMarginsPercent},
    {"-crop%", Commas::kAsSemicolons, AddCropPercent},
    {"-cropm", Commas::kAsSemicolons, AddCropMargins},
    {"-crop", Commas::kAsSemicolons, AddCrop},
    {"-?", Commas::kKept, Switch<&ConvertSettings::helpRequested>},
    {"-log", Commas::kKept, Switch<&ConvertSettings::log>},
    {"-sm", Commas::kKept, SetSmooth},
    {"-quantize", Commas::kKept, SetQuantize},
    {"-dither", Commas::kKept, SwitchFormat<&glib::BaseFormatDesc::dither>},
    {"-dpiver", Commas::kAsPoints, SetDpiY},
    {"-dpihor", Commas::kAsPoints, SetDpiX},
    {"-bch", Commas::kAsSemicolons, SetBackgroundHex},
    {"-bcm(", Commas::kAsSemicolons, SetBackgroundBytes},
    {"-bc", Commas::kAsSemicolons, SetBackground},
    {"-unite:", Commas::kKept, SetUnite},
    {"-filter", Commas::kAsSemicolons, AddFilter},
    {"-coleff(", Commas::kAsSemicolons, AddColorEffect},
    {"-mirror(", Commas::kAsSemicolons, AddMirror},
    {"-scust", Commas::kKept, SetStretchCondition},
    {"-collage(", Commas::kAsSemicolons, SetCollage},
    {"-palfile", Commas::kKept, AddPalette},
    {"-totransph", Commas::kAsSemicolons, AddTransparentColorHex},
    {"-totranspm(", Commas::kAsSemicolons, AddTransparentColorBytes},
    {"-totransp", Commas::kAsSemicolons, AddTransparentColor},
    {"-notransp", Commas::kKept, Switch<&ConvertSettings::flattenAlpha>},
    {"-acroph", Commas::kAsSemicolons, AddAutoCropHex},
    {"-acropm(", Commas::kAsSemicolons, AddAutoCropBytes},
    {"-acrop", Commas::kAsSemicolons, AddAutoCrop},
    {"-sortlstaz", Commas::kKept, SortSources<1>},
    {"-sortlstza", Commas::kKept, SortSources<2>},
    {"-remsrc", Commas::kKept, Switch<&ConvertSettings::removeSources>},
};

void ReplaceCommas(Text& word, Commas commas) {
  if (commas == Commas::kKept) return;
  word.ReplaceAll(",", commas == Commas::kAsSemicolons ? ";" : ".");
  if (commas == Commas::kAsPointsWithoutEquals) word.ReplaceAll("=", "");
}

void Apply(ParseState& state, const Text& token) {
  Text lowered(token);
  lowered.ToLower();
  const auto* option = std::find_if(std::begin(kOptions), std::end(kOptions), [&lowered](const Option& candidate) {
    return std::strncmp(lowered.c_str(), candidate.text, std::strlen(candidate.text)) == 0;
  });
  if (option == std::end(kOptions)) return;
  ReplaceCommas(lowered, option->commas);
  OptionWord word{lowered, nullptr, token.c_str() + std::strlen(option->text)};
  word.value = word.lowered.c_str() + std::strlen(option->text);
  option->apply(state, word);
}

}  // namespace

void ParseOptions(glib::BaseFormatDesc*& format, ConvertSettings& settings, gen::array_ptr<Text> tokens) {
  // A field at 0 tells the drivers to take its value from the source.
  format->width = 0;
  format->height = 0;
  format->depth = 0;
  format->dpiX = 0.0;
  format->dpiY = 0.0;
  format->quantize = 0;
  format->dither = 0;

  ParseState state{format, settings};
  for (std::uint32_t i = 0; i < tokens.count; ++i) Apply(state, *tokens.At(i));
  if (settings.destFolder.IsEmpty()) settings.destFolder = settings.sourceFolder;
  CompleteChain(state);
}

}  // namespace app
