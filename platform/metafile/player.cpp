#include "platform/metafile/player.h"

#include "platform/library.h"

namespace platform {
namespace {

using PlayRecordsEntry = bool (*)(const std::uint8_t* records, std::size_t size, std::int32_t width,
                                  std::int32_t height, std::uint32_t paper, std::uint32_t* pixels);

constexpr const char* kHelper = "metafile_player";

// Its address tells where this library lies.
const char kThisLibrary = 0;

PlayRecordsEntry FindPlayer() {
  void* library = LoadHelper(&kThisLibrary, kHelper);
  return library == nullptr ? nullptr : reinterpret_cast<PlayRecordsEntry>(ModuleEntry(library, "PlayRecords"));
}

}  // namespace

bool PlayEnhMetaFile(const Metafile* metafile, std::int32_t width, std::int32_t height, std::uint32_t paper,
                     std::uint32_t* pixels) {
  if (metafile == nullptr || pixels == nullptr || width <= 0 || height <= 0) return false;
  static const PlayRecordsEntry play = FindPlayer();
  return play != nullptr && play(metafile->records.data(), metafile->records.size(), width, height, paper, pixels);
}

}  // namespace platform
