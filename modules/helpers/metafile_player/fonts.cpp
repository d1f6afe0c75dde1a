#include "modules/helpers/metafile_player/fonts.h"

#include <cairo-ft.h>
#include <fontconfig/fontconfig.h>

#include "modules/helpers/metafile_player/characters.h"

namespace metafile_player {
namespace {

// Measured at this size, so that rounding in the library's numbers doesn't matter.
constexpr double kUnit = 1000.0;
constexpr char32_t kPrivateArea = 0xF000;
constexpr char32_t kPrivateMask = 0xFF00;
constexpr std::size_t kMaxFaces = 256;

std::string Utf8Of(char32_t character) {
  if (character < 0x10000) {
    const auto unit = static_cast<char16_t>(character);
    return Utf8({&unit, 1});
  }
  const char16_t pair[] = {static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)),
                           static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF))};
  return Utf8({pair, 2});
}

// 0 where the face has no such character.
unsigned long IndexOf(cairo_scaled_font_t* font, char32_t character) {
  const std::string text = Utf8Of(character);
  cairo_glyph_t* glyphs = nullptr;
  int count = 0;
  const cairo_status_t status = cairo_scaled_font_text_to_glyphs(font, 0, 0, text.data(), static_cast<int>(text.size()),
                                                                 &glyphs, &count, nullptr, nullptr, nullptr);
  const unsigned long index = status == CAIRO_STATUS_SUCCESS && count > 0 ? glyphs[0].index : 0;
  cairo_glyph_free(glyphs);
  return index;
}

}  // namespace

cairo_font_face_t* FaceCache::Match(const Font& font, char32_t character) {
  const FaceKey key{font.family, font.bold, font.italic, font.fixedPitch, font.serifs, character};
  if (const auto found = faces_.find(key); found != faces_.end()) return found->second.get();
  if (faces_.size() >= kMaxFaces) return faces_.begin()->second.get();
  FcPattern* wanted = FcPatternCreate();
  const auto addFamily = [&](const char* family) {
    FcPatternAddString(wanted, FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
  };
  if (!font.family.empty()) addFamily(font.family.c_str());
  addFamily(font.fixedPitch ? "monospace" : font.serifs ? "serif" : "sans-serif");
  FcPatternAddInteger(wanted, FC_WEIGHT, font.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  FcPatternAddInteger(wanted, FC_SLANT, font.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(wanted, FC_SCALABLE, FcTrue);
  if (character != 0) {
    FcCharSet* characters = FcCharSetCreate();
    FcCharSetAddChar(characters, character);
    FcPatternAddCharSet(wanted, FC_CHARSET, characters);
    FcCharSetDestroy(characters);
  }
  FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
  FcDefaultSubstitute(wanted);
  FcResult result = FcResultMatch;
  FcPattern* matched = FcFontMatch(nullptr, wanted, &result);
  FcPatternDestroy(wanted);
  Face face;
  if (matched != nullptr) {
    face.reset(cairo_ft_font_face_create_for_pattern(matched));
    FcPatternDestroy(matched);
    if (cairo_font_face_status(face.get()) != CAIRO_STATUS_SUCCESS) face.reset();
  }
  return faces_.emplace(key, std::move(face)).first->second.get();
}

cairo_font_face_t* FaceCache::FaceOf(const Font& font) { return Match(font, 0); }

cairo_scaled_font_t* FaceCache::UnitFont(cairo_font_face_t* face) {
  ScaledFont& font = unitFonts_[face];
  if (font != nullptr) return font.get();
  cairo_matrix_t size, identity;
  cairo_matrix_init_scale(&size, kUnit, kUnit);
  cairo_matrix_init_identity(&identity);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  font.reset(cairo_scaled_font_create(face, &size, &identity, options));
  cairo_font_options_destroy(options);
  return font.get();
}

const FaceMeasures& FaceCache::MeasuresOf(cairo_font_face_t* face) {
  const auto [found, isNew] = measures_.try_emplace(face);
  FaceMeasures& measures = found->second;
  if (!isNew) return measures;
  cairo_scaled_font_t* font = UnitFont(face);
  cairo_font_extents_t extents;
  cairo_scaled_font_extents(font, &extents);
  measures.ascent = extents.ascent / kUnit;
  measures.descent = extents.descent / kUnit;
  constexpr char kSmallLetters[] = "abcdefghijklmnopqrstuvwxyz";
  cairo_text_extents_t letters;
  cairo_scaled_font_text_extents(font, kSmallLetters, &letters);
  measures.averageWidth = letters.x_advance / kUnit / (sizeof(kSmallLetters) - 1);
  return measures;
}

double FaceCache::AdvanceOf(cairo_font_face_t* face, unsigned long index) {
  const cairo_glyph_t glyph{index, 0, 0};
  cairo_text_extents_t extents;
  cairo_scaled_font_glyph_extents(UnitFont(face), &glyph, 1, &extents);
  return extents.x_advance / kUnit;
}

GlyphOf FaceCache::Find(const Font& font, char32_t character) {
  cairo_font_face_t* face = FaceOf(font);
  if (face == nullptr) return {};
  const bool dingbats = font.family.starts_with("Wingdings");
  const auto [found, isNew] = glyphs_.try_emplace({face, character, dingbats});
  GlyphOf& glyph = found->second;
  if (!isNew) return glyph;
  glyph.face = face;
  glyph.index = IndexOf(UnitFont(face), character);
  if (glyph.index == 0 && (character & kPrivateMask) == kPrivateArea) {
    // A symbol font that isn't there: what its characters mean stands elsewhere.
    const auto byte = static_cast<std::uint8_t>(character);
    character = dingbats ? DingbatCharacter(byte) : SymbolCharacter(byte);
    glyph.index = IndexOf(UnitFont(face), character);
  }
  if (glyph.index == 0) {
    cairo_font_face_t* other = Match(font, character);
    const unsigned long index = other == nullptr ? 0 : IndexOf(UnitFont(other), character);
    if (index != 0) {
      glyph.face = other;
      glyph.index = index;
    }
  }
  glyph.advance = AdvanceOf(glyph.face, glyph.index);
  return glyph;
}

}  // namespace metafile_player
