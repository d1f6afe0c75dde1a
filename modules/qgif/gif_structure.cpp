#include "modules/qgif/gif_structure.h"

#include <algorithm>

namespace qgif {
namespace {

constexpr std::uint8_t kTableFlag = 0x80;
constexpr std::uint8_t kInterlaceFlag = 0x40;
constexpr std::uint8_t kTransparentFlag = 0x01;

bool IsGif(std::span<const std::uint8_t> name) {
  constexpr std::uint8_t kName[] = {'G', 'I', 'F'};
  return name.size() == 6 &&
         std::equal(std::begin(kName), std::end(kName), name.begin(), [](std::uint8_t letter, std::uint8_t byte) {
           return byte == letter || byte == letter + ('a' - 'A');
         });
}

}  // namespace

StructureWalk::StructureWalk(std::span<const std::uint8_t> bytes) : reader_(bytes) {
  if (!IsGif(reader_.Take(6))) return;
  screen_.width = reader_.Word();
  screen_.height = reader_.Word();
  const std::uint8_t flags = reader_.Byte();
  reader_.Skip(1);  // the background index, which no viewer paints
  screen_.aspect = reader_.Byte();
  if ((flags & kTableFlag) != 0) {
    screen_.tableBits = (flags & 7U) + 1;
    screen_.table = ReadTable(screen_.tableBits);
  }
  ok_ = !reader_.Failed();
}

bool StructureWalk::Next(FrameHeader& frame) {
  frame = FrameHeader{};
  while (ok_ && !reader_.AtEnd()) {
    switch (reader_.Byte()) {
      case kExtensionIntroducer:
        ReadExtension(frame);
        break;
      case kImageSeparator:
        if (!ReadFrame(frame)) return false;
        if (frame.width != 0 && frame.height != 0) return true;
        frame = FrameHeader{};
        break;
      case 0:  // an end of blocks too many does no harm
        break;
      default:
        return false;
    }
  }
  return false;
}

void StructureWalk::ReadExtension(FrameHeader& control) {
  const std::uint8_t label = reader_.Byte();
  if (label == kPlainTextLabel) control = FrameHeader{};  // the control block was meant for the text
  if (label == kGraphicControlLabel) {
    modules::ByteReader block(reader_.Take(reader_.Byte()));
    const std::uint8_t flags = block.Byte();
    const std::uint16_t delay = block.Word();
    const std::uint8_t transparent = block.Byte();
    if (!block.Failed()) {
      const std::uint8_t disposal = flags >> 2 & 7U;
      control.hasDelay = true;
      control.delay = delay;
      control.disposal = disposal <= 3 ? static_cast<Disposal>(disposal) : Disposal::kNone;
      control.transparent = (flags & kTransparentFlag) != 0 ? transparent : -1;
    }
  }
  SkipBlocks();
}

bool StructureWalk::ReadFrame(FrameHeader& frame) {
  frame.left = reader_.Word();
  frame.top = reader_.Word();
  frame.width = reader_.Word();
  frame.height = reader_.Word();
  const std::uint8_t flags = reader_.Byte();
  frame.interlaced = (flags & kInterlaceFlag) != 0;
  frame.tableBits = screen_.tableBits;
  frame.table = screen_.table;
  if ((flags & kTableFlag) != 0) {
    frame.tableBits = (flags & 7U) + 1;
    frame.table = ReadTable(frame.tableBits);
  }
  frame.codeSize = reader_.Byte();
  frame.dataPosition = reader_.Position();
  if (reader_.Failed()) return false;
  SkipBlocks();
  return true;
}

void StructureWalk::SkipBlocks() {
  while (const std::uint8_t size = reader_.Byte()) reader_.Skip(size);
}

bool GatherCodes(std::span<const std::uint8_t> bytes, std::size_t position, std::vector<std::uint8_t>& codes) {
  codes.clear();
  modules::ByteReader reader(bytes);
  reader.Seek(position);
  while (const std::uint8_t size = reader.Byte()) {
    const auto block = reader.Take(size);
    codes.insert(codes.end(), block.begin(), block.end());
  }
  codes.resize(codes.size() + kCodePadding, 0);
  return !reader.Failed();
}

void CanvasSize::Add(const FrameHeader& frame) {
  const bool screenMissing = width_ == 0 || height_ == 0;
  const bool sticksOut = frame.left + frame.width > width_ || frame.top + frame.height > height_;
  onlyFrame_ = frames_ == 0 && sticksOut && !screenMissing;
  if (frames_++ == 0) {
    frameWidth_ = frame.width;
    frameHeight_ = frame.height;
  }
  width_ = std::max(width_, frame.width);
  height_ = std::max(height_, frame.height);
}

std::uint32_t InterlacedRow(std::uint32_t i, std::uint32_t height) {
  constexpr struct {
    std::uint32_t first;
    std::uint32_t step;
  } kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
  for (const auto& pass : kPasses) {
    const std::uint32_t rows = height > pass.first ? (height - pass.first + pass.step - 1) / pass.step : 0;
    if (i < rows) return pass.first + i * pass.step;
    i -= rows;
  }
  return height - 1;
}

}  // namespace qgif
