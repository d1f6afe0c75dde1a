#include "tests/support/plain_quantizer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <functional>
#include <vector>

#include "glib/module_api/progress.h"
#include "platform/pages.h"
#include "tests/support/plain_dither.h"

namespace plain {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::uint32_t kBlack = 0xFF000000;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;

std::uint32_t Grey(std::uint32_t word) {
  return (77 * (word & 255) + 150 * (word >> 8 & 255) + 29 * (word >> 16 & 255)) >> 8;
}

struct Node {
  Node* parent = nullptr;
  std::array<Node*, 8> child{};
  std::uint8_t id = 0;
  std::uint8_t level = 0;
  std::uint8_t childMask = 0;
  std::uint8_t mid[3] = {128, 128, 128};
  std::uint32_t weight = 0;
  std::uint32_t colorNumber = 0;
  std::uint32_t pixelCount = 0;
  std::uint64_t sum[3] = {};
};

class Tree {
 public:
  // Gives false to stop.
  using Progress = std::function<bool(std::uint32_t value)>;

  Tree(const std::uint8_t* pixels, std::uint32_t width, std::uint32_t height, std::uint32_t pixelBytes,
       std::uint32_t* palette, Progress report, std::uint32_t reportSteps)
      : source(pixels),
        columns(width),
        rows(height),
        step(pixelBytes),
        rowBytes(pixelBytes == 4 ? std::size_t{width} * 4 : glib::PaddedStride(width, 24)),
        entries(palette),
        progress(std::move(report)),
        steps(reportSteps) {}

  void Init(std::uint32_t colors, std::uint32_t requestedDepth) {
    if (requestedDepth > 1) {
      depth = std::min(requestedDepth, 8U);
    } else {
      const std::uint32_t limits[] = {4, 16, 64, 256, 1024, 4294967295U};
      std::uint32_t i = 0;
      while (colors > limits[i]) ++i;
      depth = i + 2;
    }
    std::uint32_t bits = 32;
    for (std::uint32_t n = columns * rows; n != 0; n >>= 1) --bits;
    for (std::uint32_t level = 0; level <= depth; ++level) shift[level] = bits > level ? bits - level : 0;
    root = &nodes.emplace_back();
    root->parent = root;
    root->weight = 0xFFFFFFFF;
    nodeCount = 1;
    leafCount = 0;
  }

  bool Classify() {
    const std::uint32_t pixelCount = columns * rows;
    const bool reports = progress != nullptr;
    std::uint32_t every = 0;
    if (reports) {
      every = pixelCount / steps;
      if (step == 3) {
        every /= columns;
        if (every == 0) every = rows / 2;
      }
      every = std::max(every, 1U);
    }
    std::uint64_t index = 0;
    for (std::uint32_t y = 0; y < rows; ++y) {
      if (reports && step == 3 && y % every == 0 && !progress(static_cast<std::uint32_t>(30 * std::uint64_t{y} / rows)))
        return false;
      for (std::uint32_t x = 0; x < columns; ++x, ++index) {
        if (reports && step == 4 && index % every == 0 &&
            !progress(static_cast<std::uint32_t>(30 * index / pixelCount))) {
          return false;
        }
        Count(Pixel(x, y));
      }
    }
    return true;
  }

  bool Reduce(std::uint32_t colors) {
    next = 1;
    const std::int32_t span = static_cast<std::int32_t>(leafCount - colors);
    if (span < 1 && progress != nullptr) progress(100);
    const std::int32_t stepPasses = span / 100;
    for (std::int32_t pass = 0; leafCount > colors; ++pass) {
      if (progress != nullptr && stepPasses != 0 && pass % stepPasses == 0) {
        if (!progress(static_cast<std::uint32_t>(70 * std::int64_t{pass} / span + 30))) return false;
      }
      threshold = next;
      next = root->weight - 1;
      leafCount = 0;
      Prune(root);
    }
    return true;
  }

  void Assign(std::uint32_t colors, bool dither, bool grayscale, std::uint8_t* out, std::size_t outStride) {
    leafCount = 0;
    Collect(root);
    const bool twoGreys = colors == 2 && grayscale;
    bool firstDarker = false;
    if (twoGreys) {
      firstDarker = Grey(entries[0]) < Grey(entries[1]);
      entries[0] = firstDarker ? kBlack : kWhite;
      entries[1] = firstDarker ? kWhite : kBlack;
    }
    made = leafCount;
    if (dither) {
      Diffuse(out, outStride);
    } else {
      for (std::uint32_t y = 0; y < rows; ++y) {
        for (std::uint32_t x = 0; x < columns; ++x) {
          const Channels pixel = Pixel(x, y);
          Node* node = Descend(pixel);
          out[outStride * y + x] =
              static_cast<std::uint8_t>(twoGreys ? node->colorNumber : Nearest(node->parent, pixel));
        }
      }
    }
    if (twoGreys) {
      entries[0] = kWhite;
      entries[1] = kBlack;
      if (firstDarker) {
        for (std::size_t i = 0; i < outStride * rows; ++i) out[i] = out[i] == 0 ? 1 : 0;
      }
    }
  }

