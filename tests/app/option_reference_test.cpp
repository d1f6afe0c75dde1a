#include "app/option_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
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

TEST(OptionReference, StandsInTheManualPage) {
  std::ifstream file(ZEFA_SOURCE_FOLDER "/docs/zefa.1");
  std::string page{std::istreambuf_iterator<char>(file), {}};
  std::erase(page, '\\');  // before each hyphen
  const std::string reference = app::kOptionReference;
  const std::size_t firstParagraph = reference.find("\n\n") + 2;
  EXPECT_NE(page.find(reference.substr(1, firstParagraph - 3)), std::string::npos);
  EXPECT_NE(page.find(reference.substr(firstParagraph)), std::string::npos);
}

}  // namespace
