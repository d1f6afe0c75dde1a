#include "modules/qswf/characters.h"

#include <algorithm>

namespace qswf {
namespace {

constexpr std::size_t kMaxTextGlyphs = 65536;

std::span<const std::uint8_t> From(std::span<const std::uint8_t> data, std::size_t offset) {
  return data.subspan(std::min(offset, data.size()));
}

Shape ReadShapeTag(BitReader& in, std::uint32_t code) {
  ReadRect(in);
  if (code == kDefineShape) return ReadShape(in, ShapeKind::kFirst);
  if (code == kDefineShape2) return ReadShape(in, ShapeKind::kSecond);
  if (code == kDefineShape3) return ReadShape(in, ShapeKind::kThird);
  ReadRect(in);
  in.Byte();
  return ReadShape(in, ShapeKind::kFourth);
}

Shape ReadMorphTag(BitReader& in, bool second) {
  for (int i = 0; i < (second ? 4 : 2); ++i) ReadRect(in);
  if (second) in.Byte();
  in.Long();
  return ReadMorphStart(in, second);
}

// A table of offsets, from its own start, and the glyphs.
void ReadGlyphs(std::span<const std::uint8_t> table, std::size_t count, bool wide, Font& font) {
  modules::ByteReader in(table);
  for (std::size_t i = 0; i < count && !in.Failed(); ++i) {
    const std::size_t offset = wide ? in.Long() : in.Word();
    BitReader glyph(From(table, offset));
    font.glyphs.push_back(ReadGlyph(glyph));
  }
}

Font ReadFont1(std::span<const std::uint8_t> data) {
  Font font;
  modules::ByteReader in(data);
  const std::size_t first = in.Word();
  ReadGlyphs(data, first / 2, false, font);
  return font;
}

Font ReadFont2(std::span<const std::uint8_t> data, bool third) {
  enum Flag : std::uint32_t { kBold = 0x01, kItalic = 0x02, kWideCodes = 0x04, kWideOffsets = 0x08, kHasLayout = 0x80 };
  Font font;
  if (third) font.unitsPerEm = 20480;
  modules::ByteReader in(data);
  const std::uint32_t flags = in.Byte();
  in.Skip(1);
  const auto name = in.Take(in.Byte());
  font.name.assign(name.begin(), std::find(name.begin(), name.end(), std::uint8_t{0}));
  font.bold = (flags & kBold) != 0;
  font.italic = (flags & kItalic) != 0;
  const std::size_t count = in.Word();
  const auto table = From(data, in.Position());
  const bool wide = (flags & kWideOffsets) != 0;
  ReadGlyphs(table, count, wide, font);
  // Behind the offsets of the glyphs that of what characters they are.
  modules::ByteReader offsets(table);
  offsets.Skip(count * (wide ? 4 : 2));
  modules::ByteReader behind(From(table, wide ? offsets.Long() : offsets.Word()));
  if (offsets.Failed() || font.glyphs.size() != count) return font;
  const bool wideCodes = third || (flags & kWideCodes) != 0;
  for (std::size_t i = 0; i < count && !behind.AtEnd(); ++i) {
    font.indices.emplace(static_cast<char16_t>(wideCodes ? behind.Word() : behind.Byte()), i);
  }
  if ((flags & kHasLayout) == 0) return font;
  font.ascent = behind.Word();
  behind.Skip(4);
  for (std::size_t i = 0; i < count; ++i) font.advances.push_back(behind.SignedWord());
  if (behind.Failed()) font.advances.clear();
  return font;
}

Text ReadText(BitReader& in, bool withAlpha) {
  Text text;
  ReadRect(in);
  text.matrix = ReadMatrix(in);
  const std::uint32_t glyphBits = in.Byte();
  const std::uint32_t advanceBits = in.Byte();
  if (glyphBits > 32 || advanceBits > 32) return text;
  TextGlyph now;
  while (!in.Failed()) {
    const std::uint32_t flags = in.Byte();
    if (flags == 0) break;
    if ((flags & 8U) != 0) now.font = in.Word();
    if ((flags & 4U) != 0) now.color = ReadColor(in, withAlpha);
    if ((flags & 1U) != 0) now.x = static_cast<std::int16_t>(in.Word());
    if ((flags & 2U) != 0) now.y = static_cast<std::int16_t>(in.Word());
    if ((flags & 8U) != 0) now.height = in.Word();
    for (std::uint32_t left = in.Byte(); left != 0 && !in.Failed(); --left) {
      now.index = in.Bits(glyphBits);
      const std::int32_t advance = in.Signed(advanceBits);
      if (text.glyphs.size() < kMaxTextGlyphs) text.glyphs.push_back(now);
      now.x += advance;
    }
  }
  return text;
}

// What a button shows while nobody touches it.
DisplayList ReadButton(BitReader& in, bool second) {
  constexpr std::uint32_t kShownUp = 1;
  constexpr std::uint32_t kHasBlend = 0x20;
  constexpr std::uint32_t kHasFilters = 0x10;
  DisplayList list;
  if (second) in.Aligned().Skip(3);
  while (!in.Failed()) {
    const std::uint32_t flags = in.Byte();
    if (flags == 0) break;
    Placed placed;
    placed.character = in.Word();
    const std::uint16_t depth = in.Word();
    placed.matrix = ReadMatrix(in);
    if (second) placed.colors = ReadColorTransform(in, true);
    if ((flags & kShownUp) != 0 && !in.Failed()) list[depth] = placed;
    if ((flags & kHasFilters) != 0) break;
    if ((flags & kHasBlend) != 0) in.Byte();
  }
  return list;
}

// The first frame of a movie within the movie.
DisplayList ReadSprite(std::span<const std::uint8_t> data) {
  DisplayList list;
  TagReader tags(From(data, 2));
  Tag tag;
  while (tags.Next(tag) && tag.code != kShowFrame) Place(tag, list);
  return list;
}

void SkipText(modules::ByteReader& in) {
  while (!in.AtEnd() && in.Byte() != 0) {
  }
}

void PlaceNew(std::span<const std::uint8_t> data, bool third, DisplayList& list) {
  BitReader in(data);
  const std::uint32_t flags = in.Byte();
  const std::uint32_t more = third ? in.Byte() : 0;
  const std::uint16_t depth = in.Word();
  const bool move = (flags & 1U) != 0;
  const bool hasCharacter = (flags & 2U) != 0;
  if ((more & 8U) != 0 || ((more & 0x10U) != 0 && hasCharacter)) SkipText(in.Aligned());
  Placed placed;
  const auto before = list.find(depth);
  if (move && before != list.end()) placed = before->second;
  if (hasCharacter) placed.character = in.Word();
  if ((flags & 4U) != 0) placed.matrix = ReadMatrix(in);
  if ((flags & 8U) != 0) placed.colors = ReadColorTransform(in, true);
  if ((flags & 16U) != 0) placed.ratio = in.Word();
  if ((flags & 32U) != 0) SkipText(in.Aligned());
  if ((flags & 64U) != 0) placed.clipDepth = in.Word();
  const bool hasFilters = (more & 1U) != 0;
  if (!hasFilters) {
    if ((more & 2U) != 0) in.Byte();
    if ((more & 4U) != 0) in.Byte();
    if ((more & 0x20U) != 0) placed.visible = in.Byte() != 0;
  }
  if (hasCharacter || before != list.end()) list[depth] = placed;
}

}  // namespace

bool Place(const Tag& tag, DisplayList& list) {
  BitReader in(tag.data);
  switch (tag.code) {
    case kPlaceObject: {
      Placed placed;
      placed.character = in.Word();
      const std::uint16_t depth = in.Word();
      placed.matrix = ReadMatrix(in);
      if (!in.Aligned().AtEnd()) placed.colors = ReadColorTransform(in, false);
      list[depth] = placed;
      return true;
    }
    case kPlaceObject2:
    case kPlaceObject3:
      PlaceNew(tag.data, tag.code == kPlaceObject3, list);
      return true;
    case kRemoveObject:
      in.Word();
      list.erase(in.Word());
      return true;
    case kRemoveObject2:
      list.erase(in.Word());
      return true;
    default:
      return false;
  }
}

void Characters::AddVideoFrame(const Tag& tag) {
  modules::ByteReader in(tag.data);
  const std::uint16_t film = in.Word();
  videoFrames_[film].push_back(in.Take(in.Left()));
}

bool Characters::Define(const Tag& tag) {
  if (tag.code == kJpegTables) {
    jpegTables_ = tag.data;
    return true;
  }
  BitReader in(tag.data);
  const std::uint16_t number = in.Word();
  const auto body = From(tag.data, 2);
  switch (tag.code) {
    case kDefineShape:
    case kDefineShape2:
    case kDefineShape3:
    case kDefineShape4:
      known_[number] = ReadShapeTag(in, tag.code);
      return true;
    case kDefineMorphShape:
    case kDefineMorphShape2:
      known_[number] = ReadMorphTag(in, tag.code == kDefineMorphShape2);
      return true;
    case kDefineFont:
      known_[number] = ReadFont1(body);
      return true;
    case kDefineFont2:
    case kDefineFont3:
      known_[number] = ReadFont2(body, tag.code == kDefineFont3);
      return true;
    case kDefineText:
    case kDefineText2:
      known_[number] = ReadText(in, tag.code == kDefineText2);
      return true;
    case kDefineEditText:
      known_[number] = ReadEditText(in);
      return true;
    case kDefineButton:
    case kDefineButton2:
      known_[number] = ReadButton(in, tag.code == kDefineButton2);
      return true;
    case kDefineSprite:
      known_[number] = ReadSprite(body);
      return true;
    case kDefineVideo: {
      auto video = std::make_shared<Video>(body, videoBudget_);
      for (const auto& frame : videoFrames_[number]) video->AddFrame(frame);
      known_[number] = std::move(video);
      return true;
    }
    default:
      break;
  }
  if (!IsBitmapTag(tag.code)) return false;
  if (known_.insert_or_assign(number, Bitmap{{tag.code, body}, nullptr, false}).second) {
    bitmapOrder_.push_back(number);
  }
  return true;
}

const Character* Characters::Find(std::uint16_t number) const {
  const auto found = known_.find(number);
  return found == known_.end() ? nullptr : &found->second;
}

const modules::Picture* Characters::FindBitmap(std::uint16_t number) {
  const auto found = known_.find(number);
  if (found == known_.end()) return nullptr;
  auto* bitmap = std::get_if<Bitmap>(&found->second);
  if (bitmap == nullptr) return nullptr;
  if (!bitmap->tried && pixels_ < kMaxBitmapPixels) {
    bitmap->tried = true;
    bitmap->decoded = DecodeBitmap(bitmap->tag, jpegTables_);
    if (bitmap->decoded != nullptr) pixels_ += std::uint64_t{bitmap->decoded->width} * bitmap->decoded->height;
  }
  return bitmap->decoded.get();
}

std::vector<std::uint16_t> Characters::Bitmaps() const { return bitmapOrder_; }

}  // namespace qswf
