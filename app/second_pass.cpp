#include "app/second_pass.h"

#include <cstring>

#include "app/value_reader.h"
#include "glib/module_api/save_settings.h"

namespace app {
namespace {

using Text = gen::basic_string<char>;

struct RawState {
  ConvertSettings& settings;
  glib::GIFSave* gif;  // null if the target is no GIF
};

struct RawOption {
  const char* text;
  void (*apply)(RawState& state, const char* value);
};

std::uint32_t SizeFactor(const char* value) {
  const std::size_t length = std::strlen(value);
  if (length < 2) return 1;
  const char* const suffix = value + length - 2;
  if (std::strchr(suffix, 'k') != nullptr) return 1U << 10;
  if (std::strchr(suffix, 'm') != nullptr) return 1U << 20;
  if (std::strchr(suffix, 'g') != nullptr) return 1U << 30;
  return 1;
}

void SetInterlace(RawState& state, const char*) {
  if (state.gif != nullptr) state.gif->interlace = 1;
}

void SetPaletteItems(RawState& state, const char* value) {
  if (state.gif != nullptr) ValueReader(value).Decimal(state.gif->paletteItems);
}

void SetDelay(RawState& state, const char* value) { ValueReader(value).Decimal(state.settings.delay); }

void SetNfi(RawState& state, const char*) {
  if (state.gif != nullptr) state.gif->nfi = 1;
}

// The product keeps its low 32 bits: 4g is no limit.
void SetMaxBytes(RawState& state, const char* value) {
  std::int32_t& limit = state.settings.maxBytes;
  ValueReader(value).Decimal(limit);
  limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(limit) * SizeFactor(value));
}

constexpr RawOption kRawOptions[] = {
    {"-i", SetInterlace}, {"-palitems", SetPaletteItems}, {"-delay", SetDelay}, {"-nfi", SetNfi}, {"-max", SetMaxBytes},
};

}  // namespace

void ParseRawArguments(glib::BaseFormatDesc& format, ConvertSettings& settings, int argc, char** argv) {
  RawState state{settings, dynamic_cast<glib::GIFSave*>(&format)};
  for (int i = 1; i < argc; ++i) {
    Text lowered(argv[i]);
    lowered.ToLower();
    for (const RawOption& option : kRawOptions) {
      const std::size_t length = std::strlen(option.text);
      if (std::strncmp(lowered.c_str(), option.text, length) != 0) continue;
      option.apply(state, lowered.c_str() + length);
      break;
    }
  }
}

}  // namespace app
