#include "modules/qmng/frames.h"

#include <algorithm>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"
#include "modules/qmng/chunks.h"

namespace qmng {
namespace {

// Chunks that may play in all, repeated ones counted each time: a fraction of a second.
constexpr std::uint64_t kMaxPlayed = std::uint64_t{1} << 18;

struct Loop {
  std::size_t begin;  // its first chunk
  std::uint64_t rounds;
  bool again = false;
};

std::uint32_t RoundsOf(const Chunk& loop) {
  modules::ByteReader in(loop.data);
  in.Skip(1);
  return std::max(in.BigLong(), 1U);
}

// Whether all loops together end within the bound.
bool LoopsEndSoon(const std::vector<Chunk>& chunks) {
  std::vector<std::uint64_t> rounds{1};  // of each open loop times those of all around it
  std::uint64_t played = 0;
  for (const Chunk& chunk : chunks) {
    if (chunk.name == Name("LOOP")) {
      rounds.push_back(std::min(rounds.back() * RoundsOf(chunk), kMaxPlayed + 1));
    } else if (chunk.name == Name("ENDL") && rounds.size() > 1) {
      rounds.pop_back();
    }
    played = std::min(played + rounds.back(), kMaxPlayed + 1);
  }
  return played <= kMaxPlayed;
}

// Keeps the time between pictures as the chunks change it.
class Clock {
 public:
  explicit Clock(const Chunk& header) {
    modules::ByteReader in(header.data);
    in.Skip(8);
    ticks_ = in.BigLong();
  }

  void Change(const Chunk& framing) {
    constexpr std::uint8_t kFromNowOn = 2;
    now_ = usual_;
    modules::ByteReader in(framing.data);
    in.Skip(1);
    while (!in.AtEnd() && in.Byte() != 0) {  // a name
    }
    const std::uint8_t change = in.Byte();
    in.Skip(3);
    const std::uint32_t delay = in.BigLong();
    if (in.Failed() || change == 0) return;
    now_ = delay;
    if (change == kFromNowOn) usual_ = delay;
  }

  std::uint32_t Hundredths() const {
    constexpr std::uint64_t kLongest = 65535;
    if (ticks_ == 0) return Frame().delay;
    return static_cast<std::uint32_t>(std::min((std::uint64_t{now_} * 100 + ticks_ / 2) / ticks_, kLongest));
  }

 private:
  std::uint32_t ticks_ = 0;  // a second
  std::uint32_t usual_ = 1;
  std::uint32_t now_ = 1;
};

void Append(Bytes bytes, std::vector<std::uint8_t>& file) { file.insert(file.end(), bytes.begin(), bytes.end()); }

class Player {
 public:
  Player(std::vector<Chunk> chunks, const std::function<bool(const Frame&)>& visit)
      : chunks_(std::move(chunks)), visit_(visit), loopsEnd_(LoopsEndSoon(chunks_)), clock_(chunks_.front()) {}

  void Play() {
    for (std::size_t i = 1; i < chunks_.size(); ++i) {
      const Chunk& chunk = chunks_[i];
      switch (chunk.name) {
        case Name("IHDR"):
        case Name("JHDR"):
          if (!Picture(i)) return;
          break;
        case Name("PLTE"):
          palette_ = chunk;
          break;
        case Name("tRNS"):
          transparency_ = chunk;
          break;
        case Name("FRAM"):
          clock_.Change(chunk);
          break;
        case Name("LOOP"):
          loops_.push_back({.begin = i, .rounds = loopsEnd_ ? RoundsOf(chunk) : 1U});
          break;
        case Name("ENDL"):
          EndRound(i);
          break;
        default:
          break;
      }
    }
  }

 private:
  void EndRound(std::size_t& i) {
    if (loops_.empty()) return;
    Loop& loop = loops_.back();
    if (loop.rounds > 1) {
      --loop.rounds;
      loop.again = true;
      i = loop.begin;
    } else {
      loops_.pop_back();
    }
  }

  // Leaves `i` at the last chunk of the picture.
  bool Picture(std::size_t& i) {
    Frame frame;
    frame.photograph = chunks_[i].name == Name("JHDR");
    frame.delay = clock_.Hundredths();
    frame.repeated = std::any_of(loops_.begin(), loops_.end(), [](const Loop& loop) { return loop.again; });
    Append(frame.photograph ? kJngSignature : kPngSignature, frame.file);
    for (; i < chunks_.size(); ++i) {
      const Chunk& chunk = chunks_[i];
      const bool common = chunk.name == Name("PLTE") && chunk.data.empty();
      Append(common ? palette_.whole : chunk.whole, frame.file);
      if (common) Append(transparency_.whole, frame.file);
      if (chunk.name == Name("IEND")) break;
    }
    return visit_(frame);
  }

  std::vector<Chunk> chunks_;
  const std::function<bool(const Frame&)>& visit_;
  bool loopsEnd_;
  Clock clock_;
  std::vector<Loop> loops_;
  Chunk palette_;  // for pictures that name none of their own
  Chunk transparency_;
};

}  // namespace

void ForEachFrame(Bytes file, const std::function<bool(const Frame&)>& visit) {
  auto chunks = ReadChunks(file);
  if (chunks.empty() || chunks.front().name != Name("MHDR")) return;
  Player(std::move(chunks), visit).Play();
}

}  // namespace qmng
