#ifndef APP_SECOND_PASS_H_
#define APP_SECOND_PASS_H_

#include "app/settings.h"

namespace glib {
class BaseFormatDesc;
}

namespace app {

// The options that are looked for in the arguments as they came, unsplit.
void ParseRawArguments(glib::BaseFormatDesc& format, ConvertSettings& settings, int argc, char** argv);

}  // namespace app

#endif  // APP_SECOND_PASS_H_
