#ifndef MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_
#define MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_

#include <cstddef>
#include <cstdint>

#include "modules/common/helper.h"

// Files that hold folders and streams, as office programs write them.

// Gets the bytes of a stream, which are gone after the call.
using TakeStreamFunction = void (*)(void* context, const std::uint8_t* bytes, std::size_t size);

// Where the file is: in memory, or else one to be opened, of which only what is needed is read.
struct StorageFile {
  const std::uint8_t* bytes = nullptr;
  std::size_t size = 0;
  const char* name = nullptr;
};

// Hands the stream at `path`, the names of `depth` - 1 folders and its own, to `take`. False: there is none, or it
// can't be read. At most as many bytes as the file has count as readable.
ZEFA_HELPER_ENTRY(bool)
ReadStorageStream(const StorageFile* file, const char* const* path, std::size_t depth, TakeStreamFunction take,
                  void* context);

#endif  // MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_
