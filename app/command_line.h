#ifndef APP_COMMAND_LINE_H_
#define APP_COMMAND_LINE_H_

#include "app/settings.h"

namespace glib {
class BaseFormatDesc;
}

namespace app {

// Fills the records from the words of the command line (`argc` of at least 2). Words that mean nothing are passed over;
// there is no failure.
void ParseCommandLine(glib::BaseFormatDesc*& format, ConvertSettings& settings, int argc, char** argv);

}  // namespace app

#endif  // APP_COMMAND_LINE_H_
