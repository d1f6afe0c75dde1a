#ifndef GEN_BASE_ARRAY_H_
#define GEN_BASE_ARRAY_H_

#include <cstdint>

namespace gen {

inline constexpr std::uint32_t kInitialSize = 64;
inline constexpr std::uint32_t kGrowBy = 32;

// The counters that every container has in common.
class base_array {
 public:
  virtual ~base_array() = default;

  std::uint32_t count = 0;     // elements in use
  std::uint32_t capacity = 0;  // elements that the present block holds
  std::uint32_t initialSize;
  std::uint32_t growBy;

 protected:
  base_array(std::uint32_t initial, std::uint32_t step) : initialSize(initial), growBy(step) {}
  base_array(const base_array&) = default;
  base_array& operator=(const base_array&) = default;
};

}  // namespace gen

#endif  // GEN_BASE_ARRAY_H_
