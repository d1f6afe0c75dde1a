#ifndef MODULES_HELPERS_DXF_READER_POLYLINE_H_
#define MODULES_HELPERS_DXF_READER_POLYLINE_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "modules/helpers/dxf_reader/drawing.h"
#include "modules/helpers/dxf_reader/groups.h"

namespace dxf {

// Lines with bulges and widths, or a net of lines, as one entity holds them or as vertices behind it bring them.
class Polyline {
 public:
  Polyline() = default;
  explicit Polyline(const Groups& head);

  void AddVertex(Place place, double bulge, const Groups& groups);
  // A vertex that is a face of a net; what is none is passed over.
  void AddFace(const Groups& groups);
  bool InSpace() const { return (flags_ & (kSpatial | kMesh | kFaces)) != 0; }

  // What it draws; each has the rest of its record from `item`.
  std::vector<Item> Items(const Item& item) const;

 private:
  enum Flag { kClosed = 1, kSplineFit = 4, kSpatial = 8, kMesh = 16, kMeshClosed = 32, kFaces = 64 };

  struct Vertex {
    Place place;
    double bulge = 0;
    double startWidth = 0;
    double endWidth = 0;
  };

  std::vector<Line> MeshLines() const;
  std::vector<Line> FaceLines() const;
  // From vertex `index` to the next.
  Line Piece(std::size_t index) const;
  Line Whole() const;
  bool Closed() const { return (flags_ & kClosed) != 0; }

  static constexpr std::size_t kMaxVertices = std::size_t{1} << 18;

  int flags_ = 0;
  std::size_t rows_ = 0;
  std::size_t columns_ = 0;
  double startWidth_ = 0;
  double endWidth_ = 0;
  std::vector<std::pair<double, double>> widths_;  // of vertices that stand in the entity itself
  std::vector<Vertex> vertices_;
  std::vector<std::vector<int>> faces_;  // numbers of vertices from 1; edges that begin with one below 0 aren't seen
};

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_POLYLINE_H_
