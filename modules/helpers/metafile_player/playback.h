#ifndef MODULES_HELPERS_METAFILE_PLAYER_PLAYBACK_H_
#define MODULES_HELPERS_METAFILE_PLAYER_PLAYBACK_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "modules/helpers/metafile_player/bitmap.h"
#include "modules/helpers/metafile_player/canvas.h"
#include "modules/helpers/metafile_player/fonts.h"
#include "modules/helpers/metafile_player/objects.h"
#include "platform/metafile/mapping.h"
#include "platform/metafile/records.h"

namespace metafile_player {

// What all tiles of a picture share.
struct Shared {
  BitmapCache bitmaps;
  FaceCache faces;
};

// Where the recorded device lies on a tile of the picture.
struct Placement {
  double perMmX = 1;  // device units to a millimetre
  double perMmY = 1;
  platform::Transform deviceToSamples;
  double pixelsPerScreenPixel = 1;  // of the picture, to one of a screen that shows it at its size
  std::size_t handleCount = 0;
};

// All that SaveDC keeps.
struct DeviceContext {
  platform::Mapping mapping;
  PenHandle pen;
  BrushHandle brush;
  FontHandle font;
  PaletteHandle palette;
  std::uint32_t bkMode = platform::kOpaqueMode;
  std::uint32_t bkColor = 0xFFFFFFFF;  // colours are pixel words
  std::uint32_t textColor = 0xFF000000;
  std::uint32_t textAlign = 0;
  // What justified lines of text have to spare, and how many blanks it goes to.
  std::int32_t breakExtra = 0;
  std::int32_t breakCount = 0;
  std::uint32_t polyFillMode = platform::kFillAlternate;
  std::uint32_t rop2 = platform::kRop2CopyPen;
  std::uint32_t arcDirection = platform::kCounterClockwise;
  double miterLimit = 10;
  platform::Point brushOrg;
  Spot position;  // logical
  Region clip;
  Region metaClip;
};

// Plays records one after the other onto the tile that the canvas stands on. A record that makes no sense is passed
// over.
class Playback {
 public:
  Playback(Canvas& canvas, Shared& shared, const Placement& placement);

  void Play(const platform::Record& record);

 private:
  using Record = platform::Record;

  // Each tries the records of its kind and says whether it was one.
  bool PlayState(const Record& record);
  bool PlayMapping(const Record& record);
  bool PlayObject(const Record& record);
  bool PlayPoints(const Record& record);
  bool PlayShape(const Record& record);
  bool PlayPath(const Record& record);
  bool PlayClip(const Record& record);
  bool PlayRegion(const Record& record);
  bool PlayBitmap(const Record& record);
  bool PlayText(const Record& record);

  // State.
  void SaveState();
  void RestoreState(std::int32_t which);
  void Select(const Object& object);
  void ChangePalette(const Record& record);
  std::uint32_t ColorOf(std::uint32_t colorRef) const { return ColorWord(colorRef, *dc_.palette); }
  void StoreObject(std::uint32_t handle, Object object);
  void MappingChanged();
  void ClipChanged();

  // Points.
  Spot ToSamples(double x, double y) const { return {toSamples_.X(x, y), toSamples_.Y(x, y)}; }
  Spot ToSamples(Spot at) const { return ToSamples(at.x, at.y); }
  double Scale() const;  // samples to a logical unit, as a mean over the directions
  static platform::Transform ReadTransform(const Record& record, std::size_t at);
  static Area BoxAt(const Record& record, std::size_t at);
  static Spot SpotAt(const Record& record, std::size_t at);
  std::vector<Spot> ReadPoints(const Record& record, std::size_t at, std::size_t count, bool narrow) const;

  // Lines and areas: into the open path, or drawn at once.
  void Figure(const std::vector<Spot>& points, std::size_t begin, std::size_t end, bool closed, Path& path) const;
  void GoOn(const std::vector<Spot>& points, bool curves);
  void Figures(const Record& record, bool narrow, bool closed);
  void BeginFigureAtPosition();
  void PolyDraw(const Record& record, bool narrow);
  void AngleArc(const Record& record);
  void ArcShape(const Record& record);
  void BoxShape(const Record& record);
  void GradientFill(const Record& record);
  void GradientBox(Spot from, std::uint32_t fromColor, Spot to, std::uint32_t toColor, bool across);
  void GradientTriangle(const Spot* corners, const std::uint32_t* colors);
  void Draw(const Path& path, bool fill, bool stroke);
  void FillWith(const Path& path, const BrushHandle& brush, bool winding);
  void StrokeWith(const Path& path, const Pen& pen);
  void FillOutline(const Path& path);
  Stroke StrokeOf(const Pen& pen) const;
  // In samples; the ends of the line may change with them.
  std::vector<double> DashesOf(const Pen& pen, bool wide, Stroke& stroke) const;

