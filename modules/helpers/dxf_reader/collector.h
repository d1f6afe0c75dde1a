#ifndef MODULES_HELPERS_DXF_READER_COLLECTOR_H_
#define MODULES_HELPERS_DXF_READER_COLLECTOR_H_

#include <dl_creationadapter.h>

#include <cstdint>
#include <optional>

#include "modules/helpers/dxf_reader/curves.h"
#include "modules/helpers/dxf_reader/drawing.h"
#include "modules/helpers/dxf_reader/groups.h"
#include "modules/helpers/dxf_reader/polyline.h"

namespace dxf {

// Takes what the library finds in a file. Some entities come in pieces; one is whole when the next begins.
class Collector : public DL_CreationAdapter {
 public:
  explicit Collector(Drawing& drawing) : drawing_(drawing) {}

  // Each group of the file, after the library has taken it.
  void TakeGroup(int code, const std::string& value) {
    // The library passes over the vertices that say which others are the corners of a face.
    if (code == 0 && polyline_) polyline_->AddFace(groups_.Now());
    groups_.Take(code, value);
  }
  // After the last entity.
  void Finish() { EndItem(); }

  void addLayer(const DL_LayerData& data) override;
  void addTextStyle(const DL_StyleData& data) override;
  void addLinetype(const DL_LinetypeData& data) override;
  void addLinetypeDash(double length) override;
  void addBlock(const DL_BlockData& data) override;
  void endBlock() override;

  void addLine(const DL_LineData& data) override;
  void addXLine(const DL_XLineData& data) override;
  void addRay(const DL_RayData& data) override;
  void addPoint(const DL_PointData& data) override;
  void addArc(const DL_ArcData& data) override;
  void addCircle(const DL_CircleData& data) override;
  void addEllipse(const DL_EllipseData& data) override;
  void addPolyline(const DL_PolylineData& data) override;
  void addVertex(const DL_VertexData& data) override;
  void addSpline(const DL_SplineData& data) override;
  void addControlPoint(const DL_ControlPointData& data) override;
  void addFitPoint(const DL_FitPointData& data) override;
  void addKnot(const DL_KnotData& data) override;
  void addInsert(const DL_InsertData& data) override;
  void addTrace(const DL_TraceData& data) override;
  void add3dFace(const DL_3dFaceData& data) override;
  void addSolid(const DL_SolidData& data) override;
  void addMText(const DL_MTextData& data) override;
  void addMTextChunk(const std::string& text) override;
  void addText(const DL_TextData& data) override;
  void addAttribute(const DL_AttributeData& data) override;
  void addLeader(const DL_LeaderData& data) override;
  void addLeaderVertex(const DL_LeaderVertexData& data) override;
  void addHatch(const DL_HatchData& data) override;
  void addHatchLoop(const DL_HatchLoopData& data) override;
  void addHatchEdge(const DL_HatchEdgeData& data) override;
  // A dimension's lines and texts stand in a block.
  void addDimAlign(const DL_DimensionData&, const DL_DimAlignedData&) override { AddDimension(); }
  void addDimLinear(const DL_DimensionData&, const DL_DimLinearData&) override { AddDimension(); }
  void addDimRadial(const DL_DimensionData&, const DL_DimRadialData&) override { AddDimension(); }
  void addDimDiametric(const DL_DimensionData&, const DL_DimDiametricData&) override { AddDimension(); }
  void addDimAngular(const DL_DimensionData&, const DL_DimAngular2LData&) override { AddDimension(); }
  void addDimAngular3P(const DL_DimensionData&, const DL_DimAngular3PData&) override { AddDimension(); }
  void addDimOrdinate(const DL_DimensionData&, const DL_DimOrdinateData&) override { AddDimension(); }
  void endSequence() override { EndItem(); }
  void setVariableDouble(const std::string& key, double value, int code) override;

 private:
  Look LookNow();
  // A new item, with what comes in pieces still to be added.
  Item& Begin(Item::Kind kind);
  void EndItem();
  void Store(Item item);
  void AddDimension();
  // A circle that doesn't say its radius has 1.
  double RadiusOf(double radius) const { return groups_.Now().Find(40) != nullptr ? radius : 1; }
  Face FaceOf(const std::string& style) const;
  void AddLines(std::vector<Line> lines, Item::Kind kind = Item::Kind::kLines);
  bool Full() const { return count_ >= kMaxItems || points_ >= kMaxPoints; }

  static constexpr std::uint32_t kMaxItems = 1000000;
  static constexpr std::uint64_t kMaxPoints = std::uint64_t{1} << 24;

  Drawing& drawing_;
  GroupRecorder groups_;
  std::string block_;
  bool inBlock_ = false;
  std::vector<double> dashes_;
  std::optional<Item> item_;
  bool shown_ = true;     // the item
  bool onSheet_ = false;  // the same
  std::optional<Spline> spline_;
  std::optional<Polyline> polyline_;
  std::string chunks_;
  std::uint32_t count_ = 0;
  std::uint64_t points_ = 0;
};

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_COLLECTOR_H_
