#ifndef MODULES_QEPS_POSTSCRIPT_H_
#define MODULES_QEPS_POSTSCRIPT_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"
#include "modules/qeps/pdf.h"

namespace qeps {

// Parts of an EPS file with a DOS header; of one without, `script` is the whole file.
struct EpsParts {
  std::span<const std::uint8_t> script;
  std::span<const std::uint8_t> tiff;  // the preview, or nothing
};

EpsParts SplitEps(std::span<const std::uint8_t> file);

// What the comments of a script say, as far as they do.
struct ScriptComments {
  double width = 0;  // points
  double height = 0;
  double box[4] = {};       // left, bottom, right, top
  bool boxAtEnd = false;    // behind the script instead of before it
  std::uint32_t pages = 0;  // as the comments say or show, at least 1
};

ScriptComments ReadComments(std::span<const std::uint8_t> script);

// Every page, 24 bits on white, by Ghostscript in a process of its own. An EPS file is cut to its bounding box. A
// script that doesn't end is stopped, and the pages that it has shown are kept.
std::uint32_t LoadPostScript(std::span<const std::uint8_t> script, const Resolution& dpi,
                             glib::ImageDataExchange& exchange);

bool HasInterpreter();

}  // namespace qeps

#endif  // MODULES_QEPS_POSTSCRIPT_H_
