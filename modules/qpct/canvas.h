#ifndef MODULES_QPCT_CANVAS_H_
#define MODULES_QPCT_CANVAS_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "modules/qpct/picture_header.h"
#include "modules/vector/picture.h"
#include "platform/metafile/recorder.h"

namespace qpct {

using PatternBits = std::array<std::uint8_t, 8>;
inline constexpr PatternBits kSolid = {255, 255, 255, 255, 255, 255, 255, 255};
inline constexpr PatternBits kEmpty = {};

// Bits that take the colours of the drawing, or colours of its own.
struct Pattern {
  PatternBits bits = kSolid;
  std::optional<std::uint32_t> color;  // red in the lowest byte
  std::shared_ptr<const modules::Picture> tile;
};

// What to do with a figure, as operations number it.
enum class Verb : std::uint32_t { kFrame = 0, kPaint, kErase, kInvert, kFill };

struct PenState {
  std::int32_t width = 1;
  std::int32_t height = 1;
  std::uint32_t mode = 8;
  platform::Point at;
};

struct TextState {
  std::u16string face = u"Arial";
  std::uint32_t style = 0;
  std::int32_t size = 12;
  platform::Point at;
};

// Records what a picture draws. The pen hangs to the right of its place and below it, so lines are drawn as the areas
// that it sweeps; recorded units are fractions of the picture's, to have its curves and halves of pens.
class Canvas {
 public:
  explicit Canvas(const PictureHeader& header);

  PenState pen;
  TextState text;
  std::uint32_t foreground = 0x000000;  // red in the lowest byte
  std::uint32_t background = 0xFFFFFF;
  Pattern penPattern;
  Pattern fillPattern;
  Pattern backPattern = {kEmpty, {}, {}};
  platform::Point origin;
  bool imagesOnly = false;  // all else is passed over

  void Clip(const std::vector<platform::Box>& boxes);
  void Line(platform::Point from, platform::Point to);
  void Rectangle(Verb verb, const platform::Box& box);
  void RoundRectangle(Verb verb, const platform::Box& box, platform::Point corner);
  void Oval(Verb verb, const platform::Box& box);
  // Degrees clockwise from the top.
  void Arc(Verb verb, const platform::Box& box, std::int32_t start, std::int32_t sweep);
  void Polygon(Verb verb, std::span<const platform::Point> points);
  void Region(Verb verb, const std::vector<platform::Box>& boxes);
  void Text(std::span<const std::uint8_t> bytes);

  // The first picture waits: if nothing else is drawn, it is the page itself. It is seen within `mask` only; none:
  // whole.
  void Image(modules::Picture&& picture, const platform::Box& source, const platform::Box& target, std::uint32_t mode,
             const std::vector<platform::Box>& mask = {});

  // Whether what was drawn is one picture over the whole frame.
  const modules::Picture* OnlyPicture() const;
  bool Empty() const { return drawings_ == 0 && !waiting_; }
  // No more can be recorded.
  bool Full() const { return drawings_ >= kMaxDrawings || imageBytes_ >= kMaxImageBytes; }
  // The recording, whole.
  platform::MetafileRecorder& Recorder();

 private:
  static constexpr std::uint32_t kMaxDrawings = 1U << 20;
  static constexpr std::uint64_t kMaxImageBytes = std::uint64_t{1} << 29;

  struct WaitingPicture {
    modules::Picture picture;
    platform::Box source;
    platform::Box target;
    std::uint32_t mode;
    std::vector<platform::Box> mask;
  };

  platform::Point Scaled(platform::Point point) const;
  platform::Box Scaled(const platform::Box& box) const;
  void Begin();  // of a drawing other than a picture
  void Flush();
  void Draw(const WaitingPicture& image);
  std::uint32_t BrushFor(const Pattern& pattern);
  // Selects what fills a figure; End undoes it.
  void BeginFill(Verb verb);
  void EndFill();
  template <typename Figure>
  void Fill(Verb verb, Figure figure);
  template <typename Figure>
  void Ring(const platform::Box& box, Figure figure);

  PictureHeader header_;
  platform::MetafileRecorder recorder_;
  std::optional<WaitingPicture> waiting_;
  std::uint32_t drawings_ = 0;
  std::uint64_t imageBytes_ = 0;
  bool clipped_ = false;
  std::uint32_t brush_ = 0;
  bool rop_ = false;
};

}  // namespace qpct

#endif  // MODULES_QPCT_CANVAS_H_
