// Vector files become pictures of the size that is asked for.

#include <filesystem>
#include <memory>

#include "platform/metafile/metafile.h"
#include "tests/support/conversion_test.h"
#include "tests/support/corpus.h"
#include "tests/support/layers.h"

namespace test_support {
namespace {

class VectorTest : public ConversionTest {
 protected:
  // A picture of 72 pixels by 36, the left half red.
  void Emf(const std::string& name) const {
    const std::unique_ptr<platform::Metafile> metafile(HalfRedMetafile(100, 50));
    in.Write(name, {reinterpret_cast<const char*>(metafile->records.data()), metafile->records.size()});
  }

  // Whether the page has this size, its left half red and the rest transparent.
  static testing::AssertionResult IsHalfRed(const support::GifFile& gif, std::uint32_t width, std::uint32_t height) {
    if (!gif.ok || gif.pages.size() != 1) return testing::AssertionFailure() << "no GIF: " << gif.error;
    if (gif.width != width || gif.height != height) {
      return testing::AssertionFailure() << gif.width << " x " << gif.height;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < width; ++x) {
        const std::uint32_t expected = x < width / 2 ? 0xFF000000 | kRed : 0;
        if (gif.pages[0].At(x, y) != expected) {
          return testing::AssertionFailure() << x << ", " << y << " is " << std::hex << gif.pages[0].At(x, y);
        }
      }
    }
    return testing::AssertionSuccess();
  }
};

TEST_F(VectorTest, HasTheSizeOfItsFrame) {
  Emf("a.emf");
  const ProgramRun run = Run({});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_TRUE(IsHalfRed(Output("a.gif"), 72, 36));
}

TEST_F(VectorTest, IsDrawnAtTheSizeThatIsAskedFor) {
  Emf("a.emf");
  EXPECT_EQ(Run({"-w1000", "-h500"}).status, 0);
  EXPECT_TRUE(IsHalfRed(Output("a.gif"), 1000, 500));
}

TEST_F(VectorTest, ADrawingThatCantBeReadFails) {
  in.Write("a.emf", "nothing of the kind");
  const ProgramRun run = Run({});
  EXPECT_EQ(Outputs(), Names{});
}

TEST_F(VectorTest, ConvertsRealFiles) {
  bool any = false;
  for (const char* folder : {"emf", "wmf", "apm"}) {
    for (const tests::Expected& file : tests::CorpusFiles(folder)) {
      any = true;
      std::filesystem::copy(file.path, in.path() / file.name);
      const std::string stem = std::filesystem::path(file.name).stem().string();
      EXPECT_EQ(Run({"-ov"}).status, 0);
      const support::GifFile gif = Output(stem + ".gif");
      ASSERT_TRUE(gif.ok) << file.name << ": " << gif.error;
      const double wanted = static_cast<double>(file.sizes[0][0]) / file.sizes[0][1];
      EXPECT_NEAR(static_cast<double>(gif.width) / gif.height / wanted, 1, file.tolerance) << file.name;
      std::filesystem::remove(in.path() / file.name);
    }
  }
  if (!any) GTEST_SKIP() << "no corpus";
}

// Nothing that every run loads may ask for the drawing library.
TEST_F(VectorTest, OtherFilesLoadNoDrawingLibrary) {
  Bmp("a.bmp", kRed);
  RunPlace place;
  place.environment = {"LD_DEBUG=libs", "LD_DEBUG_OUTPUT=" + (out.path() / "libraries").string()};
  EXPECT_EQ(Run({}, place).status, 0);
  const auto loaded = [&] {
    std::string text;
    for (const std::string& name : out.Contents()) {
      if (name.rfind("libraries", 0) == 0) text += out.Read(name);
    }
    return text;
  };
  EXPECT_NE(loaded().find("qbmp.so"), std::string::npos) << "the list is there";
  EXPECT_EQ(loaded().find("cairo"), std::string::npos);
  Emf("b.emf");
  EXPECT_EQ(Run({}, place).status, 0);
  EXPECT_NE(loaded().find("libcairo"), std::string::npos);
}

}  // namespace
}  // namespace test_support
