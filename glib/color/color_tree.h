#ifndef GLIB_COLOR_COLOR_TREE_H_
#define GLIB_COLOR_COLOR_TREE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "glib/color/color_cells.h"

namespace glib {

// A cube of colours and what of the image fell into it.
struct ColorTreeNode {
  ColorTreeNode* parent;  // the root is its own
  ColorTreeNode* child[8];
  std::uint8_t id;         // place among the parent's children: bit n is set in the upper half of channel n
  std::uint8_t level;      // root 0
  std::uint8_t childMask;  // bit n: child[n] is live; a merged child keeps its pointer
  std::uint8_t mid0;       // centre; a value that equals it belongs to the lower half
  std::uint8_t mid1;
  std::uint8_t mid2;
  std::uint32_t weight;       // what pruning goes by: deeper pixels weigh less
  std::uint32_t colorNumber;  // palette index, once the palette is made
  std::uint32_t pixelCount;   // of this node itself, merged children included
  std::uint64_t sum0;
  std::uint64_t sum1;
  std::uint64_t sum2;
  // Entries of this node and all below it are consecutive, since both are numbered in the order of one walk.
  std::uint32_t firstColor;
  std::uint32_t colorCount;
};

struct NodeBlock {
  static constexpr std::uint32_t kNodes = 2048;
  ColorTreeNode nodes[kNodes];
  NodeBlock* before;
};

// Rows of 3 or 4 bytes a pixel, the channels in the first three.
struct TreeSource {
  const std::uint8_t* pixels;
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t pixelBytes;
  std::size_t strideBytes;
};

// Gets a value on a scale and answers whether to go on.
using TreeProgress = bool (*)(void* user, std::uint32_t scale, std::uint32_t value);

// An adaptive palette of one raster: every pixel is counted into a tree over the colour cube, light branches are merged
// into their parents until few enough are left, and the mean of each that is left becomes a palette entry. A pixel is
// then given the nearest of the entries in its neighbourhood of the tree, which need not be the nearest of all.
//
// The operations run in the order in which they stand here. Trees of up to 5 levels over larger rasters are not walked
// for each pixel: pixels are counted in ColorCells, and the tree is made of the cells.
class ColorTree {
 public:
  // `palette` (256 words) and the source must outlive the tree.
  ColorTree(const TreeSource& image, std::uint32_t* paletteWords) : source(image), palette(paletteWords) {}
  ColorTree(const ColorTree&) = delete;
  ColorTree& operator=(const ColorTree&) = delete;
  ~ColorTree();

  // `steps`: how many reports to make in about; 0 or a null function: none.
  void SetProgress(TreeProgress function, void* user, std::uint32_t steps);

  // `requestedDepth` 0 or 1: as deep as `colors` need. Out of memory for nodes the process ends, here and in Classify.
  void Init(std::uint32_t colors, std::uint32_t requestedDepth);
  // Both give false for a stop answer; Reduce also without memory. `colors` is at least 1.
  bool Classify();
  bool Reduce(std::uint32_t colors);
  // Makes the palette, then the indices: `height` rows of `destStride` bytes. Falls back to no dithering without memory
  // for it. `grayscale` counts only together with 2 colours: the result is then white 0 and black 1. `colors` is the
  // argument of Reduce.
  void Assign(std::uint32_t colors, bool dither, bool grayscale, std::uint8_t* dest, std::size_t destStride);

  // The deepest live node on the way to a colour; once reduced.
  const ColorTreeNode* Descend(std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) const;
  // The same for all colours of a cell; for trees of up to kCellLevels levels.
  const ColorTreeNode* DescendToCell(std::uint32_t cell) const;
  // The entry for a colour: the first nearest one below the parent of the node that Descend gives.
  std::uint32_t FindColor(std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) const;

  // Entries `first` to `first + count - 1` (at least one); the lowest index wins a tie.
  std::uint32_t NearestOf(std::uint32_t first, std::uint32_t count, std::uint32_t c0, std::uint32_t c1,
                          std::uint32_t c2) const;

  TreeSource source;
  std::uint32_t* palette;
  std::uint32_t colors = 0;  // entries made
  std::uint32_t depth = 0;
  std::array<std::uint32_t, 9> shift = {};
  std::uint32_t leafCount = 0;  // coloured nodes
  std::uint32_t nodeCount = 0;
  ColorTreeNode* root = nullptr;

 private:
  ColorTreeNode* NewNode();
  ColorTreeNode* NewChild(ColorTreeNode* node, std::uint32_t id);
  void CountPixels(const std::uint8_t* pixels, std::size_t count);
  void CountCells();
  void Collapse(ColorTreeNode* node);
  void Merge(ColorTreeNode* node);
  void MakePalette(ColorTreeNode* node);
  void MapByWalk(bool twoGreys, std::uint8_t* dest, std::size_t destStride) const;
  bool MapByCells(std::uint8_t* dest, std::size_t destStride) const;

  bool Report(std::uint32_t scale, std::uint32_t value) const { return progress_(progressUser_, scale, value); }

  std::unique_ptr<ColorCells> cells_;  // null: pixels are walked
  NodeBlock* blocks_ = nullptr;
  std::uint32_t freeNodes_ = 0;
  TreeProgress progress_ = nullptr;
  void* progressUser_ = nullptr;
  std::uint32_t progressSteps_ = 0;
};

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_TREE_H_
