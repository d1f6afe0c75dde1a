#include <cstdlib>

#include "modules/qeps/postscript.h"

// What this program reads of PostScript itself; the script is the interpreter's, in a process of its own.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const qeps::EpsParts parts = qeps::SplitEps({data, size});
  const qeps::ScriptComments comments = qeps::ReadComments(parts.script);
  if (comments.pages < 1 || comments.width < 0 || comments.height < 0) std::abort();
  return 0;
}
