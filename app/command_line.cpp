#include "app/command_line.h"

#include "app/first_pass.h"
#include "app/second_pass.h"
#include "app/split_arguments.h"
#include "glib/module_api/save_settings.h"

namespace app {

void ParseCommandLine(glib::BaseFormatDesc*& format, ConvertSettings& settings, int argc, char** argv) {
  gen::array_ptr<gen::basic_string<char>> tokens = SplitArguments(argc, argv);
  ParseOptions(format, settings, tokens);
  // Without a word about it the number of colours comes from the source.
  if (auto* gif = dynamic_cast<glib::GIFSave*>(format)) gif->paletteItems = 0;
  // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): ParseOptions makes one
  ParseRawArguments(*format, settings, argc, argv);
  settings.logPath = settings.destFolder + "\\ZEFA.log";
  settings.outExt = ".gif";
}

}  // namespace app
