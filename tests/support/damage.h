#ifndef TESTS_SUPPORT_DAMAGE_H_
#define TESTS_SUPPORT_DAMAGE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/module_host.h"

namespace tests {

// What every load must keep to, whatever it is given: one of the three results; pages with pixels on success, a cause
// and no page on failure.
inline void CheckOutcome(const Loaded& loaded) {
  if (loaded.result == glib::RCOK) {
    ASSERT_GT(loaded.PageCount(), 0U);
    for (std::uint32_t i = 0; i < loaded.PageCount(); ++i) {
      const auto& page = loaded.PageAt(i);
      EXPECT_TRUE(page.bits == 0 ? page.metafile != nullptr : page.pixels != nullptr);
    }
    return;
  }
  EXPECT_TRUE(loaded.result == glib::IERR || loaded.result == glib::NSUP) << std::hex << loaded.result;
  EXPECT_EQ(loaded.PageCount(), 0U);
  EXPECT_NE(loaded.message, "");
}

// Calls `load` with the file cut at every byte, and with every byte changed in three ways. Nothing may be printed.
template <typename Load>
void TryDamaged(std::span<const std::uint8_t> file, Load load) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (std::size_t size = 0; size < file.size(); ++size) {
    SCOPED_TRACE("cut to " + std::to_string(size));
    CheckOutcome(load(file.first(size)));
  }
  std::vector<std::uint8_t> copy(file.begin(), file.end());
  for (std::size_t i = 0; i < copy.size(); ++i) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      SCOPED_TRACE("byte " + std::to_string(i) + " flipped by " + std::to_string(flip));
      copy[i] = static_cast<std::uint8_t>(file[i] ^ flip);
      CheckOutcome(load(std::span<const std::uint8_t>(copy)));
    }
    copy[i] = file[i];
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace tests

#endif  // TESTS_SUPPORT_DAMAGE_H_
