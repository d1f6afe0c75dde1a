#ifndef PLATFORM_METAFILE_METAFILE_H_
#define PLATFORM_METAFILE_METAFILE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform {

// An enhanced metafile: the record stream as it stands in a file, unchecked. The player checks what it reads.
class Metafile {
 public:
  explicit Metafile(std::vector<std::uint8_t> bytes) : records(std::move(bytes)) {}

  std::vector<std::uint8_t> records;
};

// The frame of a metafile, in units of 0.01 mm.
struct EnhMetaHeader {
  std::int32_t frameLeft = 0;
  std::int32_t frameTop = 0;
  std::int32_t frameRight = 0;
  std::int32_t frameBottom = 0;
};

// Makes a metafile of a copy of a record stream; null if it doesn't begin with an enhanced metafile's header. The
// caller owns the handle and gives it to DeleteEnhMetaFile.
Metafile* SetEnhMetaFileBits(const std::uint8_t* bytes, std::size_t size);
Metafile* CopyEnhMetaFile(const Metafile* metafile);  // null gives null
void DeleteEnhMetaFile(Metafile* metafile);           // null is ignored
bool GetEnhMetaFileHeader(const Metafile* metafile, EnhMetaHeader& header);

}  // namespace platform

#endif  // PLATFORM_METAFILE_METAFILE_H_
