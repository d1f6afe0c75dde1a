#include "gen/array_ptr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

// Tells when it goes, and through a base class.
struct Base {
  virtual ~Base() = default;
};

struct Counted : Base {
  Counted(int newValue, std::vector<int>& log) : value(newValue), deleted(log) {}
  ~Counted() override { deleted.push_back(value); }

  int value;
  std::vector<int>& deleted;
};

using Owned = gen::array_ptr<Base>;
using Log = std::vector<int>;

void Fill(Owned& array, int first, int count, Log& log) {
  for (int i = 0; i < count; ++i) array.Append(new Counted(first + i, log));
}

int ValueAt(const Owned& array, std::uint32_t index) { return dynamic_cast<Counted*>(array.At(index))->value; }

TEST(ArrayPtr, DeletesWhatItOwnsAndNoMore) {
  Log log;
  Counted outside(9, log);
  {
    Owned owning;
    Fill(owning, 1, 2, log);
    owning.Append(nullptr);
    Owned lending(64, 32, false);
    lending.Append(&outside);
    EXPECT_TRUE(log.empty());
  }
  EXPECT_EQ(log, (Log{1, 2}));
}

TEST(ArrayPtr, GrowsByItsStep) {
  Log log;
  Owned array;
  Fill(array, 0, 64, log);
  EXPECT_EQ(array.capacity, 64U);
  Fill(array, 64, 1, log);
  EXPECT_EQ(array.capacity, 96U);
  Fill(array, 65, 32, log);
  EXPECT_EQ(array.capacity, 128U);
  EXPECT_EQ(ValueAt(array, 96), 96);
  try {
    array.At(97);
    ADD_FAILURE();
  } catch (const gen::genlib_out_of_range& error) {
    EXPECT_EQ(error.index, 97U);
    EXPECT_EQ(error.limit, 97U);
  }
}

TEST(ArrayPtr, AssignHandsTheOwnershipOn) {
  Log log;
  Owned source;
  Fill(source, 1, 100, log);
  {
    Owned target;
    Fill(target, 500, 1, log);
    target.Assign(source, true);
    EXPECT_EQ(log, Log{500});
    EXPECT_TRUE(target.owner);
    EXPECT_FALSE(source.owner);
    EXPECT_EQ(target.count, 100U);
    EXPECT_EQ(target.capacity, 100U);
    EXPECT_EQ(source.At(99), target.At(99));
  }
  EXPECT_EQ(log.size(), 101U);
}

TEST(ArrayPtr, AssignLendsWhereNothingIsTaken) {
  Log log;
  Owned source;
  Fill(source, 1, 1, log);
  Owned borrower;
  borrower.Assign(source, false);
  EXPECT_FALSE(borrower.owner);
  EXPECT_TRUE(source.owner);
  // Nobody can take from a borrower.
  Owned third;
  third.Assign(borrower, true);
  EXPECT_FALSE(third.owner);
  EXPECT_FALSE(borrower.owner);
  third.Assign(third, true);
  EXPECT_EQ(third.count, 1U);
  EXPECT_TRUE(log.empty());
}

TEST(ArrayPtr, ByValueTakesTheElementsAlong) {
  Log log;
  Owned source;
  Fill(source, 1, 2, log);
  [](Owned taken) { EXPECT_EQ(taken.count, 2U); }(source);
  EXPECT_EQ(log, (Log{1, 2}));
  EXPECT_FALSE(source.owner);
}

TEST(ArrayPtr, DeletesRanges) {
  Log log;
  Owned array;
  Fill(array, 0, 5, log);
  array.DeleteRange(1, 2);
  EXPECT_EQ(log, (Log{1, 2}));
  EXPECT_EQ(array.count, 5U);
  EXPECT_EQ(array.At(1), nullptr);
  array.DeleteRange(4, 100);
  array.DeleteRange(5, 1);
  array.DeleteRange(0xFFFFFFFF, 0xFFFFFFFF);
  EXPECT_EQ(log, (Log{1, 2, 4}));
  array.DeleteRange(0, Owned::kAll);
  EXPECT_EQ(log, (Log{1, 2, 4, 0, 3}));
  EXPECT_EQ(array.count, 5U);
  array.Clear();
  EXPECT_EQ(array.count, 0U);
}

TEST(ArrayPtr, RemoveClosesTheGap) {
  Log log;
  Owned array;
  Fill(array, 0, 3, log);
  Base* taken = array.Remove(1);
  EXPECT_EQ(array.count, 2U);
  EXPECT_EQ(ValueAt(array, 1), 2);
  EXPECT_TRUE(log.empty());
  delete taken;
  EXPECT_THROW(array.Remove(2), gen::genlib_out_of_range);
}

TEST(ArrayPtr, AppendAllMovesTheOwnership) {
  Log log;
  {
    Owned target;
    Fill(target, 0, 60, log);
    {
      Owned more;
      Fill(more, 60, 5, log);
      target.AppendAll(more);
      EXPECT_FALSE(more.owner);
      // A short list grows the array by its step, a long one by the list's length.
      EXPECT_EQ(target.capacity, 96U);
      Owned many;
      Fill(many, 65, 64, log);
      target.AppendAll(many);
      EXPECT_EQ(target.capacity, 160U);
    }
    EXPECT_TRUE(log.empty());
    ASSERT_EQ(target.count, 129U);
    for (std::uint32_t i = 0; i < target.count; ++i) EXPECT_EQ(ValueAt(target, i), static_cast<int>(i));
  }
  EXPECT_EQ(log.size(), 129U);
}

TEST(ArrayPtr, AppendAllWantsOwnersForOwners) {
  Log log;
  Owned owning;
  Owned lending(64, 32, false);
  EXPECT_THROW(owning.AppendAll(lending), gen::genlib_owner_mismatch);
  Fill(owning, 1, 1, log);
  lending.AppendAll(owning);
  EXPECT_TRUE(owning.owner);
  EXPECT_FALSE(lending.owner);
  EXPECT_EQ(lending.At(0), owning.At(0));
}

}  // namespace
