#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "glib/color/color_groups.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/color_merge.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_COLOR_COLOR_MERGE_CPP_ONCE_
#define GLIB_COLOR_COLOR_MERGE_CPP_ONCE_
namespace glib {
namespace {

// The groups as columns of numbers. Columns are longer than there are groups; what has a count of infinity costs no
// number, and so never less than another.
struct GroupColumns {
  static constexpr std::size_t kPadding = 64;  // at least the lanes of any vector

  explicit GroupColumns(std::size_t size) : count(size + kPadding, std::numeric_limits<float>::infinity()) {
    for (auto& axis : at) axis.resize(size + kPadding);
  }

  std::vector<float> count;
  std::vector<float> at[3];
};

struct Partner {
  float cost;
  std::uint32_t group;
};

}  // namespace
}  // namespace glib
#endif  // GLIB_COLOR_COLOR_MERGE_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using CostTag = hn::CappedTag<float, GroupColumns::kPadding>;
using IndexTag = hn::RebindToSigned<CostTag>;

// The least of all lanes, at a tie the one of the first group.
HWY_INLINE Partner FirstOfLeast(hn::Vec<CostTag> least, hn::Vec<IndexTag> best) {
  HWY_ALIGN float costs[GroupColumns::kPadding];
  HWY_ALIGN std::int32_t groups[GroupColumns::kPadding];
  hn::Store(least, CostTag(), costs);
  hn::Store(best, IndexTag(), groups);
  std::size_t lane = 0;
  for (std::size_t k = 1; k < hn::Lanes(CostTag()); ++k) {
    if (costs[k] < costs[lane] || (costs[k] == costs[lane] && groups[k] < groups[lane])) lane = k;
  }
  return {costs[lane], static_cast<std::uint32_t>(groups[lane])};
}

// The partner among `size` groups that group `i` merges with at the least cost, at a tie the first. The arithmetic is
// the same in every lane, whatever their number.
Partner CheapestPartner(GroupColumns& columns, std::size_t size, std::size_t i) {
  const CostTag d;
  const IndexTag dIndex;
  const auto ownCount = hn::Set(d, columns.count[i]);
  const auto red = hn::Set(d, columns.at[0][i]);
  const auto green = hn::Set(d, columns.at[1][i]);
  const auto blue = hn::Set(d, columns.at[2][i]);
  const float kept = columns.count[i];
  columns.count[i] = std::numeric_limits<float>::infinity();  // not with itself

  auto least = hn::Set(d, std::numeric_limits<float>::infinity());
  auto best = hn::Zero(dIndex);
  for (std::size_t j = 0; j < size; j += hn::Lanes(d)) {
    const auto dRed = hn::Sub(red, hn::LoadU(d, columns.at[0].data() + j));
    const auto dGreen = hn::Sub(green, hn::LoadU(d, columns.at[1].data() + j));
    const auto dBlue = hn::Sub(blue, hn::LoadU(d, columns.at[2].data() + j));
    const auto count = hn::LoadU(d, columns.count.data() + j);
    const auto distance = hn::Add(hn::Add(hn::Mul(dRed, dRed), hn::Mul(dGreen, dGreen)), hn::Mul(dBlue, dBlue));
    const auto cost = hn::Div(hn::Mul(distance, hn::Mul(ownCount, count)), hn::Add(ownCount, count));
    const auto cheaper = hn::Lt(cost, least);
    least = hn::IfThenElse(cheaper, cost, least);
    best = hn::IfThenElse(hn::RebindMask(dIndex, cheaper), hn::Iota(dIndex, static_cast<std::int32_t>(j)), best);
  }
  columns.count[i] = kept;

  return FirstOfLeast(least, best);
}

