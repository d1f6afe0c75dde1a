#ifndef MODULES_HELPERS_METAFILE_PLAYER_CANVAS_H_
#define MODULES_HELPERS_METAFILE_PLAYER_CANVAS_H_

#include <cairo.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

#include "modules/helpers/metafile_player/clip.h"
#include "modules/helpers/metafile_player/path.h"

namespace metafile_player {

// A pixel of the picture is this many samples wide and high.
inline constexpr std::int32_t kSamples = 4;

struct PatternDeleter {
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
struct SurfaceDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct CairoDeleter {
  void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};
using Pattern = std::unique_ptr<cairo_pattern_t, PatternDeleter>;
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Cairo = std::unique_ptr<cairo_t, CairoDeleter>;

// What an area or a line is filled with: a colour (a pixel word), or a pattern that may leave samples out.
struct Paint {
  std::uint32_t color = 0xFF000000;
  cairo_pattern_t* pattern = nullptr;  // not owned
};

struct Stroke {
  double width = kSamples;  // in samples
  cairo_line_cap_t cap = CAIRO_LINE_CAP_SQUARE;
  cairo_line_join_t join = CAIRO_LINE_JOIN_MITER;
  double miterLimit = 1.5;
  std::vector<double> dashes;
  cairo_matrix_t shape{1, 0, 0, 1, 0, 0};  // of the pen: what a circle becomes, at the same area

  double DashPeriod() const { return std::accumulate(dashes.begin(), dashes.end(), 0.0); }
};

// Result bit for each of the eight cases of brush, source and target bit, in this order from the highest.
using Rop3 = std::uint8_t;

// One tile of the picture, four times as large each way, from 0 on. Samples are opaque where something was painted and
// 0 elsewhere; operations that read a sample that wasn't painted see the paper.
class Canvas {
 public:
  explicit Canvas(std::uint32_t paper) : paper_(paper | 0xFF000000) {}

  // An empty tile of so many pixels. False without memory.
  bool Begin(std::int32_t width, std::int32_t height);

  void SetClip(Region clip);
  // Of the tile, in samples.
  std::int32_t Width() const { return width_; }
  std::int32_t Height() const { return height_; }
  bool Reaches(const Area& area) const {
    return area.left < width_ && area.right > 0 && area.top < height_ && area.bottom > 0;
  }

  // `rop2` is one of the sixteen operations of pens.
  void Fill(const Path& path, bool winding, const Paint& paint, std::uint32_t rop2);
  void Line(const Path& path, const Stroke& stroke, const Paint& paint, std::uint32_t rop2);
  // Into the area of the path, by a table over brush, source and target.
  void Combine(const Path& path, const Paint& brush, cairo_pattern_t* source, Rop3 rop);
  // Over what is there, by the alpha of the source.
  void Blend(const Path& path, cairo_pattern_t* source, double alpha);
  // Characters of one face; `size` turns an em of 1 into samples.
  void Glyphs(cairo_font_face_t* face, const cairo_matrix_t& size, std::span<const cairo_glyph_t> glyphs,
              std::uint32_t color);

  // Their outlines in place of themselves.
  Path Outlines(cairo_font_face_t* face, const cairo_matrix_t& size, std::span<const cairo_glyph_t> glyphs);

  // Averages the tile into pixel words: opaque where any of the samples was painted, else 0.
  void Finish(std::uint32_t* pixels, std::size_t pixelsPerRow) const;

  // Whether the page has taken longer than any honest one.
  bool Exhausted();
  void Spend(std::uint64_t samples) { work_ += samples; }

 private:
  struct Rows {
    std::int32_t left, top, right, bottom;  // in samples of the tile
  };

  // The part of an area that lies on the tile; it is charged to the page's account.
  Rows Touched(const Area& area);
  // With the clip set: the tile itself, and further surfaces of its size, which are empty. Null without memory.
  cairo_t* Target();
  cairo_t* Scratch(int which);
  cairo_t* Ready(Cairo& cairo, const Surface& surface, bool& clipPending);
  Surface NewSurface() const;
  std::uint32_t* Row(cairo_surface_t* surface, std::int32_t y) const;
  // Calls mix(target sample, scratch sample) where the first scratch surface was drawn on, and empties it.
  template <typename Mix>
  void MixRows(const Rows& rows, Mix mix);
  // Whether the edges of a shape are so few that it can be drawn; they are charged to the page's account.
  bool Affordable(const Path& path, double strokeWidth);
  template <typename Draw>
  void DrawByRop2(const Area& area, std::uint32_t rop2, Draw draw);
  static void SetPaint(cairo_t* cairo, const Paint& paint);
  void TraceGlyphs(cairo_t* cairo, cairo_font_face_t* face, const cairo_matrix_t& size,
                   std::span<const cairo_glyph_t> glyphs);

  std::uint32_t paper_;
  std::uint64_t work_ = 0;
  std::uint64_t nextLook_ = 0;  // at the clock, in work
  bool exhausted_ = false;
  std::clock_t start_ = std::clock();
  std::int32_t width_ = 0, height_ = 0;  // of the tile, in samples
  Surface surface_;
  Cairo cairo_;
  Surface scratchSurface_[2];
  Cairo scratch_[2];
  Region clip_;
  // Many clips come and go without a thing drawn in them.
  bool clipPending_ = false;
  bool scratchClipPending_[2] = {};
};

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_CANVAS_H_