  std::uint32_t made = 0;

 private:
  Channels Pixel(std::uint32_t x, std::uint32_t y) const {
    const std::uint8_t* p = source + rowBytes * y + std::size_t{step} * x;
    return {p[0], p[1], p[2]};
  }

  static std::uint32_t ChildId(const Node* node, const Channels& colour) {
    return (node->mid[2] < colour[2] ? 4U : 0U) + (node->mid[1] < colour[1] ? 2U : 0U) +
           (node->mid[0] < colour[0] ? 1U : 0U);
  }

  void Count(const Channels& colour) {
    if (nodeCount > 266817) {
      Collapse(root);
      --depth;
    }
    Node* node = root;
    for (std::uint32_t level = 1; level <= depth; ++level) {
      const std::uint32_t id = ChildId(node, colour);
      if (node->child[id] == nullptr) {
        Node* made_ = &nodes.emplace_back();
        ++nodeCount;
        made_->parent = node;
        made_->id = static_cast<std::uint8_t>(id);
        made_->level = static_cast<std::uint8_t>(level);
        const int move = 128 >> level;
        for (std::size_t c = 0; c < 3; ++c) {
          made_->mid[c] = static_cast<std::uint8_t>((id >> c & 1) != 0 ? node->mid[c] + move : node->mid[c] - move);
        }
        node->child[id] = made_;
        node->childMask = static_cast<std::uint8_t>(node->childMask | 1U << id);
        if (level == depth) ++leafCount;
      }
      node = node->child[id];
      node->weight += 1U << shift[level];
    }
    ++node->pixelCount;
    for (std::size_t c = 0; c < 3; ++c) node->sum[c] += static_cast<std::uint64_t>(colour[c]);
  }

  template <typename Visit>
  void ForLiveChildren(Node* node, Visit visit) {
    for (std::uint32_t id = 0; id < 8; ++id) {
      if ((node->childMask >> id & 1) != 0) visit(node->child[id]);
    }
  }

  void Merge(Node* node) {
    Node* parent = node->parent;
    parent->childMask = static_cast<std::uint8_t>(parent->childMask & ~(1U << node->id));
    parent->pixelCount += node->pixelCount;
    for (std::size_t c = 0; c < 3; ++c) parent->sum[c] += node->sum[c];
    --nodeCount;
  }

  void Collapse(Node* node) {
    ForLiveChildren(node, [this](Node* child) { Collapse(child); });
    if (node->level == depth) Merge(node);
  }

  void Prune(Node* node) {
    ForLiveChildren(node, [this](Node* child) { Prune(child); });
    if (node->pixelCount != 0) ++leafCount;
    if (node->weight < next) next = node->weight;
    if (node->weight <= threshold) Merge(node);
  }

  void Collect(Node* node) {
    ForLiveChildren(node, [this](Node* child) { Collect(child); });
    if (node->pixelCount == 0) return;
    std::uint32_t word = 0xFF000000;
    for (unsigned c = 0; c < 3; ++c) {
      word |= static_cast<std::uint32_t>((node->sum[c] + node->pixelCount / 2) / node->pixelCount) << 8 * c;
    }
    node->colorNumber = leafCount;
    entries[leafCount++] = word;
  }

  Node* Descend(const Channels& colour) {
    Node* node = root;
    for (;;) {
      const std::uint32_t id = ChildId(node, colour);
      if ((node->childMask >> id & 1) == 0) return node;
      node = node->child[id];
    }
  }

  std::uint32_t Nearest(Node* node, const Channels& colour) {
    bestDistance = 0xFFFFFFFF;
    Search(node, colour);
    return bestIndex;
  }

