#ifndef TESTS_PLATFORM_METAFILE_DRAWING_H_
#define TESTS_PLATFORM_METAFILE_DRAWING_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "platform/metafile/player.h"
#include "platform/metafile/recorder.h"

namespace test_support {

inline constexpr std::uint32_t kRedRef = platform::ColorRef(255, 0, 0);
inline constexpr std::uint32_t kBlueRef = platform::ColorRef(0, 0, 255);
inline constexpr std::uint32_t kNothing = 0;
inline constexpr std::uint32_t kWhiteWord = 0xFFFFFFFF;
inline constexpr std::uint32_t kBlackWord = 0xFF000000;
inline constexpr std::uint32_t kRedWord = 0xFFFF0000;
inline constexpr std::uint32_t kBlueWord = 0xFF0000FF;

struct MetafileDeleter {
  void operator()(platform::Metafile* metafile) const { platform::DeleteEnhMetaFile(metafile); }
};
using OwnedMetafile = std::unique_ptr<platform::Metafile, MetafileDeleter>;

using Bytes = std::vector<std::uint8_t>;

inline void Put(Bytes& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

// A record that says its own true length.
inline void Put(Bytes& bytes, std::uint32_t type, const std::vector<std::uint32_t>& values) {
  Put(bytes, type);
  Put(bytes, static_cast<std::uint32_t>(8 + 4 * values.size()));
  for (const std::uint32_t value : values) Put(bytes, value);
}

// A picture of so many pixels, drawn into by a recorder whose units are parts of a pixel.
class Drawing {
 public:
  Drawing(std::int32_t width, std::int32_t height, std::int32_t unitsPerPixel = 1)
      : out(static_cast<std::uint32_t>(72 * unitsPerPixel)), width_(width), height_(height) {
    out.SetFrame({0, 0, width * unitsPerPixel, height * unitsPerPixel});
  }

  // A brush of this colour, and no pen.
  void FillOnly(std::uint32_t color) {
    out.SelectObject(out.CreateBrush(platform::kBrushSolid, color));
    out.SelectObject(platform::kNullPen);
  }
  void LineOnly(std::int32_t penWidth, std::uint32_t color) {
    out.SelectObject(platform::kNullBrush);
    out.SelectObject(out.CreatePen(platform::kPenSolid, penWidth, color));
  }

  void Play(std::uint32_t paper = kWhiteWord) {
    const OwnedMetafile metafile(out.Close());
    Play(*metafile, paper);
  }
  void Play(const platform::Metafile& metafile, std::uint32_t paper = kWhiteWord) {
    pixels.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0xDEADBEEF);
    ASSERT_TRUE(platform::PlayEnhMetaFile(&metafile, width_, height_, paper, pixels.data()));
  }

  // What was recorded, and behind it records that the recorder doesn't write.
  void PlayWith(const std::function<void(Bytes&)>& add) {
    const OwnedMetafile metafile(out.Close());
    constexpr std::size_t kEndBytes = 20;
    metafile->records.resize(metafile->records.size() - kEndBytes);
    add(metafile->records);
    Play(*metafile);
  }

  std::uint32_t At(std::int32_t x, std::int32_t y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
  }

  // Whether the box holds this colour everywhere and all around it nothing was painted.
  testing::AssertionResult Only(const platform::Box& box, std::uint32_t word) const {
    for (std::int32_t y = 0; y < height_; ++y) {
      for (std::int32_t x = 0; x < width_; ++x) {
        const bool inside = x >= box.left && x < box.right && y >= box.top && y < box.bottom;
        if (At(x, y) != (inside ? word : kNothing)) {
          return testing::AssertionFailure() << "pixel " << x << ", " << y << " is " << std::hex << At(x, y);
        }
      }
    }
    return testing::AssertionSuccess();
  }

  std::size_t PaintedCount() const {
    return static_cast<std::size_t>(std::count_if(pixels.begin(), pixels.end(), [](auto word) { return word != 0; }));
  }

  platform::MetafileRecorder out;
  std::vector<std::uint32_t> pixels;

 private:
  std::int32_t width_;
  std::int32_t height_;
};

// A bitmap of 32 bits from words, top row first.
inline std::vector<std::uint8_t> WordDib(std::int32_t width, std::int32_t height,
                                         std::span<const std::uint32_t> words) {
  std::vector<std::uint8_t> dib;
  const auto put = [&](std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) dib.push_back(static_cast<std::uint8_t>(value >> shift));
  };
  put(40);
  put(static_cast<std::uint32_t>(width));
  put(0U - static_cast<std::uint32_t>(height));
  put(1U | 32U << 16);
  for (int i = 0; i < 6; ++i) put(0);
  for (const std::uint32_t word : words) put(word);
  return dib;
}

}  // namespace test_support

#endif  // TESTS_PLATFORM_METAFILE_DRAWING_H_
