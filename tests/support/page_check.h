#ifndef TESTS_SUPPORT_PAGE_CHECK_H_
#define TESTS_SUPPORT_PAGE_CHECK_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/module_host.h"

namespace tests {

// A small file with what its first page must be.
struct PictureCase {
  const char* name;
  std::vector<std::uint8_t> file;
  std::int32_t bits;
  std::int32_t width;
  std::int32_t height;
  std::vector<std::uint32_t> pixels;  // as PixelAt gives them, row by row
};

inline void CheckPicture(const PictureCase& wanted, const Loaded& loaded) {
  SCOPED_TRACE(wanted.name);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_GE(loaded.PageCount(), 1U);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, wanted.bits);
  ASSERT_EQ(page.width, wanted.width);
  ASSERT_EQ(page.height, wanted.height);
  EXPECT_EQ(page.slideNumber, -1);
  EXPECT_EQ(page.visible, 1);
  std::size_t i = 0;
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x, ++i) {
      ASSERT_LT(i, wanted.pixels.size());
      EXPECT_EQ(PixelAt(page, x, y), wanted.pixels[i])
          << x << "," << y << ": " << std::hex << PixelAt(page, x, y) << " for " << wanted.pixels[i];
    }
  }
}

inline void CheckPictures(const ModuleHost& host, const std::vector<PictureCase>& pictures, std::uint32_t id) {
  for (const PictureCase& c : pictures) CheckPicture(c, host.Load(c.file, id));
}

// A file that must be refused with this result, a cause and no page.
struct RefusedCase {
  const char* name;
  std::vector<std::uint8_t> file;
  std::uint32_t result;
};

inline void CheckRefused(const RefusedCase& refused, const Loaded& loaded) {
  SCOPED_TRACE(refused.name);
  EXPECT_EQ(loaded.result, refused.result) << loaded.message;
  EXPECT_EQ(loaded.PageCount(), 0U);
  EXPECT_NE(loaded.message, "");
}

inline std::vector<std::uint8_t> BytesOf(std::string_view text) { return {text.begin(), text.end()}; }

}  // namespace tests

#endif  // TESTS_SUPPORT_PAGE_CHECK_H_
