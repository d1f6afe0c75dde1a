#ifndef GEN_ERRORS_H_
#define GEN_ERRORS_H_

#include <cstdint>

// What the containers throw when they are misused. Such a throw stands for a programming error: nothing in the
// program catches it on the way to the end of the run.

namespace gen {

struct genlib_error {};

// `index` was used where only indexes below `limit` are allowed.
struct genlib_out_of_range : genlib_error {
  genlib_out_of_range(std::uint32_t usedIndex, std::uint32_t indexLimit) : index(usedIndex), limit(indexLimit) {}

  std::uint32_t index;
  std::uint32_t limit;
};

// Elements that nobody owns were to go into an array that deletes its elements.
struct genlib_owner_mismatch : genlib_error {};

}  // namespace gen

#endif  // GEN_ERRORS_H_
