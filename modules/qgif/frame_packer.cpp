#include "modules/qgif/frame_packer.h"

#include <utility>

namespace qgif {
namespace {

ClearTable OtherThan(ClearTable clear) {
  return clear == ClearTable::kAtOnce ? ClearTable::kWhenBehind : ClearTable::kAtOnce;
}

// The indices of a frame with all drawn that may be, but for runs of at least `longRun` pixels that need no drawing.
void Mix(const ChangedFrame& frame, std::size_t longRun, std::vector<std::uint8_t>& mixed) {
  mixed = frame.drawn;
  std::size_t run = 0;
  for (std::size_t i = 0; i < mixed.size(); ++i) {
    run = frame.sparse[i] == frame.transparent ? run + 1 : 0;
    if (run < longRun) continue;
    const auto transparent = static_cast<std::uint8_t>(frame.transparent);
    if (run == longRun) std::fill_n(mixed.data() + i + 1 - longRun, longRun, transparent);
    mixed[i] = transparent;
  }
}

}  // namespace

template <typename Encode>
bool FramePacker::Try(Encode encode) {
  tried_.bytes.clear();
  BlockOutput output(tried_);
  const bool wasFull = encode(output);
  output.Flush();
  if (shortest_.bytes.empty() || tried_.bytes.size() < shortest_.bytes.size()) std::swap(shortest_.bytes, tried_.bytes);
  return wasFull;
}

void FramePacker::WriteShortest() {
  output_.Bytes(shortest_.bytes);
  shortest_.bytes.clear();
}

void FramePacker::PackPage(const IndexRows& rows, std::uint32_t codeSize) {
  const ClearTable clear = ClearTableFor(std::uint64_t{rows.width} * rows.height);
  if (clear == ClearTable::kWhenBehind) {
    encoder_.Encode(rows, codeSize, clear, output_);
    return;
  }
  const auto encode = [&](ClearTable way) {
    return Try([&](BlockOutput& output) { return encoder_.Encode(rows, codeSize, way, output); });
  };
  if (encode(clear)) encode(OtherThan(clear));
  WriteShortest();
}

// The longest strings are not always the fewest codes: all that may be drawn, as little as possible, and something
// between serve some frames better. Text that moves over a plain ground is the shorter for being drawn with its ground.
void FramePacker::PackChanges(const ChangedFrame& frame, std::uint32_t codeSize) {
  const std::uint32_t width = frame.area.width;
  const std::uint32_t height = frame.area.height;
  const ClearTable clear = ClearTableFor(frame.drawn.size());
  const auto encode = [&](const std::vector<std::uint8_t>& indices) {
    const auto by = [&](ClearTable way) {
      return Try([&](BlockOutput& output) {
        return encoder_.Encode({indices.data(), width, width, height, false}, codeSize, way, output);
      });
    };
    if (by(clear)) by(OtherThan(clear));
  };
  const auto encodeChoices = [&](const std::vector<std::uint8_t>& indices) {
    const auto by = [&](ClearTable way) {
      return Try([&](BlockOutput& output) {
        return encoder_.EncodeChoices(indices.data(), frame.sparse.data(), indices.size(), codeSize, way, output);
      });
    };
    if (by(clear)) by(OtherThan(clear));
  };
  encode(frame.drawn);
  if (frame.choices) {
    encode(frame.sparse);
    encodeChoices(frame.drawn);
    for (const std::size_t longRun : {6, 16, 60}) {
      Mix(frame, longRun, mixed_);
      encode(mixed_);
      encodeChoices(mixed_);
    }
  }
  WriteShortest();
}

}  // namespace qgif
