#ifndef PLATFORM_PAGES_H_
#define PLATFORM_PAGES_H_

#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform {

// Blocks for rasters: aligned to 64 bytes, freed as a whole and without a size. Large blocks are kept for reuse, since
// the faults of new pages cost more than the pixels. Null: no memory, or a size of 0 or of more than 32 bits. One
// thread only.
void* AllocatePages(std::size_t size);               // zeroed
void* AllocateUninitialisedPages(std::size_t size);  // for producers that write every byte
void FreePages(void* block);                         // null is ignored

// A block that is freed with its scope.
struct PagesDeleter {
  void operator()(std::uint8_t* block) const { FreePages(block); }
};
using OwnedPages = std::unique_ptr<std::uint8_t, PagesDeleter>;

}  // namespace platform

#endif  // PLATFORM_PAGES_H_
