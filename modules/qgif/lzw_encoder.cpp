#include "modules/qgif/lzw_encoder.h"

#include <bit>

#include "modules/qgif/gif_structure.h"

namespace qgif {

std::uint32_t CodeSizeFor(std::uint32_t highest) {
  return highest < 4 ? 2 : static_cast<std::uint32_t>(std::bit_width(highest));
}

bool LzwEncoder::Encode(const IndexRows& rows, std::uint32_t codeSize, ClearTable clear, BlockOutput& output) {
  dictionary_.Reset();
  CodeStream stream(codeSize, std::uint64_t{rows.width} * rows.height, clear, codes_, output);
  std::uint32_t code = rows.first[0];
  std::uint64_t begin = 0;  // where the string that is being matched begins, counted in pixels of the frame
  for (std::uint32_t i = 0; i < rows.height; ++i) {
    const std::uint32_t y = rows.interlaced ? InterlacedRow(i, rows.height) : i;
    const std::uint8_t* row = rows.first + y * rows.stride;
    const std::uint64_t rowBegin = std::uint64_t{i} * rows.width;
    for (std::uint32_t x = i == 0 ? 1 : 0; x < rows.width; ++x) {
      const std::uint32_t pixel = row[x];
      const LzwDictionary::Place longer = dictionary_.Find(code, pixel);
      if (longer.code != 0) {
        code = longer.code;
        continue;
      }
      const std::uint64_t place = rowBegin + x;
      if (stream.Put(code, static_cast<std::uint32_t>(place - begin))) {
        dictionary_.Reset();
      } else if (!stream.Full()) {
        dictionary_.Set(longer.slot, code, pixel, stream.NewEntry());
      }
      code = pixel;
      begin = place;
    }
  }
  stream.End(code);
  return stream.WasFull();
}

struct LzwEncoder::Pixels {
  const std::uint8_t* indices;
  const std::uint8_t* alternatives;
  std::size_t count;
};

// All strings of the table that the choices allow are walked through; they are parts of one tree, so that a walk meets
// an entry at most once.
LzwEncoder::Match LzwEncoder::LongestMatch(const Pixels& pixels, std::size_t place, std::uint32_t first) {
  Match best;
  open_.assign(1, {first, first, first, 1, 0});
  while (!open_.empty()) {
    const Match match = open_.back();
    open_.pop_back();
    if (match.BetterThan(best)) best = match;
    const std::size_t next = place + match.length;
    if (next == pixels.count) continue;
    const auto extend = [&](std::uint32_t pixel) {
      const std::uint32_t code = dictionary_.Find(match.code, pixel).code;
      if (code == 0) return;
      open_.push_back({code, first, pixel, match.length + 1, match.changes + (pixel != match.last ? 1U : 0U)});
    };
    extend(pixels.indices[next]);
    if (pixels.alternatives[next] != pixels.indices[next]) extend(pixels.alternatives[next]);
  }
  return best;
}

// The entry of a string and the pixel behind it is only known when that pixel has been chosen, yet the string that
// begins there may be this very entry. So the entry stands in the table, for either choice in turn, while the search
// goes on.
bool LzwEncoder::EncodeChoices(const std::uint8_t* indices, const std::uint8_t* alternatives, std::size_t count,
                               std::uint32_t codeSize, ClearTable clear, BlockOutput& output) {
  const Pixels pixels{indices, alternatives, count};
  dictionary_.Reset();
  CodeStream stream(codeSize, pixels.count, clear, codes_, output);
  Match before;  // of length 0: there is none since the table was begun
  for (std::size_t place = 0; place < pixels.count;) {
    const bool entryDue = before.length != 0 && !stream.Full();
    const auto search = [&](std::uint32_t first) {
      if (!entryDue) return LongestMatch(pixels, place, first);
      dictionary_.Set(dictionary_.Find(before.code, first).slot, before.code, first, stream.NextEntry());
      const Match match = LongestMatch(pixels, place, first);
      dictionary_.Unset();
      return match;
    };
    Match best = search(pixels.indices[place]);
    if (pixels.alternatives[place] != pixels.indices[place]) {
      const Match other = search(pixels.alternatives[place]);
      if (other.BetterThan(best)) best = other;
    }
    if (entryDue) {
      const std::uint32_t slot = dictionary_.Find(before.code, best.first).slot;
      dictionary_.Set(slot, before.code, best.first, stream.NewEntry());
    }
    place += best.length;
    if (place == pixels.count) {
      stream.End(best.code);
      break;
    }
    before = best;
    if (stream.Put(best.code, best.length)) {
      dictionary_.Reset();
      before = Match{};
    }
  }
  return stream.WasFull();
}

}  // namespace qgif
