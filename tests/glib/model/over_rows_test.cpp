#include "glib/model/over_rows.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/support/instruction_sets.h"
#include "tests/support/slow_blending.h"

namespace {

using test_support::Pixel;
using test_support::ToPixel;
using test_support::ToWord;
using Row = std::vector<std::uint32_t>;

Row RandomRow(std::mt19937& random, std::size_t count) {
  Row row(count);
  for (auto& word : row) {
    word = static_cast<std::uint32_t>(random());
    if (random() % 4 == 0) word |= 0xFF000000U;
    if (random() % 8 == 0) word &= 0x00FFFFFFU;
  }
  return row;
}

// All steps of 5, which hold both ends.
Row StepsOfFive(bool inTarget) {
  Row row;
  for (std::uint32_t a = 0; a < 256; a += 5) {
    for (std::uint32_t b = 0; b < 256; b += 5) row.push_back((inTarget ? b : a) * 0x010101U);
  }
  return row;
}

TEST(OverRows, PlainFormsEqualTheFormulas) {
  const Row sources = StepsOfFive(false);
  const Row targets = StepsOfFive(true);
  for (std::uint32_t sourceAlpha = 0; sourceAlpha < 256; ++sourceAlpha) {
    const std::uint32_t targetAlpha = sourceAlpha * 77 % 256;
    Row source = sources;
    Row target = targets;
    for (auto& word : source) word |= sourceAlpha << 24;
    for (auto& word : target) word |= targetAlpha << 24;
    Row mixed = target;
    Row over = target;
    Row laid = source;
    glib::MixRowPlain(mixed.data(), source.data(), source.size());
    glib::OverRowPlain(over.data(), source.data(), source.size());
    glib::LayOnBackgroundPlain(laid.data(), 0x0040A0FF, laid.size());
    for (std::size_t i = 0; i < source.size(); ++i) {
      const Pixel s = ToPixel(source[i]);
      const Pixel d = ToPixel(target[i]);
      ASSERT_EQ(mixed[i], ToWord(test_support::SlowMix(s, d))) << std::hex << source[i] << " on " << target[i];
      ASSERT_EQ(over[i], ToWord(test_support::SlowOver(s, d))) << std::hex << source[i] << " on " << target[i];
      ASSERT_EQ(laid[i], ToWord(test_support::SlowLayOnBackground(s, ToPixel(0x0040A0FF)))) << std::hex << source[i];
    }
  }
}

// Every width up to twice the widest register and one more, from odd places, with guards around the target.
TEST(OverRows, EveryInstructionSetEqualsThePlainForms) {
  test_support::ForEachInstructionSet([](const char* set) {
    SCOPED_TRACE(set);
    std::mt19937 random(7);
    for (std::size_t count = 0; count <= 33; ++count) {
      const Row source = RandomRow(random, count + 1);
      const Row before = RandomRow(random, count + 2);
      const std::uint32_t color = before[0];
      struct Form {
        const char* name;
        Row fast;
        Row plain;
      } forms[] = {
          {"mix", before, before}, {"color", before, before}, {"over", before, before}, {"lay", before, before}};
      glib::MixRow(forms[0].fast.data() + 1, source.data() + 1, count);
      glib::MixRowPlain(forms[0].plain.data() + 1, source.data() + 1, count);
      glib::MixRowOnColor(forms[1].fast.data() + 1, source.data() + 1, color, count);
      std::fill_n(forms[1].plain.data() + 1, count, color);
      glib::MixRowPlain(forms[1].plain.data() + 1, source.data() + 1, count);
      glib::OverRow(forms[2].fast.data() + 1, source.data() + 1, count);
      glib::OverRowPlain(forms[2].plain.data() + 1, source.data() + 1, count);
      glib::LayOnBackground(forms[3].fast.data() + 1, color, count);
      glib::LayOnBackgroundPlain(forms[3].plain.data() + 1, color, count);
      for (const Form& form : forms) ASSERT_EQ(form.fast, form.plain) << form.name << ", " << count << " pixels";
    }
  });
}

TEST(OverRows, SourceMayBeTheTarget) {
  std::mt19937 random(3);
  const Row before = RandomRow(random, 40);
  Row mixed = before;
  Row over = before;
  glib::MixRow(mixed.data(), mixed.data(), mixed.size());
  glib::OverRow(over.data(), over.data(), over.size());
  for (std::size_t i = 0; i < before.size(); ++i) {
    const Pixel p = ToPixel(before[i]);
    ASSERT_EQ(mixed[i], ToWord(test_support::SlowMix(p, p))) << i;
    ASSERT_EQ(over[i], ToWord(test_support::SlowOver(p, p))) << i;
  }
}

}  // namespace
