#ifndef GEN_ARRAY_H_
#define GEN_ARRAY_H_

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "gen/base_array.h"
#include "gen/errors.h"

namespace gen {

// A flat array of plain values. It copies elements by bytes and never touches elements that are not in use.
template <typename T>
class array : public base_array {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  explicit array(std::uint32_t initial = kInitialSize, std::uint32_t step = kGrowBy)
      : base_array(initial, step), data(NewBlock(initial)) {
    capacity = initial;
  }
  array(const array&) = delete;
  array& operator=(const array&) = delete;
  ~array() override { ::operator delete(data); }

  // Room for `n` elements. An `n` within the capacity cuts `count` to at most `n` and keeps the block.
  void Reserve(std::uint32_t n) {
    if (n <= capacity) {
      if (count > n) count = n;
      return;
    }
    T* block = NewBlock(n);
    if (count != 0) std::memcpy(block, data, sizeof(T) * count);
    ::operator delete(data);
    data = block;
    capacity = n;
  }

  void Append(T value) {
    if (count == capacity) Reserve(capacity + (growBy != 0 ? growBy : 1));
    data[count++] = value;
  }

  // Throws genlib_out_of_range for an index at or past `count`.
  T& At(std::uint32_t index) {
    if (index >= count) throw genlib_out_of_range(index, count);
    return data[index];
  }
  const T& At(std::uint32_t index) const { return const_cast<array*>(this)->At(index); }

  // Index of the first element for which `compare(&element, value)` gives 0; -1 if there is none.
  virtual std::int32_t Find(const void* value, int (*compare)(const T*, const void*)) const {
    for (std::uint32_t i = 0; i < count; ++i) {
      if (compare(&data[i], value) == 0) return static_cast<std::int32_t>(i);
    }
    return -1;
  }

  T* data;  // sole owner

 private:
  static T* NewBlock(std::uint32_t n) { return static_cast<T*>(::operator new(sizeof(T) * n)); }
};

}  // namespace gen

#endif  // GEN_ARRAY_H_
