#include "tests/support/damaged_files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "glib/module_api/result_values.h"

namespace tests {
namespace {

// So many places of a file are tried at most.
constexpr std::size_t kPlaces = 600;

void CheckOutcome(const Loaded& loaded, const std::string& where) {
  if (loaded.result == glib::RCOK) {
    EXPECT_NE(loaded.PageCount(), 0U) << where;
    for (std::uint32_t i = 0; i < loaded.PageCount(); ++i) {
      EXPECT_NE(loaded.PageAt(i).pixels, nullptr) << where;
      EXPECT_GT(loaded.PageAt(i).bits, 0) << where;
    }
    return;
  }
  EXPECT_TRUE(loaded.result == glib::IERR || loaded.result == glib::NSUP) << where << ": " << loaded.result;
  EXPECT_EQ(loaded.PageCount(), 0U) << where;
  EXPECT_FALSE(loaded.message.empty()) << where;
}

}  // namespace

TemporaryFile::TemporaryFile(const Bytes& bytes) {
  std::string name = (std::filesystem::temp_directory_path() / "zefa-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
  folder_ = name;
  path_ = folder_ + "/file";
  std::ofstream(path_, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TemporaryFile::~TemporaryFile() { std::filesystem::remove_all(folder_); }

void CheckCuts(const ModuleHost& host, const Bytes& file) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const std::size_t step = file.size() / kPlaces + 1;
  for (std::size_t length = 0; length < file.size(); length += step) {
    CheckOutcome(host.Load(std::span(file).first(length)), "cut at " + std::to_string(length));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

void CheckFlips(const ModuleHost& host, const Bytes& file) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  Bytes changed = file;
  const std::size_t step = file.size() / kPlaces + 1;
  for (std::size_t at = 0; at < file.size(); at += step) {
    for (const int mask : {0x01, 0x80, 0xFF}) {
      changed[at] = static_cast<std::uint8_t>(file[at] ^ mask);
      CheckOutcome(host.Load(changed), "byte " + std::to_string(at) + " changed by " + std::to_string(mask));
    }
    changed[at] = file[at];
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace tests
