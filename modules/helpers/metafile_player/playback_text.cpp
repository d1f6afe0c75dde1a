#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/characters.h"
#include "modules/helpers/metafile_player/playback.h"

// Text.

namespace metafile_player {

using platform::Record;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kMaxCharacters = 65536;
// Samples of an em: below nothing is to be seen, above no letter is whole.
constexpr double kSmallestEm = 0.5;
constexpr double kLargestEm = 30000;
constexpr double kDefaultEm = 12;  // logical units, of a font that leaves its height open
// Of the em.
constexpr double kUnderlineBelow = 0.08;
constexpr double kStrikeOutAbove = 0.28;
constexpr double kRuleHeight = 0.06;

}  // namespace

bool Playback::PlayText(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrExtTextOutW:
      ReadText(record, true);
      return true;
    case platform::kEmrExtTextOutA:
      ReadText(record, false);
      return true;
    case platform::kEmrSmallTextOut:
      ReadSmallText(record);
      return true;
    default:
      return false;
  }
}

void Playback::ReadText(const Record& record, bool wide) {
  TextRun run;
  run.reference = {static_cast<double>(record.SignedLong(36)), static_cast<double>(record.SignedLong(40))};
  run.options = record.Long(52);
  run.box = {record.SignedLong(56), record.SignedLong(60), record.SignedLong(64), record.SignedLong(68)};
  const std::size_t textAt = record.Long(48);
  const std::size_t count = std::min<std::size_t>({record.Long(44), record.Room(textAt, wide ? 2 : 1), kMaxCharacters});
  for (std::size_t i = 0; i < count; ++i) {
    run.text.push_back(wide ? static_cast<char16_t>(record.Word(textAt + 2 * i))
                            : WesternCharacter(record.Byte(textAt + i)));
  }
  const std::size_t advancesAt = record.Long(72);
  const std::size_t step = (run.options & platform::kTextPairedAdvances) != 0 ? 8 : 4;
  if (advancesAt != 0 && record.Room(advancesAt, step) >= count) {
    for (std::size_t i = 0; i < count; ++i) run.advances.push_back(record.SignedLong(advancesAt + step * i));
  }
  DrawText(run);
}

void Playback::ReadSmallText(const Record& record) {
  TextRun run;
  run.reference = {static_cast<double>(record.SignedLong(8)), static_cast<double>(record.SignedLong(12))};
  run.options = record.Long(20);
  std::size_t textAt = 36;
  if ((run.options & platform::kTextNoRectangle) == 0) {
    run.box = {record.SignedLong(36), record.SignedLong(40), record.SignedLong(44), record.SignedLong(48)};
    textAt += 16;
  }
  const bool wide = (run.options & platform::kTextSmallCharacters) == 0;
  const std::size_t count = std::min<std::size_t>({record.Long(16), record.Room(textAt, wide ? 2 : 1), kMaxCharacters});
  for (std::size_t i = 0; i < count; ++i) {
    run.text.push_back(static_cast<char16_t>(wide ? record.Word(textAt + 2 * i) : record.Byte(textAt + i)));
  }
  DrawText(run);
}

