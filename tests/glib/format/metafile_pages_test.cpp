#include "glib/format/metafile_pages.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/metafile/metafile.h"
#include "platform/metafile/recorder.h"
#include "platform/pages.h"
#include "tests/support/layers.h"

namespace {

using platform::OwnedPages;

struct MetafileDeleter {
  void operator()(platform::Metafile* metafile) const { platform::DeleteEnhMetaFile(metafile); }
};
using OwnedMetafile = std::unique_ptr<platform::Metafile, MetafileDeleter>;

constexpr std::uint32_t kRed = 0xFFFF0000;

// Two inches by one, the left half red.
OwnedMetafile HalfRed() { return OwnedMetafile(test_support::HalfRedMetafile(200, 100)); }

std::uint32_t WordAt(const OwnedPages& pixels, std::size_t index) {
  return reinterpret_cast<const std::uint32_t*>(pixels.get())[index];
}

TEST(MetafilePages, TheFrameGivesEachSideThatIsMissing) {
  struct Case {
    std::int32_t width, height;
    double yDpi, xDpi;
    std::int32_t expectedWidth, expectedHeight;
  };
  const OwnedMetafile metafile = HalfRed();
  for (const Case& one : {Case{-1, -1, 10, 30, 60, 10}, Case{-1, -1, 0, 0, 144, 72}, Case{7, -1, 10, 30, 7, 10},
                          Case{-5, 3, 10, 30, 60, 3}, Case{8, 9, 10, 30, 8, 9}}) {
    std::int32_t width = one.width;
    std::int32_t height = one.height;
    const OwnedPages pixels(glib::RenderMetafile32(metafile.get(), one.yDpi, one.xDpi, width, height));
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width, one.expectedWidth);
    EXPECT_EQ(height, one.expectedHeight);
    EXPECT_EQ(WordAt(pixels, 0), kRed);
    EXPECT_EQ(WordAt(pixels, static_cast<std::size_t>(width) - 1), 0U) << "the right half is transparent";
  }
}

TEST(MetafilePages, WhatCantBeDrawnGivesNothing) {
  std::int32_t width = -1;
  std::int32_t height = -1;
  EXPECT_EQ(glib::RenderMetafile32(nullptr, 72, 72, width, height), nullptr);
  const OwnedMetafile unreadable(test_support::UnreadableMetafile());
  width = height = 5;
  EXPECT_EQ(glib::RenderMetafile32(unreadable.get(), 72, 72, width, height), nullptr);
  // Sides that no memory holds.
  const OwnedMetafile huge(test_support::NewMetafile(0x7FFFFFFF, 0x7FFFFFFF));
  width = height = -1;
  EXPECT_EQ(glib::RenderMetafile32(huge.get(), 10000, 10000, width, height), nullptr);
  const OwnedMetafile metafile = HalfRed();
  width = height = 60000;
  EXPECT_EQ(glib::RenderMetafile32(metafile.get(), 72, 72, width, height), nullptr);
}

TEST(MetafilePages, LiesOnItsBackgroundAtAnyDepth) {
  struct Case {
    std::int32_t bits;
    std::vector<std::uint8_t> row;  // of 4 pixels, padded: two red, two of the background 0x204060
  };
  for (const Case& one : {Case{32, {0, 0, 255, 255, 0, 0, 255, 255, 0x60, 0x40, 0x20, 255, 0x60, 0x40, 0x20, 255}},
                          Case{24, {0, 0, 255, 0, 0, 255, 0x60, 0x40, 0x20, 0x60, 0x40, 0x20}},
                          Case{7, {0, 0, 255, 0, 0, 255, 0x60, 0x40, 0x20, 0x60, 0x40, 0x20}},
                          Case{16, {0, 0x7C, 0, 0x7C, 0x0C, 0x11, 0x0C, 0x11}}, Case{8, {77, 77, 58, 58}},
                          Case{4, {0x55, 0x33, 0, 0}}, Case{1, {0, 0, 0, 0}}}) {
    const OwnedMetafile metafile = HalfRed();
    std::int32_t width = 4;
    std::int32_t height = 2;
    const OwnedPages rows(glib::RenderMetafile(metafile.get(), one.bits, 72, 72, width, height, 0xFF204060));
    ASSERT_NE(rows, nullptr);
    for (std::size_t row = 0; row < 2; ++row) {
      for (std::size_t i = 0; i < one.row.size(); ++i) {
        EXPECT_EQ(rows.get()[row * one.row.size() + i], one.row[i]) << one.bits << " bits, byte " << i;
      }
    }
  }
}

TEST(MetafilePages, SmoothEdgesMixWithTheBackground) {
  // Half of the middle one of three pixels.
  for (const auto& [background, expected] : {std::pair{0xFF000000U, 0x80U}, std::pair{0xFFFFFFFFU, 0xFFU}}) {
    const OwnedMetafile metafile = HalfRed();
    std::int32_t width = 3;
    std::int32_t height = 1;
    const OwnedPages rows(glib::RenderMetafile(metafile.get(), 24, 72, 72, width, height, background));
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows.get()[5], expected) << "red";
    EXPECT_EQ(rows.get()[3], background == 0xFF000000U ? 0U : 0x80U) << "blue";
  }
}

}  // namespace
