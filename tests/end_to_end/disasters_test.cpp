// Full disks and killed runs.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

using DisastersTest = ConversionTest;

// More bytes than the run may write.
std::string LargeOld() { return std::string(500, 'o'); }

TEST_F(DisastersTest, AFullDiskLeavesOldOutputsAndSources) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  Bmp("b.bmp", kRed);
  out.Write("out/a.gif", LargeOld());
  const RunPlace full = {{}, 2000, {}};
  const ProgramRun run = Run({"-ov", "-remsrc"}, full);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, Found(2) + LoadedOk("a.bmp") + Processed() + SaveFailed() + Converted("b.bmp") + Finished());
  EXPECT_EQ(Outputs(), (Names{"a.gif", "b.gif"}));
  EXPECT_EQ(out.Read("out/a.gif"), LargeOld());
  EXPECT_EQ(in.Contents(), Names{"a.bmp"});
}

TEST_F(DisastersTest, AFullDiskFailsEveryDriver) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  const RunPlace full = {{}, 2000, {}};
  for (const char* word : {"-unite:all", "-collage(1;1;0;0;0)"}) {
    const ProgramRun run = Run({word, "-remsrc"}, full);
    EXPECT_EQ(run.status, 253);
    EXPECT_NE(run.output.find("..Converting failed\n"), std::string::npos);
    EXPECT_TRUE(Outputs().empty());
    EXPECT_EQ(in.Contents(), Names{"a.bmp"});
  }
}

TEST_F(DisastersTest, ARunGoesOnWhenNobodyListens) {
  const std::string longName(200, 'n');
  for (int i = 0; i < 20; ++i) Bmp(longName + std::to_string(i), kRed);
  RunPlace unheard;
  unheard.isHeard = false;
  EXPECT_EQ(Run({}, unheard).status, 0);
  EXPECT_EQ(Outputs().size(), 20U);
  EXPECT_EQ(RunZefa({"s=" + in.path().string() + "/none"}, unheard).status, 254);
}

// A run is killed at many moments; whatever has a name then is a whole file.
TEST_F(DisastersTest, AKilledRunLeavesWholeFilesOnly) {
  for (int i = 0; i < 6; ++i) {
    in.Write("s" + std::to_string(i) + ".bmp", BmpFile({200, 200, Noise(static_cast<std::uint32_t>(i))}));
  }
  out.Write("out/s0.gif", GifFileOf({{1, 1, Plain(kRed)}}));
  for (int pause = 1; pause <= 128; pause *= 2) {
    const pid_t child = StartZefa({Sources(), Destination(), "-ov"});
    std::this_thread::sleep_for(std::chrono::milliseconds(pause));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(out.Has("out/s0.gif"));
    for (const std::string& name : Outputs()) {
      if (name.rfind(".zefa-", 0) == 0) continue;
      const support::GifFile gif = Output(name);
      EXPECT_TRUE(gif.ok && gif.pages.size() == 1) << name << " after " << pause << " ms: " << gif.error;
    }
  }
}

}  // namespace
}  // namespace test_support
