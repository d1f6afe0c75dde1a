#include "glib/color/palette_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "glib/raster/rgb32.h"
#include "platform/source_file.h"

namespace glib {
namespace {

constexpr std::uint32_t kMostEntries = 256;
constexpr std::size_t kActSize = kMostEntries * 3;

constexpr std::size_t kRiffHead = 24;
constexpr std::uint32_t kRiffVersion = 0x0300;

bool IsActName(std::string_view path) {
  const std::size_t name = path.find_last_of("\\/");
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || (name != std::string_view::npos && dot < name)) return false;
  std::string extension(path.substr(dot));
  for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return extension == ".act";
}

// `step` bytes an entry, the first three of them red, green, blue.
void TakeEntries(const std::uint8_t* bytes, std::uint32_t count, std::size_t step, PaletteData& data) {
  std::fill_n(data.entries, kMostEntries, ToPixel(RGB32(0, 0, 0, 255)));
  data.count = count;
  for (std::uint32_t i = 0; i < count; ++i, bytes += step) {
    data.entries[i] = ToPixel(RGB32(bytes[0], bytes[1], bytes[2], 255));
  }
}

std::uint32_t LittleEndian16(const std::uint8_t* bytes) { return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8; }

}  // namespace

bool ReadPaletteFile(const char* path, PaletteData& data) {
  constexpr std::size_t kRiffMost = kRiffHead + kMostEntries * 4;
  const platform::FileBytes file = platform::ReadSource(path, kRiffMost);
  if (file.data == nullptr) return false;
  const std::uint8_t* bytes = file.data.get();
  if (IsActName(path)) {
    if (file.size < kActSize) return false;
    TakeEntries(bytes, kMostEntries, 3, data);
    return true;
  }
  // The sizes of the file and of its chunk, which stand between the tags, are often wrong and not needed.
  if (file.size < kRiffHead || std::memcmp(bytes, "RIFF", 4) != 0 || std::memcmp(bytes + 8, "PAL data", 8) != 0) {
    return false;
  }
  const std::uint32_t count = LittleEndian16(bytes + 22);
  if (LittleEndian16(bytes + 20) != kRiffVersion || count == 0 || count > kMostEntries) return false;
  if (file.size < kRiffHead + std::size_t{count} * 4) return false;
  TakeEntries(bytes + kRiffHead, count, 4, data);
  return true;
}

}  // namespace glib
