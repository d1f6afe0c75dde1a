#include "app/chain_options.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "app/setting_options.h"
#include "app/value_reader.h"
#include "glib/tasks/auto_crop_task.h"
#include "glib/tasks/color_effect_task.h"
#include "glib/tasks/crop_task.h"
#include "glib/tasks/filter_task.h"
#include "glib/tasks/mirror_task.h"
#include "glib/tasks/palette_task.h"
#include "glib/tasks/pixel_length.h"
#include "glib/tasks/rotate_task.h"
#include "glib/tasks/transparency_task.h"
#include "platform/file_operations.h"

namespace app {
namespace {

using Text = gen::basic_string<char>;
using Handler = bool (*)(glib::Film*, const void*);

// Appends a step with a zeroed record of `Params` and `extra` bytes behind it.
template <typename Params>
Params* AppendTask(ParseState& state, Handler handler, std::size_t extra = 0) {
  void* block = ::operator new(sizeof(Params) + extra);
  std::memset(block, 0, sizeof(Params) + extra);
  auto* params = new (block) Params{};
  state.settings.tasks.Append(new glib::TASK{handler, params});
  return params;
}

void EnsureStretch(ParseState& state) {
  if (state.stretch == nullptr) state.stretch = AppendTask<glib::StretchParams>(state, glib::TaskStretch);
}

// `percentText` is what tells the form in percent from the one in pixels, which also goes to the save settings.
void ReadSize(ParseState& state, const OptionWord& word, const char* percentText, std::int32_t& isPercent, float& size,
              std::int32_t& formatSize) {
  isPercent = word.lowered.Find(percentText) >= 0 ? 1 : 0;
  const char* value = word.value;
  if (isPercent == 1 && *value == '%') ++value;
  ValueReader(value).Float(size);
  if (isPercent == 0) formatSize = glib::CutToInteger(size).value_or(0);
  EnsureStretch(state);
}

void AppendRotation(ParseState& state, const OptionWord& word, std::int32_t interpolate) {
  float angle = 0;
  ValueReader(word.value).Float(angle);
  if (angle == 0) return;
  *AppendTask<glib::RotateParams>(state, glib::TaskRotate) = {angle, interpolate};
}

void AppendCrop(ParseState& state, const OptionWord& word, std::int32_t isPercent, std::int32_t margins) {
  glib::CropParams crop{isPercent, 0, isPercent, 0, isPercent, 0, isPercent, 0, margins};
  ValueReader reader(word.value);
  reader.Literal('(');
  for (float* field : {&crop.left, &crop.top, &crop.right, &crop.bottom}) {
    if (!reader.Float(*field) || !reader.Literal(';')) break;
  }
  if (margins == 0 && !(crop.left < crop.right) && !(crop.top < crop.bottom)) return;
  *AppendTask<glib::CropParams>(state, glib::TaskCrop) = crop;
}

void AppendTransparent(ParseState& state, std::uint32_t color) {
  state.transparentColors.Append(static_cast<long>(color));
}

void AppendAutoCrop(ParseState& state, std::uint32_t color) {
  AppendTask<glib::AutoCropParams>(state, glib::TaskAutoCrop)->color = color;
}

// A colour that can't be read is 0.
std::uint32_t DecimalColor(const char* value) {
  std::int32_t number = 0;
  ValueReader(value).Decimal(number);
  return static_cast<std::uint32_t>(number);
}

std::uint32_t HexadecimalColor(const char* value) {
  std::uint32_t number = 0;
  ValueReader(value).Hexadecimal(number);
  return number;
}

}  // namespace

void AddWidth(ParseState& state, const OptionWord& word) {
  ReadSize(state, word, "-w%", state.size.widthIsPercent, state.size.width, state.format->width);
}

void AddHeight(ParseState& state, const OptionWord& word) {
  ReadSize(state, word, "-h%", state.size.heightIsPercent, state.size.height, state.format->height);
}

void AddRotation(ParseState& state, const OptionWord& word) { AppendRotation(state, word, 0); }

void AddSmoothRotation(ParseState& state, const OptionWord& word) { AppendRotation(state, word, 1); }

void AddCrop(ParseState& state, const OptionWord& word) { AppendCrop(state, word, 0, 0); }

void AddCropPercent(ParseState& state, const OptionWord& word) { AppendCrop(state, word, 1, 0); }

void AddCropMargins(ParseState& state, const OptionWord& word) { AppendCrop(state, word, 0, 1); }

void AddCropMarginsPercent(ParseState& state, const OptionWord& word) { AppendCrop(state, word, 1, 1); }

void SetSmooth(ParseState& state, const OptionWord& word) {
  std::int32_t number = 0;
  if (ValueReader(word.value).Decimal(number)) state.size.smooth = number != 0 ? 1 : 0;
}

void SetStretchCondition(ParseState& state, const OptionWord& word) {
  ValueReader(word.valueAsTyped).Decimal(state.size.condition);
}

void AddFilter(ParseState& state, const OptionWord& word) {
  std::int32_t filter = glib::kNoFilter;
  ValueReader(word.value).Decimal(filter);
  if (filter != glib::kNoFilter) AppendTask<glib::FilterParams>(state, glib::TaskFilter)->filter = filter;
}

void AddColorEffect(ParseState& state, const OptionWord& word) {
  if (*word.value == '\0') return;
  double* values = AppendTask<glib::ColorEffectParams>(state, glib::TaskColorEffect)->values;
  const char* piece = word.value;
  // Further numbers are read by no effect.
  for (std::size_t i = 0; i < glib::kColorEffectValues; ++i) {
    float number = 0;
    ValueReader(piece).Float(number);
    values[i] = number;
    piece = std::strchr(piece, ';');
    if (piece == nullptr) break;
    ++piece;
  }
}

void AddMirror(ParseState& state, const OptionWord& word) {
  glib::MirrorParams mirror{};
  ValueReader reader(word.value);
  if (reader.Decimal(mirror.horizontal) && reader.Literal(';')) reader.Decimal(mirror.vertical);
  if (mirror.horizontal != 0 || mirror.vertical != 0) {
    *AppendTask<glib::MirrorParams>(state, glib::TaskMirror) = mirror;
  }
}

void AddPalette(ParseState& state, const OptionWord& word) {
  std::int32_t mode = 0;
  ValueReader(word.value).Decimal(mode);
  // The name begins where the plainest spelling of the number with its "=" would end.
  const auto skipped = static_cast<std::size_t>(std::snprintf(nullptr, 0, "%d=", mode));
  if (std::strlen(word.value) <= skipped) return;
  // Where the system tells cases apart, a name that only stands as it was typed is the one that was meant.
  const char* name = word.value + skipped;
  const char* typed = word.valueAsTyped + skipped;
  if (!platform::Exists(name) && platform::Exists(typed)) name = typed;
  const std::size_t length = std::strlen(name);
  auto* params = AppendTask<glib::PaletteParams>(state, glib::TaskPalette, length + 1);
  auto* file = reinterpret_cast<char*>(params + 1);
  std::memcpy(file, name, length + 1);
  *params = {file, mode, state.format};
}

void AddTransparentColor(ParseState& state, const OptionWord& word) {
  AppendTransparent(state, DecimalColor(word.value));
}

void AddTransparentColorHex(ParseState& state, const OptionWord& word) {
  AppendTransparent(state, HexadecimalColor(word.value));
}

void AddTransparentColorBytes(ParseState& state, const OptionWord& word) {
  AppendTransparent(state, ReadColorBytes(ValueReader(word.value), 3));
}

void AddAutoCrop(ParseState& state, const OptionWord& word) { AppendAutoCrop(state, DecimalColor(word.value)); }

void AddAutoCropHex(ParseState& state, const OptionWord& word) { AppendAutoCrop(state, HexadecimalColor(word.value)); }

void AddAutoCropBytes(ParseState& state, const OptionWord& word) {
  AppendAutoCrop(state, ReadColorBytes(ValueReader(word.value), 4));
}

void CompleteChain(ParseState& state) {
  if (state.stretch != nullptr) *state.stretch = state.size;
  const std::uint32_t count = state.transparentColors.count;
  if (count == 0) return;
  auto* params = AppendTask<glib::TransparencyParams>(state, glib::TaskTransparency, count * sizeof(std::uint32_t));
  params->count = static_cast<std::int32_t>(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    params->Colors()[i] = static_cast<std::uint32_t>(state.transparentColors.At(i));
  }
}

}  // namespace app