  // Brushes as the library wants them; `owner` keeps the pattern.
  Paint PaintOf(const Brush& brush, Pattern& owner) const;

  // Clips and regions.
  void Combine(const Region& region, std::uint32_t mode);
  Region RegionOfPath(const Path& path, bool winding);
  // Of boxes as they lie on the picture, which may be askew.
  Region RegionOfBoxes(std::span<const Area> boxes, const platform::Transform& toSamples);
  static Path PathOfBoxes(std::span<const Area> boxes, const platform::Transform& toSamples);
  static std::optional<std::vector<Area>> ReadRegion(const Record& record, std::size_t at, std::size_t bytes);

  // Bitmaps.
  struct Part {  // of a bitmap, in its pixels
    double left, top, width, height;
  };
  struct Parallelogram {
    Spot origin, right, down;  // samples: three corners
  };
  Parallelogram LogicalBox(double x, double y, double width, double height) const;
  static Path PathOf(const Parallelogram& target);
  static Pattern PatternOf(cairo_surface_t* surface, const Part& part, const Parallelogram& target, bool smooth);
  // Where a record says how a bitmap's colours are meant, and four numbers on its header and its rows.
  struct BitmapPlace {
    std::size_t usage, places;
  };
  std::shared_ptr<const Bitmap> BitmapOf(const Record& record, const BitmapPlace& place, AlphaOf alpha);
  std::vector<std::uint8_t> WithPaletteColors(std::span<const std::uint8_t> header, std::uint32_t usage) const;
  // `bitmap` in the colours that black and white mean on the target, where it has only these two.
  std::shared_ptr<const Bitmap> InTargetColors(std::shared_ptr<const Bitmap> bitmap) const;
  static constexpr BitmapPlace kBlitPlace{80, 84};  // in BITBLT and its kin
  static Part SourcePart(const Record& record, std::size_t at, std::size_t mapAt, double width, double height);
  std::shared_ptr<const Bitmap> SomeRows(const Record& record, const BitmapPlace& place, Part& part);
  void SpendOn(const Bitmap* bitmap) const;
  void Blit(const Record& record, bool stretched);
  void MaskBlit(const Record& record);
  void PlaceDib(const Record& record, bool stretched);
  void AlphaBlend(const Record& record);
  void TransparentBlit(const Record& record);
  void ParallelogramBlit(const Record& record);
  // With `masked`, samples of the bitmap that are left out keep the target whatever the operation.
  void CombineBitmap(const Bitmap* bitmap, Part part, Parallelogram target, std::uint32_t rop, bool masked = false);
  void CombineMasked(const Record& record, std::size_t maskAt, std::shared_ptr<const Bitmap> bitmap, Part part,
                     const Parallelogram& target, std::uint32_t rop);
  BrushHandle ReadPatternBrush(const Record& record, std::size_t usageAt, std::size_t places);

  // Text.
  struct TextRun {
    Spot reference;
    std::u16string text;
    std::vector<std::int32_t> advances;  // logical; empty: the font's own
    std::vector<std::int32_t> rises;     // of the line from each character to the next; empty: none
    std::uint32_t options = 0;
    platform::Box box;
  };
  struct TextFrame;
  struct PlacedGlyph;
  void ReadText(const Record& record, std::size_t at, bool wide);
  void ReadSmallText(const Record& record);
  TextFrame FrameOf(cairo_font_face_t* face);
  double PlaceGlyphs(const TextRun& run, cairo_font_face_t* face, const TextFrame& frame,
                     std::vector<PlacedGlyph>& placed);
  void DrawText(const TextRun& run);

  Canvas& canvas_;
  Shared& shared_;
  const Placement& placement_;
  platform::Transform toSamples_;
  DeviceContext dc_;
  std::vector<DeviceContext> saved_;
  std::vector<Object> objects_;
  Path path_;
  bool pathOpen_ = false;  // between its begin and its end
  bool pathWidened_ = false;
  bool figureOpen_ = false;  // the open path has a figure to go on with
};

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_PLAYBACK_H_
