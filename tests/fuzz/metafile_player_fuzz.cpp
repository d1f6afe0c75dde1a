// Plays whatever bytes come as an enhanced metafile. The first two bytes choose the size; without a header the bytes
// are taken for the records behind one.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/metafile/recorder.h"

// The helper's entry, which is built in here.
extern "C" bool PlayRecords(const std::uint8_t* records, std::size_t size, std::int32_t width, std::int32_t height,
                            std::uint32_t paper, std::uint32_t* pixels);

// The two libraries keep what they find of the system's fonts until the end.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\nleak:libcairo\n"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::int32_t width = 1 + data[0] % 64;
  const std::int32_t height = 1 + data[1] % 64;
  std::unique_ptr<platform::Metafile> metafile(platform::SetEnhMetaFileBits(data + 2, size - 2));
  if (metafile == nullptr) {
    platform::MetafileRecorder recorder(72);
    recorder.SetFrame({0, 0, width, height});
    for (int i = 0; i < 8; ++i) recorder.CreatePen(platform::kPenSolid, 1, 0);
    metafile.reset(recorder.Close());
    constexpr std::size_t kEndBytes = 20;
    metafile->records.resize(metafile->records.size() - kEndBytes);
    metafile->records.insert(metafile->records.end(), data + 2, data + size);
  }
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  const auto& records = metafile->records;
  PlayRecords(records.data(), records.size(), width, height, 0xFFFFFFFF, pixels.data());
  return 0;
}
