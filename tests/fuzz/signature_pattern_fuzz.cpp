#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "glib/format/signature_pattern.h"

// The first two bytes are the length of the pattern, which follows; the rest is the text. The text stands in a block of
// its own size, so that a read behind it is seen.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::size_t declared = data[0] | static_cast<std::size_t>(data[1]) << 8;
  const std::size_t patternSize = declared < size - 2 ? declared : size - 2;
  const std::size_t textSize = size - 2 - patternSize;
  const std::unique_ptr<std::uint8_t[]> text(new std::uint8_t[textSize]);
  for (std::size_t i = 0; i < textSize; ++i) text[i] = data[2 + patternSize + i];

  glib::SignaturePattern pattern;
  pattern.SetPattern(reinterpret_cast<const char*>(data + 2), static_cast<std::uint32_t>(patternSize));
  const bool matched = pattern.Match(text.get(), static_cast<std::uint32_t>(textSize));
  if (matched && !pattern.Validate()) std::abort();
  // A test leaves nothing behind that changes the next one.
  if (pattern.Match(text.get(), static_cast<std::uint32_t>(textSize)) != matched) std::abort();
  return 0;
}
