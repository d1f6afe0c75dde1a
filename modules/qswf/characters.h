#ifndef MODULES_QSWF_CHARACTERS_H_
#define MODULES_QSWF_CHARACTERS_H_

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "modules/qswf/bitmap.h"
#include "modules/qswf/edit_text.h"
#include "modules/qswf/shape.h"
#include "modules/qswf/tags.h"
#include "modules/qswf/video.h"

namespace qswf {

// One thing on the stage.
struct Placed {
  std::uint16_t character = 0;
  std::uint16_t ratio = 0;      // of films the frame
  std::uint16_t clipDepth = 0;  // up to there things are only seen within this one; 0: it is seen itself
  bool visible = true;
  Transform matrix;
  ColorTransform colors;
};

using DisplayList = std::map<std::uint16_t, Placed>;  // by depth

struct Font {
  std::vector<Shape> glyphs;
  double unitsPerEm = 1024;
  std::map<char16_t, std::size_t> indices;  // of glyphs, by character
  std::vector<std::int32_t> advances;       // as many as glyphs, or none
  double ascent = 0;                        // in units
  bool bold = false;
  bool italic = false;
  std::string name;
};

struct TextGlyph {
  std::uint16_t font = 0;
  std::uint32_t index = 0;
  Color color;
  double x = 0;  // twips
  double y = 0;
  double height = 0;
};

struct Text {
  Transform matrix;
  std::vector<TextGlyph> glyphs;
};

struct Bitmap {
  BitmapTag tag;
  std::shared_ptr<modules::Picture> decoded;
  bool tried = false;
};

using Character = std::variant<Shape, Font, Text, EditText, Bitmap, DisplayList, std::shared_ptr<Video>>;

// What the tags of a movie define, by number.
class Characters {
 public:
  // Of a frame of a film, before all other tags: to show one of them may take those behind it.
  void AddVideoFrame(const Tag& tag);
  // True if the tag defines something.
  bool Define(const Tag& tag);
  const Character* Find(std::uint16_t number) const;
  // Decodes at the first call. Null: no bitmap, or not readable.
  const modules::Picture* FindBitmap(std::uint16_t number);
  std::vector<std::uint16_t> Bitmaps() const;  // in order of definition

 private:
  static constexpr std::uint64_t kMaxBitmapPixels = std::uint64_t{1} << 27;  // of all together

  std::map<std::uint16_t, Character> known_;
  VideoBudget videoBudget_;
  std::vector<std::uint16_t> bitmapOrder_;
  std::map<std::uint16_t, std::vector<std::span<const std::uint8_t>>> videoFrames_;  // by film
  std::span<const std::uint8_t> jpegTables_;
  std::uint64_t pixels_ = 0;
};

// Changes a display list as the tag says. True if it was such a tag.
bool Place(const Tag& tag, DisplayList& list);

}  // namespace qswf

#endif  // MODULES_QSWF_CHARACTERS_H_
