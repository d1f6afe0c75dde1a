#include "gen/array.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

int ByValue(const long* element, const void* value) { return *element == *static_cast<const long*>(value) ? 0 : 1; }

TEST(Array, GrowsByItsStep) {
  gen::array<long> numbers;
  EXPECT_EQ(numbers.count, 0U);
  EXPECT_EQ(numbers.capacity, 64U);
  std::vector<std::uint32_t> capacities;
  for (long i = 0; i < 200; ++i) {
    numbers.Append(i * i);
    if (capacities.empty() || capacities.back() != numbers.capacity) capacities.push_back(numbers.capacity);
  }
  EXPECT_EQ(capacities, (std::vector<std::uint32_t>{64, 96, 128, 160, 192, 224}));
  ASSERT_EQ(numbers.count, 200U);
  for (long i = 0; i < 200; ++i) EXPECT_EQ(numbers.At(static_cast<std::uint32_t>(i)), i * i);
}

TEST(Array, ReserveCutsOrGrowsExactly) {
  gen::array<long> numbers(4, 2);
  for (long i = 0; i < 4; ++i) numbers.Append(i);
  const long* block = numbers.data;
  numbers.Reserve(3);
  EXPECT_EQ(numbers.count, 3U);
  EXPECT_EQ(numbers.capacity, 4U);
  EXPECT_EQ(numbers.data, block);
  numbers.Reserve(101);
  EXPECT_EQ(numbers.capacity, 101U);
  EXPECT_EQ(numbers.count, 3U);
  EXPECT_EQ(numbers.At(2), 2);
}

TEST(Array, GrowsFromNothing) {
  gen::array<long> numbers(0, 0);
  for (long i = 0; i < 10; ++i) numbers.Append(i);
  EXPECT_EQ(numbers.At(9), 9);
}

TEST(Array, ThrowsTheIndexAndTheLimit) {
  gen::array<long> numbers;
  numbers.Append(1);
  for (const std::uint32_t index : {1U, 64U, 0xFFFFFFFFU}) {
    try {
      numbers.At(index);
      ADD_FAILURE() << index;
    } catch (const gen::genlib_out_of_range& error) {
      EXPECT_EQ(error.index, index);
      EXPECT_EQ(error.limit, 1U);
    }
  }
  EXPECT_THROW(numbers.At(1), gen::genlib_error);
}

TEST(Array, FindsTheFirst) {
  gen::array<long> numbers;
  for (const long value : {5L, 7L, 7L}) numbers.Append(value);
  const long seven = 7;
  const long nine = 9;
  EXPECT_EQ(numbers.Find(&seven, ByValue), 1);
  EXPECT_EQ(numbers.Find(&nine, ByValue), -1);
  // An element that was cut off isn't there any more.
  numbers.Reserve(1);
  EXPECT_EQ(numbers.Find(&seven, ByValue), -1);
}

}  // namespace