void Playback::DrawText(const TextRun& run) {
  const bool hasBox = (run.options & platform::kTextNoRectangle) == 0;
  const Path box = PathOf(LogicalBox(run.box.left, run.box.top, static_cast<double>(run.box.right) - run.box.left,
                                     static_cast<double>(run.box.bottom) - run.box.top));
  if (hasBox && (run.options & platform::kTextOpaque) != 0) {
    canvas_.Fill(box, false, {dc_.bkColor, nullptr}, platform::kRop2CopyPen);
  }
  const Font& font = *dc_.font;
  FaceCache& faces = shared_.faces;
  cairo_font_face_t* face = run.text.empty() ? nullptr : faces.FaceOf(font);
  if (face == nullptr) return;
  const FaceMeasures& measures = faces.MeasuresOf(face);

  // Sizes in logical units.
  double em = font.height == 0 ? kDefaultEm : std::abs(static_cast<double>(font.height));
  if (font.height > 0 && measures.ascent + measures.descent > 0) em /= measures.ascent + measures.descent;
  double emWidth = em;
  if (font.width != 0 && measures.averageWidth > 0) {
    emWidth = std::abs(static_cast<double>(font.width)) / measures.averageWidth;
  }

  // Letters stand upright on the page whichever way its axes point; only a world transform turns them over.
  const platform::Transform page = dc_.mapping.Page(placement_.perMmX, placement_.perMmY);
  const double right = page.m11 < 0 ? -1 : 1;
  const double down = page.m22 < 0 ? -1 : 1;
  const double angle = font.escapement * kPi / 180;
  const double cosine = std::cos(angle), sine = std::sin(angle);
  const auto direction = [&](double x, double y) -> Spot {
    return {toSamples_.m11 * x + toSamples_.m21 * y, toSamples_.m12 * x + toSamples_.m22 * y};
  };
  // Samples to a logical unit along the line of text and across it.
  const Spot along = direction(right * cosine, -down * sine);
  const Spot across = direction(right * sine, down * cosine);

  struct Placed {
    GlyphOf glyph;
    double at;
  };
  std::vector<Placed> placed;
  double width = 0;
  for (std::size_t at = 0; at < run.text.size();) {
    const std::size_t first = at;
    char32_t character = 0;
    GlyphOf glyph;
    if ((run.options & platform::kTextGlyphNumbers) != 0) {
      glyph.face = face;
      glyph.index = run.text[at++];
      glyph.advance = run.advances.empty() ? faces.AdvanceOf(face, glyph.index) : 0;
    } else {
      character = NextCharacter(run.text, at);
      if (font.symbols && character < 0x100) character |= 0xF000;
      glyph = faces.Find(font, character);
    }
    const bool visible = character != ' ' && (character >= ' ' || character == 0);
    if (visible && glyph.face != nullptr) placed.push_back({glyph, width});
    if (run.advances.empty()) {
      width += glyph.advance * emWidth;
    } else {
      for (std::size_t i = first; i < at; ++i) width += run.advances[i];
    }
  }

  const bool goesOn = (dc_.textAlign & platform::kAlignUpdatePosition) != 0;
  const Spot reference = goesOn ? dc_.position : run.reference;
  double start = 0;
  if ((dc_.textAlign & platform::kAlignHorizontalMask) == platform::kAlignCenter) start = -width / 2;
  if ((dc_.textAlign & platform::kAlignHorizontalMask) == platform::kAlignRight) start = -width;
  double baseline = measures.ascent * em;
  if ((dc_.textAlign & platform::kAlignVerticalMask) == platform::kAlignBaseline) baseline = 0;
  if ((dc_.textAlign & platform::kAlignVerticalMask) == platform::kAlignBottom) baseline = -measures.descent * em;
  if (goesOn) {
    const double sign = start == 0 ? 1 : start == -width ? -1 : 0;
    dc_.position = {reference.x + sign * width * right * cosine, reference.y - sign * width * down * sine};
  }
  const Spot origin = ToSamples(reference);
  const auto spot = [&](double x, double y) -> Spot {
    return {origin.x + along.x * (start + x) + across.x * (baseline + y),
            origin.y + along.y * (start + x) + across.y * (baseline + y)};
  };
  const auto fillBox = [&](double top, double bottom, std::uint32_t color) {
    canvas_.Fill(PathOf({spot(0, top), spot(width, top), spot(0, bottom)}), false, {color, nullptr},
                 platform::kRop2CopyPen);
  };

  const bool clipped = hasBox && (run.options & platform::kTextClipped) != 0;
  const Clip before = dc_.clip;
  if (clipped) {
    auto term = std::make_shared<ClipTerm>();
    term->path = box;
    Combine(std::move(term), platform::kRegionAnd);
  }
  if (dc_.bkMode == platform::kOpaqueMode) fillBox(-measures.ascent * em, measures.descent * em, dc_.bkColor);

  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, along.x * emWidth, along.y * emWidth, across.x * em, across.y * em, 0, 0);
  // Each way by itself: the library loses memory over fonts that it can't scale.
  const double least = std::min(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
  const double most = std::max(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
  const double area = std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx);
  if (least >= kSmallestEm && most <= kLargestEm && area >= kSmallestEm * kSmallestEm) {
    std::vector<cairo_glyph_t> glyphs;
    for (std::size_t i = 0; i < placed.size();) {
      // As many as share a face.
      cairo_font_face_t* const current = placed[i].glyph.face;
      glyphs.clear();
      for (; i < placed.size() && placed[i].glyph.face == current; ++i) {
        const Spot at = spot(placed[i].at, 0);
        glyphs.push_back({placed[i].glyph.index, at.x, at.y});
      }
      canvas_.Glyphs(current, matrix, glyphs, dc_.textColor);
    }
  }
  if (font.underline) fillBox(em * kUnderlineBelow, em * (kUnderlineBelow + kRuleHeight), dc_.textColor);
  if (font.strikeOut) fillBox(-em * (kStrikeOutAbove + kRuleHeight), -em * kStrikeOutAbove, dc_.textColor);
  if (clipped) {
    dc_.clip = before;
    ClipChanged();
  }
}

}  // namespace metafile_player
