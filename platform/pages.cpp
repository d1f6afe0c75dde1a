#include "platform/pages.h"

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace platform {
namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Below this the heap serves as well, above it a block is mapped and worth keeping.
constexpr std::size_t kMapFrom = std::size_t{256} << 10;
constexpr std::size_t kKeptBlocks = 4;

// Stands in the bytes before a block, which keep the alignment.
struct Header {
  std::size_t mapped;  // bytes of the mapping with this header; 0 for a block of the heap
  void* base;          // where the heap block or the mapping begins
};
static_assert(sizeof(Header) <= kAlignment);

Header* HeaderOf(void* block) { return reinterpret_cast<Header*>(static_cast<std::uint8_t*>(block) - kAlignment); }

// Blocks of ended uses that still have their pages.
std::array<void*, kKeptBlocks> kept{};

void Unmap(void* block) {
  const Header header = *HeaderOf(block);
  munmap(header.base, header.mapped);
}

void* TakeKept(std::size_t mapped) {
  for (void*& block : kept) {
    if (block == nullptr) continue;
    const std::size_t has = HeaderOf(block)->mapped;
    if (has >= mapped && has / 2 <= mapped) {
      void* found = block;
      block = nullptr;
      return found;
    }
  }
  return nullptr;
}

void DropKept() {
  for (void*& block : kept) {
    if (block != nullptr) Unmap(block);
    block = nullptr;
  }
}

void* Place(void* base, std::size_t mapped) {
  void* block = static_cast<std::uint8_t*>(base) + kAlignment;
  *HeaderOf(block) = Header{mapped, base};
  return block;
}

// A fresh mapping is zeroed; `fresh` tells.
void* MapBlock(std::size_t size, bool& fresh) {
  const std::size_t unit = size >= kHugePage ? kHugePage : std::size_t{4096};
  const std::size_t mapped = (size + kAlignment + unit - 1) / unit * unit;
  fresh = false;
  if (void* block = TakeKept(mapped)) return block;
  // Kept blocks that don't fit would add to the peak.
  DropKept();
  const std::size_t slack = unit == kHugePage ? kHugePage : 0;
  void* base = mmap(nullptr, mapped + slack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) return nullptr;
  if (slack != 0) {  // cut to an aligned mapping, which large pages can serve
    auto* begin = static_cast<std::uint8_t*>(base);
    const std::size_t head = (kHugePage - reinterpret_cast<std::uintptr_t>(begin) % kHugePage) % kHugePage;
    if (head != 0) munmap(begin, head);
    if (head != slack) munmap(begin + head + mapped, slack - head);
    base = begin + head;
    madvise(base, mapped, MADV_HUGEPAGE);
  }
  fresh = true;
  return Place(base, mapped);
}

void* Allocate(std::size_t size, bool zeroed) {
  if (size == 0 || size > 0xFFFFFFFFU) return nullptr;
  if (size < kMapFrom) {
    const std::size_t room = (size + kAlignment + kAlignment - 1) / kAlignment * kAlignment;
    void* base = std::aligned_alloc(kAlignment, room);
    if (base == nullptr) return nullptr;
    void* block = Place(base, 0);
    if (zeroed) std::memset(block, 0, size);
    return block;
  }
  bool fresh = false;
  void* block = MapBlock(size, fresh);
  if (block != nullptr && zeroed && !fresh) std::memset(block, 0, size);
  return block;
}

}  // namespace

void* AllocatePages(std::size_t size) { return Allocate(size, true); }

void* AllocateUninitialisedPages(std::size_t size) { return Allocate(size, false); }

void FreePages(void* block) {
  if (block == nullptr) return;
  const Header header = *HeaderOf(block);
  if (header.mapped == 0) {
    std::free(header.base);
    return;
  }
  for (void*& place : kept) {
    if (place == nullptr) {
      place = block;
      return;
    }
  }
  Unmap(block);
}

}  // namespace platform
