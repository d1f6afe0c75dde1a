#ifndef APP_SPLIT_ARGUMENTS_H_
#define APP_SPLIT_ARGUMENTS_H_

#include "gen/array_ptr.h"
#include "gen/basic_string.h"

namespace app {

// The words of the first pass, from `argv[1]` on: "/" and ">" become backslashes, and an argument that holds a double
// quote is cut there and behind it at each blank. Words that hold a quote themselves are dropped. An argument without a
// quote stays whole, blanks and all.
gen::array_ptr<gen::basic_string<char>> SplitArguments(int argc, char** argv);

}  // namespace app

#endif  // APP_SPLIT_ARGUMENTS_H_
