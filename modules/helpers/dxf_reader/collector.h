#ifndef MODULES_HELPERS_DXF_READER_COLLECTOR_H_
#define MODULES_HELPERS_DXF_READER_COLLECTOR_H_

#include <dl_creationadapter.h>

#include <cstdint>
#include <optional>

#include "modules/helpers/dxf_reader/curves.h"
#include "modules/helpers/dxf_reader/drawing.h"

namespace dxf {

// Takes what the library finds in a file. Some entities come in pieces; one is whole when the next begins.
class Collector : public DL_CreationAdapter {
 public:
  explicit Collector(Drawing& drawing) : drawing_(drawing) {}

  // After the last entity.
  void Finish() { EndItem(); }

  void addLayer(const DL_LayerData& data) override;
  void addLinetype(const DL_LinetypeData& data) override;
  void addLinetypeDash(double length) override;
  void addBlock(const DL_BlockData& data) override;
  void endBlock() override;

  void addLine(const DL_LineData& data) override;
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
  void endSequence() override { EndItem(); }
  void setVariableDouble(const std::string& key, double value, int code) override;

 private:
  Look LookNow();
  // A new item, with what comes in pieces still to be added.
  Item& Begin(Item::Kind kind);
  void EndItem();
  void AddLines(std::vector<Line> lines, Item::Kind kind = Item::Kind::kLines);
  bool Full() const { return count_ >= kMaxItems || points_ >= kMaxPoints; }

  static constexpr std::uint32_t kMaxItems = 1000000;
  static constexpr std::uint64_t kMaxPoints = std::uint64_t{1} << 24;

  Drawing& drawing_;
  std::string block_;
  bool inBlock_ = false;
  std::vector<double> dashes_;
  std::optional<Item> item_;
  std::optional<Spline> spline_;
  std::vector<DL_VertexData> vertices_;
  bool polyline_ = false;
  bool closed_ = false;
  std::string chunks_;
  std::uint32_t count_ = 0;
  std::uint64_t points_ = 0;
};

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_COLLECTOR_H_
