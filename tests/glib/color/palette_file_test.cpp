#include "glib/color/palette_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/temporary_folder.h"

namespace {

std::string ActBytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 % 251);
  return bytes;
}

// Entry i is red i, green 2i, blue 3i, and flags that mean nothing.
std::string RiffBytes(unsigned count, unsigned written) {
  std::string bytes("RIFF\1\2\3\4PAL data\5\6\7\10\0\3", 22);
  bytes += static_cast<char>(count & 255);
  bytes += static_cast<char>(count >> 8);
  for (unsigned i = 0; i < written; ++i) {
    for (const unsigned byte : {i, 2 * i, 3 * i, 5U}) bytes += static_cast<char>(byte & 255);
  }
  return bytes;
}

class PaletteFile : public testing::Test {
 protected:
  bool Read(const std::string& name, const std::string& bytes) {
    return glib::ReadPaletteFile(folder_.Write(name, bytes).c_str(), data_);
  }

  test_support::TemporaryFolder folder_;
  glib::PaletteData data_;
};

TEST_F(PaletteFile, ActHoldsRedGreenBlue) {
  for (const char* name : {"a.act", "A.ACT", "b.x.aCt"}) {
    for (const std::size_t size : {768U, 772U, 5000U}) {
      ASSERT_TRUE(Read(name, ActBytes(size))) << name << size;
      EXPECT_EQ(256U, data_.count);
      EXPECT_EQ(0xFF00070EU, data_.entries[0]);
      EXPECT_EQ(0xFF000000U | 765 * 7 % 251 << 16 | 766 * 7 % 251 << 8 | 767 * 7 % 251, data_.entries[255]);
    }
  }
}

TEST_F(PaletteFile, RiffHoldsAsManyAsItSays) {
  for (const unsigned count : {1U, 16U, 255U, 256U}) {
    ASSERT_TRUE(Read("a.pal", RiffBytes(count, count))) << count;
    EXPECT_EQ(count, data_.count);
    EXPECT_EQ(0xFF000000U, data_.entries[0]);
    EXPECT_EQ(count > 15 ? 0xFF0F1E2DU : 0xFF000000U, data_.entries[15]);
    EXPECT_EQ(count > 255 ? 0xFFFFFEFDU : 0xFF000000U, data_.entries[255]);
  }
  EXPECT_TRUE(Read("no extension", RiffBytes(2, 3)));
  EXPECT_TRUE(Read("x.act/inside", RiffBytes(2, 2)));
}

TEST_F(PaletteFile, RefusesAllElse) {
  data_.count = 77;
  EXPECT_FALSE(Read("short.act", ActBytes(767)));
  EXPECT_FALSE(Read("empty.act", ""));
  EXPECT_FALSE(Read("a.act.bak", ActBytes(768)));
  EXPECT_FALSE(Read("none.pal", RiffBytes(0, 4)));
  EXPECT_FALSE(Read("many.pal", RiffBytes(257, 257)));
  EXPECT_FALSE(Read("all.pal", RiffBytes(65535, 300)));
  const std::string good = RiffBytes(3, 3);
  for (std::size_t size = 0; size < good.size(); ++size) EXPECT_FALSE(Read("cut.pal", good.substr(0, size))) << size;
  for (std::size_t at = 0; at < 22; ++at) {
    std::string damaged = good;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x20);
    const bool isSize = (at >= 4 && at < 8) || (at >= 16 && at < 20);
    EXPECT_EQ(isSize, Read("damaged.pal", damaged)) << at;
    if (isSize) data_.count = 77;
  }
  EXPECT_EQ(77U, data_.count);
}

TEST_F(PaletteFile, RefusesWhatIsNoFile) {
  folder_.MakeFolder("folder.act");
  ASSERT_EQ(0, mkfifo((folder_.path() / "pipe.act").c_str(), 0600));
  for (const char* name : {"folder.act", "pipe.act", "missing.act"}) {
    EXPECT_FALSE(glib::ReadPaletteFile(folder_.Text(name).c_str(), data_)) << name;
  }
  EXPECT_FALSE(glib::ReadPaletteFile("", data_));
}

}  // namespace
