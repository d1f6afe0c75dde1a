#ifndef MODULES_HELPERS_DXF_READER_DRAWING_H_
#define MODULES_HELPERS_DXF_READER_DRAWING_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/metafile/geometry.h"

// A drawing in the units of its file, y going up, with all curves made into short lines.

namespace dxf {

struct Place {
  double x = 0;
  double y = 0;
};

using Line = std::vector<Place>;

inline constexpr int kColorOfBlock = 0;
inline constexpr int kColorOfLayer = 256;
inline constexpr int kWeightOfBlock = -2;
inline constexpr int kWeightOfLayer = -1;

struct Look {
  std::string layer;
  int color = kColorOfLayer;    // number in the table of colours
  int trueColor = -1;           // red in the highest of three bytes; below 0: none
  int weight = kWeightOfLayer;  // hundredths of a millimetre; below -2: none of its own
  std::string lineType;
  double lineTypeScale = 1;
};

struct Face {
  std::u16string name = u"Arial";
  bool bold = false;
  bool italic = false;
};

struct TextLook {
  std::string text;
  Face face;
  Place at;
  double height = 1;  // of capitals
  double stretch = 1;
  double angle = 0;  // radians
  int column = 0;    // 0 left, 1 middle, 2 right of the place
  int row = 0;       // 0 baseline, 1 foot, 2 middle, 3 top at the place
};

struct Insertion {
  std::string block;
  Place at;
  double scaleX = 1;
  double scaleY = 1;
  double angle = 0;  // degrees
  int columns = 1;
  int rows = 1;
  double columnStep = 0;
  double rowStep = 0;
};

// Lines side by side.
struct HatchFamily {
  double angle = 0;  // radians
  Place base;
  Place step;                  // from a line to the next
  std::vector<double> dashes;  // gaps below 0; none: whole lines
};

struct Item {
  // Rays go on from their last point, lines without end also before their first.
  enum class Kind { kLines, kRay, kEndless, kArea, kHatch, kText, kInsertion };

  Kind kind = Kind::kLines;
  Look look;
  platform::Transform plane;  // from the entity's own plane to that of what holds it
  double width = 0;           // of lines, in units of the drawing; 0: as the look says
  std::vector<Line> lines;
  std::vector<HatchFamily> hatch;
  TextLook text;
  Insertion insertion;
};

struct Layer {
  bool hidden = false;
  Look look;
};

struct Block {
  Place base;
  std::vector<Item> items;
};

// Names are keys as NameKey makes them.
struct Drawing {
  std::map<std::string, Layer> layers;
  std::map<std::string, std::vector<double>> lineTypes;  // dashes above 0, gaps below
  double lineTypeScale = 1;
  std::map<std::string, Face> faces;  // by text style
  std::map<std::string, Block> blocks;
  std::vector<Item> items;
  std::vector<Item> sheet;  // what surrounds the drawing on paper
};

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_DRAWING_H_
