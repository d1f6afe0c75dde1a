#ifndef APP_SIZE_LIMIT_H_
#define APP_SIZE_LIMIT_H_

#include <cstdint>
#include <functional>

#include "gen/basic_string.h"

namespace glib {
class Film;
class GIFSave;
}  // namespace glib

namespace app {

enum class SizeFit {
  kFits,    // a file of at most the limit stands
  kTooBig,  // the smaller one of the saved file and the last try stands
  kLost,    // the disk failed while a try took the place of the saved file; what stands is worth nothing
};

// Looks for the most colours with which a film stays within `limit` bytes. At `path` it stands as saved with `desc`,
// and there the outcome will stand. Tries are written to the temporary folder. The palette entries and `nfi` of `desc`
// are left as the search had them last.
SizeFit FitToSizeLimit(glib::Film& film, glib::GIFSave& desc, std::int32_t limit, const gen::basic_string<char>& path);

// Saves with the settings as they are now and gives the bytes, or -1 for a failure.
using SaveTry = std::function<std::int64_t()>;

// The search by itself, from a film of `pages` pages that took `size` bytes, more than `limit`. True if the last try
// was saved, whatever its size; false without any try, or if the last one failed.
bool SearchColors(glib::GIFSave& desc, std::int64_t size, std::int32_t pages, std::int32_t limit,
                  const SaveTry& saveTry);

}  // namespace app

#endif  // APP_SIZE_LIMIT_H_
