#ifndef APP_FIRST_PASS_H_
#define APP_FIRST_PASS_H_

#include "app/settings.h"
#include "gen/array_ptr.h"
#include "gen/basic_string.h"

namespace glib {
class BaseFormatDesc;
}

namespace app {

// Goes over the words once and tries the options in the order of their table; the first whose text stands at the
// beginning of a word takes it. Letters match in either case.
void ParseOptions(glib::BaseFormatDesc*& format, ConvertSettings& settings,
                  gen::array_ptr<gen::basic_string<char>> tokens);

}  // namespace app

#endif  // APP_FIRST_PASS_H_
