#ifndef APP_OPTION_WORD_H_
#define APP_OPTION_WORD_H_

#include <cstdint>

#include "app/settings.h"
#include "gen/array.h"
#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/module_api/save_settings.h"
#include "glib/tasks/stretch_task.h"

namespace app {

// A word of the first pass that an option has matched.
struct OptionWord {
  gen::basic_string<char> lowered;  // the whole word in lower case, with the option's replacements made
  const char* value;                // what stands behind the option in `lowered`
  const char* valueAsTyped;         // the same, as the user wrote it
};

// What the first pass carries from word to word.
struct ParseState {
  glib::BaseFormatDesc*& format;
  ConvertSettings& settings;
  // The record of the one stretch of a run, which is in the chain from the first word that asks for a size on. It is
  // complete only behind the last word.
  glib::StretchParams* stretch = nullptr;
  glib::StretchParams size{};  // what the words have said so far
  gen::array<long> transparentColors = gen::array<long>();
};

}  // namespace app

#endif  // APP_OPTION_WORD_H_
