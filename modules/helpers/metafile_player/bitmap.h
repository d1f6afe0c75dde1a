#ifndef MODULES_HELPERS_METAFILE_PLAYER_BITMAP_H_
#define MODULES_HELPERS_METAFILE_PLAYER_BITMAP_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "modules/helpers/metafile_player/canvas.h"

namespace metafile_player {

// A decoded bitmap of a record, as a surface of the drawing library.
struct Bitmap {
  Surface surface;
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool bottomUp = true;    // as it stood in the file
  bool twoColors = false;  // one bit, 0 black and 1 white

  std::uint64_t PixelCount() const { return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height); }
};

enum class AlphaOf {
  kNothing,     // the fourth byte means nothing: opaque
  kMultiplied,  // as blending wants it
};

// Null for what can't be decoded. `header` has masks and palette with it.
std::shared_ptr<const Bitmap> DecodeBitmap(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                           AlphaOf alpha);

// A copy in which dark pixels take one colour and bright ones the other.
Surface TwoColored(cairo_surface_t* from, std::uint32_t dark, std::uint32_t bright);

// Keeps what it decoded: each tile of a picture plays the records again.
class BitmapCache {
 public:
  using HeaderOf = std::function<std::vector<std::uint8_t>()>;

  // What was decoded from these bytes before, or else what `headerOf` makes of the header with the rows.
  std::shared_ptr<const Bitmap> Get(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                    AlphaOf alpha, const HeaderOf& headerOf);

 private:
  struct Key {
    const std::uint8_t* header;
    const std::uint8_t* rows;
    AlphaOf alpha;
    auto operator<=>(const Key&) const = default;
  };
  std::map<Key, std::shared_ptr<const Bitmap>> kept_;
  std::size_t keptPixels_ = 0;
};

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_BITMAP_H_
