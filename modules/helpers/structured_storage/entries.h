#ifndef MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_
#define MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_

#include <cstddef>
#include <cstdint>

#include "modules/common/helper.h"

// Files that hold folders and streams, as office programs write them.

// Gets the bytes of a stream, which are gone after the call.
using TakeStreamFunction = void (*)(void* context, const std::uint8_t* bytes, std::size_t size);

// Hands the stream at `path`, the names of `depth` - 1 folders and its own, to `take`. False: there is none, or it
// can't be read. At most as many bytes as the file has count as readable.
ZEFA_HELPER_ENTRY(bool)
ReadStorageStream(const std::uint8_t* file, std::size_t size, const char* const* path, std::size_t depth,
                  TakeStreamFunction take, void* context);

#endif  // MODULES_HELPERS_STRUCTURED_STORAGE_ENTRIES_H_
