#include "app/value_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace {

std::optional<std::int32_t> Decimal(const std::string& text) {
  std::int32_t value = 0;
  return app::ValueReader(text.c_str()).Decimal(value) ? std::optional(value) : std::nullopt;
}

std::optional<std::uint32_t> Hexadecimal(const std::string& text) {
  std::uint32_t value = 0;
  return app::ValueReader(text.c_str()).Hexadecimal(value) ? std::optional(value) : std::nullopt;
}

std::optional<float> Float(const std::string& text) {
  float value = 0;
  return app::ValueReader(text.c_str()).Float(value) ? std::optional(value) : std::nullopt;
}

TEST(ValueReader, ReadsDecimals) {
  EXPECT_EQ(Decimal("12"), 12);
  EXPECT_EQ(Decimal("  +7x"), 7);
  EXPECT_EQ(Decimal("-3)"), -3);
  EXPECT_EQ(Decimal("007"), 7);
  EXPECT_EQ(Decimal("2147483647"), 2147483647);
  EXPECT_EQ(Decimal("2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Decimal("4294967297"), 1);
  EXPECT_EQ(Decimal("-4294967295"), 1);
  EXPECT_EQ(Decimal("1" + std::string(100000, '0')), 0);
  for (const char* text : {"", " ", "-", "+-1", "- 1", "x1", "=1"}) EXPECT_EQ(Decimal(text), std::nullopt) << text;
}

TEST(ValueReader, ReadsHexadecimals) {
  EXPECT_EQ(Hexadecimal("ff"), 255U);
  EXPECT_EQ(Hexadecimal("0xFf"), 255U);
  EXPECT_EQ(Hexadecimal("0xg"), 0U);
  EXPECT_EQ(Hexadecimal(" 123456789"), 0x23456789U);
  EXPECT_EQ(Hexadecimal("-1"), 0xFFFFFFFFU);
  for (const char* text : {"", "g", "#ff"}) EXPECT_EQ(Hexadecimal(text), std::nullopt) << text;
}

TEST(ValueReader, ReadsFloats) {
  EXPECT_EQ(Float("12.5"), 12.5F);
  EXPECT_EQ(Float(" -.5"), -0.5F);
  EXPECT_EQ(Float("3."), 3.0F);
  EXPECT_EQ(Float("1e2px"), 100.0F);
  EXPECT_EQ(Float("1e"), 1.0F);
  EXPECT_EQ(Float("1e+"), 1.0F);
  EXPECT_EQ(Float("12,5"), 12.0F);
  EXPECT_EQ(Float("16777217"), 16777216.0F);
  EXPECT_EQ(Float("1e99"), std::numeric_limits<float>::infinity());
  EXPECT_EQ(Float("0x10"), 0.0F);
  for (const char* text : {"", ".", "-", "e5", "inf", "nan", "infinity", "elp"}) {
    EXPECT_EQ(Float(text), std::nullopt) << text;
  }
}

TEST(ValueReader, StopsForGoodAtTheFirstFailure) {
  app::ValueReader reader("(1;x;3)");
  std::int32_t value = -1;
  EXPECT_TRUE(reader.Literal('('));
  EXPECT_TRUE(reader.Decimal(value));
  EXPECT_EQ(value, 1);
  EXPECT_TRUE(reader.Literal(';'));
  EXPECT_FALSE(reader.Decimal(value));
  EXPECT_FALSE(reader.Literal('x'));
  EXPECT_EQ(value, 1);
}

}  // namespace
