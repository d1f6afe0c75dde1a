#ifndef MODULES_QGIF_GIF_STRUCTURE_H_
#define MODULES_QGIF_GIF_STRUCTURE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/byte_reader.h"

namespace qgif {

inline constexpr std::uint8_t kImageSeparator = 0x2C;
inline constexpr std::uint8_t kExtensionIntroducer = 0x21;
inline constexpr std::uint8_t kTrailer = 0x3B;
inline constexpr std::uint8_t kGraphicControlLabel = 0xF9;
inline constexpr std::uint8_t kPlainTextLabel = 0x01;
inline constexpr std::uint8_t kApplicationLabel = 0xFF;

// What happens to the area of a frame when its time is over.
enum class Disposal : std::uint8_t { kNone = 0, kKeep = 1, kClear = 2, kRestore = 3 };

// A rectangle of the screen.
struct FrameArea {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  bool Empty() const { return width == 0 || height == 0; }
};

// A colour table as it stands in the file: three bytes an entry, red, green, blue.
using TableBytes = std::span<const std::uint8_t>;

struct ScreenHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t tableBits = 0;  // 1 to 8; 0: there is no global table
  std::uint8_t aspect = 0;      // (aspect + 15) / 64 is the width of a pixel in heights; 0: not told
  TableBytes table;
};

struct FrameHeader {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool interlaced = false;
  bool hasDelay = false;
  std::uint32_t delay = 0;  // hundredths of a second
  Disposal disposal = Disposal::kNone;
  int transparent = -1;         // index, or -1
  std::uint32_t tableBits = 0;  // of the table in force; 0: there is none
  TableBytes table;
  std::uint32_t codeSize = 0;    // minimum code size as the file gives it
  std::size_t dataPosition = 0;  // of the first block of codes
};

// Walks over the blocks of a file without decoding any. Frames without area are passed over. The bytes must stay as
// long as headers are used.
class StructureWalk {
 public:
  explicit StructureWalk(std::span<const std::uint8_t> bytes);

  bool Ok() const { return ok_; }  // the header up to the global table was there
  const ScreenHeader& Screen() const { return screen_; }

  // The next frame; false at the end, be it the trailer or the last thing that could be read.
  bool Next(FrameHeader& frame);

 private:
  void ReadExtension(FrameHeader& control);
  bool ReadFrame(FrameHeader& frame);
  void SkipBlocks();
  TableBytes ReadTable(std::uint32_t bits) { return reader_.Take(std::size_t{3} << bits); }

  modules::ByteReader reader_;
  ScreenHeader screen_;
  bool ok_ = false;
};

// The codes of a frame, out of their blocks and one behind the other, with kCodePadding zero bytes behind them. False:
// the file ended before the last block.
inline constexpr std::size_t kCodePadding = 8;
bool GatherCodes(std::span<const std::uint8_t> bytes, std::size_t position, std::vector<std::uint8_t>& codes);

// The area that all frames are laid out on: the screen, or a frame that is larger than it.
class CanvasSize {
 public:
  explicit CanvasSize(const ScreenHeader& screen) : width_(screen.width), height_(screen.height) {}

  void Add(const FrameHeader& frame);

  std::uint32_t Width() const { return onlyFrame_ ? frameWidth_ : width_; }
  std::uint32_t Height() const { return onlyFrame_ ? frameHeight_ : height_; }
  // A still picture that sticks out of its screen is believed in place of the screen, and its position is dropped.
  bool DropsPosition() const { return onlyFrame_; }

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::uint32_t frameWidth_ = 0;
  std::uint32_t frameHeight_ = 0;
  std::uint32_t frames_ = 0;
  bool onlyFrame_ = false;
};

// Row of the picture that is stored at place `i` of an interlaced frame.
std::uint32_t InterlacedRow(std::uint32_t i, std::uint32_t height);

}  // namespace qgif

#endif  // MODULES_QGIF_GIF_STRUCTURE_H_
