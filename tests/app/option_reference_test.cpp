#include "app/option_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(OptionReference, NamesEveryOption) {
  const std::string reference = app::kOptionReference;
  for (const char* option :
       {"s=",        "d=",         "df=",      "-cd",       "-w",         "-w%",        "-h",          "-h%",
        "-prop",     "-prop&fill", "-sep",     "-ov",       "-sf",        "-g",         "-roti",       "-rot",
        "-cropm%(",  "-crop%(",    "-cropm(",  "-crop(",    "-?",         "-log",       "-sm",         "-quantize",
        "-dither",   "-dpiver",    "-dpihor",  "-bch",      "-bcm(",      "-bc",        "-unite:",     "-filter",
        "-coleff(",  "-mirror(",   "-scust",   "-collage(", "-palfile",   "-totransph", "-totranspm(", "-totransp",
        "-notransp", "-acroph",    "-acropm(", "-acrop",    "-sortlstaz", "-sortlstza", "-remsrc",     "-i ",
        "-palitems", "-delay",     "-nfi",     "-max"}) {
    EXPECT_NE(reference.find(" " + std::string(option)), std::string::npos) << option;
  }
  std::size_t longest = 0;
  for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
    end = reference.find('\n', start);
    longest = std::max(longest, (end == std::string::npos ? reference.size() : end) - start);
  }
  EXPECT_LE(longest, 120U);
}

}  // namespace
