#ifndef MODULES_HELPERS_METAFILE_PLAYER_BITMAP_H_
#define MODULES_HELPERS_METAFILE_PLAYER_BITMAP_H_

#include <cstdint>
#include <map>
#include <memory>
#include <span>

#include "modules/helpers/metafile_player/canvas.h"

namespace metafile_player {

// A decoded bitmap of a record, as a surface of the drawing library.
struct Bitmap {
  Surface surface;
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool bottomUp = true;  // as it stood in the file
};

enum class AlphaOf {
  kNothing,     // the fourth byte means nothing: opaque
  kMultiplied,  // as blending wants it
};

// Null for what can't be decoded. `header` has masks and palette with it.
std::shared_ptr<const Bitmap> DecodeBitmap(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                           AlphaOf alpha);

// Keeps what it decoded: each tile of a picture plays the records again.
class BitmapCache {
 public:
  std::shared_ptr<const Bitmap> Get(std::span<const std::uint8_t> header, std::span<const std::uint8_t> rows,
                                    AlphaOf alpha);

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
