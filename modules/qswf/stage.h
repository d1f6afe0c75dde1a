#ifndef MODULES_QSWF_STAGE_H_
#define MODULES_QSWF_STAGE_H_

#include <cstdint>
#include <vector>

#include "modules/qswf/characters.h"
#include "platform/metafile/recorder.h"

namespace qswf {

// What a movie may draw on all its pages together: sprites in sprites multiply.
struct DrawingBudget {
  std::uint64_t edges = std::uint64_t{1} << 22;
  std::uint64_t fillPixels = std::uint64_t{1} << 26;
  std::uint64_t objects = std::uint64_t{1} << 18;
  std::uint64_t pagePixels = std::uint64_t{1} << 27;
};

// Records a display list. The recording's frame is the stage.
class Stage {
 public:
  // `stage` in twips; `paper` stands in for what lies below lines that are not opaque.
  Stage(const Rect& stage, Color paper, Characters& characters, DrawingBudget& budget);

  void Draw(const DisplayList& list);
  platform::MetafileRecorder& Recorder() { return recorder_; }

 private:
  struct Path;

  void DrawList(const DisplayList& list, const Transform& matrix, const ColorTransform& colors, std::uint32_t depth);
  void DrawCharacter(const Placed& placed, const Transform& matrix, const ColorTransform& colors, std::uint32_t depth);
  // In a box of so many pixels.
  void DrawPicture(const modules::Picture& picture, std::uint32_t width, std::uint32_t height, const Transform& matrix,
                   const ColorTransform& colors);
  void DrawShape(const Shape& shape, const Transform& matrix, const ColorTransform& colors);
  void DrawText(const Text& text, const Transform& matrix, const ColorTransform& colors);
  void DrawEditText(const EditText& edit, const Transform& matrix, const ColorTransform& colors);
  void DrawGlyph(const Font& font, const TextGlyph& glyph, const Transform& matrix, const ColorTransform& colors);
  // With a font of the system.
  void DrawLetters(const EditLine& line, const EditText& edit, const Font& font, const Transform& matrix,
                   const ColorTransform& colors);
  void Fill(const FillStyle& style, const Path& path, const Transform& matrix, const ColorTransform& colors);
  void Stroke(const LineStyle& style, const Path& path, const Transform& matrix, const ColorTransform& colors);
  // The outline of all that a character fills, for a clip; `paths` gets one for each fill.
  void Outline(std::uint16_t number, const Transform& matrix, std::uint32_t depth, std::vector<Path>& paths);
  bool BeginClip(const Placed& placed, const Transform& matrix, std::uint32_t depth);
  void Record(const Path& path, bool closed = true);
  bool Spend(std::uint64_t& left, std::uint64_t cost) const;

  Rect stage_;
  Color paper_;
  Characters& characters_;
  DrawingBudget& budget_;
  platform::MetafileRecorder recorder_;
  std::uint64_t recordedPixels_ = std::uint64_t{1} << 25;  // that this page's fills may still keep
};

}  // namespace qswf

#endif  // MODULES_QSWF_STAGE_H_
