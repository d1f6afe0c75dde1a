#ifndef APP_SETTINGS_H_
#define APP_SETTINGS_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/tasks/task.h"

namespace app {

// All that the command line and the source search decide about a run. Complete before the first file is opened, and not
// changed after that.
struct ConvertSettings {
  gen::array_ptr<glib::TASK> tasks;      // the chain, in order
  bool recurse = false;                  // search subfolders too
  gen::basic_string<char> sourceFolder;  // without a trailing backslash except for a root
  gen::basic_string<char> destFolder;    // never empty after parsing when `sourceFolder` isn't
  gen::basic_string<char> mask;          // with the wildcards "*" and "?"
  bool overwrite = false;                // replace existing outputs instead of finding a free name
  bool separatePages = false;            // one output per slide
  bool unite = false;                    // all sources into one output
  gen::basic_string<char> uniteName;
  std::int32_t delay = 0;                 // given to every slide, hundredths of a second; 0: the slides' own
  gen::basic_string<char> outExt;         // with its dot
  gen::basic_string<char> destFile;       // decides the output path of every file when not empty
  std::uint32_t background = 0x00FFFFFF;  // red in the lowest byte, then green, blue, alpha
  bool flattenAlpha = false;              // lay transparent pixels on the background behind the chain
  std::int32_t maxBytes = 0;              // limit of one output; 0 or less: none
  std::int32_t sortOrder = 0;             // 0 as the file system has it, 1 ascending, 2 descending
  bool removeSources = false;             // delete a source when its output stands
  bool log = false;
  gen::basic_string<char> logPath;  // set whether or not `log` is
  std::int32_t collageColumns = 0;
  std::int32_t collageRows = 0;
  bool collage = false;          // both of the above are above 0
  std::int32_t collageFlag = 0;  // not 0: each source gets sheets of its own
  std::int32_t collageGapX = 0;  // pixels between cells
  std::int32_t collageGapY = 0;
  gen::array_ptr<gen::basic_string<char>> files;  // full paths, in the order of work
  bool helpRequested = false;
};

}  // namespace app

#endif  // APP_SETTINGS_H_
