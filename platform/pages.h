#ifndef PLATFORM_PAGES_H_
#define PLATFORM_PAGES_H_

#include <cstddef>

namespace platform {

// Blocks for rasters: aligned to 64 bytes, freed as a whole and without a size. Large blocks are kept for reuse, since
// the faults of new pages cost more than the pixels. Null: no memory, or a size of 0 or of more than 32 bits. One
// thread only.
void* AllocatePages(std::size_t size);               // zeroed
void* AllocateUninitialisedPages(std::size_t size);  // for producers that write every byte
void FreePages(void* block);                         // null is ignored

}  // namespace platform

#endif  // PLATFORM_PAGES_H_
