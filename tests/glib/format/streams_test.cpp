#include "glib/format/streams.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "tests/support/temporary_folder.h"

namespace glib {
namespace {

using namespace std::string_view_literals;

class StreamsTest : public testing::Test {
 protected:
  std::FILE* Open(const char* mode) const { return std::fopen((folder_.path() / "file").c_str(), mode); }

  test_support::TemporaryFolder folder_;
};

TEST_F(StreamsTest, StoresNumbersInBothByteOrders) {
  for (const bool swap : {false, true}) {
    {
      VStdioFileStream stream(Open("wb"));
      stream.swapBytes = swap;
      EXPECT_EQ(stream.PutWord(0xFFFF1122), 1U);
      EXPECT_EQ(stream.PutLong(0x11223344), 1U);
      EXPECT_EQ(stream.PutQuad(0x1122334455667788), 1U);
      EXPECT_EQ(stream.PutByte(0x1FE), 0xFE);
      EXPECT_EQ(stream.Write("\x01\x02\x03\x04", 2, 2), 2U);
    }
    EXPECT_EQ(folder_.Read("file"),
              swap ? "\x11\x22\x11\x22\x33\x44\x11\x22\x33\x44\x55\x66\x77\x88\xFE\x01\x02\x03\x04"sv
                   : "\x22\x11\x44\x33\x22\x11\x88\x77\x66\x55\x44\x33\x22\x11\xFE\x01\x02\x03\x04"sv);

    VStdioFileStream stream(Open("rb"));
    stream.swapBytes = swap;
    EXPECT_EQ(stream.GetWord(), 0x1122);
    EXPECT_EQ(stream.GetLong(), 0x11223344U);
    EXPECT_EQ(stream.GetQuad(), 0x1122334455667788U);
    EXPECT_EQ(stream.GetByte(), 0xFE);
    std::array<char, 4> bytes{};
    EXPECT_EQ(stream.Read(bytes.data(), 3, 2), 1U);  // the second item isn't whole
    EXPECT_EQ(std::string_view(bytes.data(), 3), "\x01\x02\x03"sv);
    EXPECT_TRUE(stream.IsEof());
    EXPECT_FALSE(stream.HasError());
  }
}

TEST_F(StreamsTest, SeeksAndTells) {
  folder_.Write("file", "0123456789");
  VStdioFileStream stream(Open("rb"));
  EXPECT_EQ(stream.Length(), 10);
  EXPECT_TRUE(stream.Seek(4, SEEK_SET));
  EXPECT_EQ(stream.GetByte(), '4');
  EXPECT_TRUE(stream.Seek(-2, SEEK_CUR));
  EXPECT_EQ(stream.GetByte(), '3');
  EXPECT_TRUE(stream.Seek(-1, SEEK_END));
  EXPECT_EQ(stream.Tell(), 9);
  EXPECT_EQ(stream.GetByte(), '9');
  EXPECT_FALSE(stream.IsEof());
  EXPECT_EQ(stream.GetByte(), -1);
  EXPECT_TRUE(stream.IsEof());
  EXPECT_FALSE(stream.Seek(-1, SEEK_SET));
  EXPECT_EQ(stream.Length(), 10);
}

TEST_F(StreamsTest, WritesAndReadsText) {
  {
    VStdioFileStream stream(Open("wb"));
    stream.swapBytes = true;  // plays no part in text
    EXPECT_GE(stream.PutText("first\n"), 0);
    EXPECT_EQ(stream.Print("%d-%s\n", 42, "x"), 5);
  }
  VStdioFileStream stream(Open("rb"));
  char line[16];
  EXPECT_EQ(stream.GetLine(line, sizeof(line)), line);
  EXPECT_STREQ(line, "first\n");
  EXPECT_EQ(stream.GetLine(line, 4), line);
  EXPECT_STREQ(line, "42-");
  EXPECT_EQ(stream.GetLine(line, sizeof(line)), line);
  EXPECT_STREQ(line, "x\n");
  EXPECT_EQ(stream.GetLine(line, sizeof(line)), nullptr);
}

TEST_F(StreamsTest, TellsErrorsAndClosedStreams) {
  folder_.Write("file", "");
  VStdioFileStream readOnly(Open("rb"));
  EXPECT_FALSE(readOnly.IsClosed());
  EXPECT_EQ(readOnly.PutLong(1), 0U);
  EXPECT_TRUE(readOnly.HasError());
  EXPECT_EQ(readOnly.PutByte(1), -1);

  const VStdioFileStream closed(nullptr);
  EXPECT_TRUE(closed.IsClosed());
}

}  // namespace
}  // namespace glib
