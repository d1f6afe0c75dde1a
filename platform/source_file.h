#ifndef PLATFORM_SOURCE_FILE_H_
#define PLATFORM_SOURCE_FILE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "platform/pages.h"

namespace platform {

// Opens a regular file for binary reading; null for anything else: what is no file (a folder, a pipe, a device) could
// keep a reader waiting for ever. The caller closes it.
std::FILE* OpenSource(const char* path);

// Bytes of a regular file, or -1.
std::int64_t SourceSize(const char* path);
std::int64_t OpenFileSize(std::FILE* file);  // without what is still buffered

// A whole file in memory: in a block of pages, so that the next large file finds them faulted in.
struct FileBytes {
  struct Free {
    void operator()(std::uint8_t* block) const { FreePages(block); }
  };

  std::unique_ptr<std::uint8_t[], Free> data;  // null if the file can't be read
  std::size_t size = 0;
};

// `limit` cuts the reading off behind so many bytes.
FileBytes ReadSource(const char* path, std::size_t limit = static_cast<std::size_t>(-1));

}  // namespace platform

#endif  // PLATFORM_SOURCE_FILE_H_
