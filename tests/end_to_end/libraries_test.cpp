// What a run loads besides itself.

#include <filesystem>
#include <sstream>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

using LibrariesTest = ConversionTest;

constexpr const char* kPng = ZEFA_SOURCE_FOLDER "/samples/logo.png";

// The files of an object's folder that the loader opened, by its own report.
Names OpenedHelpers(const std::string& report) {
  Names opened;
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t folder = line.find("/modules/helpers/");
    const std::size_t end = line.find(".so");
    if (folder == std::string::npos || line.find("generating link map") == std::string::npos) continue;
    opened.push_back(line.substr(folder + 17, end - folder - 17));
  }
  return opened;
}

TEST_F(LibrariesTest, OnlyTheReaderOfTheSourceIsOpened) {
  Bmp("a.bmp", kRed);
  const ProgramRun run = Run({}, {.environment = {"LD_DEBUG=files"}});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(OpenedHelpers(run.errors), Names{"qbmp"});
  EXPECT_EQ(run.errors.find("libjpeg"), std::string::npos);
  EXPECT_EQ(run.errors.find("libpng"), std::string::npos);
}

TEST_F(LibrariesTest, NoneComesFromTheCurrentFolder) {
  std::filesystem::copy(kPng, in.path() / "a.png");
  const TemporaryFolder current;
  for (const char* name : {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6", "libc.so.6", "libz.so.1", "libpng16.so.16",
                           "libzefa.so.0", "qpng.so", "qgif.so"}) {
    current.Write(name, "no library");
  }
  const ProgramRun run = Run({}, {.folder = current.path()});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(Outputs(), Names{"a.gif"}) << run.output;
}

}  // namespace
}  // namespace test_support
