#ifndef APP_SAVE_OUTPUT_H_
#define APP_SAVE_OUTPUT_H_

#include "app/settings.h"
#include "gen/basic_string.h"
#include "platform/file_identity.h"

namespace glib {
class BaseFormatDesc;
class Film;
}  // namespace glib

namespace app {

// Where an output shall stand. It is written without a name, and takes one when it is complete.
struct Target {
  gen::basic_string<char> wanted;
  gen::basic_string<char> path;  // `wanted` or a free name made from it; after a save: the name that the output took
  bool replace = false;          // put it in the place of what is there; else the next free name is taken
};

// Finds out before the work whether an output can take its name, so that nothing is done in vain. With `overwrite` what
// is there must be replaceable: false means that this output is to be passed over. Without it a free name is chosen,
// unless `source`, which is about to be removed, has the name.
bool FindTarget(const gen::basic_string<char>& path, const gen::basic_string<char>& source,
                const ConvertSettings& settings, Target& target);

// Saves the range of the film that `desc` gives, holds it below the size limit of the settings, and gives it its name.
// A limit that can't be met is reported and is no failure. On false nothing has changed on the disk.
bool SaveChecked(glib::Film& film, Target& target, const ConvertSettings& settings, glib::BaseFormatDesc& desc);

// The same without the size limit.
bool SaveUnchecked(glib::Film& film, Target& target, const ConvertSettings& settings, glib::BaseFormatDesc& desc);

// Removes a source whose outputs all stand, if it can be removed and no output took its name.
void RemoveSource(const gen::basic_string<char>& source, const platform::FileSet& outputs);

}  // namespace app

#endif  // APP_SAVE_OUTPUT_H_
