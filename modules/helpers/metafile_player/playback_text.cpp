#include <algorithm>
#include <array>
#include <cmath>

#include "modules/common/code_page.h"
#include "modules/helpers/metafile_player/characters.h"
#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Text.

namespace metafile_player {

using platform::Record;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kMaxCharacters = 65536;
constexpr std::size_t kGlyphsAtOnce = 64;
// Samples of an em: below nothing is to be seen, above no letter is whole.
constexpr double kSmallestEm = 0.5;
constexpr double kLargestEm = 30000;
constexpr double kDefaultEm = 12;  // logical units, of a font that leaves its height open
// Of the em.
constexpr double kUnderlineBelow = 0.08;
constexpr double kStrikeOutAbove = 0.28;
constexpr double kRuleHeight = 0.06;

constexpr std::uint8_t kSymbolCharset = 2;
constexpr char32_t kPrivateArea = 0xF000;  // where symbol fonts have their characters

constexpr std::size_t kTextAt = 36;   // in EXTTEXTOUT
constexpr std::size_t kTextsAt = 40;  // in POLYTEXTOUT
constexpr std::size_t kTextBytes = 40;

}  // namespace

// How a line of text lies on the picture. Lengths are logical units.
struct Playback::TextFrame {
  double em, emWidth;
  double ascent, descent;
  // One step along the line, and one across it, down: in logical units and in samples.
  Spot step;
  Spot along, across;
};

struct Playback::PlacedGlyph {
  GlyphOf glyph;
  double along;  // from the start of the line
  double above;
};

bool Playback::PlayText(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrExtTextOutW:
    case platform::kEmrExtTextOutA:
      ReadText(record, kTextAt, record.Type() == platform::kEmrExtTextOutW);
      return true;
    case platform::kEmrPolyTextOutW:
    case platform::kEmrPolyTextOutA: {
      const std::size_t texts = std::min<std::size_t>(record.Long(36), record.Room(kTextsAt, kTextBytes));
      for (std::size_t i = 0; i < texts && !canvas_.Exhausted(); ++i) {
        ReadText(record, kTextsAt + kTextBytes * i, record.Type() == platform::kEmrPolyTextOutW);
      }
      return true;
    }
    case platform::kEmrSmallTextOut:
      ReadSmallText(record);
      return true;
    default:
      return false;
  }
}

void Playback::ReadText(const Record& record, std::size_t at, bool wide) {
  TextRun run;
  run.reference = SpotAt(record, at);
  run.options = record.Long(at + 16);
  run.box = {record.SignedLong(at + 20), record.SignedLong(at + 24), record.SignedLong(at + 28),
             record.SignedLong(at + 32)};
  const std::size_t textAt = record.Long(at + 12);
  const std::size_t count =
      std::min<std::size_t>({record.Long(at + 8), record.Room(textAt, wide ? 2 : 1), kMaxCharacters});
  const std::size_t advancesAt = record.Long(at + 36);
  const bool paired = (run.options & platform::kTextPairedAdvances) != 0;
  const std::size_t step = paired ? 8 : 4;
  if (advancesAt != 0 && record.Room(advancesAt, step) >= count) {
    for (std::size_t i = 0; i < count; ++i) {
      run.advances.push_back(record.SignedLong(advancesAt + step * i));
      if (paired) run.rises.push_back(record.SignedLong(advancesAt + step * i + 4));
    }
  }
  if (wide) {
    for (std::size_t i = 0; i < count; ++i) run.text.push_back(static_cast<char16_t>(record.Word(textAt + 2 * i)));
  } else {
    run.text = modules::DecodeText(record.Part(textAt, count), dc_.font->charset, &run.advances);
    run.rises.resize(run.rises.empty() ? 0 : run.text.size());
  }
  DrawText(run);
}

