#ifndef GEN_ARRAY_PTR_H_
#define GEN_ARRAY_PTR_H_

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "gen/base_array.h"
#include "gen/errors.h"

namespace gen {

// How an owning array gets rid of an element. Specialised for element types that need more than `delete`.
template <typename T>
struct element_deleter {
  static void Delete(T* element) { delete element; }
};

// An array of pointers that may own what they point to. The array is handed on by Assign, which moves the ownership
// and never clones an element; copying does the same, so an array passed by value takes the elements along.
template <typename T>
class array_ptr : public base_array {
 public:
  explicit array_ptr(std::uint32_t initial = kInitialSize, std::uint32_t step = kGrowBy, bool owning = true)
      : base_array(initial, step), owner(owning) {
    Grow(initial);
  }
  // Takes the ownership out of `source`.
  array_ptr(array_ptr& source) : base_array(source.initialSize, source.growBy) {
    Grow(source.initialSize);
    Assign(source, true);
  }
  array_ptr& operator=(array_ptr& source) {
    if (this != &source) Assign(source, true);
    return *this;
  }
  ~array_ptr() override {
    DeleteRange(0, kAll);
    std::free(data);
  }

  static constexpr std::uint32_t kAll = 0xFFFFFFFFU;

  // Room for `n` elements; an `n` within the capacity cuts `count` to at most `n`, without deleting anything.
  void Reserve(std::uint32_t n) {
    if (n <= capacity) {
      if (count > n) count = n;
      return;
    }
    Grow(n);
  }

  void Append(T* element) {
    if (count == capacity) Grow(capacity + (growBy != 0 ? growBy : 1));
    data[count++] = element;
  }

  // Throws genlib_out_of_range for an index at or past `count`.
  T*& At(std::uint32_t index) {
    if (index >= count) throw genlib_out_of_range(index, count);
    return data[index];
  }
  T* At(std::uint32_t index) const { return const_cast<array_ptr*>(this)->At(index); }

  // Index of the first element for which `compare(element, value)` gives 0; -1 if there is none.
  virtual std::int32_t Find(const void* value, int (*compare)(const T*, const void*)) const {
    for (std::uint32_t i = 0; i < count; ++i) {
      if (compare(data[i], value) == 0) return static_cast<std::int32_t>(i);
    }
    return -1;
  }

  // Shares the pointers of `source`, after deleting what this array owns. The ownership comes along only if it is asked
  // for and `source` has it to give.
  void Assign(array_ptr& source, bool takeOwnership) {
    if (this == &source) return;
    DeleteRange(0, kAll);
    owner = takeOwnership && std::exchange(source.owner, source.owner && !takeOwnership);
    count = 0;
    const std::uint32_t room = source.count > initialSize ? source.count : initialSize;
    if (capacity < room) Grow(room);
    if (source.count != 0) std::memcpy(data, source.data, sizeof(T*) * source.count);
    count = source.count;
  }

  // Deletes the elements of a range if this array owns them and leaves null pointers; `count` stays.
  // `n` is kAll for all up to the end.
  void DeleteRange(std::uint32_t first, std::uint32_t n) {
    if (!owner || first >= count) return;
    const std::uint32_t end = n > count - first ? count : first + n;
    for (std::uint32_t i = first; i < end; ++i) {
      if (T* element = std::exchange(data[i], nullptr)) element_deleter<T>::Delete(element);
    }
  }

  // Deletes all elements if this array owns them, and empties it.
  void Clear() {
    DeleteRange(0, kAll);
    count = 0;
  }

  // Takes one element out of the array, which closes up; the caller gets it with its ownership.
  T* Remove(std::uint32_t index) {
    T* element = At(index);
    std::memmove(data + index, data + index + 1, sizeof(T*) * (count - index - 1));
    --count;
    return element;
  }

  // Moves the elements of `other` behind the present ones. An owning array takes over the ownership and throws
  // genlib_owner_mismatch if `other` has none.
  void AppendAll(array_ptr& other) {
    if (owner) {
      if (!other.owner) throw genlib_owner_mismatch();
      other.owner = false;
    }
    if (capacity - count < other.count) Grow(capacity + (other.count > growBy ? other.count : growBy));
    if (other.count != 0) std::memcpy(data + count, other.data, sizeof(T*) * other.count);
    count += other.count;
  }

  bool owner = false;
  T** data = nullptr;  // from realloc

 private:
  void Grow(std::uint32_t n) {
    void* block = std::realloc(data, sizeof(T*) * (n != 0 ? n : 1));
    if (block == nullptr) throw std::bad_alloc();
    data = static_cast<T**>(block);
    capacity = n;
  }
};

}  // namespace gen

#endif  // GEN_ARRAY_PTR_H_
