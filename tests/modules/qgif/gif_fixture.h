#ifndef TESTS_MODULES_QGIF_GIF_FIXTURE_H_
#define TESTS_MODULES_QGIF_GIF_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/reader.h"
#include "modules/qgif/writer.h"
#include "tests/support/gif_reader.h"
#include "tests/support/lzw_reference.h"
#include "tests/support/temporary_folder.h"

namespace qgif_test {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

// An exchange as the host sets it up.
struct Exchange : glib::ImageDataExchange {
  Exchange() {
    AllocateRaster = glib::AllocateRaster;
    FreeRaster = glib::FreeRaster;
    message = &text;
  }
  gen::basic_string<char> text;
};

using test_support::TemporaryFolder;

inline Bytes BytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

inline Bytes SaveToBytes(const Exchange& exchange, const glib::GIFSave& settings) {
  const TemporaryFolder folder;
  EXPECT_EQ(qgif::SaveGif(folder.Text("a.gif").c_str(), exchange, settings), glib::RCOK) << exchange.text.c_str();
  return BytesOf(folder.Read("a.gif"));
}

// What is seen of a page: opaque words, or 0.
inline Words SeenOf(const modules::Page& page, int transparentIndex = -1) {
  Words seen;
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    const std::uint8_t* row = page.pixels + y * page.Stride();
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      std::uint32_t word = 0;
      int index = -1;
      if (page.bits == 32) word = reinterpret_cast<const std::uint32_t*>(row)[x];
      if (page.bits == 24)
        word = 0xFF000000U | static_cast<std::uint32_t>(row[3 * x + 2] << 16 | row[3 * x + 1] << 8 | row[3 * x]);
      if (page.bits == 8) index = row[x];
      if (page.bits == 4) index = row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15;
      if (page.bits == 1) index = row[x / 8] >> (7 - x % 8) & 1;
      if (index >= 0) word = index == transparentIndex ? 0 : page.palette[index];
      seen.push_back(word >> 24 == 0 ? 0 : word | 0xFF000000U);
    }
  }
  return seen;
}

// A page over the whole screen: what lies outside of a smaller one is transparent.
inline Words OnScreen(const Words& seen, std::uint32_t width, std::uint32_t screenWidth, std::uint32_t screenHeight) {
  Words screen(std::size_t{screenWidth} * screenHeight, 0);
  for (std::size_t i = 0; i < seen.size(); ++i) screen[i / width * screenWidth + i % width] = seen[i];
  return screen;
}

inline modules::Page& AddPage(Exchange& exchange, std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  return *modules::AddPage(exchange, width, height, bits);
}

inline void SetIndex(modules::Page& page, std::uint32_t x, std::uint32_t y, std::uint32_t index) {
  std::uint8_t* row = modules::Row(page, y);
  if (page.bits == 8) row[x] = static_cast<std::uint8_t>(index);
  if (page.bits == 4) row[x / 2] = static_cast<std::uint8_t>(row[x / 2] | index << (x % 2 == 0 ? 4 : 0));
  if (page.bits == 1) row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | index << (7 - x % 8));
}

inline void SetWord(modules::Page& page, std::uint32_t x, std::uint32_t y, std::uint32_t word) {
  std::uint8_t* row = modules::Row(page, y);
  for (std::uint32_t k = 0; k < static_cast<std::uint32_t>(page.bits) / 8; ++k) {
    row[x * static_cast<std::uint32_t>(page.bits) / 8 + k] = static_cast<std::uint8_t>(word >> (8 * k));
  }
}

inline std::uint32_t Rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return 0xFF000000U | red << 16 | green << 8 | blue;
}

inline std::uint32_t Below(std::mt19937& random, std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); }

// Bytes of a GIF made by hand.
struct GifBuilder {
  GifBuilder(std::uint32_t width, std::uint32_t height, const Words& table, std::uint8_t aspect = 0) {
    bytes = {'G', 'I', 'F', '8', '9', 'a'};
    Word(width);
    Word(height);
    bytes.push_back(static_cast<std::uint8_t>(table.empty() ? 0 : 0x80U | (Bits(table) - 1)));
    bytes.push_back(0);
    bytes.push_back(aspect);
    Table(table);
  }

  void Control(std::uint32_t delay, std::uint32_t disposal, int transparent = -1) {
    bytes.insert(bytes.end(), {0x21, 0xF9, 4, static_cast<std::uint8_t>(disposal << 2 | (transparent >= 0 ? 1 : 0))});
    Word(delay);
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(transparent), 0});
  }

  // `pixels` in the order of the file.
  void Frame(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height, const Bytes& pixels,
             const Words& table = {}, bool interlaced = false, unsigned codeSize = 8) {
    bytes.push_back(0x2C);
    Word(left);
    Word(top);
    Word(width);
    Word(height);
    bytes.push_back(
        static_cast<std::uint8_t>((table.empty() ? 0 : 0x80U | (Bits(table) - 1)) | (interlaced ? 0x40U : 0U)));
    Table(table);
    bytes.push_back(static_cast<std::uint8_t>(codeSize));
    const Bytes codes = support::EncodeLzwPlainly(pixels, codeSize);
    for (std::size_t i = 0; i < codes.size(); i += 255) {
      const std::size_t size = std::min<std::size_t>(255, codes.size() - i);
      bytes.push_back(static_cast<std::uint8_t>(size));
      bytes.insert(bytes.end(), codes.begin() + static_cast<std::ptrdiff_t>(i),
                   codes.begin() + static_cast<std::ptrdiff_t>(i + size));
    }
    bytes.push_back(0);
  }

  const Bytes& End() {
    bytes.push_back(0x3B);
    return bytes;
  }

  void Word(std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  }
  static std::uint32_t Bits(const Words& table) {
    std::uint32_t bits = 1;
    while ((std::size_t{1} << bits) < table.size()) ++bits;
    return bits;
  }
  void Table(const Words& table) {
    for (std::size_t i = 0; !table.empty() && i < std::size_t{1} << Bits(table); ++i) {
      const std::uint32_t word = i < table.size() ? table[i] : 0;
      for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
    }
  }

  Bytes bytes;
};

}  // namespace qgif_test

#endif  // TESTS_MODULES_QGIF_GIF_FIXTURE_H_
