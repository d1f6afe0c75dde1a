#include "modules/qmng/chunks.h"

#include "modules/common/byte_reader.h"

namespace qmng {

std::vector<Chunk> ReadChunks(Bytes file) {
  std::vector<Chunk> chunks;
  modules::ByteReader in(file);
  in.Skip(kSignatureBytes);
  while (in.Left() >= 12) {
    const std::size_t begin = in.Position();
    const std::size_t length = in.BigLong();
    const std::uint32_t name = in.BigLong();
    const Bytes data = in.Take(length);
    in.Skip(4);
    if (name == Name("MEND") || name == 0) break;
    // A cut picture may still have rows.
    chunks.push_back({name, data, file.subspan(begin, in.Position() - begin)});
  }
  return chunks;
}

}  // namespace qmng
