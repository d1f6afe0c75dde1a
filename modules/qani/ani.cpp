#include "modules/qani/ani.h"

#include <algorithm>

#include "modules/common/byte_reader.h"
#include "modules/common/dib.h"
#include "modules/common/limits.h"
#include "modules/qani/icon.h"

namespace qani {
namespace {

// Names of chunks as little-endian numbers.
constexpr std::uint32_t Name(const char (&text)[5]) {
  std::uint32_t name = 0;
  for (std::uint32_t i = 0; i < 4; ++i) name |= static_cast<std::uint32_t>(text[i]) << 8 * i;
  return name;
}

constexpr std::size_t kRiffHead = 12;
constexpr std::size_t kHeaderBytes = 36;
constexpr std::uint32_t kIconFlag = 1;
constexpr std::uint32_t kOrderFlag = 2;
constexpr std::uint32_t kMaxDelay = 65535;  // a GIF can't hold more
// The same frame may stand in any number of steps, so that their pixels have nothing to do with the file's length.
constexpr std::uint64_t kMaxStepPixels = std::uint64_t{1} << 26;
constexpr modules::Verdict kWrongFrame{glib::IERR, "A step of the animation names a frame that is not there"};

// What the chunks say before it is put together.
struct Chunks {
  std::span<const std::uint8_t> header;
  std::span<const std::uint8_t> rates;
  std::span<const std::uint8_t> order;
};

// Lists are entered without a look at their length, which some programs get wrong; what else is in them has other
// names.
Chunks ReadChunks(std::span<const std::uint8_t> file, Animation& animation) {
  modules::ByteReader in(file);
  in.Skip(kRiffHead);
  Chunks chunks;
  while (in.Left() >= 8) {
    const std::uint32_t name = in.Long();
    const std::size_t length = in.Long();
    if (name == Name("LIST")) {
      in.Skip(4);
      continue;
    }
    const auto data = in.Take(length);
    if (name == Name("anih")) chunks.header = data;
    if (name == Name("rate")) chunks.rates = data;
    if (name == Name("seq ")) chunks.order = data;
    if (name == Name("icon") && animation.frames.size() < modules::kMaxPages) animation.frames.push_back(data);
    if (length % 2 != 0 && !in.AtEnd()) in.Skip(1);
  }
  return chunks;
}

// Sixtieths of a second, rounded.
std::uint32_t DelayOf(std::uint32_t jiffies) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>((std::uint64_t{jiffies} * 100 + 30) / 60, kMaxDelay));
}

std::uint32_t LoadFrame(const Animation& animation, std::uint32_t index, glib::ImageDataExchange& exchange) {
  const auto frame = animation.frames[index];
  return animation.framesAreIcons ? LoadIcons(frame, 1, exchange) : modules::LoadDib(frame, 0, exchange);
}

std::uint64_t PixelsOf(const modules::Page& page) {
  return static_cast<std::uint64_t>(page.width) * static_cast<std::uint64_t>(page.height);
}

}  // namespace

modules::Verdict ReadAnimation(std::span<const std::uint8_t> file, Animation& animation) {
  const Chunks chunks = ReadChunks(file, animation);
  if (chunks.header.size() < kHeaderBytes) return {glib::IERR, "The animation has no header"};
  modules::ByteReader header(chunks.header);
  header.Skip(4);  // its own length
  animation.declaredFrames = header.Long();
  std::uint32_t stepCount = header.Long();
  header.Skip(16);  // size, depth and planes of frames that are not icons
  const std::uint32_t rate = header.Long();
  const std::uint32_t flags = header.Long();
  animation.framesAreIcons = (flags & kIconFlag) != 0;
  animation.settled =
      stepCount != 0 && ((flags & kOrderFlag) == 0 || chunks.order.size() >= std::size_t{4} * stepCount);
  if (stepCount == 0) stepCount = static_cast<std::uint32_t>(animation.frames.size());
  if (stepCount > modules::kMaxPages) return {glib::NSUP, "The animation has too many steps"};

  modules::ByteReader rates(chunks.rates);
  modules::ByteReader order(chunks.order);
  for (std::uint32_t i = 0; i < stepCount; ++i) {
    const std::uint32_t frame = order.Left() >= 4 ? order.Long() : i;
    const std::uint32_t jiffies = rates.Left() >= 4 ? rates.Long() : rate;
    animation.steps.push_back({frame, DelayOf(jiffies)});
  }
  return modules::kFine;
}

std::uint32_t LoadAnimation(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  Animation animation;
  const modules::Verdict verdict = ReadAnimation(file, animation);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  for (const auto& step : animation.steps) {
    if (step.frame >= std::max<std::size_t>(animation.declaredFrames, animation.frames.size())) {
      return modules::Fail(exchange, kWrongFrame);
    }
  }
  if (animation.steps.empty()) return modules::Fail(exchange, glib::IERR, "The animation has no frames");
  std::uint32_t failure = glib::IERR;
  std::uint64_t pixels = 0;
  for (const auto& step : animation.steps) {
    if (step.frame >= animation.frames.size()) {
      failure = modules::Fail(exchange, glib::IERR, "The animation is cut off");
      continue;
    }
    const std::uint32_t result = LoadFrame(animation, step.frame, exchange);
    if (result != glib::RCOK) {
      failure = result;
      continue;
    }
    modules::Page& page = *exchange.pages.At(exchange.pages.count - 1);
    page.delay = step.delay;
    pixels += PixelsOf(page);
    if (pixels > kMaxStepPixels) {
      modules::DropPages(exchange);
      return modules::Fail(exchange, glib::NSUP, "The animation has too many pixels");
    }
  }
  return exchange.pages.count != 0 ? glib::RCOK : failure;
}

}  // namespace qani