// The place of the least of `size` costs, at a tie the first. Costs are followed by as many that are infinite as a
// vector has.
std::size_t CheapestOf(const float* costs, std::size_t size) {
  const CostTag d;
  const IndexTag dIndex;
  auto least = hn::Set(d, std::numeric_limits<float>::infinity());
  auto best = hn::Zero(dIndex);
  for (std::size_t j = 0; j < size; j += hn::Lanes(d)) {
    const auto cost = hn::LoadU(d, costs + j);
    const auto cheaper = hn::Lt(cost, least);
    least = hn::IfThenElse(cheaper, cost, least);
    best = hn::IfThenElse(hn::RebindMask(dIndex, cheaper), hn::Iota(dIndex, static_cast<std::int32_t>(j)), best);
  }
  return FirstOfLeast(least, best).group;
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(CheapestPartner);
HWY_EXPORT(CheapestOf);

namespace {

// The groups, each with its cheapest partner.
//
// A merged pair is never cheaper to merge with a third than the cheaper of the two was. So the cost that a group
// remembers stays a lower bound when its partner changes, and is only looked at again when it comes out least.
class Pairs {
 public:
  explicit Pairs(const std::vector<ColorGroup>& groups)
      : groups_(groups),
        columns_(groups.size()),
        costs_(groups.size() + GroupColumns::kPadding, std::numeric_limits<float>::infinity()),
        partners_(groups.size()),
        stale_(groups.size()) {
    for (std::size_t i = 0; i < groups_.size(); ++i) FillColumns(i);
    for (std::size_t i = 0; i < groups_.size(); ++i) FindPartner(i);
  }

  void MergeCheapest() {
    for (;;) {
      const std::size_t i = HWY_DYNAMIC_DISPATCH(CheapestOf)(costs_.data(), groups_.size());
      if (!stale_[i]) return Merge(std::min(i, partners_[i]), std::max(i, partners_[i]));
      FindPartner(i);
    }
  }

  std::size_t Count() const { return groups_.size(); }
  std::vector<ColorGroup> Take() { return std::move(groups_); }

 private:
  void FindPartner(std::size_t i) {
    const Partner partner = HWY_DYNAMIC_DISPATCH(CheapestPartner)(columns_, groups_.size(), i);
    costs_[i] = partner.cost;
    partners_[i] = partner.group;
    stale_[i] = false;
  }

  void FillColumns(std::size_t i) {
    const ColorGroup& group = groups_[i];
    columns_.count[i] = static_cast<float>(group.count);
    for (std::size_t k = 0; k < 3; ++k) {
      columns_.at[k][i] = static_cast<float>(static_cast<double>(group.places[k]) / static_cast<double>(group.count));
    }
  }

  // The later group becomes part of the earlier one, and the last takes its place.
  void Merge(std::size_t i, std::size_t j) {
    const std::size_t last = groups_.size() - 1;
    groups_[i].Add(groups_[j]);
    groups_[j] = groups_[last];
    FillColumns(i);
    FillColumns(j);
    columns_.count[last] = std::numeric_limits<float>::infinity();
    costs_[j] = costs_[last];
    partners_[j] = partners_[last];
    stale_[j] = stale_[last];
    groups_.pop_back();
    costs_[last] = std::numeric_limits<float>::infinity();
    partners_.pop_back();
    stale_.pop_back();
    for (std::size_t k = 0; k < groups_.size(); ++k) {
      if (partners_[k] == i || partners_[k] == j) stale_[k] = true;
      if (partners_[k] == last) partners_[k] = j;
    }
    FindPartner(i);
  }

  std::vector<ColorGroup> groups_;
  GroupColumns columns_;
  std::vector<float> costs_;  // with padding
  std::vector<std::size_t> partners_;
  std::vector<std::uint8_t> stale_;
};

}  // namespace

void MergeGroups(std::vector<ColorGroup>& groups, std::size_t wanted) {
  if (groups.size() <= wanted) return;
  Pairs pairs(groups);
  while (pairs.Count() > wanted) pairs.MergeCheapest();
  groups = pairs.Take();
}

}  // namespace glib
#endif  // HWY_ONCE
