#ifndef MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_
#define MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "modules/helpers/metafile_player/path.h"

namespace metafile_player {

// Whole samples, as the library's sets of boxes. Never null, but for what no memory was left for.
using Region = std::shared_ptr<const cairo_region_t>;

Region RegionOf(std::span<const Area> boxes);  // all of them together
Region Moved(const Region& region, double dx, double dy);
// What of a region lies nearer to its edge than so many samples.
Region RimOf(const Region& region, std::int32_t width, std::int32_t height);
Path PathOf(const Region& region);

// An area to draw in or to leave out: boxes, or any figures.
struct ClipTerm {
  explicit ClipTerm(Region boxes) : region(std::move(boxes)), path(PathOf(region)) {}
  ClipTerm(Path figures, bool wind) : path(std::move(figures)), winding(wind) {}

  Region region;  // null: what the path says
  Path path;
  bool winding = false;
};

// What may be drawn on: everything inside of all terms. None: everything.
class Clip {
 public:
  // `mode` is one of platform::RegionMode; others do nothing. `width` x `height` samples of the tile are looked at
  // where figures that aren't boxes join. Gives the samples that it went through.
  std::uint64_t Combine(ClipTerm term, std::uint32_t mode, std::int32_t width, std::int32_t height);
  void Intersect(const Clip& other);
  void Move(double dx, double dy);
  void Clear() { terms_.clear(); }

  const std::vector<std::shared_ptr<const ClipTerm>>& Terms() const { return terms_; }

 private:
  void Intersect(std::shared_ptr<const ClipTerm> term);

  std::vector<std::shared_ptr<const ClipTerm>> terms_;
};

// The figures of all terms, added to the library's clip.
void ApplyTerms(cairo_t* cairo, const Clip& clip);

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_