  void Search(Node* node, const Channels& colour) {
    for (std::uint32_t id = 0; id < 8; ++id) {
      if ((node->childMask >> id & 1) != 0) Search(node->child[id], colour);
    }
    if (node->pixelCount == 0) return;
    const Channels entry = ChannelsOf(entries[node->colorNumber]);
    const std::int32_t d0 = entry[0] - colour[0];
    const std::int32_t d1 = entry[1] - colour[1];
    const std::int32_t d2 = entry[2] - colour[2];
    const auto distance = static_cast<std::uint32_t>(d0 * d0 + d1 * d1 + d2 * d2);
    if (distance < bestDistance) {
      bestDistance = distance;
      bestIndex = node->colorNumber;
    }
  }

  void Diffuse(std::uint8_t* out, std::size_t outStride) {
    std::vector<std::int32_t> cache(262144, -1);
    std::vector<Channels> errors[2];
    for (auto& row : errors) row.assign(columns + 2, Channels{});
    for (std::uint32_t y = 0; y < rows; ++y) {
      const bool odd = y % 2 == 1;
      const int direction = odd ? 1 : -1;
      auto& current = errors[odd ? 0 : 1];
      auto& below = errors[odd ? 1 : 0];
      std::int64_t x = odd ? 0 : std::int64_t{columns} - 1;
      for (std::uint32_t i = 0; i < columns; ++i, x += direction) {
        const auto at = static_cast<std::size_t>(x + 1);
        Channels value = Pixel(static_cast<std::uint32_t>(x), y);
        for (std::size_t c = 0; c < 3; ++c) value[c] = std::clamp(value[c] + (current[at][c] + 8) / 16, 0, 255);
        std::int32_t& cached =
            cache[static_cast<std::size_t>(value[0] >> 2 << 12 | value[1] >> 2 << 6 | value[2] >> 2)];
        if (cached < 0) cached = static_cast<std::int32_t>(Nearest(Descend(value)->parent, value));
        out[outStride * y + static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(cached);
        const Channels entry = ChannelsOf(entries[cached]);
        current[at] = Channels{};
        for (std::size_t c = 0; c < 3; ++c) {
          const std::int32_t d = value[c] - entry[c];
          current[at + static_cast<std::size_t>(direction)][c] += 7 * d;
          below[at - static_cast<std::size_t>(direction)][c] += 3 * d;
          below[at][c] += 5 * d;
          below[at + static_cast<std::size_t>(direction)][c] += d;
        }
      }
    }
  }

  const std::uint8_t* source;
  std::uint32_t columns, rows, step;
  std::size_t rowBytes;
  std::uint32_t* entries;
  Progress progress;
  std::uint32_t steps;
  std::deque<Node> nodes;
  Node* root = nullptr;
  std::uint32_t depth = 0;
  std::uint32_t shift[9] = {};
  std::uint32_t nodeCount = 0, leafCount = 0;
  std::uint32_t threshold = 0, next = 0;
  std::uint32_t bestDistance = 0, bestIndex = 0;
};

std::uint32_t IndexAt(const glib::RasterBlock& block, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* row = block.pixels + block.Stride() * y;
  if (block.bits == 8) return row[x];
  return x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15;
}

bool ReduceIndexed(const glib::RasterBlock& block, std::uint32_t targetBits, std::uint8_t* out, std::size_t outStride,
                   std::uint32_t* palette) {
  if (targetBits != 1 && (targetBits != 4 || block.bits != 8)) return false;
  const auto width = static_cast<std::uint32_t>(block.width);
  const auto height = static_cast<std::uint32_t>(block.height);
  std::fill_n(palette, 256, kBlack);
  const auto dither = [&](std::uint32_t count) {
    const auto pixel = [&](std::uint32_t x, std::uint32_t y) {
      return ChannelsOf(block.palette[IndexAt(block, x, y)]);
    };
    const auto result = DitherToPalette(width, height, outStride, palette, count, pixel);
    std::copy(result.begin(), result.end(), out);
  };
  const auto translate = [&](const std::function<std::uint32_t(std::uint32_t)>& index) {
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < width; ++x) {
        out[outStride * y + x] = static_cast<std::uint8_t>(index(IndexAt(block, x, y)));
      }
    }
  };
  if (targetBits == 1) {
    palette[0] = kWhite;
    if (block.ditherOnReduce != 0) {
      dither(2);
    } else {
      translate([&](std::uint32_t index) {
        const Channels c = ChannelsOf(block.palette[index]);
        return (c[0] + c[1] + c[2]) / 3 < 127 ? 1U : 0U;
      });
    }
    return true;
  }
  bool used[256] = {};
  translate([&](std::uint32_t index) {
    used[index] = true;
    return 0U;
  });
  std::vector<std::uint32_t> colors;
  for (std::size_t i = 0; i < 256; ++i) {
    if (used[i]) colors.push_back(block.palette[i]);
  }
  if (colors.size() > 16) {
    std::uint32_t scratch[256] = {};
    std::uint8_t indices[256];
    Tree tree(reinterpret_cast<const std::uint8_t*>(colors.data()), static_cast<std::uint32_t>(colors.size()), 1, 4,
              scratch, nullptr, 0);
    tree.Init(16, 8);
    tree.Classify();
    tree.Reduce(16);
    tree.Assign(16, false, false, indices, 256);
    colors.assign(scratch, scratch + tree.made);
  }
  std::copy(colors.begin(), colors.end(), palette);
  const auto count = static_cast<std::uint32_t>(colors.size());
  if (block.ditherOnReduce != 0) {
    dither(count);
  } else {
    translate([&](std::uint32_t index) { return NearestEntry(ChannelsOf(block.palette[index]), palette, count); });
  }
  if (block.grayscale != 0) {
    for (std::uint32_t i = 0; i < 16; ++i) palette[i] = (palette[i] & 0xFF000000) | Grey(palette[i]) * 0x010101;
  }
  return true;
}

}  // namespace

