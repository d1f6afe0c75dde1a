#ifndef APP_FORMAT_CHOICE_H_
#define APP_FORMAT_CHOICE_H_

#include <cstdint>

#include "gen/basic_string.h"
#include "glib/module_api/save_settings.h"

namespace glib {
class Film;
}

namespace app {

// Puts back at the end of its scope what drivers and palette tasks decide for one output.
class FormatKeeper {
 public:
  explicit FormatKeeper(glib::BaseFormatDesc& desc);
  FormatKeeper(const FormatKeeper&) = delete;
  FormatKeeper& operator=(const FormatKeeper&) = delete;
  ~FormatKeeper();

 private:
  glib::BaseFormatDesc& kept;
  glib::GIFSave* gif;  // the same object, or null
  glib::GIFSave before;
};

// Bits a pixel for a number of palette entries: 0 for none or one, 9 for more than fit 8 bits.
std::int32_t DepthForPalette(std::int32_t paletteItems);

// Fills depth and resolution where they are 0 with those of the file at `path`. A file that tells nothing changes
// nothing.
void TakeDepthAndDpi(glib::Film& film, const gen::basic_string<char>& path, glib::BaseFormatDesc& desc);

// The same and, where it is 0, the number of palette entries.
void TakeFormat(glib::Film& film, const gen::basic_string<char>& path, glib::BaseFormatDesc& desc);

}  // namespace app

#endif  // APP_FORMAT_CHOICE_H_
