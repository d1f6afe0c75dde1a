#ifndef TESTS_SUPPORT_CONVERSION_TEST_H_
#define TESTS_SUPPORT_CONVERSION_TEST_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/gif_reader.h"
#include "tests/support/picture_files.h"
#include "tests/support/program_run.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/transcript.h"

namespace test_support {

using Names = std::vector<std::string>;

inline constexpr std::uint32_t kRed = 0xFF0000;
inline constexpr std::uint32_t kGreen = 0x00FF00;
inline constexpr std::uint32_t kBlue = 0x0000FF;
inline constexpr std::uint32_t kWhite = 0xFFFFFF;

// A run on sources in a folder of their own, with a folder for the outputs beside it.
class ConversionTest : public testing::Test {
 protected:
  ConversionTest() { out.MakeFolder("out"); }

  // Writes a source of one colour.
  void Bmp(const std::string& name, std::uint32_t colour, int width = 4, int height = 3) const {
    in.Write(name, BmpFile({width, height, Plain(colour)}));
  }
  // Writes a source with a frame of each colour.
  void Gif(const std::string& name, const std::vector<std::uint32_t>& colours) const {
    std::vector<Picture> frames;
    for (const std::uint32_t colour : colours) frames.push_back({4, 3, Plain(colour)});
    in.Write(name, GifFileOf(frames));
  }

  std::string Sources(const std::string& mask = "*") const { return "s=" + in.path().string() + "/" + mask; }
  std::string Destination() const { return "d=" + (out.path() / "out").string(); }

  // Sources in the order of their names, outputs beside them.
  ProgramRun Run(std::vector<std::string> words, const RunPlace& place = {}) const {
    words.insert(words.begin(), {Sources(), Destination(), "-sortlstaz"});
    return RunZefa(words, place);
  }

  Names Outputs() const {
    Names names;
    for (const std::string& name : out.Contents()) {
      if (name.rfind("out/", 0) == 0) names.push_back(name.substr(4));
    }
    return names;
  }
  support::GifFile Output(const std::string& name) const {
    return support::ReadGif((out.path() / "out" / name).string());
  }

  // Whether an output has these pages, each of one colour.
  testing::AssertionResult HasPages(const std::string& name, const std::vector<std::uint32_t>& colours) const {
    return HasPages(Output(name), colours);
  }
  static testing::AssertionResult HasPages(const support::GifFile& gif, const std::vector<std::uint32_t>& colours) {
    if (!gif.ok) return testing::AssertionFailure() << "no GIF: " << gif.error;
    if (gif.pages.size() != colours.size()) return testing::AssertionFailure() << gif.pages.size() << " pages";
    for (std::size_t page = 0; page < colours.size(); ++page) {
      for (std::size_t i = 0; i < gif.pages[page].pixels.size(); ++i) {
        if (gif.pages[page].pixels[i] != (0xFF000000 | colours[page])) {
          return testing::AssertionFailure() << "page " << page << " pixel " << i << " is " << std::hex
                                             << gif.pages[page].pixels[i] << ", expected " << colours[page];
        }
      }
    }
    return testing::AssertionSuccess();
  }

  TemporaryFolder in;
  TemporaryFolder out;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_CONVERSION_TEST_H_
