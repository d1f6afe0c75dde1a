#ifndef TESTS_SUPPORT_CORPUS_H_
#define TESTS_SUPPORT_CORPUS_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/module_host.h"

// The collection of real files with what general image programs make of them. It is no part of the project: where it
// is missing, the tests of it are skipped.

namespace tests {

// A picture boiled down to 16 x 16 cells over white, row by row, three numbers each: red, green, blue.
inline constexpr std::size_t kLookCells = 256;
using Look = std::array<double, kLookCells * 3>;

struct Expected {
  std::string path;  // of the file
  std::string name;  // without folder
  bool proportionsOnly = false;
  double tolerance = 0.0;  // of the proportions
  std::vector<std::array<std::uint32_t, 2>> sizes;
  std::vector<std::uint32_t> pages;  // counts that are right; empty: any
  bool anyPage = false;              // the look may be that of any page
  bool crop = false;                 // compare what is left without the white border
  bool ink = false;                  // compare shares of ink instead of colours
  double limit = 12.0;               // of the difference
  std::vector<Look> looks;
};

// All files of one folder of the corpus ("bmp"); empty if there is no corpus.
std::vector<Expected> CorpusFiles(const std::string& folder);

// The look of a raster page (bits above 0) laid over white.
Look LookOf(const glib::ImageDataExchange::Page& page, bool crop = false);

// What is wrong with the pages of a load, or an empty text.
std::string Compare(const Expected& expected, const Loaded& loaded);

// Puts pixels, at the size of the frame, in the place of the metafiles of a load.
void DrawMetafiles(const Loaded& loaded);

// Loads each file of a corpus folder by its path and compares, metafiles as they are drawn; reports what is wrong as
// test failures. False if there is no corpus, so that the test can skip: `if (!CheckCorpus("bmp", host, 0x2))
// GTEST_SKIP();`
bool CheckCorpus(const std::string& folder, const ModuleHost& host, std::uint32_t id);

}  // namespace tests

#endif  // TESTS_SUPPORT_CORPUS_H_
