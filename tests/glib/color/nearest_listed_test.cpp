// The search by candidate lists against a look at every entry.

#include "glib/color/nearest_listed.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/support/instruction_sets.h"
#include "tests/support/slow_colors.h"

namespace {

using Colors = std::vector<std::uint32_t>;

// Numbers of 32 bits.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t operator()() { return static_cast<std::uint32_t>(engine_()); }

 private:
  std::mt19937 engine_;
};

// Of a channel: only every `coarseness`-th value, at most `spread` apart, so that there are ties and crowds.
Colors RandomColors(Random& random, std::size_t count, std::uint32_t spread, std::uint32_t coarseness) {
  Colors colors;
  const std::uint32_t start = random() % (257 - spread);
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t word = 0xFF;
    for (int k = 0; k < 3; ++k) word = word << 8 | (start + random() % spread) / coarseness * coarseness;
    colors.push_back(word);
  }
  return colors;
}

Colors Probes(Random& random, const Colors& entries) {
  Colors probes = entries;
  for (int i = 0; i < 6000; ++i) probes.push_back(0xFF000000U | random());
  // Around entries, where lists are longest, and the corners of small cubes.
  for (int i = 0; i < 3000; ++i) {
    std::uint32_t near = entries[random() % entries.size()];
    for (int k = 0; k < 24; k += 8) near ^= random() % 16 << k;
    probes.push_back(near);
    probes.push_back(0xFF000000U | (random() & 0xF8F8F8U) | (random() % 2 == 0 ? 0 : 0x070707U));
  }
  return probes;
}

void ExpectNearest(const Colors& entries, std::uint32_t firstIndex, glib::ColorMeasure measure, const Colors& probes) {
  glib::CandidateLists lists(entries, firstIndex, measure);
  const glib::ColorSpace space(measure);
  std::vector<std::uint8_t> found(probes.size());
  glib::FindNearest(lists, probes.data(), probes.size(), nullptr, found.data());
  for (std::size_t i = 0; i < probes.size(); ++i) {
    ASSERT_EQ(found[i], test_support::SlowNearest(space, entries, probes[i]) + firstIndex)
        << entries.size() << " entries, colour " << std::hex << probes[i];
  }
}

TEST(NearestEntry, EqualsTheFullSearch) {
  test_support::ForEachInstructionSet([](const char* name) {
    SCOPED_TRACE(name);
    Random random(11);
    for (const std::size_t count : {1, 2, 3, 8, 9, 16, 17, 40, 100, 255}) {
      for (const std::uint32_t spread : {256, 60, 12}) {
        const Colors entries = RandomColors(random, count, spread, spread == 256 ? 1 : 4);
        ExpectNearest(entries, 1, glib::ColorMeasure::kBalanced, Probes(random, entries));
      }
    }
    const Colors most = RandomColors(random, 256, 256, 1);
    ExpectNearest(most, 0, glib::ColorMeasure::kPerceptual, Probes(random, most));
  });
}

TEST(NearestEntry, EveryColorOfTheCube) {
  Random random(5);
  const Colors entries = RandomColors(random, 24, 256, 8);
  Colors probes;
  for (std::uint32_t color = 0; color < 1U << 24; color += 7) probes.push_back(0xFF000000U | color);
  ExpectNearest(entries, 0, glib::ColorMeasure::kBalanced, probes);
}

// A crowd in one small cube: the list holds them all.
TEST(NearestEntry, ManyEntriesInOneCube) {
  Colors entries;
  for (std::uint32_t i = 0; i < 256; ++i) entries.push_back(0xFF808080U | (i & 7) << 16 | (i >> 3 & 7) << 8 | i >> 6);
  Random random(3);
  ExpectNearest(entries, 0, glib::ColorMeasure::kBalanced, Probes(random, entries));
}

TEST(NearestEntry, TheLowestIndexWinsATie) {
  const Colors entries = {0xFF000000U, 0xFF0A0A0AU, 0xFF0A0A0AU, 0xFF000000U};
  glib::CandidateLists lists(entries, 0, glib::ColorMeasure::kBalanced);
  const Colors colors = {0xFF000000U, 0xFF0B0A0AU};
  std::vector<std::uint8_t> found(2);
  glib::FindNearest(lists, colors.data(), colors.size(), nullptr, found.data());
  EXPECT_EQ(found, (std::vector<std::uint8_t>{0, 1}));
}

TEST(NearestEntry, HeldPixelsKeepTheirIndexAndTransparentOnesGetNone) {
  glib::CandidateLists lists(Colors{0xFFFFFFFFU}, 1, glib::ColorMeasure::kBalanced);
  const Colors colors = {0xFF112233U, glib::kNoColor, 0xFF112233U, glib::kNoColor};
  const std::vector<std::uint8_t> held = {0, 0, 1, 9};
  std::vector<std::uint8_t> found(4, 77);
  glib::FindNearest(lists, colors.data(), colors.size(), held.data(), found.data());
  EXPECT_EQ(found, (std::vector<std::uint8_t>{1, 0, 77, 77}));
}

}  // namespace
