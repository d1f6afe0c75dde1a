#include "platform/metafile/metafile.h"

#include <cstring>

namespace platform {
namespace {

// The header record: type, size, bounds, frame, then the signature " EMF".
constexpr std::size_t kFrameOffset = 24;
constexpr std::size_t kSignatureOffset = 40;
constexpr std::size_t kHeaderSize = 88;

std::uint32_t Word(const std::uint8_t* at) {
  return std::uint32_t{at[0]} | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 | std::uint32_t{at[3]} << 24;
}

bool HasHeader(const std::uint8_t* bytes, std::size_t size) {
  return size >= kHeaderSize && Word(bytes) == 1 && std::memcmp(bytes + kSignatureOffset, " EMF", 4) == 0;
}

}  // namespace

Metafile* SetEnhMetaFileBits(const std::uint8_t* bytes, std::size_t size) {
  if (bytes == nullptr || !HasHeader(bytes, size)) return nullptr;
  return new Metafile(std::vector<std::uint8_t>(bytes, bytes + size));
}

Metafile* CopyEnhMetaFile(const Metafile* metafile) {
  return metafile == nullptr ? nullptr : new Metafile(metafile->records);
}

void DeleteEnhMetaFile(Metafile* metafile) { delete metafile; }

bool GetEnhMetaFileHeader(const Metafile* metafile, EnhMetaHeader& header) {
  if (metafile == nullptr || !HasHeader(metafile->records.data(), metafile->records.size())) return false;
  const std::uint8_t* frame = metafile->records.data() + kFrameOffset;
  header.frameLeft = static_cast<std::int32_t>(Word(frame));
  header.frameTop = static_cast<std::int32_t>(Word(frame + 4));
  header.frameRight = static_cast<std::int32_t>(Word(frame + 8));
  header.frameBottom = static_cast<std::int32_t>(Word(frame + 12));
  return true;
}

}  // namespace platform
