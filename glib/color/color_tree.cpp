#include "glib/color/color_tree.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <new>

#include "glib/color/cell_map.h"
#include "glib/color/grey_value.h"
#include "glib/color/tree_diffusion.h"
#include "platform/program.h"

namespace glib {
namespace {

// Above so many nodes the tree loses its deepest level.
constexpr std::uint32_t kNodeLimit = 266817;

// Below so many pixels walking the tree is cheaper than setting up cells.
constexpr std::uint32_t kCellsFrom = 8192;

// Gives `add` all pixels in runs of consecutive ones, with the reports between. 3-byte pixels report between rows,
// 4-byte ones, whose rows join without padding, at any pixel.
template <typename Add, typename Report>
bool ForPixelRuns(const TreeSource& source, std::uint32_t steps, Report report, Add add) {
  constexpr std::uint32_t kScale = 30;
  const std::uint32_t pixelCount = source.width * source.height;
  if (source.pixelBytes == 4) {
    const std::uint32_t every = steps == 0 ? pixelCount : std::max(pixelCount / steps, 1U);
    for (std::uint64_t i = 0; i < pixelCount; i += every) {
      if (steps != 0 && !report(kScale, static_cast<std::uint32_t>(kScale * i / pixelCount))) return false;
      add(source.pixels + 4 * i, static_cast<std::size_t>(std::min<std::uint64_t>(every, pixelCount - i)));
    }
    return true;
  }
  std::uint32_t every = 1;
  if (steps != 0) {
    every = pixelCount / steps / source.width;
    every = std::max(every == 0 ? source.height / 2 : every, 1U);
  }
  for (std::uint32_t y = 0; y < source.height; ++y) {
    if (steps != 0 && y % every == 0 &&
        !report(kScale, static_cast<std::uint32_t>(kScale * std::uint64_t{y} / source.height))) {
      return false;
    }
    add(source.pixels + source.strideBytes * y, std::size_t{source.width});
  }
  return true;
}

template <typename Node, typename Visit>
void ForLiveChildren(Node* node, Visit visit) {
  for (std::uint32_t id = 0; id < 8; ++id) {
    if ((node->childMask >> id & 1) != 0) visit(node->child[id]);
  }
}

std::uint32_t ChildId(const ColorTreeNode* node, std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) {
  return (node->mid2 < c2 ? 4U : 0U) + (node->mid1 < c1 ? 2U : 0U) + (node->mid0 < c0 ? 1U : 0U);
}

std::uint32_t CellChildId(std::uint32_t cell, std::uint32_t level) { return cell >> 3 * (kCellLevels - level) & 7; }

std::uint8_t MoveCentre(std::uint8_t centre, std::uint32_t distance, bool up) {
  return static_cast<std::uint8_t>(up ? centre + distance : centre - distance);
}

// A node in the order of pruning: by weight, and children before their parents where the weights are equal.
struct PruneItem {
  std::uint32_t weight;
  std::uint32_t level;
  ColorTreeNode* node;