std::uint32_t Quantize(glib::RasterBlock& block, std::uint32_t colors, bool alignRows) {
  std::uint32_t targetBits = 1;
  for (std::uint32_t n = colors - 1; n > 1; n >>= 1) ++targetBits;
  const auto width = static_cast<std::uint32_t>(block.width);
  const auto height = static_cast<std::uint32_t>(block.height);
  const std::size_t stride = alignRows ? glib::PaddedStride(width, 8) : width;
  auto* out = static_cast<std::uint8_t*>(platform::AllocatePages(stride * height));
  if (out == nullptr) return kFailed;
  std::uint32_t palette[256];
  std::copy_n(block.palette, 256, palette);

  glib::ProgressInfo info;
  info.text = "Quantize...";
  info.userValue = block.userValue;
  const auto report = [&](std::int32_t current) {
    info.current = current;
    return block.callback == nullptr || block.callback(&info) != 0;
  };

  bool ok = true;
  std::uint32_t count = 0;
  if (block.bits < 24) {
    ok = (block.bits == 4 || block.bits == 8) && ReduceIndexed(block, targetBits, out, stride, palette);
    count = 1U << (targetBits & 31);
  } else if (block.grayscale != 0 && colors == 256) {
    const std::uint32_t steps = glib::ProgressSteps(width * height);
    const std::uint32_t every = steps == 0 ? 0 : width * height / steps / width;
    info.total = height;
    if (every != 0) report(-1);
    for (std::uint32_t y = 0; y < height && ok; ++y) {
      if (every != 0 && y % every == 0) ok = report(static_cast<std::int32_t>(y));
      for (std::uint32_t x = 0; x < width && ok; ++x) {
        std::uint32_t word = 0;
        std::memcpy(&word, block.pixels + block.Stride() * y + static_cast<std::size_t>(block.bits / 8) * x, 3);
        out[stride * y + x] = static_cast<std::uint8_t>(Grey(word));
      }
    }
    if (every != 0) report(-2);
    for (std::uint32_t i = 0; i < 256; ++i) palette[i] = 0xFF000000 | i * 0x010101;
    count = 256;
  } else {
    colors = std::min(colors, 256U);
    info.total = 100;
    report(-1);
    const std::uint32_t steps = glib::ProgressSteps(width * height);
    Tree::Progress progress;
    if (steps != 0 && block.callback != nullptr) {
      progress = [&](std::uint32_t value) {
        if (!report(static_cast<std::int32_t>(value + 1))) ok = false;
        return ok;
      };
    }
    Tree tree(block.pixels, width, height, static_cast<std::uint32_t>(block.bits / 8), palette, progress, steps);
    tree.Init(colors, block.treeDepth);
    if (tree.Classify() && tree.Reduce(colors)) {
      tree.Assign(colors, block.ditherOnReduce != 0, block.grayscale != 0, out, stride);
    }
    report(-2);
    count = tree.made;
    if (block.grayscale != 0) {
      for (std::uint32_t i = 0; i < count; ++i) palette[i] = (palette[i] & 0xFF000000) | Grey(palette[i]) * 0x010101;
    }
  }
  if (!ok) {
    platform::FreePages(out);
    return kFailed;
  }
  if (block.owned != 0) platform::FreePages(block.pixels);
  block.owned = 1;
  block.pixels = out;
  block.bits = 8;
  block.rowsAligned = alignRows ? 1 : 0;
  std::copy_n(palette, 256, block.palette);
  return count;
}

}  // namespace plain
