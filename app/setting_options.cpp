#include "app/setting_options.h"

#include "platform/current_folder.h"

namespace app {
namespace {

using Text = gen::basic_string<char>;

bool EndsWith(const Text& text, char c) { return !text.IsEmpty() && text.c_str()[text.Length() - 1] == c; }

void KeepDriveRoot(Text& folder) {
  if (EndsWith(folder, ':')) folder.Append("\\");
}

void CleanFolder(Text& folder) {
  if (EndsWith(folder, '\\')) folder = folder.Left(folder.Length() - 1);
  KeepDriveRoot(folder);
}

void ReadDpi(double& dpi, const char* value) {
  float number = 0;
  ValueReader(value).Float(number);
  dpi = number;
}

}  // namespace

void SetSource(ParseState& state, const OptionWord& word) {
  const Text value(word.valueAsTyped);
  if (value.IsEmpty()) return;
  ConvertSettings& settings = state.settings;
  const std::int32_t slash = value.ReverseFind('\\');
  settings.mask = value.Right(value.Length() - static_cast<std::uint32_t>(slash + 1));
  if (settings.mask.IsEmpty()) settings.mask = "*.*";
  if (slash > 0) {
    settings.sourceFolder = value.Left(static_cast<std::uint32_t>(slash));
  } else {
    settings.sourceFolder = platform::CurrentFolder().c_str();
  }
  KeepDriveRoot(settings.sourceFolder);
}

void SetDestFolder(ParseState& state, const OptionWord& word) {
  state.settings.destFolder = word.valueAsTyped;
  CleanFolder(state.settings.destFolder);
}

void SetDestFile(ParseState& state, const OptionWord& word) {
  const Text value(word.valueAsTyped);
  if (value.IsEmpty()) return;
  state.settings.destFile = value;
  // A bare name lies in the current folder.
  const std::int32_t slash = value.ReverseFind('\\');
  state.settings.destFolder = slash < 0 ? Text(".") : value.Left(static_cast<std::uint32_t>(slash));
  CleanFolder(state.settings.destFolder);
}

void SetDepth(ParseState& state, const OptionWord& word) { ValueReader(word.value).Decimal(state.format->depth); }

void SetSeparatePages(ParseState& state, const OptionWord& word) {
  state.settings.separatePages = true;
  if (*word.value == '\0') {
    state.format->firstSlide = 0;
    state.format->slideCount = glib::kAllSlides;
    return;
  }
  ValueReader reader(word.value);
  std::int32_t number = 0;
  if (reader.Literal('(') && reader.Decimal(number)) state.format->firstSlide = static_cast<std::uint32_t>(number);
  if (reader.Literal(';') && reader.Decimal(number)) state.format->slideCount = static_cast<std::uint32_t>(number);
}

void SetQuantize(ParseState& state, const OptionWord& word) { ValueReader(word.value).Decimal(state.format->quantize); }

void SetDpiX(ParseState& state, const OptionWord& word) { ReadDpi(state.format->dpiX, word.value); }

void SetDpiY(ParseState& state, const OptionWord& word) { ReadDpi(state.format->dpiY, word.value); }

void SetBackground(ParseState& state, const OptionWord& word) {
  std::int32_t number = 0;
  if (ValueReader(word.value).Decimal(number)) state.settings.background = static_cast<std::uint32_t>(number);
}

void SetBackgroundHex(ParseState& state, const OptionWord& word) {
  ValueReader(word.value).Hexadecimal(state.settings.background);
}

void SetBackgroundBytes(ParseState& state, const OptionWord& word) {
  state.settings.background = ReadColorBytes(ValueReader(word.value), 3);
}

void SetUnite(ParseState& state, const OptionWord& word) {
  state.settings.unite = true;
  state.settings.uniteName = word.valueAsTyped;
}

void SetCollage(ParseState& state, const OptionWord& word) {
  ConvertSettings& settings = state.settings;
  ValueReader reader(word.value);
  std::int32_t* const fields[] = {&settings.collageColumns, &settings.collageRows, &settings.collageFlag,
                                  &settings.collageGapX, &settings.collageGapY};
  for (std::int32_t* field : fields) {
    if (!reader.Decimal(*field) || !reader.Literal(';')) break;
  }
  settings.collage = settings.collageColumns > 0 && settings.collageRows > 0;
}

std::uint32_t ReadColorBytes(ValueReader reader, int byteCount) {
  std::uint32_t color = 0;
  for (int i = 0; i < byteCount; ++i) {
    std::int32_t number = 0;
    if (!reader.Decimal(number)) break;
    color |= (static_cast<std::uint32_t>(number) & 0xFFU) << (8 * i);
    if (!reader.Literal(';')) break;
  }
  return color;
}

}  // namespace app