  bool operator<(const PruneItem& other) const {
    return weight != other.weight ? weight < other.weight : level > other.level;
  }
};

PruneItem* ListNodes(ColorTreeNode* node, PruneItem* items) {
  ForLiveChildren(node, [&items](ColorTreeNode* child) { items = ListNodes(child, items); });
  *items = {node->weight, node->level, node};
  return items + 1;
}

}  // namespace

ColorTree::~ColorTree() {
  while (blocks_ != nullptr) {
    NodeBlock* block = blocks_;
    blocks_ = block->before;
    delete block;
  }
}

void ColorTree::SetProgress(TreeProgress function, void* user, std::uint32_t steps) {
  progress_ = steps != 0 ? function : nullptr;
  progressUser_ = user;
  progressSteps_ = progress_ != nullptr ? steps : 0;
}

ColorTreeNode* ColorTree::NewNode() {
  if (freeNodes_ == 0) {
    auto* block = new (std::nothrow) NodeBlock;
    if (block == nullptr) {
      platform::ErrorMessage("Unable to quantize image, Memory allocation failed");
      std::exit(1);
    }
    block->before = blocks_;
    blocks_ = block;
    freeNodes_ = NodeBlock::kNodes;
  }
  ColorTreeNode* node = &blocks_->nodes[NodeBlock::kNodes - freeNodes_--];
  *node = ColorTreeNode{};
  ++nodeCount;
  return node;
}

ColorTreeNode* ColorTree::NewChild(ColorTreeNode* node, std::uint32_t id) {
  ColorTreeNode* child = NewNode();
  child->parent = node;
  child->id = static_cast<std::uint8_t>(id);
  child->level = static_cast<std::uint8_t>(node->level + 1);
  const std::uint32_t distance = 128U >> child->level;
  child->mid0 = MoveCentre(node->mid0, distance, (id & 1) != 0);
  child->mid1 = MoveCentre(node->mid1, distance, (id & 2) != 0);
  child->mid2 = MoveCentre(node->mid2, distance, (id & 4) != 0);
  node->child[id] = child;
  node->childMask = static_cast<std::uint8_t>(node->childMask | 1U << id);
  if (child->level == depth) ++leafCount;
  return child;
}

void ColorTree::Init(std::uint32_t wanted, std::uint32_t requestedDepth) {
  constexpr std::uint32_t kDeepest = 8;
  constexpr std::uint32_t kColorsOfDepth[] = {4, 16, 64, 256, 1024, 0xFFFFFFFF};  // from depth 2
  if (requestedDepth > 1) {
    depth = std::min(requestedDepth, kDeepest);
  } else {
    depth = 2;
    while (wanted > kColorsOfDepth[depth - 2]) ++depth;
  }
  // So much weight that all pixels together fit 32 bits at the root.
  const std::uint32_t pixelCount = source.width * source.height;
  const auto rootShift = static_cast<std::uint32_t>(std::countl_zero(pixelCount));
  for (std::uint32_t level = 0; level <= depth; ++level) shift[level] = rootShift - std::min(rootShift, level);
  leafCount = 0;
  nodeCount = 0;
  root = NewNode();
  root->parent = root;
  root->mid0 = root->mid1 = root->mid2 = 128;
  root->weight = 0xFFFFFFFF;
  if (depth <= kCellLevels && pixelCount >= kCellsFrom) {
    cells_.reset(new (std::nothrow) ColorCells);
    if (cells_ != nullptr && !cells_->Allocate()) cells_.reset();
  }
}

bool ColorTree::Classify() {
  const auto report = [this](std::uint32_t scale, std::uint32_t value) { return Report(scale, value); };
  if (cells_ == nullptr) {
    return ForPixelRuns(source, progressSteps_, report,
                        [this](const std::uint8_t* pixels, std::size_t count) { CountPixels(pixels, count); });
  }
  const auto add = [this](const std::uint8_t* pixels, std::size_t count) {
    cells_->Add(pixels, count, source.pixelBytes);
  };
  if (!ForPixelRuns(source, progressSteps_, report, add)) return false;
  CountCells();
  return true;
}

void ColorTree::CountPixels(const std::uint8_t* pixels, std::size_t count) {
  for (const std::uint8_t* end = pixels + count * source.pixelBytes; pixels != end; pixels += source.pixelBytes) {
    if (nodeCount > kNodeLimit) {
      Collapse(root);
      --depth;
    }
    ColorTreeNode* node = root;
    for (std::uint32_t level = 1; level <= depth; ++level) {
      const std::uint32_t id = ChildId(node, pixels[0], pixels[1], pixels[2]);
      node = node->child[id] != nullptr ? node->child[id] : NewChild(node, id);
      node->weight += 1U << shift[level];
    }
    ++node->pixelCount;
    node->sum0 += pixels[0];
    node->sum1 += pixels[1];
    node->sum2 += pixels[2];
  }
}

// Trees of cells can't reach the limit of nodes.
void ColorTree::CountCells() {
  static_assert((8 * kCellCount - 1) / 7 <= kNodeLimit);
  for (std::uint32_t cell = 0; cell < kCellCount; ++cell) {
    const ColorSums sums = cells_->Sums(cell);
    if (sums.count == 0) continue;
    ColorTreeNode* node = root;
    for (std::uint32_t level = 1; level <= depth; ++level) {
      const std::uint32_t id = CellChildId(cell, level);
      node = node->child[id] != nullptr ? node->child[id] : NewChild(node, id);
      node->weight += sums.count << shift[level];
    }
    node->pixelCount += sums.count;
    node->sum0 += sums.sums[0];
    node->sum1 += sums.sums[1];
    node->sum2 += sums.sums[2];
  }
}

void ColorTree::Collapse(ColorTreeNode* node) {
  ForLiveChildren(node, [this](ColorTreeNode* child) { Collapse(child); });
  if (node->level == depth) Merge(node);
}

void ColorTree::Merge(ColorTreeNode* node) {
  ColorTreeNode* parent = node->parent;
  parent->childMask = static_cast<std::uint8_t>(parent->childMask & ~(1U << node->id));
  parent->pixelCount += node->pixelCount;
  parent->sum0 += node->sum0;
  parent->sum1 += node->sum1;
  parent->sum2 += node->sum2;
  --nodeCount;
}

// A pass merges all nodes up to the threshold; its count of coloured nodes takes in those that it merges and those that
// the merges colour, and the next threshold is the least weight that it met, that of merged nodes included. Walking the
// whole tree for each pass would be quadratic. As no node weighs more than its parent, a list in the order of weight
// gives each pass its nodes in one piece, children first.
bool ColorTree::Reduce(std::uint32_t wanted) {
  const auto span = static_cast<std::int32_t>(leafCount - wanted);
  if (span < 1) {
    if (progress_ != nullptr) Report(100, 100);
    return true;
  }
  const std::uint32_t listed = nodeCount;
  const std::unique_ptr<PruneItem[]> items(new (std::nothrow) PruneItem[listed]);
  if (items == nullptr) return false;
  ListNodes(root, items.get());
  std::sort(items.get(), items.get() + listed);
  std::uint32_t colored = 0;
  for (std::uint32_t i = 0; i < listed; ++i) colored += items[i].node->pixelCount != 0 ? 1 : 0;

  const std::int32_t stepPasses = span / 100;
  std::uint32_t nextPruneThreshold = 1;
  std::uint32_t merged = 0;
  for (std::int32_t pass = 0; leafCount > wanted; ++pass) {
    if (progress_ != nullptr && stepPasses != 0 && pass % stepPasses == 0 &&
        !Report(100, static_cast<std::uint32_t>(70 * std::int64_t{pass} / span + 30))) {
      return false;
    }
    const std::uint32_t pruneThreshold = nextPruneThreshold;
    // The root comes last and is never merged, so there is a node at `merged`.
    nextPruneThreshold = std::min(root->weight - 1, items[merged].weight);
    leafCount = colored;
    for (; items[merged].weight <= pruneThreshold; ++merged) {
      ColorTreeNode* node = items[merged].node;
      if (node->parent->pixelCount == 0) {
        ++leafCount;
        ++colored;
      }
      Merge(node);
      --colored;
    }
  }
  return true;
}

void ColorTree::MakePalette(ColorTreeNode* node) {
  node->firstColor = colors;
  ForLiveChildren(node, [this](ColorTreeNode* child) { MakePalette(child); });
  if (node->pixelCount != 0) {
    const std::uint64_t half = node->pixelCount / 2;
    const auto mean = [node, half](std::uint64_t sum) {
      return static_cast<std::uint32_t>((sum + half) / node->pixelCount);
    };
    palette[colors] = kOpaqueBlack | mean(node->sum2) << 16 | mean(node->sum1) << 8 | mean(node->sum0);
    node->colorNumber = colors++;
  }
  node->colorCount = colors - node->firstColor;
}

void ColorTree::Assign(std::uint32_t wanted, bool dither, bool grayscale, std::uint8_t* dest, std::size_t destStride) {
  colors = 0;
  MakePalette(root);
  const bool twoGreys = wanted == 2 && grayscale;
  const bool firstIsDarker = GreyOfWord(palette[0]) < GreyOfWord(palette[1]);
  if (twoGreys) {
    palette[0] = firstIsDarker ? kOpaqueBlack : kOpaqueWhite;
    palette[1] = firstIsDarker ? kOpaqueWhite : kOpaqueBlack;
  }
  if (!dither || !DiffuseByTree(*this, dest, destStride)) {
    if (twoGreys || cells_ == nullptr || !MapByCells(dest, destStride)) MapByWalk(twoGreys, dest, destStride);
  }
  if (twoGreys) {
    palette[0] = kOpaqueWhite;
    palette[1] = kOpaqueBlack;
    if (firstIsDarker) {
      std::for_each_n(dest, destStride * source.height, [](std::uint8_t& index) { index = index == 0 ? 1 : 0; });
    }
  }
}

void ColorTree::MapByWalk(bool twoGreys, std::uint8_t* dest, std::size_t destStride) const {
  for (std::uint32_t y = 0; y < source.height; ++y) {
    const std::uint8_t* pixel = source.pixels + source.strideBytes * y;
    std::uint8_t* out = dest + destStride * y;
    for (std::uint32_t x = 0; x < source.width; ++x, pixel += source.pixelBytes) {
      out[x] = static_cast<std::uint8_t>(twoGreys ? Descend(pixel[0], pixel[1], pixel[2])->colorNumber
                                                  : FindColor(pixel[0], pixel[1], pixel[2]));
    }
  }
}

bool ColorTree::MapByCells(std::uint8_t* dest, std::size_t destStride) const {
  CellMap map(*this);
  if (!map.Build(*cells_)) return false;
  for (std::uint32_t y = 0; y < source.height; ++y) {
    map.MapRow(source.pixels + source.strideBytes * y, source.width, dest + destStride * y);
  }
  return true;
}

const ColorTreeNode* ColorTree::Descend(std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) const {
  const ColorTreeNode* node = root;
  for (;;) {
    const std::uint32_t id = ChildId(node, c0, c1, c2);
    if ((node->childMask >> id & 1) == 0) return node;
    node = node->child[id];
  }
}

const ColorTreeNode* ColorTree::DescendToCell(std::uint32_t cell) const {
  const ColorTreeNode* node = root;
  while (node->level < depth) {
    const std::uint32_t id = CellChildId(cell, node->level + 1U);
    if ((node->childMask >> id & 1) == 0) break;
    node = node->child[id];
  }
  return node;
}

std::uint32_t ColorTree::FindColor(std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) const {
  const ColorTreeNode* top = Descend(c0, c1, c2)->parent;
  return NearestOf(top->firstColor, top->colorCount, c0, c1, c2);
}

std::uint32_t ColorTree::NearestOf(std::uint32_t first, std::uint32_t count, std::uint32_t c0, std::uint32_t c1,
                                   std::uint32_t c2) const {
  std::uint32_t best = first;
  std::uint32_t bestDistance = 0xFFFFFFFF;
  for (std::uint32_t i = first; i < first + count; ++i) {
    const std::uint32_t word = palette[i];
    // Squares come out right although the differences wrap.
    const std::uint32_t d0 = c0 - (word & 255);
    const std::uint32_t d1 = c1 - (word >> 8 & 255);
    const std::uint32_t d2 = c2 - (word >> 16 & 255);
    const std::uint32_t distance = d0 * d0 + d1 * d1 + d2 * d2;
    if (distance < bestDistance) {
      bestDistance = distance;
      best = i;
    }
  }
  return best;
}

}  // namespace glib
