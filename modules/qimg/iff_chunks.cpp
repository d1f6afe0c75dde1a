#include <algorithm>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"
#include "modules/qimg/iff.h"

namespace qimg {
namespace {

constexpr std::uint32_t Name(const char (&text)[5]) {
  std::uint32_t name = 0;
  for (int i = 0; i < 4; ++i) name = name << 8 | static_cast<std::uint8_t>(text[i]);
  return name;
}

constexpr std::uint32_t kMaxForms = 4;  // within each other
constexpr std::uint32_t kHalfBriteMode = 0x80;
constexpr std::uint32_t kHoldAndModifyMode = 0x800;

struct Chunk {
  std::uint32_t name;
  std::span<const std::uint8_t> data;
};

// False at the end. A chunk that is longer than what is left is what is left.
bool NextChunk(modules::ByteReader& in, Chunk& chunk) {
  if (in.Left() < 8) return false;
  chunk.name = in.BigLong();
  const std::size_t length = in.BigLong();
  chunk.data = in.Take(length);
  if (length % 2 != 0 && !in.AtEnd()) in.Skip(1);
  return true;
}

void ReadHeader(std::span<const std::uint8_t> data, IffPicture& picture) {
  constexpr std::uint32_t kMaskPlane = 1;
  constexpr std::uint32_t kTransparentColour = 2;
  constexpr std::uint8_t kFullColours = 0x80;
  modules::ByteReader in(data);
  picture.width = in.BigWord();
  picture.height = in.BigWord();
  in.Skip(4);
  picture.planes = in.Byte();
  const std::uint32_t masking = in.Byte();
  const std::uint32_t compression = in.Byte();
  picture.shortColours = (in.Byte() & kFullColours) == 0;
  const std::uint32_t transparent = in.BigWord();
  const std::uint32_t aspectX = in.Byte();
  const std::uint32_t aspectY = in.Byte();
  if (in.Failed()) picture.verdict = {glib::IERR, "The picture's header is cut off"};
  if (compression > 1) picture.verdict = {glib::NSUP, "The picture's compression is unusual"};
  picture.packed = compression == 1;
  picture.masked = masking == kMaskPlane && !picture.chunky;
  if (masking == kTransparentColour) picture.transparent = static_cast<std::int32_t>(transparent);
  if (aspectX != 0 && aspectY != 0) picture.dpiY = modules::CheckedDpi(72.0 * aspectX / aspectY);
}

// Tells the colour modes apart; pictures without a mode are known by the number of their colours.
void SetMode(bool hasMode, std::uint32_t mode, IffPicture& picture) {
  const std::size_t colours = picture.colours.size() / 3;
  if (picture.chunky) {
    if (picture.planes == 0 || picture.planes > 8) picture.verdict = {glib::NSUP, "The number of bits is unusual"};
    return;
  }
  if (picture.planes <= 8 && picture.planes >= 5) {
    const bool byMode = (mode & kHoldAndModifyMode) != 0;
    picture.holdAndModify = hasMode ? byMode : picture.planes == 6 && colours == 16;
  }
  if (picture.planes == 6 && !picture.holdAndModify) {
    picture.halfBrite = hasMode ? (mode & kHalfBriteMode) != 0 : colours == 32;
  }
  const bool usual = (picture.planes >= 1 && picture.planes <= 8) || picture.planes == 24 || picture.planes == 32;
  if (!usual) picture.verdict = {glib::NSUP, "The number of colour planes is unusual"};
}

bool FourBitsEach(std::span<const std::uint8_t> colours) {
  return std::all_of(colours.begin(), colours.end(), [](std::uint8_t value) { return (value & 15U) == 0; });
}

void ReadPicture(std::span<const std::uint8_t> form, bool chunky, std::vector<IffPicture>& pictures) {
  IffPicture picture;
  picture.chunky = chunky;
  bool hasHeader = false;
  bool hasBody = false;
  bool hasMode = false;
  std::uint32_t mode = 0;
  modules::ByteReader in(form);
  for (Chunk chunk{}; !hasBody && NextChunk(in, chunk);) {
    modules::ByteReader data(chunk.data);
    switch (chunk.name) {
      case Name("BMHD"):
        ReadHeader(chunk.data, picture);
        hasHeader = true;
        break;
      case Name("CMAP"):
        picture.colours = chunk.data;
        break;
      case Name("CAMG"):
        mode = data.BigLong();
        hasMode = true;
        break;
      case Name("DPI "):
        picture.dpiX = modules::CheckedDpi(data.BigWord());
        picture.dpiY = modules::CheckedDpi(data.BigWord());
        break;
      case Name("BODY"):
        picture.body = chunk.data;
        hasBody = true;
        break;
      default:
        break;
    }
  }
  if (!hasHeader || !hasBody) return;
  if (picture.verdict.result == glib::RCOK) SetMode(hasMode, mode, picture);
  if (!modules::SizeAllowed(picture.width, picture.height)) {
    picture.verdict = {glib::NSUP, "The picture has no pixels or too many"};
  }
  picture.shortColours = picture.shortColours && FourBitsEach(picture.colours);
  pictures.push_back(picture);
}

void Walk(std::span<const std::uint8_t> data, std::uint32_t depth, std::vector<IffPicture>& pictures) {
  modules::ByteReader in(data);
  for (Chunk chunk{}; pictures.size() < modules::kMaxPages && NextChunk(in, chunk);) {
    const bool form = chunk.name == Name("FORM");
    if (!form && chunk.name != Name("CAT ") && chunk.name != Name("LIST")) continue;
    if (chunk.data.size() < 4) continue;
    const std::uint32_t kind = modules::ByteReader(chunk.data).BigLong();
    const auto inner = chunk.data.subspan(4);
    if (form && (kind == Name("ILBM") || kind == Name("PBM "))) {
      ReadPicture(inner, kind == Name("PBM "), pictures);
    } else if (depth + 1 < kMaxForms) {
      Walk(inner, depth + 1, pictures);
    }
  }
}

}  // namespace

std::vector<IffPicture> FindIffPictures(std::span<const std::uint8_t> file) {
  std::vector<IffPicture> pictures;
  Walk(file, 0, pictures);
  return pictures;
}

}  // namespace qimg
