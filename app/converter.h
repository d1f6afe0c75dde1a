#ifndef APP_CONVERTER_H_
#define APP_CONVERTER_H_

#include <cstdint>
#include <vector>

#include "app/settings.h"
#include "gen/basic_string.h"

namespace glib {
class BaseFormatDesc;
class Film;
class GIFSave;
class Slide;
}  // namespace glib

namespace app {

// The operations that a run is made of. It has no data. Paths are text with backslashes throughout.
class Converter {
 public:
  using Text = gen::basic_string<char>;

  // source_search: fills `settings.files`. The current folder is the same before and after.
  void FindSources(ConvertSettings& settings);
  void ScanFolder(Text folder, ConvertSettings& settings);
  static bool EnterFolder(const char* path);

  // naming
  static void ChangeExtension(Text& path, const Text& name, const Text& ext);
  static void CleanName(Text& path);
  static Text NameOf(const Text& path);  // what stands behind the last backslash
  // The folder that a path lies in, as EnsureFolder wants it: "." for a bare name, the backslash alone for the root.
  static Text FolderOf(const Text& path);
  // Makes a folder with its parents; a relative one is made in the current folder. What was made before a failure
  // stays.
  static bool EnsureFolder(const Text& folder);
  static Text FreeName(const Text& path, const Text& ext);
  static bool RemoveFile(Text path);
  // Paths of the files of a folder that match a pattern with "*" and "?".
  static std::vector<Text> ListMatching(Text folder, Text pattern);

  // The drivers. `Run` picks one of the three below; false makes the run fail.
  bool Run(ConvertSettings& settings, glib::BaseFormatDesc& desc);
  bool ConvertFiles(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc);
  bool UniteFiles(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc);
  bool MakeCollages(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc);

  // chain_runner: the chain on one film, then delay and flattening. Always true.
  bool RunChain(glib::Film* film, const ConvertSettings* settings);
};

}  // namespace app

#endif  // APP_CONVERTER_H_