void Playback::ReadSmallText(const Record& record) {
  TextRun run;
  run.reference = SpotAt(record, 8);
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

Playback::TextFrame Playback::FrameOf(cairo_font_face_t* face) {
  const Font& font = *dc_.font;
  const FaceMeasures& measures = shared_.faces.MeasuresOf(face);
  TextFrame frame;
  frame.em = font.height == 0 ? kDefaultEm : std::abs(static_cast<double>(font.height));
  if (font.height > 0 && measures.ascent + measures.descent > 0) frame.em /= measures.ascent + measures.descent;
  frame.emWidth = frame.em;
  if (font.width != 0 && measures.averageWidth > 0) {
    frame.emWidth = std::abs(static_cast<double>(font.width)) / measures.averageWidth;
  }
  frame.ascent = measures.ascent * frame.em;
  frame.descent = measures.descent * frame.em;

  // Letters stand upright on the page whichever way its axes point; only a world transform turns them over.
  const platform::Transform page = dc_.mapping.Page(placement_.perMmX, placement_.perMmY);
  const double right = page.m11 < 0 ? -1 : 1;
  const double down = page.m22 < 0 ? -1 : 1;
  const double angle = font.escapement * kPi / 180;
  const auto direction = [&](double x, double y) -> Spot {
    return {toSamples_.m11 * x + toSamples_.m21 * y, toSamples_.m12 * x + toSamples_.m22 * y};
  };
  frame.step = {right * std::cos(angle), -down * std::sin(angle)};
  frame.along = direction(frame.step.x, frame.step.y);
  frame.across = direction(right * std::sin(angle), down * std::cos(angle));
  return frame;
}

// Gives the width of the whole line.
double Playback::PlaceGlyphs(const TextRun& run, cairo_font_face_t* face, const TextFrame& frame,
                             std::vector<PlacedGlyph>& placed) {
  const Font& font = *dc_.font;
  double width = 0;
  double above = 0;
  for (std::size_t at = 0; at < run.text.size();) {
    const std::size_t first = at;
    char32_t character = 0;
    GlyphOf glyph;
    if ((run.options & platform::kTextGlyphNumbers) != 0) {
      glyph.face = face;
      glyph.index = run.text[at++];
      glyph.advance = run.advances.empty() ? shared_.faces.AdvanceOf(face, glyph.index) : 0;
    } else {
      character = NextCharacter(run.text, at);
      if (font.charset == kSymbolCharset && character < 0x100) character |= kPrivateArea;
      glyph = shared_.faces.Find(font, character);
    }
    const bool visible = character != ' ' && (character >= ' ' || character == 0);
    if (visible && glyph.face != nullptr) placed.push_back({glyph, width, above});
    if (run.advances.empty()) {
      width += glyph.advance * frame.emWidth;
      if (character == ' ' && dc_.breakCount > 0) width += static_cast<double>(dc_.breakExtra) / dc_.breakCount;
    } else {
      for (std::size_t i = first; i < at; ++i) width += run.advances[i];
    }
    for (std::size_t i = first; i < at && i < run.rises.size(); ++i) above += run.rises[i];
  }
  return width;
}

void Playback::DrawText(const TextRun& run) {
  const bool hasBox = (run.options & platform::kTextNoRectangle) == 0;
  const Area box{static_cast<double>(run.box.left), static_cast<double>(run.box.top),
                 static_cast<double>(run.box.right), static_cast<double>(run.box.bottom)};
  const auto fill = [&](const Path& path, std::uint32_t color) {
    // Within a path's brackets text is what it would paint.
    if (pathOpen_) return Draw(path, true, false);
    canvas_.Fill(path, false, {color, nullptr}, platform::kRop2CopyPen);
  };
  if (hasBox && (run.options & platform::kTextOpaque) != 0) {
    fill(PathOf(LogicalBox(box.left, box.top, box.right - box.left, box.bottom - box.top)), dc_.bkColor);
  }
  const Font& font = *dc_.font;
  cairo_font_face_t* face = run.text.empty() ? nullptr : shared_.faces.FaceOf(font);
  if (face == nullptr) return;
  const TextFrame frame = FrameOf(face);
  std::vector<PlacedGlyph> placed;
  const double width = PlaceGlyphs(run, face, frame, placed);

  const bool goesOn = (dc_.textAlign & platform::kAlignUpdatePosition) != 0;
  const Spot reference = goesOn ? dc_.position : run.reference;
  double start = 0;
  if ((dc_.textAlign & platform::kAlignHorizontalMask) == platform::kAlignCenter) start = -width / 2;
  if ((dc_.textAlign & platform::kAlignHorizontalMask) == platform::kAlignRight) start = -width;
  double baseline = frame.ascent;
  if ((dc_.textAlign & platform::kAlignVerticalMask) == platform::kAlignBaseline) baseline = 0;
  if ((dc_.textAlign & platform::kAlignVerticalMask) == platform::kAlignBottom) baseline = -frame.descent;
  if (goesOn) {
    const double sign = start == 0 ? 1 : start == -width ? -1 : 0;
    dc_.position = {reference.x + sign * width * frame.step.x, reference.y + sign * width * frame.step.y};
  }
  const Spot origin = ToSamples(reference);
  const auto spot = [&](double x, double y) -> Spot {
    return {origin.x + frame.along.x * (start + x) + frame.across.x * (baseline + y),
            origin.y + frame.along.y * (start + x) + frame.across.y * (baseline + y)};
  };
  const auto fillLine = [&](double top, double bottom, std::uint32_t color) {
    fill(PathOf({spot(0, top), spot(width, top), spot(0, bottom)}), color);
  };

  // Letters may lean out of their cells, but hardly by more than an em.
  const Path cells = PathOf({spot(0, -frame.ascent), spot(width, -frame.ascent), spot(0, frame.descent)});
  Area around = cells.Extent();
  const double margin = std::max(frame.em, frame.emWidth) *
                        (std::hypot(frame.along.x, frame.along.y) + std::hypot(frame.across.x, frame.across.y));
  around = {around.left - margin, around.top - margin, around.right + margin, around.bottom + margin};
  if (!pathOpen_ && run.rises.empty() && !canvas_.Reaches(around)) return;

  const bool clipped = hasBox && (run.options & platform::kTextClipped) != 0;
  const Region before = dc_.clip;
  if (clipped) Combine(RegionOfBoxes(std::array{box}, toSamples_), platform::kRegionAnd);
  if (dc_.bkMode == platform::kOpaqueMode) fillLine(-frame.ascent, frame.descent, dc_.bkColor);

  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, frame.along.x * frame.emWidth, frame.along.y * frame.emWidth, frame.across.x * frame.em,
                    frame.across.y * frame.em, 0, 0);
  // Each way by itself: the library loses memory over fonts that it can't scale.
  const double least = std::min(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
  const double most = std::max(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
  const double area = std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx);
  if (least >= kSmallestEm && most <= kLargestEm && area >= kSmallestEm * kSmallestEm) {
    std::vector<cairo_glyph_t> glyphs;
    for (std::size_t i = 0; i < placed.size() && !canvas_.Exhausted();) {
      // As many as share a face.
      cairo_font_face_t* const current = placed[i].glyph.face;
      glyphs.clear();
      for (; i < placed.size() && placed[i].glyph.face == current && glyphs.size() < kGlyphsAtOnce; ++i) {
        const Spot at = spot(placed[i].along, -placed[i].above);
        glyphs.push_back({placed[i].glyph.index, at.x, at.y});
      }
      if (pathOpen_) {
        Draw(canvas_.Outlines(current, matrix, glyphs), true, false);
      } else {
        canvas_.Glyphs(current, matrix, glyphs, dc_.textColor);
      }
    }
  }
  if (font.underline) fillLine(frame.em * kUnderlineBelow, frame.em * (kUnderlineBelow + kRuleHeight), dc_.textColor);
  if (font.strikeOut) fillLine(-frame.em * (kStrikeOutAbove + kRuleHeight), -frame.em * kStrikeOutAbove, dc_.textColor);
  if (clipped) {
    dc_.clip = before;
    ClipChanged();
  }
}

}  // namespace metafile_player
