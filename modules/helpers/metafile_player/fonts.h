#ifndef MODULES_HELPERS_METAFILE_PLAYER_FONTS_H_
#define MODULES_HELPERS_METAFILE_PLAYER_FONTS_H_

#include <cairo.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "modules/helpers/metafile_player/objects.h"

namespace metafile_player {

struct FaceDeleter {
  void operator()(cairo_font_face_t* face) const { cairo_font_face_destroy(face); }
};
struct ScaledFontDeleter {
  void operator()(cairo_scaled_font_t* font) const { cairo_scaled_font_destroy(font); }
};
using Face = std::unique_ptr<cairo_font_face_t, FaceDeleter>;
using ScaledFont = std::unique_ptr<cairo_scaled_font_t, ScaledFontDeleter>;

// Measures of a typeface, for an em of 1. Distances from the baseline are not negative.
struct FaceMeasures {
  double ascent = 0;
  double descent = 0;
  double averageWidth = 0;  // of small letters
};

struct GlyphOf {
  cairo_font_face_t* face = nullptr;  // owned by the cache
  unsigned long index = 0;
  double advance = 0;  // for an em of 1
};

// Typefaces as the system finds them, kept for as long as a picture is drawn.
class FaceCache {
 public:
  // The face that stands in for what the font asks for. Null if the system has no font at all.
  cairo_font_face_t* FaceOf(const Font& font);
  const FaceMeasures& MeasuresOf(cairo_font_face_t* face);
  // From the font's own face, else from any other that has the character.
  GlyphOf Find(const Font& font, char32_t character);
  double AdvanceOf(cairo_font_face_t* face, unsigned long index);

 private:
  using FaceKey = std::tuple<std::string, bool, bool, bool, bool, char32_t>;

  cairo_font_face_t* Match(const Font& font, char32_t character);
  cairo_scaled_font_t* UnitFont(cairo_font_face_t* face);

  std::map<FaceKey, Face> faces_;
  std::map<cairo_font_face_t*, ScaledFont> unitFonts_;
  std::map<cairo_font_face_t*, FaceMeasures> measures_;
  std::map<std::tuple<cairo_font_face_t*, char32_t, bool>, GlyphOf> glyphs_;  // also by whether it is one of dingbats
};

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_FONTS_H_
