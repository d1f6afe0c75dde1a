#ifndef GLIB_TASKS_TRANSPARENCY_TASK_H_
#define GLIB_TASKS_TRANSPARENCY_TASK_H_

#include <cstddef>
#include <cstdint>

namespace glib {

class Film;

// The colours stand behind the record in the same block: words with red in the lowest byte, then green, blue.
struct TransparencyParams {
  std::int32_t count;  // at least 1

  const std::uint32_t* Colors() const { return reinterpret_cast<const std::uint32_t*>(this + 1); }
  std::uint32_t* Colors() { return reinterpret_cast<std::uint32_t*>(this + 1); }
};
static_assert(sizeof(TransparencyParams) % alignof(std::uint32_t) == 0);

// Makes each slide one 32-bit layer in which the pixels of these colours have alpha 0 and their old colour. A slide
// that can't be merged or deepened ends the task; those before it are done.
bool TaskTransparency(Film* film, const void* params);

// Sets the alpha of the pixels of a row to 0 whose colour is one of `colors`, which are pixel words without alpha.
void ClearAlphaOfColors(std::uint32_t* row, std::size_t pixelCount, const std::uint32_t* colors,
                        std::size_t colorCount);

}  // namespace glib

#endif  // GLIB_TASKS_TRANSPARENCY_TASK_H_
