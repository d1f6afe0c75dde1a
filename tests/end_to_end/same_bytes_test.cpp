// One output, whatever instruction set the processor has.

#include <map>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

class SameBytesTest : public ConversionTest {};

// Shades with some noise, and something that moves over them.
Painter Scene(int frame) {
  return [frame](int x, int y) -> std::uint32_t {
    if (x - 5 * frame >= 0 && x - 5 * frame < 20 && y < 30) return 0xFF8000U + static_cast<std::uint32_t>(y * 8);
    const auto noise = static_cast<std::uint32_t>((x * 73 ^ y * 151) % 13);
    return (static_cast<std::uint32_t>(x) * 2 + noise) << 16 | static_cast<std::uint32_t>(y * 3 + x) << 8 |
           (200 - static_cast<std::uint32_t>(x + y) / 2 + noise);
  };
}

TEST_F(SameBytesTest, OnEveryInstructionSet) {
  for (int frame = 0; frame < 3; ++frame) in.Write(std::to_string(frame) + ".bmp", BmpFile({101, 67, Scene(frame)}));
  const std::vector<std::vector<std::string>> runs = {{},
                                                      {"-palitems40", "-dither"},
                                                      {"-quantize9", "-dither", "-w%70"},
                                                      {"-unite:all.gif", "-nfi", "-dither"},
                                                      {"-unite:all.gif", "-nfi", "-palitems17"},
                                                      {"-max5k"}};
  for (const auto& words : runs) {
    std::map<std::string, std::string> best;
    for (const char* level : {"", "scalar", "ssse3", "sse4", "avx2"}) {
      SCOPED_TRACE(std::string(level) + (words.empty() ? "" : " " + words[0]));
      std::vector<std::string> all = words;
      all.push_back("-ov");
      ASSERT_EQ(Run(all, {{}, -1, {std::string("ZEFA_VECTORS=") + level}}).status, 0);
      std::map<std::string, std::string> files;
      for (const std::string& name : Outputs()) files[name] = out.Read("out/" + name);
      ASSERT_FALSE(files.empty());
      if (best.empty()) best = files;
      EXPECT_TRUE(files == best);
    }
  }
}

}  // namespace
}  // namespace test_support
