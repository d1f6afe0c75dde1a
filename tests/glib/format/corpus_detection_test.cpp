#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "glib/format/registry.h"

namespace glib {
namespace {

// The catalogue's row for each folder of sample files.
const std::map<std::string, std::uint32_t> kRows = {
    {"bmp", 1},  {"clp", 2},  {"gif", 4},   {"jpg", 5},  {"ani", 6},   {"cur", 7},   {"ico", 8},
    {"pcx", 9},  {"dcx", 10}, {"pbm", 11},  {"pgm", 12}, {"ppm", 13},  {"tiff", 14}, {"png", 15},
    {"mng", 16}, {"jng", 17}, {"fpx", 18},  {"pcd", 19}, {"psd", 20},  {"psp", 21},  {"wmf", 22},
    {"apm", 23}, {"emf", 24}, {"jp2", 25},  {"pdf", 26}, {"eps", 27},  {"wpg", 28},  {"tga", 29},
    {"img", 30}, {"iff", 31}, {"sun", 32},  {"sgi", 33}, {"xbm", 34},  {"xpm", 35},  {"utah", 36},
    {"cut", 37}, {"swf", 38}, {"wbmp", 39}, {"otb", 40}, {"pict", 41}, {"dxf", 42},  {"hpgl", 43},
};

TEST(CorpusDetection, KnowsEverySampleByTheRowOfItsFolder) {
  if (!std::filesystem::exists(ZEFA_CORPUS_FOLDER)) GTEST_SKIP() << "no sample files here";
  const FilterManager registry("no-such-folder", true);
  std::size_t files = 0;
  for (const auto& [folder, row] : kRows) {
    const std::filesystem::path path = std::filesystem::path(ZEFA_CORPUS_FOLDER) / folder;
    if (!std::filesystem::exists(path)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      const FilterFormatDesc* desc = registry.DetectFile(entry.path().c_str());
      std::uint32_t found = 0;
      for (std::uint32_t i = 0; i < registry.formats.count; ++i) {
        if (registry.formats.At(i) == desc) found = i + 1;
      }
      EXPECT_EQ(found, row) << entry.path();
      ++files;
    }
  }
  EXPECT_GT(files, 0U);
}

}  // namespace
}  // namespace glib
