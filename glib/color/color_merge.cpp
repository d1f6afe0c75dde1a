#include <algorithm>
#include <limits>

#include "glib/color/color_groups.h"

namespace glib {
namespace {

// The groups as columns of numbers, each with its cheapest partner.
//
// A merged pair is never cheaper to merge with a third than the cheaper of the two was. So the cost that a group
// remembers stays a lower bound when its partner changes, and is only looked at again when it comes out least.
class Pairs {
 public:
  explicit Pairs(const std::vector<ColorGroup>& groups) : groups_(groups) {
    for (const ColorGroup& group : groups_) {
      const auto count = static_cast<float>(group.count);
      count_.push_back(count);
      for (std::size_t k = 0; k < 3; ++k) {
        at_[k].push_back(static_cast<float>(static_cast<double>(group.places[k]) / static_cast<double>(group.count)));
      }
    }
    best_.resize(groups_.size());
    for (std::size_t i = 0; i < groups_.size(); ++i) FindPartner(i);
  }

  void MergeCheapest() {
    for (;;) {
      const auto least = std::min_element(best_.begin(), best_.end(),
                                          [](const Partner& a, const Partner& b) { return a.cost < b.cost; });
      const auto i = static_cast<std::size_t>(least - best_.begin());
      if (!least->stale) return Merge(std::min(i, least->group), std::max(i, least->group));
      FindPartner(i);
    }
  }

  std::size_t Count() const { return groups_.size(); }
  std::vector<ColorGroup> Take() { return std::move(groups_); }

 private:
  struct Partner {
    float cost = 0;
    bool stale = false;
    std::size_t group = 0;
  };

  void FindPartner(std::size_t i) {
    Partner best{std::numeric_limits<float>::infinity(), false, i};
    for (std::size_t j = 0; j < groups_.size(); ++j) {
      const float red = at_[0][i] - at_[0][j];
      const float green = at_[1][i] - at_[1][j];
      const float blue = at_[2][i] - at_[2][j];
      const float distance = red * red + green * green + blue * blue;
      const float product = count_[i] * count_[j];
      const float sum = count_[i] + count_[j];
      // Compared without a division, which would be most of the work.
      if (distance * product >= best.cost * sum || i == j) continue;
      best.cost = distance * product / sum;
      best.group = j;
    }
    best_[i] = best;
  }

  // The later group becomes part of the earlier one, and the last takes its place.
  void Merge(std::size_t i, std::size_t j) {
    groups_[i].Add(groups_[j]);
    Refresh(i);
    const std::size_t last = groups_.size() - 1;
    groups_[j] = groups_[last];
    count_[j] = count_[last];
    for (auto& axis : at_) axis[j] = axis[last];
    best_[j] = best_[last];
    groups_.pop_back();
    count_.pop_back();
    for (auto& axis : at_) axis.pop_back();
    best_.pop_back();
    for (Partner& partner : best_) {
      if (partner.group == i || partner.group == j) partner.stale = true;
      if (partner.group == last) partner.group = j;
    }
    FindPartner(i);
  }

  void Refresh(std::size_t i) {
    const ColorGroup& group = groups_[i];
    count_[i] = static_cast<float>(group.count);
    for (std::size_t k = 0; k < 3; ++k) {
      at_[k][i] = static_cast<float>(static_cast<double>(group.places[k]) / static_cast<double>(group.count));
    }
  }

  std::vector<ColorGroup> groups_;
  std::vector<float> count_;
  std::array<std::vector<float>, 3> at_;
  std::vector<Partner> best_;
};

}  // namespace

void MergeGroups(std::vector<ColorGroup>& groups, std::size_t wanted) {
  if (groups.size() <= wanted) return;
  Pairs pairs(groups);
  while (pairs.Count() > wanted) pairs.MergeCheapest();
  groups = pairs.Take();
}

}  // namespace glib
